// Every road to a sum gives the same one: the grouped scan, the scan of the events, the rollup, the series, the events
// in memory, and a reference that asks the calendar about each event.

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/index/UsageStore.h"
#include "tests/index/IndexTestSupport.h"
#include "tests/index/RandomEvents.h"

namespace quorvane {
namespace {

using testing::at;
using testing::IndexFile;
using testing::moments;
using testing::RandomEvents;
constexpr auto& providers = testing::randomProviders;
using testing::testCalculator;

using Events = std::vector<UsageEvent>;

constexpr std::array<std::int64_t, 8> windows{-3, 0, 1, 2, 7, 30, 90, 400};

constexpr const char* localDay = "date(ts, 'unixepoch', 'localtime')";
constexpr const char* utcDay = "date(ts, 'unixepoch')";

/// Told event by event and in the calendar's own words.
UsageWindowSummary reference(const Events& events, std::optional<ProviderID> provider, std::int64_t days,
                             const CostCalculator& calculator, Date now, const Calendar& calendar) {
    const std::int64_t length = std::max<std::int64_t>(days, 0);
    const LocalDay today = calendar.day(now);
    const LocalDay first = length < 1 ? today : today - (length - 1);
    const Date startOfToday = calendar.startOfDay(now);
    const Date windowStart = calendar.start(first);
    UsageWindowSummary sums;
    sums.rollup.windowDays = std::max<std::int64_t>(length, 1);
    sums.dailyCostSeries.assign(static_cast<std::size_t>(length), 0.0);
    for (const UsageEvent& made : events) {
        if (provider && made.provider != *provider) continue;
        if (made.timestamp > now) continue;
        const std::optional<double> cost = calculator.cost(made.model, made.usage);
        if (made.timestamp >= startOfToday) sums.rollup.today.add(made, cost);
        if (made.timestamp < windowStart) continue;
        sums.rollup.last7d.add(made, cost);
        sums.rollup.byModel7d[made.model].add(made, cost);
        const std::int64_t position = calendar.day(made.timestamp) - first;
        if (cost && position >= 0 && position < length) {
            sums.dailyCostSeries[static_cast<std::size_t>(position)] += *cost;
        }
    }
    return sums;
}

void expectClose(double left, double right, const std::string& what) {
    EXPECT_LE(std::abs(left - right), 1e-9 * std::max(std::abs(left), std::abs(right)))
        << what << ": " << left << " and " << right;
}

void expectSame(const CostBucket& left, const CostBucket& right, const std::string& what) {
    EXPECT_EQ(left.usage, right.usage) << what;
    EXPECT_EQ(left.eventCount, right.eventCount) << what;
    EXPECT_EQ(left.unpricedModels, right.unpricedModels) << what;
    expectClose(left.cost, right.cost, what);
}

void expectSame(const UsageRollup& left, const UsageRollup& right, const std::string& what) {
    expectSame(left.today, right.today, what + ", today");
    expectSame(left.last7d, right.last7d, what + ", window");
    EXPECT_EQ(left.windowDays, right.windowDays) << what;
    ASSERT_EQ(left.byModel7d.size(), right.byModel7d.size()) << what;
    for (const auto& [model, bucket] : left.byModel7d) {
        ASSERT_TRUE(right.byModel7d.contains(model)) << what << ", " << model;
        expectSame(bucket, right.byModel7d.at(model), what + ", " + model);
    }
}

void expectSame(const std::vector<double>& left, const std::vector<double>& right, const std::string& what) {
    ASSERT_EQ(left.size(), right.size()) << what;
    for (std::size_t day = 0; day < left.size(); ++day)
        expectClose(left[day], right[day], what + ", day " + std::to_string(day));
}

void expectSame(const UsageWindowSummary& left, const UsageWindowSummary& right, const std::string& what) {
    expectSame(left.rollup, right.rollup, what);
    expectSame(left.dailyCostSeries, right.dailyCostSeries, what);
}

/// All roads, for one set of events at one moment.
class Roads {
public:
    Roads(const UsageIndex& index, const Events& events, Date now, const Calendar& calendar, std::string what)
        : index_{index}, events_{events}, now_{now}, calendar_{calendar}, what_{std::move(what)} {
        for (const std::int64_t days : windows) {
            Reference& sums = references_[std::max<std::int64_t>(days, 0)];
            sums.all = reference(events_, std::nullopt, days, calculator_, now_, calendar_);
            for (const ProviderID provider : providers)
                sums.each[provider] = reference(events_, provider, days, calculator_, now_, calendar_);
        }
    }

