#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/index/IndexTestSupport.h"

namespace quorvane {
namespace {

using testing::at;
using ::testing::ElementsAre;
using testing::event;
using testing::EventFields;
using testing::IndexFile;
using ::testing::IsEmpty;
using ::testing::Key;
using ::testing::SizeIs;
using testing::testCalculator;

using Providers = std::vector<ProviderID>;

/// An index in Berlin, on a Sunday at one o'clock in the afternoon.
class UsageIndexAnalytics : public ::testing::Test {
protected:
    void ingest(EventFields fields) {
        fields.message = "m" + std::to_string(++serial);
        index.ingest(std::vector<UsageEvent>{event(std::move(fields))}, "/log");
    }
    [[nodiscard]] std::vector<ModelDaySummary> models(std::int64_t days, const Providers& providers) const {
        return index.modelDaySummaries(providers, days, calculator, now, calendar);
    }
    [[nodiscard]] std::vector<ProjectCostSummary> projects(std::int64_t days) const {
        return index.projectCostSummaries(both, days, calculator, now, calendar);
    }
    [[nodiscard]] std::map<ProviderID, HourWeekdayMatrix> hours(std::int64_t days) const {
        return index.hourWeekdayBins(both, days, calculator, now, calendar);
    }
    [[nodiscard]] std::vector<std::string> names(std::int64_t days) const {
        std::vector<std::string> list;
        for (const ModelDaySummary& row : models(days, both)) {
            list.push_back(calendar.day(row.day).text() + " " + std::string{rawName(row.provider)} + " " + row.model +
                           " " + std::to_string(row.eventCount));
        }
        return list;
    }

