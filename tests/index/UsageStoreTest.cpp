#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/index/UsageStore.h"
#include "tests/index/IndexTestSupport.h"

namespace quorvane {
namespace {

using testing::at;
using ::testing::ElementsAre;
using testing::event;
using ::testing::IsEmpty;
using ::testing::Key;
using testing::testCalculator;

using Events = std::vector<UsageEvent>;

class UsageStoreRollup : public ::testing::Test {
protected:
    [[nodiscard]] UsageRollup rollup(const Events& events, std::int64_t days) const {
        return store.rollup(events, days, now, calendar);
    }
    static UsageEvent spent(Date when, std::int64_t dollars) {
        return event({.model = "plain", .when = when, .usage = {.input = dollars}});
    }

    UsageStore store{testCalculator()};
    Calendar calendar{"Europe/Berlin"};
    Date now = at("2026-03-15T12:00:00Z");
    Date startOfToday = at("2026-03-14T23:00:00Z");
};

TEST_F(UsageStoreRollup, bothEndsOfTheWindowAreInIt) {
    const Date start = at("2026-03-08T23:00:00Z");
    const UsageRollup sums =
        rollup({spent(now, 1), spent(now + 0.001, 10), spent(startOfToday, 100), spent(startOfToday - 0.001, 1000),
                spent(start, 10000), spent(start - 0.001, 1000000)},
               7);
    EXPECT_EQ(sums.today.cost, 101);
    EXPECT_EQ(sums.last7d.cost, 11101);
    EXPECT_EQ(sums.last7d.eventCount, 4);
    EXPECT_EQ(sums.windowDays, 7);
}

TEST_F(UsageStoreRollup, lessThanADayIsOneDay) {
    const Events events{spent(now, 1), spent(startOfToday - 1, 10)};
    EXPECT_EQ(rollup(events, 0).last7d.cost, 1);
    EXPECT_EQ(rollup(events, -7), rollup(events, 1));
    EXPECT_EQ(rollup(events, 0).windowDays, 1);
}

TEST_F(UsageStoreRollup, moreDaysThanThereAreHoldAllEvents) {
    const UsageRollup sums = rollup({spent(now, 1), spent(Date{0}, 10)}, 10000000000);
    EXPECT_EQ(sums.last7d.cost, 11);
    EXPECT_EQ(sums.windowDays, 10000000000);
}

TEST_F(UsageStoreRollup, noEventsGiveEmptySums) {
    const UsageRollup sums = rollup({}, 30);
    EXPECT_EQ(sums.today, CostBucket{});
    EXPECT_EQ(sums.last7d, CostBucket{});
    EXPECT_THAT(sums.byModel7d, IsEmpty());
    EXPECT_EQ(sums.windowDays, 30);
}

TEST_F(UsageStoreRollup, modelsAreSummedApartAndUnpricedOnesNamed) {
    const UsageRollup sums =
        rollup({spent(now, 1), spent(now, 2), event({.model = "unheard-of", .when = now, .usage = {.output = 5}})}, 1);
    EXPECT_THAT(sums.byModel7d, ElementsAre(Key("plain"), Key("unheard-of")));
    EXPECT_EQ(sums.byModel7d.at("plain").cost, 3);
    EXPECT_EQ(sums.byModel7d.at("plain").eventCount, 2);
    EXPECT_THAT(sums.today.unpricedModels, ElementsAre("unheard-of"));
    EXPECT_THAT(sums.byModel7d.at("plain").unpricedModels, IsEmpty());
    EXPECT_EQ(sums.today.usage, (TokenUsage{.input = 3, .output = 5}));
}

// Nothing is deduplicated here: what is offered twice counts twice.
TEST_F(UsageStoreRollup, everyEventOfTheArrayCounts) {
    EXPECT_EQ(rollup({spent(now, 1), spent(now, 1)}, 1).today.eventCount, 2);
}

TEST_F(UsageStoreRollup, longCallsAreChargedTierRates) {
    const UsageRollup sums = rollup({event({.model = "tiered", .when = now, .usage = {.input = 200001}}),
                                     event({.model = "tiered", .when = now, .usage = {.input = 200000}})},
                                    1);
    EXPECT_EQ(sums.today.cost, 2000010 + 200000);
}

}  // namespace
}  // namespace quorvane
