#include <array>
#include <limits>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/Clock.h"
#include "tests/index/IndexTestSupport.h"

namespace quorvane {
namespace {

using testing::at;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using testing::event;
using testing::EventFields;
using ::testing::HasSubstr;
using testing::IndexFile;
using ::testing::IsEmpty;
using ::testing::Key;
using ::testing::Pair;
using ::testing::SizeIs;
using testing::testCalculator;
using ::testing::UnorderedElementsAre;

using Events = std::vector<UsageEvent>;
using Windows = std::vector<std::int64_t>;
using Providers = std::vector<ProviderID>;

constexpr const char* localDay = "date(ts, 'unixepoch', 'localtime')";
constexpr const char* utcDay = "date(ts, 'unixepoch')";

/// An index in Berlin, on a Sunday at one o'clock in the afternoon. The day began at 23:00 UTC.
class UsageIndexSummaries : public ::testing::Test {
protected:
    void ingest(const Events& events) { index.ingest(events, "/log"); }
    void ingest(EventFields fields) {
        fields.message = "m" + std::to_string(++serial);
        ingest(Events{event(std::move(fields))});
    }
    /// A call of 1 dollar for each token of input.
    void spend(Date when, std::int64_t dollars, ProviderID provider = ProviderID::Claude) {
        ingest({.provider = provider, .model = "plain", .when = when, .usage = {.input = dollars}});
    }
    /// A thousand calls of 0.1: one by one they add up to a little less than as a group.
    void spendAThousandTenths(Date when) {
        Events events;
        for (int count = 0; count < 1000; ++count) {
            events.push_back(
                event({.message = "t" + std::to_string(count), .model = "tenth", .when = when, .usage = {.input = 1}}));
        }
        ingest(events);
    }

    /// The connection learns of the change with the first statement that it steps.
    void dropEvents(const std::string& kind) {
        testing::execute(file.path, "DROP " + kind + " events;");
        EXPECT_EQ(index.eventCount(std::nullopt), 0);
    }

