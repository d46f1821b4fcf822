#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/index/UsageStore.h"
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

}  // namespace
}  // namespace quorvane::testing