    void expectReference(const UsageMultiWindowSummaries& given, const std::string& road) const {
        ASSERT_EQ(given.byDays.size(), references_.size());
        for (const auto& [days, sums] : references_) {
            const std::string what = what_ + ", " + road + ", " + std::to_string(days) + " days";
            expectSame(given.byDays.at(days).aggregate, sums.all, what);
            ASSERT_EQ(given.byDays.at(days).providers.size(), sums.each.size()) << what;
            for (const auto& [provider, each] : sums.each)
                expectSame(given.byDays.at(days).providers.at(provider), each, what + ", one provider");
        }
    }

    void multiWindow(const std::string& dayExpression) const {
        expectReference(index_.multiWindowSummariesPerEvent(providers, windows, calculator_, now_, calendar_),
                        "per event");
        expectReference(
            index_.multiWindowSummariesGrouped(providers, windows, calculator_, now_, calendar_, dayExpression),
            "grouped");
        expectReference(index_.multiWindowSummaries(providers, windows, calculator_, now_, calendar_), "chosen");
    }

    void singleWindow() const {
        const UsageStore store{calculator_};
        for (const std::int64_t days : windows) {
            const std::string what = what_ + ", " + std::to_string(days) + " days";
            const Reference& sums = references_.at(std::max<std::int64_t>(days, 0));
            const UsageWindowSummaries one = index_.windowSummaries(providers, days, calculator_, now_, calendar_);
            expectSame(one.aggregate, sums.all, what + ", one window");
            // A rollup takes less than one day as one; so is the reference of no days, but for its series.
            expectSame(index_.rollup(std::nullopt, days, calculator_, now_, calendar_), sums.all.rollup,
                       what + ", rollup");
            expectSame(store.rollup(events_, days, now_, calendar_), sums.all.rollup, what + ", in memory");
            expectSame(index_.dailyCostSeries(std::nullopt, days, calculator_, now_, calendar_),
                       sums.all.dailyCostSeries, what + ", series");
            expectSame(index_.rollup(ProviderID::Codex, days, calculator_, now_, calendar_),
                       sums.each.at(ProviderID::Codex).rollup, what + ", rollup of one");
            expectSame(index_.dailyCostSeries(ProviderID::Codex, days, calculator_, now_, calendar_),
                       sums.each.at(ProviderID::Codex).dailyCostSeries, what + ", series of one");
        }
    }

private:
    struct Reference {
        UsageWindowSummary all;
        std::map<ProviderID, UsageWindowSummary> each;
    };

    const UsageIndex& index_;
    const Events& events_;
    Date now_;
    Calendar calendar_;
    CostCalculator calculator_ = testCalculator();
    std::string what_;
    std::map<std::int64_t, Reference> references_;
};

class UsageIndexSummaryProperty : public ::testing::TestWithParam<const char*> {};

TEST_P(UsageIndexSummaryProperty, allRoadsGiveTheSameSums) {
    const std::string zone = GetParam();
    const IndexFile file{zone};
    UsageIndex index{file.path};
    const Calendar local{zone};
    const Calendar utc{"UTC"};
    ASSERT_EQ(Calendar::systemTimeZoneID(), zone);
    ASSERT_EQ(UsageIndex::sqlLocalDayExpression(local), localDay);
    RandomEvents random{static_cast<unsigned>(std::hash<std::string>{}(zone))};
    for (const char* moment : moments) {
        const Date now = at(moment);
        Events events = random.around(now, local);
        const Events aroundUTC = random.around(now, utc);
        events.insert(events.end(), aroundUTC.begin(), aroundUTC.end());
        index.deleteEvents("/log", std::nullopt);
        index.ingest(events, "/log");
        const Roads inTheZone{index, events, now, local, zone + " at " + moment};
        inTheZone.multiWindow(localDay);
        inTheZone.singleWindow();
        const Roads inUTC{index, events, now, utc, "UTC in " + zone + " at " + moment};
        inUTC.multiWindow(utcDay);
        inUTC.singleWindow();
        // Days that do not begin when those of UTC do: the grouped road must notice that it is none.
        const Calendar elsewhere{zone == "Asia/Kathmandu" ? "Asia/Tokyo" : "Asia/Kathmandu"};
        Roads{index, events, now, elsewhere, "elsewhere in " + zone + " at " + moment}.multiWindow(utcDay);
        if (HasFatalFailure()) return;
    }
}
INSTANTIATE_TEST_SUITE_P(ByZone, UsageIndexSummaryProperty,
                         ::testing::Values("UTC", "Europe/Berlin", "America/New_York", "Australia/Lord_Howe",
                                           "Asia/Kathmandu", "Pacific/Apia"),
                         [](const auto& row) {
                             std::string name = row.param;
                             std::replace(name.begin(), name.end(), '/', '_');
                             return name;
                         });

}  // namespace
}  // namespace quorvane
