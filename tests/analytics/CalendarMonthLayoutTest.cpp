#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/analytics/AnalyticsAggregation.h"
#include "QuorvaneCore/analytics/CalendarMonthLayout.h"
#include "tests/analytics/AnalyticsRows.h"
#include "tests/support/ScopedVariables.h"

namespace quorvane {
namespace {

using testing::at;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::ScopedVariables;
using ::testing::SizeIs;

std::vector<HeatmapDay> window(Date now, std::int64_t length, const Calendar& calendar) {
    return AnalyticsAggregation::heatmapDays({}, AnalyticsMeasure::cost, length, now, calendar);
}

/// A letter a slot: a day with its date's last digit, "." out of the window, "_" blank; a word a week.
std::string drawn(const CalendarMonthBlock& block, const Calendar& calendar) {
    std::string text;
    for (const auto& week : block.columns) {
        if (!text.empty()) text += ' ';
        for (const CalendarSlot& slot : week) {
            if (const auto* const day = std::get_if<HeatmapDay>(&slot)) {
                text += calendar.day(day->day).text().back();
            } else {
                text += std::holds_alternative<CalendarBlank>(slot) ? '_' : '.';
            }
        }
    }
    return text;
}

class MonthLayout : public ::testing::Test {
protected:
    ScopedVariables language{"LC_ALL", "LC_MONETARY", "LANG"};
};

TEST_F(MonthLayout, ofNoDaysIsEmpty) {
    EXPECT_THAT(CalendarMonthLayout::months({}, Calendar{"UTC"}), IsEmpty());
}

TEST_F(MonthLayout, ofOneDayHasAllOthersOutOfTheWindow) {
    const Calendar calendar{"UTC"};
    const auto months = CalendarMonthLayout::months(window(at("2026-11-15T12:00:00Z"), 1, calendar), calendar);
    ASSERT_THAT(months, SizeIs(1));
    EXPECT_EQ(months[0].monthStart, at("2026-11-01T00:00:00Z"));
    EXPECT_EQ(months[0].label, "Nov");
    EXPECT_EQ(drawn(months[0], calendar), "....... ....... 5...... ....... .._____");
    const auto* const first = std::get_if<CalendarDayOutOfWindow>(&months[0].columns[0][0]);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->day, at("2026-11-01T00:00:00Z"));
}

TEST_F(MonthLayout, crossesTheYearsEnd) {
    const Calendar calendar{"UTC"};
    const auto months = CalendarMonthLayout::months(window(at("2027-01-02T12:00:00Z"), 5, calendar), calendar);
    ASSERT_THAT(months, SizeIs(2));
    EXPECT_EQ(months[0].label + " " + months[1].label, "Dec Jan");
    EXPECT_EQ(months[1].monthStart, at("2027-01-01T00:00:00Z"));
    EXPECT_EQ(drawn(months[0], calendar), "__..... ....... ....... ....... ..901__");
    EXPECT_EQ(drawn(months[1], calendar), "_____12 ....... ....... ....... ....... .______");
}

struct WeekCase {
    const char* name;
    int firstWeekday;
    const char* february;  ///< 2026-02-01 is a Sunday
    const char* june;      ///< 2026-06-01 is a Monday
};

class MonthLayoutWeek : public MonthLayout, public ::testing::WithParamInterface<WeekCase> {};

TEST_P(MonthLayoutWeek, beginsWithTheCalendarsFirstWeekday) {
    const Calendar calendar{"UTC", "gregorian", GetParam().firstWeekday};
    const auto drawnMonth = [&](const char* day) {
        const std::string text =
            drawn(CalendarMonthLayout::months(window(at(day), 1, calendar), calendar)[0], calendar);
        return text.substr(0, 7) + "…" + text.substr(text.size() - 7);
    };
    EXPECT_EQ(drawnMonth("2026-02-28T12:00:00Z"), GetParam().february);
    EXPECT_EQ(drawnMonth("2026-06-30T12:00:00Z"), GetParam().june);
}

INSTANTIATE_TEST_SUITE_P(Days, MonthLayoutWeek,
                         ::testing::Values(WeekCase{"sunday", 1, ".......…......8", "_......…..0____"},
                                           WeekCase{"monday", 2, "______.….....8_", ".......….0_____"},
                                           WeekCase{"saturday", 7, "_......…8______", "__.....…...0___"}),
                         [](const auto& tested) { return std::string{tested.param.name}; });

TEST_F(MonthLayout, monthOfFourWholeWeeksHasNoBlanks) {
    const Calendar calendar{"UTC"};
    const auto months = CalendarMonthLayout::months(window(at("2026-02-28T12:00:00Z"), 28, calendar), calendar);
    ASSERT_THAT(months, SizeIs(1));
    EXPECT_EQ(drawn(months[0], calendar), "1234567 8901234 5678901 2345678");
}

TEST_F(MonthLayout, everyWeekHasSevenSlotsAndEveryDayItsPlace) {
    for (const char* zone : {"UTC", "Europe/Berlin", "America/Sao_Paulo", "Asia/Beirut", "Pacific/Apia"}) {
        for (const char* moment :
             {"2026-03-31T12:00:00Z", "2018-11-05T12:00:00Z", "2012-01-04T12:00:00Z", "2024-02-29T12:00:00Z"}) {
            const Calendar calendar{zone};
            const std::vector<HeatmapDay> days = window(at(moment), 400, calendar);
            std::vector<Date> found;
            for (const CalendarMonthBlock& month : CalendarMonthLayout::months(days, calendar)) {
                EXPECT_THAT(month.columns, Each(SizeIs(7)));
                for (const auto& week : month.columns) {
                    for (const CalendarSlot& slot : week) {
                        if (const auto* const day = std::get_if<HeatmapDay>(&slot)) found.push_back(day->day);
                    }
                }
            }
            std::vector<Date> wanted;
            for (const HeatmapDay& day : days)
                wanted.push_back(day.day);
            // A day that the zone left out begins with the next one.
            wanted.erase(std::unique(wanted.begin(), wanted.end()), wanted.end());
            EXPECT_EQ(found, wanted) << zone << " " << moment;
        }
    }
}

struct NameCase {
    const char* locale;
    const char* march;
};

class MonthLayoutName : public MonthLayout, public ::testing::WithParamInterface<NameCase> {};

TEST_P(MonthLayoutName, isTheShortOneOfTheLocale) {
    language.set("LC_ALL", GetParam().locale);
    // In Apia the month began when it was still February elsewhere.
    const Calendar calendar{"Pacific/Apia"};
    const auto months = CalendarMonthLayout::months(window(at("2026-03-10T12:00:00Z"), 1, calendar), calendar);
    ASSERT_THAT(months, SizeIs(1));
    EXPECT_EQ(months[0].label, GetParam().march);
}

INSTANTIATE_TEST_SUITE_P(Locales, MonthLayoutName,
                         ::testing::Values(NameCase{"C", "Mar"}, NameCase{"de_DE.UTF-8", "Mär"},
                                           NameCase{"fr_FR.UTF-8", "mars"}, NameCase{"ja_JP.UTF-8", "3月"},
                                           NameCase{"ar_EG.UTF-8", "مارس"}));

TEST_F(MonthLayout, labelsCanBeMadeOtherwise) {
    const Calendar calendar{"UTC"};
    const DateFormat numbers = DateFormat::pattern(Locale{"en_US"}, "yyyy-MM");
    EXPECT_EQ(CalendarMonthLayout::months(window(at("2026-03-10T12:00:00Z"), 1, calendar), calendar, numbers)[0].label,
              "2026-03");
}

TEST_F(MonthLayout, otherCalendarsHaveMonthsOfTheirOwn) {
    const Calendar persian{"UTC", "persian", 7};
    const auto months = CalendarMonthLayout::months(window(at("2026-03-21T12:00:00Z"), 2, persian), persian);
    ASSERT_THAT(months, SizeIs(2));  // the year 1405 begins on 2026-03-21
    EXPECT_EQ(months[1].monthStart, at("2026-03-21T00:00:00Z"));
}

}  // namespace
}  // namespace quorvane