    IndexFile file{"Europe/Berlin"};
    UsageIndex index{file.path};
    Calendar calendar{"Europe/Berlin"};
    CostCalculator calculator = testCalculator();
    Date now = at("2026-03-15T12:00:00Z");
    Providers both{ProviderID::Codex, ProviderID::Claude, ProviderID::Codex};
    int serial = 0;
};

TEST_F(UsageIndexAnalytics, dayTurnsAtLocalMidnight) {
    ingest({.model = "plain", .when = at("2026-03-13T22:59:00Z"), .usage = {.input = 1}});
    ingest({.model = "plain", .when = at("2026-03-13T23:01:00Z"), .usage = {.input = 2}});
    const auto rows = models(7, both);
    ASSERT_THAT(rows, SizeIs(2));
    EXPECT_EQ(rows[0].day, at("2026-03-12T23:00:00Z"));
    EXPECT_EQ(rows[1].day, at("2026-03-13T23:00:00Z"));
    EXPECT_EQ(rows[0].cost, 1);
    EXPECT_EQ(rows[1].cost, 2);
}

TEST_F(UsageIndexAnalytics, rowsAreSortedByDayProviderAndModelByteByByte) {
    for (const char* model : {"b", "a", "B"}) {
        ingest({.provider = ProviderID::Codex, .model = model, .when = now});
        ingest({.model = model, .when = now});
    }
    ingest({.provider = ProviderID::Codex, .model = "z", .when = now - 86400});
    ingest({.model = "a", .when = now - 60});
    EXPECT_THAT(names(7), ElementsAre("2026-03-14 codex z 1", "2026-03-15 claude B 1", "2026-03-15 claude a 2",
                                      "2026-03-15 claude b 1", "2026-03-15 codex B 1", "2026-03-15 codex a 1",
                                      "2026-03-15 codex b 1"));
}

TEST_F(UsageIndexAnalytics, everyCounterIsAddedUp) {
    const TokenUsage usage{.input = 1, .output = 10, .cacheCreate5m = 100, .cacheCreate1h = 1000, .cacheRead = 10000};
    ingest({.model = "m", .when = now, .usage = usage, .project = "p"});
    ingest({.model = "m", .when = now, .usage = usage, .project = "p"});
    EXPECT_THAT(models(1, both), ElementsAre(ModelDaySummary{.provider = ProviderID::Claude,
                                                             .model = "m",
                                                             .day = at("2026-03-14T23:00:00Z"),
                                                             .eventCount = 2,
                                                             .inputTokens = 2,
                                                             .outputTokens = 20,
                                                             .cache5mTokens = 200,
                                                             .cache1hTokens = 2000,
                                                             .cacheReadTokens = 20000,
                                                             .cost = 0}));
    ASSERT_THAT(projects(1), SizeIs(1));
    EXPECT_EQ(projects(1)[0].totalTokens(), 22222);
    EXPECT_EQ(projects(1)[0].cache1hTokens, 2000);
    EXPECT_EQ(hours(1)[ProviderID::Claude].cell(1, 13).tokens, 22222);
}

TEST_F(UsageIndexAnalytics, windowHasBothItsEnds) {
    const Date start = calendar.startOfDay(now);
    for (const Date when : {start - 0.001, start, now, now + 0.001})
        ingest({.model = "plain", .when = when, .usage = {.input = 1}});
    for (const std::int64_t days : {1, 0, -7}) {
        EXPECT_THAT(names(days), ElementsAre("2026-03-15 claude plain 2"));
        EXPECT_EQ(projects(days).front().eventCount, 2);
        EXPECT_EQ(HourWeekdayMatrix::summed({{hours(days)[ProviderID::Claude]}}).cell(1, 13).events, 1);
    }
    EXPECT_THAT(names(2), ElementsAre("2026-03-14 claude plain 1", "2026-03-15 claude plain 2"));
}

TEST_F(UsageIndexAnalytics, windowMayBeVeryLong) {
    ingest({.model = "plain", .when = at("1971-05-05T12:00:00Z"), .usage = {.input = 1}});
    for (const std::int64_t days : {36525LL, 1000000LL}) {
        EXPECT_THAT(names(days), ElementsAre("1971-05-05 claude plain 1"));
        EXPECT_EQ(projects(days).front().eventCount, 1);
        EXPECT_EQ(hours(days)[ProviderID::Claude].cell(4, 13).events, 1);
    }
}

TEST_F(UsageIndexAnalytics, windowThatTheCalendarDoesNotReachIsEmpty) {
    ingest({.model = "plain", .when = now});
    constexpr std::int64_t forEver = std::numeric_limits<std::int64_t>::max();
    EXPECT_THAT(models(forEver, both), IsEmpty());
    EXPECT_THAT(projects(forEver), IsEmpty());
    EXPECT_THAT(hours(forEver), IsEmpty());
}

TEST_F(UsageIndexAnalytics, withoutProvidersNothingIsAsked) {
    ingest({.model = "plain", .when = now});
    testing::breakScans(file.path);
    EXPECT_THAT(models(7, {}), IsEmpty());
    EXPECT_THAT(index.projectCostSummaries({}, 7, calculator, now, calendar), IsEmpty());
    EXPECT_THAT(index.hourWeekdayBins({}, 7, calculator, now, calendar), IsEmpty());
}

TEST_F(UsageIndexAnalytics, onlyTheProvidersAskedForCount) {
    ingest({.model = "plain", .when = now, .usage = {.input = 1}});
    ingest({.provider = ProviderID::Codex, .model = "plain", .when = now, .usage = {.input = 2}});
    ingest({.provider = ProviderID::Grok, .model = "plain", .when = now, .usage = {.input = 4}});
    testing::execute(file.path, "UPDATE events SET provider = 'nobody' WHERE provider = 'grok';");
    EXPECT_THAT(names(7), ElementsAre("2026-03-15 claude plain 1", "2026-03-15 codex plain 1"));
    EXPECT_EQ(projects(7).front().cost, 3);
    EXPECT_THAT(models(7, {ProviderID::Codex}), SizeIs(1));
}

TEST_F(UsageIndexAnalytics, callsOfNoProjectAreOne) {
    ingest({.model = "plain", .when = now, .usage = {.input = 1}});
    ingest({.model = "plain", .when = now, .usage = {.input = 2}, .project = ""});
    ingest({.model = "plain", .when = now, .usage = {.input = 4}, .project = "p"});
    const auto rows = projects(7);
    ASSERT_THAT(rows, SizeIs(2));
    EXPECT_EQ(rows[0].project, "p");
    EXPECT_EQ(rows[1].project, "(unattributed)");
    EXPECT_EQ(rows[1].cost, 3);
    EXPECT_EQ(rows[1].eventCount, 2);
}

TEST_F(UsageIndexAnalytics, projectsAreSortedByCostThenTokensThenName) {
    ingest({.model = "unheard-of", .when = now, .usage = {.input = 5}, .project = "few"});
    ingest({.model = "unheard-of", .when = now, .usage = {.output = 50}, .project = "many"});
    ingest({.model = "unheard-of", .when = now, .usage = {.input = 5}, .project = "Few"});
    ingest({.model = "plain", .when = now, .usage = {.input = 1}, .project = "dear"});
    std::vector<std::string> order;
    for (const ProjectCostSummary& row : projects(7))
        order.push_back(row.project);
    EXPECT_THAT(order, ElementsAre("dear", "many", "Few", "few"));
}

TEST_F(UsageIndexAnalytics, unpricedCallsCountInAllButTheCost) {
    ingest({.model = "unheard-of", .when = now, .usage = {.input = 7, .output = 1}, .project = "p"});
    const auto rows = models(1, both);
    ASSERT_THAT(rows, SizeIs(1));
    EXPECT_EQ(rows[0].inputTokens, 7);
    EXPECT_EQ(rows[0].cost, 0);
    EXPECT_EQ(projects(1)[0].totalTokens(), 8);
    EXPECT_EQ(projects(1)[0].cost, 0);
    const HourWeekdayMatrix::Cell cell = hours(1)[ProviderID::Claude].cell(1, 13);
    EXPECT_EQ(cell, (HourWeekdayMatrix::Cell{.events = 1, .tokens = 8, .cost = 0}));
}

TEST_F(UsageIndexAnalytics, longCallsAreChargedTheirOwnRates) {
    ingest({.model = "tiered", .when = now, .usage = {.input = 200000}, .project = "short"});
    ingest({.model = "tiered", .when = now - 86400, .usage = {.input = 199999, .cacheRead = 2}, .project = "long"});
    const auto rows = models(2, both);
    EXPECT_EQ(rows[1].cost, 200000);
    EXPECT_EQ(rows[0].cost, calculator.cost("tiered", {.input = 199999, .cacheRead = 2}).value());
    EXPECT_GT(rows[0].cost, 1000000);
    EXPECT_EQ(projects(2)[0].project, "long");
}

TEST_F(UsageIndexAnalytics, everyProviderHasItsHours) {
    ingest({.model = "plain", .when = now, .usage = {.input = 1}});
    EXPECT_THAT(hours(1), ElementsAre(Key(ProviderID::Claude), Key(ProviderID::Codex)));
    EXPECT_EQ(hours(1)[ProviderID::Codex], HourWeekdayMatrix::zero);
}

TEST_F(UsageIndexAnalytics, hoursAreThoseOfTheClockOnTheWall) {
    now = at("2026-10-26T12:00:00Z");
    ingest({.model = "plain", .when = at("2026-10-25T00:30:00Z")});  // 2:30, for the first time
    ingest({.model = "plain", .when = at("2026-10-25T01:30:00Z")});  // 2:30, for the second time
    ingest({.model = "plain", .when = at("2026-10-25T22:59:59Z")});
    ingest({.model = "plain", .when = at("2026-10-25T23:00:00Z")});
    const HourWeekdayMatrix matrix = hours(7)[ProviderID::Claude];
    EXPECT_EQ(matrix.cell(1, 2).events, 2);
    EXPECT_EQ(matrix.cell(1, 23).events, 1);
    EXPECT_EQ(matrix.cell(2, 0).events, 1);
}

TEST_F(UsageIndexAnalytics, missingTableGivesNothing) {
    ingest({.model = "plain", .when = now});
    testing::execute(file.path, "DROP TABLE events;");
    EXPECT_EQ(index.eventCount(std::nullopt), 0);
    EXPECT_THAT(models(7, both), IsEmpty());
    EXPECT_THAT(projects(7), IsEmpty());
    EXPECT_THAT(hours(7), ElementsAre(Key(ProviderID::Claude), Key(ProviderID::Codex)));
    EXPECT_EQ(hours(7)[ProviderID::Claude], HourWeekdayMatrix::zero);
}

TEST_F(UsageIndexAnalytics, failureInTheMiddleIsThrownAndTheIndexGoesOn) {
    ingest({.model = "plain", .when = now});
    testing::breakScans(file.path);
    const auto message = [](const auto& query) -> std::string {
        try {
            static_cast<void>(query());
        } catch (const SQLiteError& error) {
            return error.what();
        }
        return "nothing thrown";
    };
    EXPECT_THAT(message([&] { return models(7, both); }), ::testing::HasSubstr("integer overflow"));
    EXPECT_THAT(message([&] { return projects(7); }), ::testing::HasSubstr("integer overflow"));
    EXPECT_THAT(message([&] { return hours(7); }), ::testing::HasSubstr("integer overflow"));
    EXPECT_THAT(models(7, {}), IsEmpty());  // the lock is free
}

TEST(AnalyticsMeasures, areReadFromTheirNames) {
    std::vector<std::string_view> names;
    for (const AnalyticsMeasure measure : allAnalyticsMeasures) {
        names.push_back(rawName(measure));
        EXPECT_EQ(analyticsMeasureFromRawName(rawName(measure)), measure);
    }
    EXPECT_THAT(names, ElementsAre("events", "tokens", "cost"));
    EXPECT_EQ(analyticsMeasureFromRawName("Cost"), std::nullopt);
}

// Matrices

TEST(HourWeekdayMatrix, takesNothingOutsideTheWeek) {
    HourWeekdayMatrix matrix;
    for (const auto& [weekday, hour] : std::vector<std::pair<int, int>>{{0, 0}, {8, 0}, {1, 24}, {1, -1}, {-1, 5}}) {
        matrix.add(weekday, hour, 1, 1, 1);
        EXPECT_EQ(matrix.cell(weekday, hour), HourWeekdayMatrix::Cell{});
        EXPECT_EQ(matrix.value(weekday, hour, AnalyticsMeasure::events), 0);
    }
    EXPECT_EQ(matrix, HourWeekdayMatrix::zero);
}

TEST(HourWeekdayMatrix, cellsAddUpByMeasure) {
    HourWeekdayMatrix matrix;
    matrix.add(7, 23, 1, 20, 0.25);
    matrix.add(7, 23, 2, 30, 0.5);
    EXPECT_EQ(matrix.value(7, 23, AnalyticsMeasure::events), 3);
    EXPECT_EQ(matrix.value(7, 23, AnalyticsMeasure::tokens), 50);
    EXPECT_EQ(matrix.value(7, 23, AnalyticsMeasure::cost), 0.75);
    EXPECT_EQ(matrix.cells[6][23].events, 3);
}

TEST(HourWeekdayMatrix, peakOfEqualsIsTheEarliest) {
    HourWeekdayMatrix matrix;
    matrix.add(3, 5, 2, 0, 0);
    matrix.add(2, 9, 2, 0, 0);
    matrix.add(2, 7, 2, 0, 0);
    EXPECT_EQ(matrix.peak(AnalyticsMeasure::events), (HourWeekdayMatrix::Peak{2, 7, 2}));
    matrix.add(7, 23, 2.5, 0, 0);
    EXPECT_EQ(matrix.peak(AnalyticsMeasure::events), (HourWeekdayMatrix::Peak{7, 23, 2.5}));
    EXPECT_FALSE(matrix.isEmpty(AnalyticsMeasure::events));
    EXPECT_TRUE(matrix.isEmpty(AnalyticsMeasure::cost));
    EXPECT_EQ(matrix.peak(AnalyticsMeasure::cost), std::nullopt);
}

TEST(HourWeekdayMatrix, nothingAndLessHaveNoPeak) {
    HourWeekdayMatrix matrix;
    matrix.add(1, 1, -1, 0, -2);
    for (const AnalyticsMeasure measure : allAnalyticsMeasures) {
        EXPECT_EQ(matrix.peak(measure), std::nullopt);
        EXPECT_TRUE(matrix.isEmpty(measure));
    }
}

TEST(HourWeekdayMatrix, sumIsCellByCell) {
    HourWeekdayMatrix left;
    HourWeekdayMatrix right;
    left.add(1, 0, 1, 2, 3);
    left.add(4, 4, 1, 1, 1);
    right.add(1, 0, 10, 20, 30);
    const std::vector<HourWeekdayMatrix> matrices{left, right};
    EXPECT_EQ(HourWeekdayMatrix::summed(matrices).cell(1, 0), (HourWeekdayMatrix::Cell{11, 22, 33}));
    EXPECT_EQ(HourWeekdayMatrix::summed(matrices).cell(4, 4), (HourWeekdayMatrix::Cell{1, 1, 1}));
    EXPECT_EQ(HourWeekdayMatrix::summed(std::span{matrices}.first(1)), left);
    EXPECT_EQ(HourWeekdayMatrix::summed({}), HourWeekdayMatrix::zero);
}

}  // namespace
}  // namespace quorvane
