#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/index/UsageStore.h"
#include "QuorvaneCore/ingest/UsageIndexer.h"
#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/model/ProviderBasis.h"
#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/providers/ClaudeProvider.h"
#include "QuorvaneHost/Readers.h"
#include "tests/host/HostRun.h"

namespace quorvane::testing {
namespace {

using ::testing::Gt;

/// Copies the sample home into the scratch home, as if it were that moment.
void makeSample(const ScratchHome& home, std::int64_t now) {
    const std::string source = QUORVANE_SOURCE;
    const ProgramRun run = ProgramRun::of({"python3", source + "/tools/sample-home", source + "/resources/sample-home",
                                           home.path(), std::to_string(now)});
    ASSERT_EQ(run.status, 0) << run.error;
}

constexpr std::int64_t moment = 1801224000;  // 2027-01-29T12:00:00Z

TEST(SampleHome, endsNow) {
    const ScratchHome home;
    makeSample(home, moment);
    double last = 0;
    for (const UsageEvent& event : ClaudeProvider{}.loadEvents())
        last = std::max(last, event.timestamp.secondsSince1970);
    EXPECT_LE(last, static_cast<double>(moment));
    EXPECT_GT(last, static_cast<double>(moment) - 600);
}

TEST(SampleHome, fillsTheSummary) {
    const ScratchHome home;
    makeSample(home, moment);
    const ProgramRun run = runHost({"--now", "2027-01-29T12:00:00Z", "summary", "--json"});
    ASSERT_EQ(run.status, 0);
    JSONParser parser;
    const JSONValue report = parser.parse(run.output);
    EXPECT_THAT(JSONNumber::asDouble(report["today"]["cost_usd"]).value(), Gt(0));
    EXPECT_FALSE(report["unpriced_models"].isEmpty());
    EXPECT_THAT(JSONNumber::asInt(report["window"]["events"]), Gt(100));
}

/// Two roads to one sum: the program's, through the index, and the readers' events added up in memory.
TEST(SampleHome, theSummaryAgreesWithTheEventsInMemory) {
    const ScratchHome home{"Europe/Berlin"};
    makeSample(home, moment);
    const ProgramRun run = runHost({"--now", "2027-01-29T12:00:00Z", "--json"});
    JSONParser parser;
    const JSONValue window = parser.parse(run.output)["window"];
    std::vector<UsageEvent> events;
    for (const host::Reader& reader : host::allReaders()) {
        if (!isAggregable(providerBasisOf(reader->id()))) continue;
        const std::vector<UsageEvent> own = reader->loadEvents();
        events.insert(events.end(), own.begin(), own.end());
    }
    const UsageRollup rollup =
        UsageStore{CostCalculator{}}.rollup(events, 30, Date{static_cast<double>(moment)}, Calendar{"Europe/Berlin"});
    EXPECT_EQ(JSONNumber::asInt(window["events"]), rollup.last7d.eventCount);
    EXPECT_EQ(JSONNumber::asInt(window["cache_read_tokens"]), rollup.last7d.usage.cacheRead);
    EXPECT_NEAR(JSONNumber::asDouble(window["cost_usd"]).value(), rollup.last7d.cost, 1e-9 * rollup.last7d.cost);
}

/// Every reader keeps its contract: what it loads from scratch is what the index holds after a refresh, whichever other
/// readers were refreshed before.
TEST(SampleHome, everyReaderLoadsWhatTheIndexHolds) {
    const ScratchHome home;
    makeSample(home, moment);
    const auto index = std::make_shared<UsageIndex>(home.path("usage.sqlite"));
    const std::vector<host::Reader> readers = host::allReaders();
    for (const host::Reader& reader : readers)
        UsageIndexer{index}.refresh(*reader);
    const CostCalculator calculator;
    const Calendar calendar{"UTC"};
    const Date now{static_cast<double>(moment)};
    for (const host::Reader& reader : readers) {
        SCOPED_TRACE(std::string{rawName(reader->id())});
        const std::vector<UsageEvent> events = reader->loadEvents();
        EXPECT_FALSE(events.empty());
        EXPECT_EQ(index->eventCount(reader->id()), static_cast<std::int64_t>(events.size()));
        const UsageRollup stored = index->rollup(reader->id(), 3000, calculator, now, calendar);
        const UsageRollup loaded = UsageStore{calculator}.rollup(events, 3000, now, calendar);
        EXPECT_EQ(stored.today.usage, loaded.today.usage);
        EXPECT_EQ(stored.last7d.unpricedModels, loaded.last7d.unpricedModels);
        ASSERT_EQ(stored.byModel7d.size(), loaded.byModel7d.size());
        for (const auto& [model, bucket] : loaded.byModel7d) {
            EXPECT_EQ(stored.byModel7d.at(model).usage, bucket.usage) << model;
            EXPECT_EQ(stored.byModel7d.at(model).eventCount, bucket.eventCount) << model;
        }
    }
}

/// One total, wherever a person looks: both leave the estimates out.
/// The same calls, summed up by project, by model, by day and by hour.
TEST(SampleHome, theAnalyticCommandsAgreeOnTheirSums) {
    const ScratchHome home{"America/New_York"};
    makeSample(home, moment);
    const auto sum = [](std::vector<std::string> arguments, const std::string& filter) {
        arguments.insert(arguments.begin(), {"--now", "2027-01-29T12:00:00Z"});
        const ProgramRun run = ProgramRun::of({"jq", filter + " | add"}, {.input = runHost(arguments).output});
        return std::stod(run.output);
    };
    const double calls = sum({"projects", "--json"}, "[.projects[].events]");
    EXPECT_GT(calls, 100);
    EXPECT_EQ(sum({"models", "--json"}, "[.models[].events]"), calls);
    EXPECT_EQ(sum({"export", "--format", "json"}, "[.[].events]"), calls);
    EXPECT_EQ(sum({"activity", "--json", "--measure", "events"}, "[.heatmap[].value]"), calls);
    EXPECT_EQ(sum({"activity", "--json", "--measure", "events"}, "[.hours.total[][]]"), calls);
    EXPECT_EQ(sum({"activity", "--json", "--measure", "events"}, "[.hours.providers[][][]]"), calls);
    const double cost = sum({"projects", "--json"}, "[.projects[].cost_usd]");
    EXPECT_NEAR(sum({"models", "--json"}, "[.models[].cost_usd]"), cost, 1e-9 * cost);
    EXPECT_NEAR(sum({"activity", "--json"}, "[.heatmap[].value]"), cost, 1e-9 * cost);
    EXPECT_NEAR(sum({"activity", "--json"}, "[.hours.total[][]]"), cost, 1e-9 * cost);
}

TEST(SampleHome, theAnalyticCommandsNameWhoseFiguresAreEstimates) {
    const ScratchHome home;
    makeSample(home, moment);
    for (const char* command : {"projects", "models", "activity"}) {
        EXPECT_THAT(runHost({"--now", "2027-01-29T12:00:00Z", command}).output,
                    ::testing::HasSubstr("leaves out of its totals: Cursor, GitHub Copilot\n"));
    }
}

TEST(SampleHome, theLabelSaysTheSummarysTotal) {
    const ScratchHome home;
    makeSample(home, moment);
    const std::string now = "2027-01-29T12:00:00Z";
    const std::string label = runHost({"--now", now, "label"}).output;
    ASSERT_THAT(label, ::testing::StartsWith("$"));
    EXPECT_THAT(runHost({"--now", now}).output,
                ::testing::HasSubstr("  Today     " + label.substr(0, label.size() - 1) + " "));
}

}  // namespace
}  // namespace quorvane::testing
