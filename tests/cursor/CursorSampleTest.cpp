// The capture file and the agent's folder of the sample home.

#include <filesystem>
#include <fstream>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/FileContents.h"
#include "QuorvaneCore/providers/CursorProvider.h"
#include "QuorvaneCore/ratelimits/CursorHookSetup.h"
#include "tests/cursor/CursorTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::Ge;
using ::testing::Gt;
using ::testing::SizeIs;

const std::string sample = std::string{QUORVANE_SOURCE} + "/resources/sample-home";
const std::string capture = sample + "/" + std::string{CursorScratchHome::captureFile};

Date endsAt() {
    double seconds = 0;
    std::ifstream{sample + "/ends-at"} >> seconds;
    return Date{seconds};
}

TEST(CursorSample, hasGenerationsOfTheLastTwentyDays) {
    constexpr double day = 86400;
    const std::vector<UsageEvent> events = CursorProvider{capture}.loadEvents();
    EXPECT_THAT(events, SizeIs(Ge(60U)));
    std::set<std::string> models;
    std::set<std::string> generations;
    Date last;
    for (const UsageEvent& event : events) {
        EXPECT_GT(event.timestamp, endsAt() - 20 * day);
        EXPECT_GE(event.timestamp, last) << "as they were appended";
        last = event.timestamp;
        models.insert(event.model);
        generations.insert(event.messageId);
        EXPECT_NE(event.requestId, "unknown-conversation");
    }
    EXPECT_LT(last, endsAt());
    EXPECT_GT(last, endsAt() - day);
    EXPECT_THAT(models, SizeIs(Ge(2U)));
    EXPECT_EQ(generations.size(), events.size());
}

TEST(CursorSample, isSmall) {
    EXPECT_LT(std::filesystem::file_size(capture), 40000);
}

/// The hook can be tried out on the sample: another one is there already.
TEST(CursorSample, hasHooksToWhichOneCanBeAdded) {
    const CursorScratchHome home;
    home.write(CursorScratchHome::hooksFile, readFile(sample + "/.cursor/hooks.json").value_or(""));
    EXPECT_EQ(CursorHookSetup::state(std::nullopt, std::nullopt, true), CursorHookSetup::State::Installable);
    home.install();
    EXPECT_EQ(CursorHookSetup::state(std::nullopt, std::nullopt, true), CursorHookSetup::State::Active);
    EXPECT_THAT(home.read(CursorScratchHome::hooksFile), ::testing::HasSubstr("afterFileEdit"));
}

}  // namespace
}  // namespace quorvane::testing
