#include <gtest/gtest.h>

#include "QuorvaneCore/platform/RelativeDateFormat.h"

namespace quorvane {
namespace {

struct AgeCase {
    const char* name;
    double age;
    const char* text;
};

class RelativeDateFormatAge : public ::testing::TestWithParam<AgeCase> {};

TEST_P(RelativeDateFormatAge, isToldInTheLargestWholeUnit) {
    EXPECT_EQ(RelativeDateFormat::text(Date{1e9 - GetParam().age}, Date{1e9}, Locale{"en_US"}), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Ages, RelativeDateFormatAge,
    ::testing::Values(AgeCase{"none", 0, "now"}, AgeCase{"belowAMinute", 59.9, "now"},
                      AgeCase{"aMinute", 60, "1 min. ago"}, AgeCase{"belowAnHour", 3599, "59 min. ago"},
                      AgeCase{"anHour", 3600, "1 hr. ago"}, AgeCase{"belowADay", 86399, "23 hr. ago"},
                      AgeCase{"aDay", 86400, "1 day ago"}, AgeCase{"manyDays", 86400.0 * 400, "400 days ago"},
                      AgeCase{"soon", -30, "now"}, AgeCase{"ahead", -7200, "in 2 hr."}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(RelativeDateFormatTest, followsTheLocale) {
    EXPECT_EQ(RelativeDateFormat::text(Date{0}, Date{300}, Locale{"de_DE"}), "vor 5 Min.");
}

}  // namespace
}  // namespace quorvane
