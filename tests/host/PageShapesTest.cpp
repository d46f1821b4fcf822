// The small parts that the page's charts are made of.

#include <array>
#include <cmath>
#include <limits>
#include <numeric>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/snapshots/HexColor.h"
#include "QuorvaneHost/html/AxisScale.h"
#include "QuorvaneHost/html/BarShape.h"
#include "QuorvaneHost/html/HeatLevels.h"
#include "QuorvaneHost/html/PageFormat.h"
#include "QuorvaneHost/html/PagePeriods.h"

namespace quorvane::testing {
namespace {

using host::AxisScale;
using host::BarShape;
using host::HeatLevels;
using host::PageFormat;
using host::PagePeriods;
using host::UsageFigures;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Le;
using ::testing::SizeIs;

TEST(AxisScale, linesAreAtRoundValues) {
    EXPECT_THAT(AxisScale::ticks(3.15, false), ElementsAre(1, 2, 3));
    EXPECT_THAT(AxisScale::ticks(14.2, false), ElementsAre(5, 10));
    EXPECT_THAT(AxisScale::ticks(10, false), ElementsAre(2.5, 5, 7.5, 10));
}

TEST(AxisScale, callsHaveNoHalves) {
    EXPECT_THAT(AxisScale::ticks(1, true), ElementsAre(1));
    EXPECT_THAT(AxisScale::ticks(2, true), ElementsAre(1, 2));
    EXPECT_THAT(AxisScale::ticks(10, true), ElementsAre(5, 10));
    EXPECT_THAT(AxisScale::ticks(100, true), ElementsAre(25, 50, 75, 100));
}

TEST(AxisScale, nothingHasNoLines) {
    EXPECT_THAT(AxisScale::ticks(0, false), IsEmpty());
    EXPECT_THAT(AxisScale::ticks(-1, false), IsEmpty());
    EXPECT_THAT(AxisScale::ticks(std::numeric_limits<double>::infinity(), false), IsEmpty());
}

TEST(AxisScale, anyPeakHasOneToFiveLinesBelowIt) {
    for (double peak = 0.0001; peak < 1e10; peak *= 1.37) {
        for (const bool isWhole : {false, true}) {
            const std::vector<double> ticks = AxisScale::ticks(peak, isWhole);
            EXPECT_THAT(ticks, SizeIs(Le(5U))) << peak;
            EXPECT_THAT(ticks, Each(Le(peak * (1 + 1e-9)))) << peak;
            EXPECT_EQ(ticks.empty(), isWhole && peak < 1) << peak;
        }
    }
}

TEST(BarShape, somethingIsSeenAndThePeakIsWhole) {
    EXPECT_EQ(BarShape::units(0, 10, 400), 0);
    EXPECT_EQ(BarShape::units(1e-9, 10, 400), 1);
    EXPECT_EQ(BarShape::units(5, 10, 400), 200);
    EXPECT_EQ(BarShape::units(10, 10, 400), 400);
    EXPECT_EQ(BarShape::units(11, 10, 400), 400);
    EXPECT_EQ(BarShape::units(1, 0, 400), 0);
}

TEST(BarShape, fewBarsStandApart) {
    constexpr std::array<std::int64_t, 3> bars{20, 0, 5};
    EXPECT_EQ(BarShape::path(bars, 60), "M0 60v-20h8v20h12v-5h8v5z");
}

TEST(BarShape, manyBarsAreOneOutline) {
    std::vector<std::int64_t> bars(200, 7);
    bars[1] = 9;
    EXPECT_EQ(BarShape::path(bars, 60), "M0 60v-7h10v-2h10v2h1980v7z");
}

TEST(BarShape, noBarsAreAnEmptyOutline) {
    EXPECT_EQ(BarShape::path({}, 60), "M0 60z");
}

TEST(HeatLevels, somethingIsNeverNothing) {
    EXPECT_EQ(HeatLevels::level(0, 100), 0);
    EXPECT_EQ(HeatLevels::level(1e-12, 100), 1);
    EXPECT_EQ(HeatLevels::level(25, 100), 4);
    EXPECT_EQ(HeatLevels::level(100, 100), HeatLevels::most);
    EXPECT_EQ(HeatLevels::level(200, 100), HeatLevels::most);
    EXPECT_EQ(HeatLevels::level(1, 0), 0);
}

TEST(HeatLevels, aCellNamesEachMeasureThatIsNotNothing) {
    EXPECT_EQ(HeatLevels::classAttribute({}, {1, 10, 1}), "");
    EXPECT_EQ(HeatLevels::classAttribute({0, 10, 1}, {1, 10, 1}), " class=\"t7 e7\"");
    EXPECT_EQ(HeatLevels::classAttribute({1, 1, 1}, {1, 100, 4}), " class=\"c7 t1 e4\"");
}

double luminance(const std::string& hex) {
    const HexColor::Components colour = HexColor::componentsOrFallback(hex);
    const auto linear = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.red) + 0.7152 * linear(colour.green) + 0.0722 * linear(colour.blue);
}

TEST(HeatLevels, textOnEachLevelIsLegible) {
    for (const bool isDark : {false, true}) {
        for (int level = 0; level <= HeatLevels::most; ++level) {
            const double ground = luminance(HeatLevels::colour(level, isDark)) + 0.05;
            const double text = (HeatLevels::textColour(level, isDark) == "000" ? 0 : 1) + 0.05;
            EXPECT_GE(std::max(ground, text) / std::min(ground, text), 4.5) << level << isDark;
        }
    }
}

TEST(HeatLevels, eachLevelIsFurtherFromTheTrack) {
    for (int level = 1; level <= HeatLevels::most; ++level) {
        EXPECT_LT(luminance(HeatLevels::colour(level, false)), luminance(HeatLevels::colour(level - 1, false)));
        EXPECT_GT(luminance(HeatLevels::colour(level, true)), luminance(HeatLevels::colour(level - 1, true)));
    }
}

constexpr LocalDay newYear{20819};  // 2027-01-01, a Friday

TEST(PagePeriods, weeksBeginWithTheCalendarsFirstWeekday) {
    const PagePeriods weeks{newYear, newYear + 10, PagePeriods::Unit::Week, Calendar{"UTC", "gregorian", 2}};
    ASSERT_EQ(weeks.size(), 3U);
    EXPECT_EQ(weeks.all()[0].last, newYear + 2);
    EXPECT_EQ(weeks.all()[1].first, newYear + 3);
    EXPECT_EQ(weeks.all()[2].last, newYear + 10);
}

TEST(PagePeriods, monthsAndYearsAreCutAtTheirFirstDay) {
    const Calendar calendar{"UTC"};
    const PagePeriods months{newYear - 1, newYear + 31, PagePeriods::Unit::Month, calendar};
    ASSERT_EQ(months.size(), 3U);
    EXPECT_EQ(months.all()[1].first, newYear);
    EXPECT_EQ(months.all()[2].first, newYear + 31);
    const PagePeriods years{newYear - 1, newYear + 31, PagePeriods::Unit::Year, calendar};
    ASSERT_EQ(years.size(), 2U);
    EXPECT_EQ(years.all()[1].first, newYear);
}

TEST(PagePeriods, everyDayLiesInItsPeriod) {
    for (const auto unit :
         {PagePeriods::Unit::Day, PagePeriods::Unit::Week, PagePeriods::Unit::Month, PagePeriods::Unit::Year}) {
        const PagePeriods periods{newYear - 100, newYear + 400, unit, Calendar{"UTC"}};
        for (LocalDay day = newYear - 100; day <= newYear + 400; day = day + 1) {
            const PagePeriods::Period& period = periods.all()[periods.indexOf(day)];
            EXPECT_TRUE(period.first <= day && day <= period.last) << day.text();
        }
    }
}

TEST(PageFormat, englishIsNotMarked) {
    const PageFormat format{Locale{"en_GB"}};
    EXPECT_EQ(format.pageLanguage(), "en-GB");
    EXPECT_EQ(format.localized("Jan"), "Jan");
}

TEST(PageFormat, namesOfDaysAreMarkedAsTheirLanguage) {
    const PageFormat format{Locale{"de_DE.UTF-8"}};
    EXPECT_EQ(format.pageLanguage(), "en-DE");
    EXPECT_EQ(format.weekday(4), "Mittwoch");
    EXPECT_EQ(format.localized("Mi"), "<span lang=\"de-DE\">Mi</span>");
}

TEST(PageFormat, figuresFollowTheLocale) {
    EXPECT_EQ(PageFormat{Locale{"en_US"}}.all({1234.5, 1500000, 1}), "$1,234.50, 1.5M tokens, 1 call");
    EXPECT_EQ(PageFormat{Locale{"de_DE"}}.count(1234), "1.234");
    EXPECT_EQ(PageFormat{Locale{"en_US"}}.all({}), "nothing");
}

TEST(PageFormat, anAxisIsBrief) {
    const PageFormat format{Locale{"en_US"}};
    EXPECT_EQ(format.tick(5, AnalyticsMeasure::cost), "$5");
    EXPECT_EQ(format.tick(2.5, AnalyticsMeasure::cost), "$2.50");
    EXPECT_EQ(format.tick(1500, AnalyticsMeasure::cost), "$1.5K");
    EXPECT_EQ(format.tick(20000000, AnalyticsMeasure::tokens), "20M");
    EXPECT_EQ(format.tick(1000, AnalyticsMeasure::events), "1,000");
}

TEST(UsageFigures, theLevelsStylesNameEveryLevelAndMeasure) {
    const std::string styles = HeatLevels::styles();
    for (const char letter : {'c', 't', 'e'}) {
        for (int level = 1; level <= HeatLevels::most; ++level)
            EXPECT_NE(styles.find(std::string{"."} + letter + std::to_string(level) + "{"), std::string::npos);
    }
}

}  // namespace
}  // namespace quorvane::testing
