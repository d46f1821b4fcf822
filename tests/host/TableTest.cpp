#include <gtest/gtest.h>

#include "QuorvaneHost/text/Table.h"

namespace quorvane::host {
namespace {

const Ink plain{false};

TEST(Table, alignsTheFirstColumnLeftAndTheOthersRight) {
    Table table{{"Model", "Cost", "Calls"}};
    table.add({"a", "$1.00", "5"});
    table.add({"bcdef", "$10.00", "1234"});
    EXPECT_EQ(table.text(plain, 80, 1),
              " Model    Cost  Calls\n"
              " a       $1.00      5\n"
              " bcdef  $10.00   1234\n");
}

TEST(Table, theFirstColumnGivesWayInANarrowTerminal) {
    Table table{{"Model", "Cost"}};
    table.add({"a-very-long-model-name-indeed", "$1.00"});
    EXPECT_EQ(table.text(plain, 24, 0),
              "Model               Cost\n"
              "a-very-l…e-indeed  $1.00\n");
}

TEST(Table, wideCharactersKeepTheColumnsStraight) {
    Table table{{"P", "N"}};
    table.add({"日本", "1"});
    table.add({"ab", "2"});
    EXPECT_EQ(table.text(plain, 80, 0), "P     N\n日本  1\nab    2\n");
}

}  // namespace
}  // namespace quorvane::host
