// The queries over the index give what their twins give over the events in memory, and what the summaries give.

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/index/IndexTestSupport.h"
#include "tests/index/RandomEvents.h"

namespace quorvane {
namespace {

using testing::at;
using testing::IndexFile;
using testing::moments;
using testing::RandomEvents;
using testing::randomProviders;
using testing::testCalculator;

using Events = std::vector<UsageEvent>;

bool isClose(double left, double right) {
    return std::abs(left - right) <= 1e-9 * std::max(std::abs(left), std::abs(right));
}

/// Equal but for the rounding of the cost.
template <typename Row>
void expectSame(std::vector<Row> left, const std::vector<Row>& right, const std::string& what) {
    ASSERT_EQ(left.size(), right.size()) << what;
    for (std::size_t index = 0; index < left.size(); ++index) {
        EXPECT_TRUE(isClose(left[index].cost, right[index].cost)) << what << ", row " << index;
        left[index].cost = right[index].cost;
        EXPECT_EQ(left[index], right[index]) << what << ", row " << index;
    }
}

void expectSame(const HourWeekdayMatrix& left, const HourWeekdayMatrix& right, const std::string& what) {
    for (int weekday = 1; weekday <= 7; ++weekday) {
        for (int hour = 0; hour < 24; ++hour) {
            const std::string cell = what + ", " + std::to_string(weekday) + " at " + std::to_string(hour);
            EXPECT_EQ(left.cell(weekday, hour).events, right.cell(weekday, hour).events) << cell;
            EXPECT_EQ(left.cell(weekday, hour).tokens, right.cell(weekday, hour).tokens) << cell;
            EXPECT_TRUE(isClose(left.cell(weekday, hour).cost, right.cell(weekday, hour).cost)) << cell;
        }
    }
}

class UsageIndexAnalyticsProperty : public ::testing::TestWithParam<const char*> {
protected:
    /// Those of a window, of one provider or of all.
    [[nodiscard]] Events inside(const Events& events, std::int64_t days, std::optional<ProviderID> provider) const {
        const Date start = calendar.start(calendar.day(now) - (std::max<std::int64_t>(days, 1) - 1));
        Events kept;
        std::copy_if(events.begin(), events.end(), std::back_inserter(kept), [&](const UsageEvent& each) {
            return each.timestamp >= start && each.timestamp <= now && (!provider || each.provider == *provider);
        });
        return kept;
    }

    void compare(const UsageIndex& index, const Events& events) const {
        for (const std::int64_t days : {0, 1, 7, 30, 400}) {
            const std::string what = calendar.timeZoneID() + ", " + std::to_string(days) + " days";
            const Events window = inside(events, days, std::nullopt);
            const auto models = index.modelDaySummaries(randomProviders, days, calculator, now, calendar);
            expectSame(models, ModelDaySummary::bucketed(window, calculator, calendar), what);
            // Of equal costs but for the rounding, either may come first; none of the random ones are.
            expectSame(index.projectCostSummaries(randomProviders, days, calculator, now, calendar),
                       ProjectCostSummary::bucketed(window, calculator), what);
            const auto hours = index.hourWeekdayBins(randomProviders, days, calculator, now, calendar);
            ASSERT_EQ(hours.size(), randomProviders.size());
            for (const auto& [provider, matrix] : hours)
                expectSame(matrix, HourWeekdayMatrix::bucketed(inside(events, days, provider), calculator, calendar),
                           what);
            expectSum(index, models, days, what);
        }
    }

    /// Two roads to one sum.
    void expectSum(const UsageIndex& index, const std::vector<ModelDaySummary>& models, std::int64_t days,
                   const std::string& what) const {
        const std::int64_t length = std::max<std::int64_t>(days, 1);
        const CostBucket summed =
            index.windowSummaries(randomProviders, length, calculator, now, calendar).aggregate.rollup.last7d;
        std::int64_t events = 0;
        std::int64_t output = 0;
        double cost = 0;
        for (const ModelDaySummary& row : models) {
            events += row.eventCount;
            output += row.outputTokens;
            cost += row.cost;
        }
        EXPECT_EQ(events, summed.eventCount) << what;
        EXPECT_EQ(output, summed.usage.output) << what;
        EXPECT_TRUE(isClose(cost, summed.cost)) << what;
    }

    Calendar calendar{GetParam()};
    CostCalculator calculator = testCalculator();
    Date now;
};

TEST_P(UsageIndexAnalyticsProperty, queriesAgreeWithTheEventsInMemoryAndWithTheSummaries) {
    const IndexFile file{GetParam()};
    UsageIndex index{file.path};
    RandomEvents random{static_cast<unsigned>(std::hash<std::string>{}(GetParam()) + 1)};
    for (const char* moment : moments) {
        now = at(moment);
        Events events = random.around(now, calendar);
        for (std::size_t count = 0; count < events.size(); ++count) {
            if (count % 4 != 0) events[count].project = "p" + std::to_string(count % 4);
        }
        index.deleteEvents("/log", std::nullopt);
        index.ingest(events, "/log");
        compare(index, events);
        if (HasFatalFailure()) return;
    }
}

INSTANTIATE_TEST_SUITE_P(ByZone, UsageIndexAnalyticsProperty,
                         ::testing::Values("UTC", "Europe/Berlin", "America/New_York", "Australia/Lord_Howe",
                                           "Asia/Kathmandu", "Pacific/Apia"),
                         [](const auto& row) {
                             std::string name = row.param;
                             std::replace(name.begin(), name.end(), '/', '_');
                             return name;
                         });

}  // namespace
}  // namespace quorvane
