#include <cstdint>
#include <map>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/TextTable.h"

namespace quorvane {
namespace {

TEST(TextTable, numbersTextsInTheOrderInWhichTheyCome) {
    TextTable table;
    EXPECT_EQ(table.find("a"), TextTable::none);
    EXPECT_EQ(table.add("a"), 0);
    EXPECT_EQ(table.add("b"), 1);
    EXPECT_EQ(table.add("a"), 0);
    EXPECT_EQ(table.add(""), 2);
    EXPECT_EQ(table.add(""), 2);
    EXPECT_EQ(table.find("b"), 1);
    EXPECT_EQ(table.find("c"), TextTable::none);
    EXPECT_EQ(table.text(1), "b");
    EXPECT_EQ(table.size(), 3);
}

TEST(TextTable, isAMapHoweverLargeItGrows) {
    std::mt19937 random{5};
    TextTable table;
    std::map<std::string, std::uint32_t> expected;
    for (int step = 0; step < 20000; ++step) {
        std::string text = std::to_string(random() % 8000);
        if (random() % 2 == 0) text.insert(0, "a-prefix-of-some-length-");
        if (random() % 3 == 0) {
            const auto known = expected.find(text);
            ASSERT_EQ(table.find(text), known == expected.end() ? TextTable::none : known->second);
        } else {
            const auto number = static_cast<std::uint32_t>(expected.size());
            ASSERT_EQ(table.add(text), expected.try_emplace(text, number).first->second);
        }
    }
    ASSERT_EQ(table.size(), expected.size());
    for (const auto& [text, number] : expected)
        ASSERT_EQ(table.text(number), text);
}

}  // namespace
}  // namespace quorvane
