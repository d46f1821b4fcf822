#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/analytics/AnalyticsAggregation.h"
#include "tests/analytics/AnalyticsRows.h"

namespace quorvane {
namespace {

using testing::at;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::randomRows;
using testing::row;
using ::testing::SizeIs;

using Rows = std::vector<ModelDaySummary>;

class Aggregation : public ::testing::Test {
protected:
    [[nodiscard]] Date daysAgo(std::int64_t days) const { return calendar.start(calendar.day(now) - days); }

    Calendar calendar{"Europe/Berlin"};
    Date now = at("2026-03-30T12:00:00Z");  // the clocks went forward the day before
};

std::vector<double> valuesOf(const std::vector<HeatmapDay>& days) {
    std::vector<double> values;
    for (const HeatmapDay& day : days)
        values.push_back(day.value);
    return values;
}

TEST_F(Aggregation, valueIsTheMeasureOfTheRow) {
    const ModelDaySummary all{.eventCount = 3,
                              .inputTokens = 1,
                              .outputTokens = 10,
                              .cache5mTokens = 100,
                              .cache1hTokens = 1000,
                              .cacheReadTokens = 10000,
                              .cost = 0.5};
    EXPECT_EQ(AnalyticsAggregation::value(all, AnalyticsMeasure::events), 3);
    EXPECT_EQ(AnalyticsAggregation::value(all, AnalyticsMeasure::tokens), 11111);
    EXPECT_EQ(AnalyticsAggregation::value(all, AnalyticsMeasure::cost), 0.5);
}

TEST_F(Aggregation, heatmapHasEveryDayOfTheWindow) {
    const auto days = AnalyticsAggregation::heatmapDays({}, AnalyticsMeasure::cost, 4, now, calendar);
    EXPECT_THAT(days, ElementsAre(HeatmapDay{daysAgo(3), 0}, HeatmapDay{daysAgo(2), 0}, HeatmapDay{daysAgo(1), 0},
                                  HeatmapDay{daysAgo(0), 0}));
    EXPECT_EQ(days[2].day, at("2026-03-28T23:00:00Z"));
    EXPECT_EQ(days[3].day, at("2026-03-29T22:00:00Z"));
}

TEST_F(Aggregation, heatmapOfNoDaysIsToday) {
    for (const std::int64_t length : {0, -5}) {
        EXPECT_THAT(AnalyticsAggregation::heatmapDays({}, AnalyticsMeasure::cost, length, now, calendar),
                    ElementsAre(HeatmapDay{daysAgo(0), 0}));
    }
}

TEST_F(Aggregation, windowThatTheCalendarDoesNotReachIsEmpty) {
    EXPECT_THAT(AnalyticsAggregation::heatmapDays({}, AnalyticsMeasure::cost, std::int64_t{1} << 60, now, calendar),
                IsEmpty());
    EXPECT_EQ(AnalyticsAggregation::modelDayGrid({}, AnalyticsMeasure::cost, std::int64_t{1} << 60, 3, now, calendar),
              ModelDayGrid{});
}

TEST_F(Aggregation, rowsOutsideTheWindowCountInTotalsAndMixAlone) {
    const Rows rows{row(ProviderID::Claude, "a", daysAgo(-1), 1), row(ProviderID::Claude, "a", daysAgo(0), 2),
                    row(ProviderID::Claude, "a", daysAgo(1), 4), row(ProviderID::Claude, "a", daysAgo(2), 8)};
    EXPECT_THAT(valuesOf(AnalyticsAggregation::heatmapDays(rows, AnalyticsMeasure::cost, 2, now, calendar)),
                ElementsAre(4, 2));
    const ModelDayGrid grid = AnalyticsAggregation::modelDayGrid(rows, AnalyticsMeasure::cost, 2, 5, now, calendar);
    EXPECT_THAT(grid.values, ElementsAre(ElementsAre(4, 2)));
    EXPECT_EQ(grid.rows.front().total, 6);
    EXPECT_EQ(AnalyticsAggregation::modelTotals(rows).front().cost, 15);
    EXPECT_EQ(AnalyticsAggregation::tokenMix(rows).input, 15);
}

TEST_F(Aggregation, rowsWithinADayCountForIt) {
    const Rows rows{row(ProviderID::Claude, "a", now, 1), row(ProviderID::Codex, "a", daysAgo(0), 2)};
    EXPECT_THAT(valuesOf(AnalyticsAggregation::heatmapDays(rows, AnalyticsMeasure::cost, 1, now, calendar)),
                ElementsAre(3));
}

TEST_F(Aggregation, totalsAreSortedByProviderAndModelWhateverTheirSize) {
    const Rows rows{row(ProviderID::Opencode, "z", daysAgo(0), 1), row(ProviderID::Claude, "b", daysAgo(0), 1),
                    row(ProviderID::Claude, "B", daysAgo(1), 5), row(ProviderID::Opencode, "z", daysAgo(9), 2),
                    row(ProviderID::Codex, "a", daysAgo(0), 100)};
    std::vector<std::string> ids;
    for (const AnalyticsModelTotal& total : AnalyticsAggregation::modelTotals(rows))
        ids.push_back(total.id());
    EXPECT_THAT(ids, ElementsAre("claude::B", "claude::b", "codex::a", "opencode::z"));
    EXPECT_EQ(AnalyticsAggregation::modelTotals(rows)[3].cost, 3);
    EXPECT_EQ(AnalyticsAggregation::modelTotals(rows)[3].eventCount, 2);
    EXPECT_THAT(AnalyticsAggregation::modelTotals({}), IsEmpty());
}

TEST_F(Aggregation, idIsProviderAndModel) {
    EXPECT_EQ((AnalyticsModelTotal{.provider = ProviderID::Claude, .model = "x"}.id()), "claude::x");
    EXPECT_EQ((ModelDayGrid::Row{.provider = ProviderID::MuseSpark, .model = "x::y"}.id()), "muse_spark::x::y");
}

TEST_F(Aggregation, mixOfNothingIsNothing) {
    const TokenMix mix = AnalyticsAggregation::tokenMix({});
    EXPECT_EQ(mix.total(), 0);
    EXPECT_EQ(mix.cacheHitRate(), 0);
}

TEST_F(Aggregation, hitRateIsTheShareOfAllTokensOutputIncluded) {
    const TokenMix mix{.input = 1, .output = 2, .cache5m = 3, .cache1h = 4, .cacheRead = 10};
    EXPECT_EQ(mix.total(), 20);
    EXPECT_EQ(mix.cacheHitRate(), 0.5);
}

TEST_F(Aggregation, gridWithoutModelsHasItsDays) {
    const Rows rows{row(ProviderID::Claude, "a", daysAgo(0), 1)};
    for (const std::int64_t top : {0, -1}) {
        const ModelDayGrid grid =
            AnalyticsAggregation::modelDayGrid(rows, AnalyticsMeasure::cost, 3, top, now, calendar);
        EXPECT_THAT(grid.rows, IsEmpty());
        EXPECT_THAT(grid.values, IsEmpty());
        EXPECT_THAT(grid.days, ElementsAre(daysAgo(2), daysAgo(1), daysAgo(0)));
    }
}

TEST_F(Aggregation, gridTakesTheLargestAndOfEqualsTheFirst) {
    const auto modelsOf = [&](const Rows& rows, std::int64_t top) {
        std::vector<std::string> models;
        for (const auto& each :
             AnalyticsAggregation::modelDayGrid(rows, AnalyticsMeasure::cost, 7, top, now, calendar).rows)
            models.push_back(each.model);
        return models;
    };
    const auto rowsOf = [&](std::vector<std::pair<std::string, double>> costs) {
        Rows rows;
        for (const auto& [model, cost] : costs)
            rows.push_back(row(ProviderID::Claude, model, daysAgo(0), cost));
        return rows;
    };
    EXPECT_THAT(modelsOf(rowsOf({{"c", 1}, {"a", 1}, {"b", 1}}), 2), ElementsAre("c", "a"));
    EXPECT_THAT(modelsOf(rowsOf({{"c", 1}, {"a", 3}, {"b", 1}, {"c", 1}}), 9), ElementsAre("a", "c", "b"));
    EXPECT_THAT(modelsOf(rowsOf({{"z", 0}, {"a", 0}}), 9), ElementsAre("z", "a"));
}

TEST_F(Aggregation, filterKeepsOrderAndMatchesExactly) {
    const Rows rows{row(ProviderID::Claude, "b", daysAgo(0), 1), row(ProviderID::Codex, "a", daysAgo(1), 2),
                    row(ProviderID::Claude, "a", daysAgo(1), 3), row(ProviderID::Claude, "a", daysAgo(8), 4)};
    const auto costs = [&](const AnalyticsDrillFilter& filter) {
        std::vector<double> kept;
        for (const ModelDaySummary& each : AnalyticsAggregation::filteredRows(rows, filter, calendar))
            kept.push_back(each.cost);
        return kept;
    };
    EXPECT_THAT(costs(DrillDay{now}), ElementsAre(1));
    EXPECT_THAT(costs(DrillDay{daysAgo(1) + 43200}), ElementsAre(2, 3));
    EXPECT_THAT(costs(DrillWeekday{1}), ElementsAre(2, 3, 4));  // Sunday, in Berlin
    EXPECT_THAT(costs(DrillWeekday{2}), ElementsAre(1));
    EXPECT_THAT(costs(DrillWeekday{0}), IsEmpty());
    EXPECT_THAT(costs(DrillModelDay{ProviderID::Claude, "a", daysAgo(1) + 5}), ElementsAre(3));
    EXPECT_THAT(costs(DrillModelDay{ProviderID::Claude, "A", daysAgo(1)}), IsEmpty());
}

class AggregationOfRandomRows : public ::testing::TestWithParam<const char*> {};

TEST_P(AggregationOfRandomRows, givesOneSumByEveryRoad) {
    const Calendar calendar{GetParam()};
    for (unsigned seed = 0; seed < 20; ++seed) {
        for (const char* moment : {"2026-03-30T12:00:00Z", "2026-11-02T03:00:00Z", "2012-01-04T12:00:00Z"}) {
            const Date now = at(moment);
            const Rows rows = randomRows(seed, now, calendar);
            constexpr std::int64_t length = 30;
            const LocalDay first = calendar.day(now) - (length - 1);
            for (const AnalyticsMeasure measure : allAnalyticsMeasures) {
                double inside = 0;
                for (const ModelDaySummary& each : rows) {
                    const LocalDay day = calendar.day(each.day);
                    if (day >= first && day <= calendar.day(now)) inside += AnalyticsAggregation::value(each, measure);
                }
                double byDay = 0;
                for (const HeatmapDay& day : AnalyticsAggregation::heatmapDays(rows, measure, length, now, calendar))
                    byDay += day.value;
                EXPECT_DOUBLE_EQ(byDay, inside);
                const ModelDayGrid grid = AnalyticsAggregation::modelDayGrid(rows, measure, length, 100, now, calendar);
                double byModel = 0;
                for (std::size_t index = 0; index < grid.rows.size(); ++index) {
                    double ofModel = 0;
                    for (const double value : grid.values[index])
                        ofModel += value;
                    EXPECT_DOUBLE_EQ(ofModel, grid.rows[index].total);
                    byModel += ofModel;
                    EXPECT_GE(grid.rows[index > 0 ? index - 1 : 0].total, grid.rows[index].total);
                }
                EXPECT_DOUBLE_EQ(byModel, inside);
            }
            TokenMix mix;
            for (const AnalyticsModelTotal& total : AnalyticsAggregation::modelTotals(rows)) {
                mix.input += total.inputTokens;
                mix.output += total.outputTokens;
                mix.cache5m += total.cache5mTokens;
                mix.cache1h += total.cache1hTokens;
                mix.cacheRead += total.cacheReadTokens;
            }
            EXPECT_EQ(mix, AnalyticsAggregation::tokenMix(rows));
            std::size_t byWeekday = 0;
            for (int weekday = 1; weekday <= 7; ++weekday)
                byWeekday += AnalyticsAggregation::filteredRows(rows, DrillWeekday{weekday}, calendar).size();
            EXPECT_EQ(byWeekday, rows.size());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Zones, AggregationOfRandomRows,
                         ::testing::Values("UTC", "Europe/Berlin", "America/New_York", "Australia/Lord_Howe",
                                           "Asia/Kathmandu", "Pacific/Apia"));

}  // namespace
}  // namespace quorvane
