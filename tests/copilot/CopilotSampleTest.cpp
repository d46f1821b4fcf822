// The telemetry of the sample home.

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/copilot/CopilotTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::AllOf;
using ::testing::Ge;
using ::testing::Le;
using ::testing::SizeIs;

const std::string sample = std::string{QUORVANE_SOURCE} + "/resources/sample-home";
constexpr double day = 86400;

Date endsAt() {
    double seconds = 0;
    std::ifstream{sample + "/ends-at"} >> seconds;
    return Date{seconds};
}

TEST(CopilotSample, hasCallsOfTheLastTwentyDays) {
    const CopilotProvider provider{sample + "/.copilot/otel"};
    EXPECT_THAT(provider.otelFiles(), SizeIs(AllOf(Ge(1U), Le(3U))));
    const std::vector<UsageEvent> events = provider.loadEvents();
    EXPECT_THAT(events, SizeIs(Ge(25U)));
    std::set<std::string> models;
    std::set<std::string> sessions;
    for (const UsageEvent& event : events) {
        EXPECT_LT(event.timestamp, endsAt());
        EXPECT_GT(event.timestamp, endsAt() - 20 * day);
        models.insert(event.model);
        sessions.insert(event.messageId);
    }
    EXPECT_THAT(models, SizeIs(Ge(2U)));
    EXPECT_FALSE(models.contains("copilot")) << "each call has a model";
    EXPECT_FALSE(sessions.contains("unknown-session"));
    EXPECT_THAT(sessions, SizeIs(Ge(5U)));
}

TEST(CopilotSample, hasAllKindsOfRecords) {
    std::map<RecordKind, int> kinds;
    std::uintmax_t bytes = 0;
    for (const std::string& file : CopilotProvider{sample + "/.copilot/otel"}.otelFiles()) {
        bytes += std::filesystem::file_size(file);
        for (const Candidate& candidate : CopilotOTelParser::candidates(file, {}))
            ++kinds[candidate.kind];
    }
    EXPECT_THAT(kinds, SizeIs(4));
    EXPECT_LT(bytes, 60'000);
}

TEST(CopilotSample, hasAIUToday) {
    const CopilotProvider provider{sample + "/.copilot/otel"};
    EXPECT_GT(provider.windowAIU(1, endsAt(), Calendar{"UTC"}).value_or(0), 0);
    EXPECT_GT(provider.windowAIU(30, endsAt(), Calendar{"UTC"}), provider.windowAIU(1, endsAt(), Calendar{"UTC"}));
}

}  // namespace
}  // namespace quorvane::testing
