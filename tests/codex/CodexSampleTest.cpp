// The rollouts of the sample home.

#include <fstream>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/codex/CodexTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::AllOf;
using ::testing::Ge;
using ::testing::Le;
using ::testing::SizeIs;

const std::string sample = std::string{QUORVANE_SOURCE} + "/resources/sample-home";

Date endsAt() {
    double seconds = 0;
    std::ifstream{sample + "/ends-at"} >> seconds;
    return Date{seconds};
}

TEST(CodexSample, hasCallsOfTheLastTwentyDays) {
    const CodexProvider provider{sample + "/.codex/sessions"};
    EXPECT_THAT(provider.rolloutFiles(), SizeIs(AllOf(Ge(6U), Le(10U))));
    const std::vector<UsageEvent> events = provider.loadEvents();
    EXPECT_THAT(events, SizeIs(Ge(40U)));
    std::set<std::string> models;
    for (const UsageEvent& event : events) {
        EXPECT_LT(event.timestamp, endsAt());
        EXPECT_GT(event.timestamp, endsAt() - 20 * day);
        EXPECT_TRUE(event.project);
        models.insert(event.model);
    }
    EXPECT_THAT(models, SizeIs(Ge(2U)));
    EXPECT_FALSE(models.contains(""));
}

TEST(CodexSample, hasQuotasThatAreCurrentAtItsEnd) {
    const CodexProvider provider{sample + "/.codex/sessions"};
    const CodexProvider::RateLimitState state = provider.latestRateLimitState(endsAt());
    ASSERT_TRUE(state.current);
    EXPECT_TRUE(state.current->primary);
    EXPECT_TRUE(state.current->secondary);
    EXPECT_FALSE(state.awaitingReset);
}

}  // namespace
}  // namespace quorvane::testing