    IndexFile file{"Europe/Berlin"};
    UsageIndex index{file.path};
    Calendar calendar{"Europe/Berlin"};
    CostCalculator calculator = testCalculator();
    Date now = at("2026-03-15T12:00:00Z");
    Date startOfToday = at("2026-03-14T23:00:00Z");
    Providers claude{ProviderID::Claude};
    int serial = 0;
};

/// The roads by which several windows are summed up.
enum class Road : std::uint8_t { PerEvent, Grouped, Chosen };

class UsageIndexMultiWindow : public UsageIndexSummaries, public ::testing::WithParamInterface<Road> {
protected:
    [[nodiscard]] UsageMultiWindowSummaries summaries(const Providers& providers, const Windows& windows) const {
        switch (GetParam()) {
            case Road::PerEvent:
                return index.multiWindowSummariesPerEvent(providers, windows, calculator, now, calendar);
            case Road::Grouped:
                return index.multiWindowSummariesGrouped(providers, windows, calculator, now, calendar, localDay);
            case Road::Chosen: return index.multiWindowSummaries(providers, windows, calculator, now, calendar);
        }
        return {};
    }
    [[nodiscard]] UsageWindowSummaries summary(const Providers& providers, std::int64_t days) const {
        return summaries(providers, {days}).byDays.at(days);
    }
};

TEST_P(UsageIndexMultiWindow, eachLengthGivesOneEntry) {
    EXPECT_THAT(summaries(claude, {7, 7, 30}).byDays, ElementsAre(Key(7), Key(30)));
    EXPECT_THAT(summaries(claude, {-3, 0}).byDays, ElementsAre(Key(0)));
    EXPECT_THAT(summaries(claude, {30, 1, -1, 7}).byDays, ElementsAre(Key(0), Key(1), Key(7), Key(30)));
}

TEST_P(UsageIndexMultiWindow, withoutWindowsNothingIsAsked) {
    spend(now, 1);
    testing::breakScans(file.path);
    EXPECT_THAT(summaries(claude, {}).byDays, IsEmpty());
    EXPECT_THROW(static_cast<void>(summaries(claude, {1})), SQLiteError);
}

TEST_P(UsageIndexMultiWindow, withoutProvidersNothingIsAskedAndEveryEntryIsEmpty) {
    spend(now, 1);
    testing::breakScans(file.path);
    const UsageMultiWindowSummaries all = summaries({}, {0, 3});
    EXPECT_THAT(all.byDays, ElementsAre(Key(0), Key(3)));
    const UsageWindowSummaries& three = all.byDays.at(3);
    EXPECT_THAT(three.providers, IsEmpty());
    EXPECT_EQ(three.aggregate.rollup.today, CostBucket{});
    EXPECT_EQ(three.aggregate.rollup.last7d, CostBucket{});
    EXPECT_EQ(three.aggregate.rollup.windowDays, 3);
    EXPECT_THAT(three.aggregate.dailyCostSeries, ElementsAre(0, 0, 0));
}

TEST_P(UsageIndexMultiWindow, aProviderWithoutEventsIsThereWithZeros) {
    spend(now, 5);
    const UsageWindowSummaries sums = summary({ProviderID::Claude, ProviderID::Grok}, 3);
    EXPECT_THAT(sums.providers, UnorderedElementsAre(Key(ProviderID::Claude), Key(ProviderID::Grok)));
    const UsageWindowSummary& none = sums.providers.at(ProviderID::Grok);
    EXPECT_EQ(none.rollup.today, CostBucket{});
    EXPECT_EQ(none.rollup.last7d, CostBucket{});
    EXPECT_THAT(none.rollup.byModel7d, IsEmpty());
    EXPECT_EQ(none.rollup.windowDays, 3);
    EXPECT_THAT(none.dailyCostSeries, ElementsAre(0, 0, 0));
    EXPECT_THAT(sums.providers.at(ProviderID::Claude).dailyCostSeries, ElementsAre(0, 0, 5));
}

TEST_P(UsageIndexMultiWindow, theAggregateHoldsTheRequestedProvidersEachOnce) {
    spend(now, 1, ProviderID::Claude);
    spend(now, 10, ProviderID::Codex);
    spend(now, 100, ProviderID::Grok);
    const UsageWindowSummaries sums = summary({ProviderID::Codex, ProviderID::Claude, ProviderID::Codex}, 1);
    EXPECT_THAT(sums.providers, UnorderedElementsAre(Key(ProviderID::Claude), Key(ProviderID::Codex)));
    EXPECT_EQ(sums.aggregate.rollup.last7d.cost, 11);
    EXPECT_EQ(sums.aggregate.rollup.last7d.eventCount, 2);
    EXPECT_EQ(sums.providers.at(ProviderID::Codex).rollup.today.cost, 10);
}

TEST_P(UsageIndexMultiWindow, todayBeginsAtTheStartOfTheLocalDay) {
    spend(startOfToday, 1);
    spend(startOfToday - 0.1, 10);
    const UsageWindowSummary sums = summary(claude, 7).aggregate;
    EXPECT_EQ(sums.rollup.today.cost, 1);
    EXPECT_EQ(sums.rollup.today.eventCount, 1);
    EXPECT_EQ(sums.rollup.last7d.cost, 11);
    EXPECT_THAT(sums.dailyCostSeries, ElementsAre(0, 0, 0, 0, 0, 10, 1));
}

TEST_P(UsageIndexMultiWindow, aWindowBeginsAtTheStartOfItsFirstLocalDay) {
    const Date start = at("2026-03-08T23:00:00Z");
    spend(start, 1);
    spend(start - 0.1, 10);
    const UsageMultiWindowSummaries all = summaries(claude, {7, 8});
    EXPECT_EQ(all.byDays.at(7).aggregate.rollup.last7d.cost, 1);
    EXPECT_THAT(all.byDays.at(7).aggregate.dailyCostSeries, ElementsAre(1, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(all.byDays.at(8).aggregate.rollup.last7d.cost, 11);
    EXPECT_THAT(all.byDays.at(8).aggregate.dailyCostSeries, ElementsAre(10, 1, 0, 0, 0, 0, 0, 0));
}

TEST_P(UsageIndexMultiWindow, anEventAtNowCountsAndALaterOneDoesNot) {
    spend(now, 1);
    spend(now + 1, 10);
    const UsageWindowSummary sums = summary(claude, 2).aggregate;
    EXPECT_EQ(sums.rollup.today.cost, 1);
    EXPECT_EQ(sums.rollup.last7d.cost, 1);
    EXPECT_THAT(sums.dailyCostSeries, ElementsAre(0, 1));
}

TEST_P(UsageIndexMultiWindow, anUnpricedModelCountsInAllButMoney) {
    ingest({.model = "unheard-of", .when = now, .usage = {.input = 3, .output = 4}});
    spend(now, 2);
    const UsageWindowSummaries sums = summary(claude, 2);
    for (const UsageWindowSummary& side : {sums.aggregate, sums.providers.at(ProviderID::Claude)}) {
        for (const CostBucket& bucket : {side.rollup.today, side.rollup.last7d}) {
            EXPECT_EQ(bucket.cost, 2);
            EXPECT_EQ(bucket.eventCount, 2);
            EXPECT_EQ(bucket.usage, (TokenUsage{.input = 5, .output = 4}));
            EXPECT_THAT(bucket.unpricedModels, ElementsAre("unheard-of"));
        }
        const CostBucket& unpriced = side.rollup.byModel7d.at("unheard-of");
        EXPECT_EQ(unpriced.cost, 0);
        EXPECT_EQ(unpriced.eventCount, 1);
        EXPECT_THAT(unpriced.unpricedModels, ElementsAre("unheard-of"));
        EXPECT_THAT(side.rollup.byModel7d.at("plain").unpricedModels, IsEmpty());
        EXPECT_THAT(side.dailyCostSeries, ElementsAre(0, 2));
    }
}

TEST_P(UsageIndexMultiWindow, aPriceOfZeroIsAPrice) {
    ingest({.model = "free", .when = now, .usage = {.input = 3}});
    const CostBucket today = summary(claude, 1).aggregate.rollup.today;
    EXPECT_EQ(today.cost, 0);
    EXPECT_EQ(today.eventCount, 1);
    EXPECT_THAT(today.unpricedModels, IsEmpty());
}

TEST_P(UsageIndexMultiWindow, theLongCallAloneIsChargedTierRates) {
    ingest({.model = "tiered", .when = now, .usage = {.input = 250000, .output = 1}});
    ingest({.model = "tiered", .when = now, .usage = {.input = 1000, .output = 1}});
    const UsageWindowSummary sums = summary(claude, 1).aggregate;
    EXPECT_EQ(sums.rollup.last7d.cost, 2500000 + 20 + 1000 + 2);
    EXPECT_EQ(sums.rollup.last7d.eventCount, 2);
    EXPECT_EQ(sums.rollup.byModel7d.at("tiered").usage, (TokenUsage{.input = 251000, .output = 2}));
}

TEST_P(UsageIndexMultiWindow, manyShortCallsAreNoLongCall) {
    for (int count = 0; count < 3; ++count)
        ingest({.model = "tiered", .when = now, .usage = {.input = 150000, .cacheRead = 50000}});
    EXPECT_EQ(summary(claude, 1).aggregate.rollup.last7d.cost, 3 * (150000.0 + 0.1 * 50000));
}

TEST_P(UsageIndexMultiWindow, everyKindOfInputCountsTowardsTheTier) {
    for (const TokenUsage& usage :
         {TokenUsage{.input = 100000, .cacheRead = 100001}, TokenUsage{.input = 100000, .cacheCreate5m = 100001},
          TokenUsage{.input = 100000, .cacheCreate1h = 100001}}) {
        ingest({.model = "tiered", .when = now, .usage = usage});
    }
    ingest({.model = "tiered", .when = now, .usage = {.input = 100000, .output = 100001}});
    EXPECT_DOUBLE_EQ(summary(claude, 1).aggregate.rollup.last7d.cost,
                     3 * 1000000 + 100001 * (1.0 + 12.5 + 20) + 100000 + 2 * 100001);
}

TEST_P(UsageIndexMultiWindow, windowZeroIsTodayWithoutASeries) {
    spend(now, 1);
    spend(startOfToday - 1, 10);
    const UsageWindowSummaries sums = summary(claude, 0);
    for (const UsageWindowSummary& side : {sums.aggregate, sums.providers.at(ProviderID::Claude)}) {
        EXPECT_EQ(side.rollup.windowDays, 1);
        EXPECT_EQ(side.rollup.today.cost, 1);
        EXPECT_EQ(side.rollup.last7d.cost, 1);
        EXPECT_THAT(side.rollup.byModel7d, SizeIs(1));
        EXPECT_THAT(side.dailyCostSeries, IsEmpty());
    }
}

TEST_P(UsageIndexMultiWindow, modelsAreToldApartAsLogged) {
    ingest({.model = "plain", .when = now, .usage = {.input = 1}});
    ingest({.model = "plain[1m]", .when = now, .usage = {.input = 1}});
    ingest({.model = "Plain", .when = now, .usage = {.input = 1}});
    ingest({.model = "", .when = now, .usage = {.input = 1}});
    const UsageRollup rollup = summary(claude, 1).aggregate.rollup;
    EXPECT_THAT(rollup.byModel7d, UnorderedElementsAre(Key("plain"), Key("plain[1m]"), Key("Plain"), Key("")));
    EXPECT_EQ(rollup.today.cost, 2);
    EXPECT_THAT(rollup.today.unpricedModels, ElementsAre("", "Plain"));
}

/// A week that ends the day after the clocks changed, and another in which they change today.
struct ClockChangeCase {
    const char* name;
    const char* now;
};
TEST_P(UsageIndexMultiWindow, aDayOfAClockChangeIsADayLikeAnyOther) {
    for (const ClockChangeCase& change : {ClockChangeCase{"spring, the day after", "2026-03-30T10:00:00Z"},
                                          ClockChangeCase{"spring, on the day", "2026-03-29T20:00:00Z"},
                                          ClockChangeCase{"autumn, the day after", "2026-10-26T10:00:00Z"},
                                          ClockChangeCase{"autumn, on the day", "2026-10-25T20:00:00Z"}}) {
        now = at(change.now);
        const LocalDay today = calendar.day(now);
        index.deleteEvents("/log", std::nullopt);
        // At the first and the last second of each day but the last, of which the rest is still to come.
        for (int back = 0; back < 7; ++back) {
            spend(calendar.start(today - back), 1 + back);
            if (back > 0) spend(calendar.start(today - (back - 1)) - 1, 100 * (1 + back));
        }
        EXPECT_THAT(summary(claude, 7).aggregate.dailyCostSeries, ElementsAre(707, 606, 505, 404, 303, 202, 1))
            << change.name;
    }
}

TEST_P(UsageIndexMultiWindow, aStepThatFailsThrowsAndReleasesTheLock) {
    spend(now, 1);
    testing::breakScans(file.path);
    try {
        static_cast<void>(summary(claude, 1));
        FAIL() << "nothing was thrown";
    } catch (const SQLiteError& error) {
        EXPECT_EQ(error.kind(), SQLiteError::Kind::Step);
        EXPECT_EQ(error.message(), "integer overflow");
    }
    std::int64_t cursors = -1;
    std::thread{[&] { cursors = index.cursor("/log") ? 1 : 0; }}.join();
    EXPECT_EQ(cursors, 0);
}

TEST_P(UsageIndexMultiWindow, aScanThatCannotBePreparedGivesEmptySums) {
    spend(now, 1);
    dropEvents("TABLE");
    const UsageWindowSummaries sums = summary(claude, 2);
    EXPECT_EQ(sums.aggregate.rollup.last7d, CostBucket{});
    EXPECT_THAT(sums.aggregate.dailyCostSeries, ElementsAre(0, 0));
    EXPECT_THAT(sums.providers, ElementsAre(Key(ProviderID::Claude)));
}

// The file format allows no NULL there; a table that another hand made may.
TEST_P(UsageIndexMultiWindow, aNullModelIsTheEmptyText) {
    spend(now, 1);
    testing::execute(file.path,
                     "ALTER TABLE events RENAME TO hidden; CREATE VIEW events AS SELECT provider, NULL AS model, ts, "
                     "input, output, cache5m, cache1h, cache_read FROM hidden;");
    EXPECT_THAT(summary(claude, 1).aggregate.rollup.byModel7d, ElementsAre(Key("")));
    EXPECT_THAT(index.rollup(ProviderID::Claude, 1, calculator, now, calendar).byModel7d, ElementsAre(Key("")));
}

std::string nameOf(Road road) {
    switch (road) {
        case Road::PerEvent: return "perEvent";
        case Road::Grouped: return "grouped";
        case Road::Chosen: return "chosen";
    }
    return {};
}
INSTANTIATE_TEST_SUITE_P(ByRoad, UsageIndexMultiWindow, ::testing::Values(Road::PerEvent, Road::Grouped, Road::Chosen),
                         [](const auto& row) { return nameOf(row.param); });

// Which road is taken. A thousand tenths are 100 as a group, and a little less one by one.

TEST_F(UsageIndexSummaries, theSystemsTimeZoneIsGrouped) {
    spendAThousandTenths(now);
    EXPECT_EQ(index.multiWindowSummaries(claude, Windows{7}, calculator, now, calendar),
              index.multiWindowSummariesGrouped(claude, Windows{7}, calculator, now, calendar, localDay));
    const UsageWindowSummaries sums = index.windowSummaries(claude, 7, calculator, now, calendar);
    EXPECT_EQ(sums.aggregate.rollup.last7d.cost, 100.0);
    EXPECT_NE(index.rollup(std::nullopt, 7, calculator, now, calendar).last7d.cost, 100.0);
}

TEST_F(UsageIndexSummaries, utcOnAMachineElsewhereIsGroupedByTheDaysOfUTC) {
    spendAThousandTenths(now);
    spend(startOfToday, 1);  // yesterday in UTC
    const Calendar utc{"UTC"};
    const UsageMultiWindowSummaries chosen = index.multiWindowSummaries(claude, Windows{2}, calculator, now, utc);
    EXPECT_EQ(chosen, index.multiWindowSummariesGrouped(claude, Windows{2}, calculator, now, utc, utcDay));
    EXPECT_THAT(chosen.byDays.at(2).aggregate.dailyCostSeries, ElementsAre(1.0, 100.0));
}

TEST_F(UsageIndexSummaries, anotherTimeZoneIsAddedUpEventByEvent) {
    spendAThousandTenths(now);
    const Calendar newYork{"America/New_York"};
    const UsageMultiWindowSummaries chosen = index.multiWindowSummaries(claude, Windows{7}, calculator, now, newYork);
    EXPECT_EQ(chosen, index.multiWindowSummariesPerEvent(claude, Windows{7}, calculator, now, newYork));
    EXPECT_NE(chosen.byDays.at(7).aggregate.rollup.last7d.cost, 100.0);
    EXPECT_NEAR(chosen.byDays.at(7).aggregate.rollup.last7d.cost, 100.0, 1e-9);
}

/// A day expression that does not tell the calendar's days.
struct DisagreementCase {
    const char* name;
    const char* systemZone;
    const char* calendarZone;
    const char* expression;
};
class UsageIndexSelfCheck : public ::testing::TestWithParam<DisagreementCase> {};

TEST_P(UsageIndexSelfCheck, fallsBackToTheEventsWhereSQLiteAndTheCalendarDisagree) {
    const DisagreementCase& row = GetParam();
    const IndexFile file{row.systemZone};
    UsageIndex index{file.path};
    const Calendar calendar{row.calendarZone};
    const Date now = at("2026-06-15T12:00:00Z");
    Events events;
    for (int count = 0; count < 1000; ++count) {
        events.push_back(event(
            {.message = std::to_string(count), .model = "tenth", .when = now - 300.0 * count, .usage = {.input = 1}}));
    }
    index.ingest(events, "/log");
    const Providers providers{ProviderID::Claude};
    const Windows windows{0, 1, 3, 30};
    const CostCalculator calculator = testCalculator();
    const UsageMultiWindowSummaries perEvent =
        index.multiWindowSummariesPerEvent(providers, windows, calculator, now, calendar);
    EXPECT_EQ(index.multiWindowSummariesGrouped(providers, windows, calculator, now, calendar, row.expression),
              perEvent);
    EXPECT_NE(perEvent.byDays.at(30).aggregate.rollup.last7d.cost, 100.0);
}
INSTANTIATE_TEST_SUITE_P(
    ByExpression, UsageIndexSelfCheck,
    ::testing::Values(DisagreementCase{"localDaysOfUTCForKathmandu", "UTC", "Asia/Kathmandu", localDay},
                      DisagreementCase{"localDaysOfNewYorkForUTC", "America/New_York", "UTC", localDay},
                      DisagreementCase{"localDaysOfBerlinForApia", "Europe/Berlin", "Pacific/Apia", localDay},
                      DisagreementCase{"daysOfUTCForBerlin", "Europe/Berlin", "Europe/Berlin", utcDay},
                      DisagreementCase{"noDayAtAll", "UTC", "UTC",
                                       "nullif(date(ts, 'unixepoch'), date(ts, 'unixepoch'))"},
                      DisagreementCase{"anotherFormat", "UTC", "UTC", "strftime('%Y/%m/%d', ts, 'unixepoch')"},
                      DisagreementCase{"notSQL", "UTC", "UTC", "no_such_function(ts)"}),
    [](const auto& row) { return std::string{row.param.name}; });

// The check asks without a table, so an expression with another column cannot be checked.
TEST_F(UsageIndexSummaries, aCheckThatCannotBeMadeCountsAsPassed) {
    spendAThousandTenths(now);
    const UsageMultiWindowSummaries sums = index.multiWindowSummariesGrouped(
        claude, Windows{1}, calculator, now, Calendar{"UTC"}, "date(ts + 0 * input, 'unixepoch')");
    EXPECT_EQ(sums.byDays.at(1).aggregate.rollup.today.cost, 100.0);
}

TEST_F(UsageIndexSummaries, sqlKnowsTheSystemsZoneAndZonesThatAreAlwaysUTC) {
    EXPECT_EQ(UsageIndex::sqlLocalDayExpression(calendar), localDay);
    EXPECT_EQ(UsageIndex::sqlLocalDayExpression(Calendar::current()), localDay);
    EXPECT_EQ(UsageIndex::sqlLocalDayExpression(Calendar{"UTC"}), utcDay);
    EXPECT_EQ(UsageIndex::sqlLocalDayExpression(Calendar{"Africa/Abidjan"}), utcDay);
    EXPECT_EQ(UsageIndex::sqlLocalDayExpression(Calendar{"Europe/London"}), std::nullopt);
    EXPECT_EQ(UsageIndex::sqlLocalDayExpression(Calendar{"Asia/Kathmandu"}), std::nullopt);
    EXPECT_EQ(UsageIndex::sqlLocalDayExpression(Calendar{"Europe/Paris"}), std::nullopt);
    testing::ScratchHome::setTimeZone("UTC");
    EXPECT_EQ(UsageIndex::sqlLocalDayExpression(Calendar{"UTC"}), localDay);
    EXPECT_EQ(UsageIndex::sqlLocalDayExpression(calendar), std::nullopt);
}

TEST_F(UsageIndexSummaries, sqlKnowsOnlyTheGregorianCalendar) {
    EXPECT_EQ(UsageIndex::sqlLocalDayExpression(Calendar{"Europe/Berlin", "buddhist"}), std::nullopt);
    EXPECT_EQ(UsageIndex::sqlLocalDayExpression(Calendar{"UTC", "persian"}), std::nullopt);
}

// São Tomé kept UTC until 2018, was an hour ahead for a year, and has kept UTC since.
TEST_F(UsageIndexSummaries, aZoneIsUTCOnlyWhereItsClocksChangeNoMore) {
    const Calendar saoTome{"Africa/Sao_Tome"};
    Clock::pin(at("2017-06-01T00:00:00Z"));
    EXPECT_EQ(UsageIndex::sqlLocalDayExpression(saoTome), std::nullopt);
    Clock::pin(at("2018-06-01T00:00:00Z"));
    EXPECT_EQ(UsageIndex::sqlLocalDayExpression(saoTome), std::nullopt);
    Clock::pin(at("2026-06-01T00:00:00Z"));
    EXPECT_EQ(UsageIndex::sqlLocalDayExpression(saoTome), utcDay);
    Clock::unpin();
}

TEST_F(UsageIndexSummaries, theGroupedScanIsThisStatement) {
    EXPECT_EQ(UsageIndex::groupedScanSQL(utcDay, "?3, ?4"),
              "SELECT provider, model,\n"
              "       date(ts, 'unixepoch') AS lday,\n"
              "       (input + cache_read + cache5m + cache1h > 200000) AS tiered,\n"
              "       SUM(input), SUM(output), SUM(cache5m), SUM(cache1h), SUM(cache_read), COUNT(*)\n"
              "FROM events\n"
              "WHERE ts >= ?1 AND ts <= ?2 AND provider IN (?3, ?4)\n"
              "GROUP BY provider, model, lday, tiered;");
}

TEST_F(UsageIndexSummaries, theGroupedScanIsAnsweredFromItsIndexAlone) {
    const auto database = SQLiteDatabase::openReadOnly(file.path);
    const auto plan = database->prepare("EXPLAIN QUERY PLAN " + UsageIndex::groupedScanSQL(localDay, "?3, ?4"));
    std::vector<std::string> details;
    while (plan->step())
        details.push_back(plan->text(3).value_or(""));
    EXPECT_THAT(details, Contains(HasSubstr("USING COVERING INDEX idx_events_scan (provider=? AND ts>? AND ts<?)")));
}

TEST_F(UsageIndexSummaries, sumsBeyond64BitsThrowWhereSQLiteMakesThem) {
    const std::int64_t most = std::numeric_limits<std::int64_t>::max();
    ingest({.model = "unheard-of", .when = now, .usage = {.output = most}});
    ingest({.model = "unheard-of", .when = now, .usage = {.output = most}});
    try {
        static_cast<void>(index.windowSummaries(claude, 1, calculator, now, calendar));
        FAIL() << "nothing was thrown";
    } catch (const SQLiteError& error) {
        EXPECT_EQ(error.kind(), SQLiteError::Kind::Step);
        EXPECT_EQ(error.message(), "integer overflow");
    }
}

TEST_F(UsageIndexSummaries, sumsBeyond64BitsEndTheProcessWhereTheProgramMakesThem) {
    const std::int64_t most = std::numeric_limits<std::int64_t>::max();
    ingest({.model = "unheard-of", .when = now, .usage = {.output = most}});
    ingest({.model = "unheard-of", .when = now, .usage = {.output = most}});
    EXPECT_DEATH(static_cast<void>(index.rollup(std::nullopt, 1, calculator, now, calendar)), "overflowed");
}

// One window

TEST_F(UsageIndexSummaries, oneWindowIsTheMultiWindowOfThatLength) {
    spend(now, 1);
    spend(startOfToday - 1, 10);
    for (const std::int64_t days : {-5, 0, 1, 2, 7}) {
        const std::int64_t length = std::max<std::int64_t>(days, 0);
        EXPECT_EQ(index.windowSummaries(claude, days, calculator, now, calendar),
                  index.multiWindowSummaries(claude, Windows{length}, calculator, now, calendar).byDays.at(length));
    }
    EXPECT_EQ(index.windowSummaries(claude, 2, calculator, now, calendar).aggregate.rollup.last7d.cost, 11);
}

// Rollup

TEST_F(UsageIndexSummaries, aRollupIsOfOneProviderOrOfAll) {
    spend(now, 1, ProviderID::Claude);
    spend(startOfToday - 1, 10, ProviderID::Claude);
    spend(now, 100, ProviderID::Codex);
    const UsageRollup one = index.rollup(ProviderID::Claude, 7, calculator, now, calendar);
    EXPECT_EQ(one.today.cost, 1);
    EXPECT_EQ(one.last7d.cost, 11);
    EXPECT_EQ(one.windowDays, 7);
    const UsageRollup all = index.rollup(std::nullopt, 7, calculator, now, calendar);
    EXPECT_EQ(all.today.cost, 101);
    EXPECT_EQ(all.last7d.cost, 111);
    EXPECT_THAT(all.byModel7d, ElementsAre(Pair("plain", all.last7d)));
}

TEST_F(UsageIndexSummaries, aRollupOfLessThanADayIsOfOneDay) {
    spend(now, 1);
    spend(startOfToday - 1, 10);
    for (const std::int64_t days : {std::numeric_limits<std::int64_t>::min(), std::int64_t{-1}, std::int64_t{0}}) {
        EXPECT_EQ(index.rollup(std::nullopt, days, calculator, now, calendar),
                  index.rollup(std::nullopt, 1, calculator, now, calendar));
    }
    const UsageRollup rollup = index.rollup(std::nullopt, 0, calculator, now, calendar);
    EXPECT_EQ(rollup.last7d.cost, 1);
    EXPECT_EQ(rollup.windowDays, 1);
}

TEST_F(UsageIndexSummaries, aRollupOfMoreDaysThanThereAreHoldsAllEvents) {
    spend(now, 1);
    spend(Date{0}, 10);
    for (const std::int64_t days : {std::int64_t{400000}, std::int64_t{10000000000}}) {
        const UsageRollup rollup = index.rollup(std::nullopt, days, calculator, now, calendar);
        EXPECT_EQ(rollup.last7d.cost, 11);
        EXPECT_EQ(rollup.windowDays, days);
    }
}

TEST_F(UsageIndexSummaries, rowsOfAProviderThatIsNotKnownAreSkipped) {
    spend(now, 1);
    testing::execute(file.path,
                     "INSERT INTO events SELECT 'martian', msg_id, req_id, model, ts, project, input, "
                     "output, cache5m, cache1h, cache_read, path_id FROM events;");
    EXPECT_EQ(index.eventCount(std::nullopt), 2);
    EXPECT_EQ(index.rollup(std::nullopt, 1, calculator, now, calendar).last7d.eventCount, 1);
}

TEST_F(UsageIndexSummaries, aRollupChargesLongCallsTierRates) {
    ingest({.model = "tiered", .when = now, .usage = {.input = 200001}});
    ingest({.model = "tiered", .when = now, .usage = {.input = 200000}});
    EXPECT_EQ(index.rollup(std::nullopt, 1, calculator, now, calendar).today.cost, 2000010 + 200000);
}

TEST_F(UsageIndexSummaries, aRollupThatCannotBePreparedIsEmptyAndOneThatCannotBeReadThrows) {
    spend(now, 1);
    testing::breakScans(file.path);
    EXPECT_THROW(static_cast<void>(index.rollup(std::nullopt, 5, calculator, now, calendar)), SQLiteError);
    dropEvents("VIEW");
    const UsageRollup rollup = index.rollup(std::nullopt, 5, calculator, now, calendar);
    EXPECT_EQ(rollup.last7d, CostBucket{});
    EXPECT_THAT(rollup.byModel7d, IsEmpty());
    EXPECT_EQ(rollup.windowDays, 5);
}

// Series

TEST_F(UsageIndexSummaries, aSeriesHoldsTheCostOfEachDay) {
    spend(now, 1);
    spend(startOfToday - 0.1, 10);
    spend(at("2026-03-12T23:00:00Z"), 100);
    spend(at("2026-03-12T22:59:59Z"), 1000);
    spend(now, 10000, ProviderID::Codex);
    spend(now + 1, 100000);
    ingest({.model = "unheard-of", .when = now, .usage = {.input = 5}});
    EXPECT_THAT(index.dailyCostSeries(ProviderID::Claude, 3, calculator, now, calendar), ElementsAre(100, 10, 1));
    EXPECT_THAT(index.dailyCostSeries(std::nullopt, 3, calculator, now, calendar), ElementsAre(100, 10, 10001));
    EXPECT_THAT(index.dailyCostSeries(ProviderID::Grok, 3, calculator, now, calendar), ElementsAre(0, 0, 0));
}

TEST_F(UsageIndexSummaries, aSeriesOfLessThanADayIsEmptyAndAsksNothing) {
    spend(now, 1);
    testing::breakScans(file.path);
    EXPECT_THAT(index.dailyCostSeries(std::nullopt, 0, calculator, now, calendar), IsEmpty());
    EXPECT_THAT(index.dailyCostSeries(std::nullopt, -4, calculator, now, calendar), IsEmpty());
    EXPECT_THROW(static_cast<void>(index.dailyCostSeries(std::nullopt, 1, calculator, now, calendar)), SQLiteError);
    dropEvents("VIEW");
    EXPECT_THAT(index.dailyCostSeries(std::nullopt, 3, calculator, now, calendar), SizeIs(3));
    EXPECT_THAT(index.dailyCostSeries(std::nullopt, 3, calculator, now, calendar), Each(0));
}

TEST_F(UsageIndexSummaries, newPricesCountForOldEventsAtOnce) {
    spend(now, 3);
    const CostCalculator dearer{PricingTable{{{"plain", ModelPrice{.inputCostPerToken = 7, .outputCostPerToken = 0}}}}};
    EXPECT_EQ(index.rollup(std::nullopt, 1, calculator, now, calendar).today.cost, 3);
    EXPECT_EQ(index.rollup(std::nullopt, 1, dearer, now, calendar).today.cost, 21);
    EXPECT_EQ(index.windowSummaries(claude, 1, dearer, now, calendar).aggregate.rollup.today.cost, 21);
}

}  // namespace
}  // namespace quorvane
