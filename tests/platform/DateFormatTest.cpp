#include <gtest/gtest.h>

#include "QuorvaneCore/platform/DateFormat.h"
#include "QuorvaneCore/platform/TextOrder.h"
#include "tests/support/ScopedVariables.h"

namespace quorvane {
namespace {

using testing::ScopedVariables;

constexpr Date moment{1773619200};  // 2026-03-16T00:00:00Z

TEST(DateFormat, writesExactlyThePattern) {
    const DateFormat format = DateFormat::pattern(Locale{"en_US"}, "yyyy-MM-dd HH:mm");
    EXPECT_EQ(format.text(moment, Calendar{"UTC"}), "2026-03-16 00:00");
    EXPECT_EQ(format.text(moment, Calendar{"America/New_York"}), "2026-03-15 20:00");
    EXPECT_EQ(format.text(moment, Calendar{"Asia/Kathmandu"}), "2026-03-16 05:45");
    EXPECT_EQ(format.text(moment, Calendar{"UTC", "buddhist"}), "2569-03-16 00:00");
    EXPECT_EQ(format.text(moment, Calendar{"UTC"}), "2026-03-16 00:00");
}

TEST(DateFormat, writesFieldsAsTheLocaleHasThem) {
    const Calendar utc{"UTC"};
    EXPECT_EQ(DateFormat::localized(Locale{"en_US"}, "MMMd").text(moment, utc), "Mar 16");
    EXPECT_EQ(DateFormat::localized(Locale{"de_DE.UTF-8"}, "MMMd").text(moment, utc), "16. März");
    EXPECT_EQ(DateFormat::localized(Locale{"ja_JP"}, "MMMd").text(moment, utc), "3月16日");
    EXPECT_EQ(DateFormat::localized(Locale{"C"}, "ccc").text(moment, utc), "Mon");
    EXPECT_EQ(DateFormat::localized(Locale{"xx_YY"}, "d").text(moment, utc), "16");
}

TEST(TextOrder, countsDigitsByTheirValueAndNotCase) {
    const ScopedVariables language{"LC_ALL", "LC_MONETARY", "LANG"};
    EXPECT_LT(compareNaturally("file9", "file10"), 0);
    EXPECT_GT(compareNaturally("b", "A"), 0);
    EXPECT_EQ(compareNaturally("ABC", "abc"), 0);
    EXPECT_NE(compareNaturally("a", "ä"), 0);
    EXPECT_LT(compareNaturally("", "a"), 0);
    EXPECT_LT(compareNaturally("x-007", "x-8"), 0);
}

TEST(TextOrder, isThatOfTheLocale) {
    ScopedVariables language{"LC_ALL", "LC_MONETARY", "LANG"};
    language.set("LC_ALL", "de_DE.UTF-8");
    EXPECT_LT(compareNaturally("ö", "z"), 0);
    language.set("LC_ALL", "sv_SE.UTF-8");
    EXPECT_GT(compareNaturally("ö", "z"), 0);
}

}  // namespace
}  // namespace quorvane
