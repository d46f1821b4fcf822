#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/providers/ClaudeProvider.h"
#include "QuorvaneCore/ratelimits/ClaudeRateLimitStore.h"
#include "tests/support/ScratchHome.h"

namespace quorvane {
namespace {

using quorvane::testing::ScratchHome;

constexpr Date now{1'800'000'000};
constexpr const char* captureFile = "Library/Application Support/Quorvane/claude-rate-limits.json";

/// An object with both windows, captured so many seconds before `now`; their resets lie so many seconds behind it.
std::string captured(long secondsAgo, long fiveHourReset = 3600, long weekReset = 86400) {
    const auto at = [](long seconds) { return std::to_string(1'800'000'000 + seconds); };
    return R"({"capturedAt": )" + at(-secondsAgo) + R"(, "five_hour": {"used_percentage": 30, "resets_at": )" +
           at(fiveHourReset) + R"(}, "seven_day": {"used_percentage": 60.5, "resets_at": )" + at(weekReset) + "}}";
}

TEST(ClaudeRateLimitStore, readsBothWindowsAndTheMomentOfTheCapture) {
    const auto snapshot = ClaudeRateLimitStore::decodeRaw(captured(60), now);
    ASSERT_TRUE(snapshot);
    EXPECT_EQ(*snapshot, (RateLimitSnapshot{.primary = RateLimitWindow{30, 300, now + 3600},
                                            .secondary = RateLimitWindow{60.5, 10080, now + 86400},
                                            .planType = std::nullopt,
                                            .capturedAt = now - 60,
                                            .modelWindows = {}}));
}

TEST(ClaudeRateLimitStore, captureIsTooOldOnlyBeyondTwelveHours) {
    EXPECT_TRUE(ClaudeRateLimitStore::decodeRaw(captured(43200), now));
    EXPECT_FALSE(ClaudeRateLimitStore::decodeRaw(captured(43201), now));
    EXPECT_FALSE(ClaudeRateLimitStore::decodeRaw(captured(43200), now + 0.5));
}

TEST(ClaudeRateLimitStore, captureOfTheFutureCounts) {
    const auto snapshot = ClaudeRateLimitStore::decodeRaw(captured(-9000000), now);
    ASSERT_TRUE(snapshot);
    EXPECT_EQ(snapshot->capturedAt, now + 9000000);
}

TEST(ClaudeRateLimitStore, captureWithoutAMomentHasNoAge) {
    for (const char* text :
         {R"({"five_hour": {"used_percentage": 1}})", R"({"capturedAt": "1000", "five_hour": {"used_percentage": 1}})",
          R"({"capturedAt": null, "five_hour": {"used_percentage": 1}})"}) {
        const auto snapshot = ClaudeRateLimitStore::decodeRaw(text, now);
        ASSERT_TRUE(snapshot) << text;
        EXPECT_EQ(snapshot->capturedAt, std::nullopt);
        EXPECT_EQ(snapshot->primary, (RateLimitWindow{1, 300, std::nullopt}));
    }
}

TEST(ClaudeRateLimitStore, eitherWindowIsEnough) {
    const auto fiveHour = ClaudeRateLimitStore::decodeRaw(R"({"five_hour": {"used_percentage": 1}})", now);
    ASSERT_TRUE(fiveHour);
    EXPECT_EQ(fiveHour->secondary, std::nullopt);
    const auto week = ClaudeRateLimitStore::decodeRaw(R"({"five_hour": {}, "seven_day": {"used_percentage": 2}})", now);
    ASSERT_TRUE(week);
    EXPECT_EQ(week->primary, std::nullopt);
    EXPECT_EQ(week->secondary, (RateLimitWindow{2, 10080, std::nullopt}));
}

TEST(ClaudeRateLimitStore, modelWindowsAloneAreNoData) {
    EXPECT_FALSE(ClaudeRateLimitStore::decodeRaw(
        R"({"five_hour": {"used_percentage": "1"}, "seven_day": 3, "seven_day_opus": {"used_percentage": 5}})", now));
}

TEST(ClaudeRateLimitStore, whatIsNoObjectIsNoData) {
    for (const char* text : {"", "null", "[]", "3", "\"five_hour\"", "{}", R"({"five_hour": {"used_percentage": 1})",
                             R"([{"five_hour": {"used_percentage": 1}}])"})
        EXPECT_FALSE(ClaudeRateLimitStore::decodeRaw(text, now)) << text;
}

TEST(ClaudeRateLimitStore, modelWindowsAreSortedByTheirKeys) {
    JSONParser parser;
    const auto windows = ClaudeRateLimitStore::modelScopedWindows(parser.parse(
        R"({"seven_day_sonnet": {"used_percentage": 3, "resets_at": 1800000100}, "seven_day": {"used_percentage": 9},
            "seven_day_": {"used_percentage": 1}, "seven_day_opus": {"used_percentage": 140},
            "five_hour": {"used_percentage": 9}, "seven_day_broken": {"used_percentage": "9"},
            "seven_day_number": 9, "a_seven_day_x": {"used_percentage": 9}, "seven_days": {"used_percentage": 9}})"));
    EXPECT_EQ(windows, (std::vector<ModelScopedRateLimitWindow>{
                           {"seven_day_", {1, 10080, std::nullopt}},
                           {"seven_day_opus", {100, 10080, std::nullopt}},
                           {"seven_day_sonnet", {3, 10080, Date{1800000100}}},
                       }));
}

TEST(ClaudeRateLimitStore, modelWindowsOfWhatIsNoObjectAreNone) {
    JSONParser parser;
    EXPECT_TRUE(ClaudeRateLimitStore::modelScopedWindows(parser.parse("[1]")).empty());
    EXPECT_TRUE(ClaudeRateLimitStore::modelScopedWindows(JSONValue{}).empty());
}

TEST(ClaudeRateLimitStore, decodeLeavesOutWhatHasBeenReset) {
    const std::string text = captured(600, -60, 60);
    const auto raw = ClaudeRateLimitStore::decodeRaw(text, now);
    ASSERT_TRUE(raw);
    EXPECT_TRUE(raw->primary);
    const auto current = ClaudeRateLimitStore::decode(text, now);
    ASSERT_TRUE(current);
    EXPECT_EQ(current->primary, std::nullopt);
    EXPECT_TRUE(current->secondary);
    EXPECT_EQ(current->planType, std::nullopt);
    EXPECT_FALSE(ClaudeRateLimitStore::decode(captured(600, -60, 0), now));
    EXPECT_FALSE(ClaudeRateLimitStore::decode("{", now));
}

TEST(ClaudeRateLimitStore, fileLiesInTheFolderThatTheScriptWritesTo) {
    const ScratchHome home;
    EXPECT_EQ(ClaudeRateLimitStore::defaultURL(), home.path(captureFile));
    EXPECT_FALSE(home.exists("Library"));
}

TEST(ClaudeRateLimitStore, loadReadsTheDefaultFileOrTheOneGiven) {
    const ScratchHome home;
    home.write(captureFile, captured(60));
    const std::string other = home.write("other.json", captured(120));
    EXPECT_EQ(ClaudeRateLimitStore::load(now), ClaudeRateLimitStore::decode(captured(60), now));
    EXPECT_EQ(ClaudeRateLimitStore::load(now, other), ClaudeRateLimitStore::decode(captured(120), now));
    EXPECT_TRUE(ClaudeRateLimitStore::isActive(now));
    EXPECT_TRUE(ClaudeRateLimitStore::isActive(now, other));
    EXPECT_FALSE(ClaudeRateLimitStore::isActive(now + 43200, other)) << "too old";
    EXPECT_FALSE(ClaudeRateLimitStore::isActive(now, home.write("empty.json", "")));
}

TEST(ClaudeRateLimitStore, fileThatCannotBeReadIsNoData) {
    const ScratchHome home;
    for (const bool isFolder : {false, true}) {
        if (isFolder) home.makeFolder(captureFile);
        EXPECT_FALSE(ClaudeRateLimitStore::load(now));
        EXPECT_FALSE(ClaudeRateLimitStore::isActive(now));
        EXPECT_FALSE(ClaudeRateLimitStore::awaitingResetHint(now));
    }
}

struct HintCase {
    const char* name;
    std::string text;
    bool expected;
};
class ClaudeRateLimitHint : public ::testing::TestWithParam<HintCase> {};

TEST_P(ClaudeRateLimitHint, tellsOfAResetWithoutFreshData) {
    const ScratchHome home;
    const std::string file = home.write("limits.json", GetParam().text);
    EXPECT_EQ(ClaudeRateLimitStore::awaitingResetHint(now, file), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(ByFile, ClaudeRateLimitHint,
                         ::testing::Values(HintCase{"bothWindowsCurrent", captured(60), false},
                                           HintCase{"weekStillCurrent", captured(600, -60, 60), false},
                                           HintCase{"bothResetLately", captured(600, -60, -30), true},
                                           HintCase{"resetAtThisMoment", captured(600, 0, 0), true},
                                           HintCase{"resetSixHoursAgo", captured(30000, -21600, -21600), true},
                                           HintCase{"resetLongerAgo", captured(30000, -21601, -21601), false},
                                           HintCase{"weekResetLatelyAfterTheFiveHours", captured(30000, -28800, -3600),
                                                    true},
                                           HintCase{"resetLatelyButTooOldACapture", captured(43201, -60, -30), false},
                                           HintCase{"noWindows", "{}", false}, HintCase{"noJSON", "x", false}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(ClaudeRateLimitStore, clearRemovesTheFileOnce) {
    const ScratchHome home;
    EXPECT_FALSE(ClaudeRateLimitStore::clear()) << "there is none";
    home.write(captureFile, captured(60));
    const std::string other = home.write("other.json", captured(60));
    EXPECT_TRUE(ClaudeRateLimitStore::clear(other));
    EXPECT_TRUE(home.exists(captureFile));
    EXPECT_TRUE(ClaudeRateLimitStore::clear());
    EXPECT_FALSE(home.exists(captureFile));
    EXPECT_FALSE(ClaudeRateLimitStore::clear(other));
}

TEST(ClaudeRateLimitStore, clearDoesNotRemoveAFolder) {
    const ScratchHome home;
    home.makeFolder(captureFile);
    EXPECT_FALSE(ClaudeRateLimitStore::clear());
    EXPECT_TRUE(home.exists(captureFile));
}

class ClaudeProviderLimits : public ::testing::Test {
protected:
    ClaudeProviderLimits() { Clock::pin(now); }
    ~ClaudeProviderLimits() override { Clock::unpin(); }

    ScratchHome home_;
    ClaudeProvider provider_;
};

TEST_F(ClaudeProviderLimits, areThoseCapturedAsOfTheClock) {
    EXPECT_EQ(provider_.latestRateLimits(), std::nullopt);
    home_.write(captureFile, captured(600, -60, 60));
    EXPECT_EQ(provider_.latestRateLimits(), ClaudeRateLimitStore::decode(captured(600, -60, 60), now));
    ASSERT_TRUE(provider_.latestRateLimits());
    Clock::pin(now + 60);
    EXPECT_EQ(provider_.latestRateLimits(), std::nullopt) << "both have been reset";
}

TEST_F(ClaudeProviderLimits, awaitTheResetAsOfTheMomentGiven) {
    EXPECT_FALSE(provider_.latestRateLimitAwaitingReset(now));
    home_.write(captureFile, captured(600, -60, 60));
    EXPECT_FALSE(provider_.latestRateLimitAwaitingReset(now));
    EXPECT_TRUE(provider_.latestRateLimitAwaitingReset(now + 60));
    EXPECT_TRUE(provider_.latestRateLimitAwaitingReset(now + 60 + 21600));
    EXPECT_FALSE(provider_.latestRateLimitAwaitingReset(now + 61 + 21600));
}

}  // namespace
}  // namespace quorvane
