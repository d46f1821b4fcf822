#include <string>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/LocalDay.h"

namespace quorvane {
namespace {

struct DayCase {
    const char* name;
    std::int64_t number;
    const char* text;
};

class LocalDayTexts : public ::testing::TestWithParam<DayCase> {};

TEST_P(LocalDayTexts, areYearMonthAndDay) {
    EXPECT_EQ(LocalDay{GetParam().number}.text(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    ByNumber, LocalDayTexts,
    ::testing::Values(DayCase{"epoch", 0, "1970-01-01"}, DayCase{"dayBeforeTheEpoch", -1, "1969-12-31"},
                      DayCase{"leapDay", 19782, "2024-02-29"}, DayCase{"dayBehindTheLeapDay", 19783, "2024-03-01"},
                      DayCase{"noLeapDay", 20512, "2026-02-28"}, DayCase{"dayBehindNoLeapDay", 20513, "2026-03-01"},
                      DayCase{"leapDayOfACentury", 11016, "2000-02-29"}, DayCase{"yearOne", -719162, "0001-01-01"},
                      DayCase{"distantPast", -719164, "0000-12-30"}, DayCase{"year9999", 2932896, "9999-12-31"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(LocalDay, daysAreCountedAsNumbers) {
    const LocalDay day{19782};
    EXPECT_EQ((day + 1).text(), "2024-03-01");
    EXPECT_EQ((day - 29).text(), "2024-01-31");
    EXPECT_EQ((day + 366) - day, 366);
    EXPECT_LT(day, day + 1);
    EXPECT_EQ(day, (day - 7) + 7);
}

TEST(LocalDay, textsSortAsTheDaysDo) {
    for (std::int64_t number = -1000; number < 30000; ++number)
        ASSERT_LT(LocalDay{number}.text(), LocalDay{number + 1}.text());
}

}  // namespace
}  // namespace quorvane
