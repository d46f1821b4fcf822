#include <optional>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "QuorvaneCore/ratelimits/GrokRateLimitStore.h"
#include "tests/grok/GrokTestSupport.h"

namespace quorvane::testing {
namespace {

constexpr std::string_view captureFile = GrokScratchHome::captureFile;

/// An object captured so many seconds before `testNow`; the reset lies so many seconds behind it.
std::string captured(long secondsAgo, long reset = 86400) {
    const auto at = [](long seconds) { return std::to_string(static_cast<long>(testNow.secondsSince1970) + seconds); };
    return R"({"capturedAt": )" + at(-secondsAgo) +
           R"(, "plan_type": "Heavy", "source": "unified.jsonl", "weekly": {"used_percentage": 60.5, "resets_at": )" +
           at(reset) + "}}";
}

TEST(GrokRateLimitStore, readsTheWeekThePlanAndTheMomentOfTheCapture) {
    EXPECT_EQ(GrokRateLimitStore::decodeRaw(captured(60), testNow),
              (RateLimitSnapshot{.primary = std::nullopt,
                                 .secondary = RateLimitWindow{60.5, 10080, testNow + 86400},
                                 .planType = "Heavy",
                                 .capturedAt = testNow - 60,
                                 .modelWindows = {}}));
}

TEST(GrokRateLimitStore, captureIsTooOldOnlyBeyondTwelveHours) {
    EXPECT_TRUE(GrokRateLimitStore::decodeRaw(captured(43200), testNow));
    EXPECT_FALSE(GrokRateLimitStore::decodeRaw(captured(43201), testNow));
    EXPECT_FALSE(GrokRateLimitStore::decodeRaw(captured(43200), testNow + 0.5));
    EXPECT_TRUE(GrokRateLimitStore::decodeRaw(captured(-9000000), testNow)) << "of the future";
}

TEST(GrokRateLimitStore, captureWithoutAMomentHasNoAge) {
    for (const char* text :
         {R"({"weekly": {"used_percentage": 1}})", R"({"capturedAt": "1000", "weekly": {"used_percentage": 1}})",
          R"({"capturedAt": null, "weekly": {"used_percentage": 1}})"}) {
        const auto snapshot = GrokRateLimitStore::decodeRaw(text, testNow);
        ASSERT_TRUE(snapshot) << text;
        EXPECT_EQ(snapshot->capturedAt, std::nullopt);
        EXPECT_EQ(snapshot->secondary, (RateLimitWindow{1, 10080, std::nullopt}));
    }
}

TEST(GrokRateLimitStore, windowWithoutAResetIsCurrentUntilTheCaptureIsTooOld) {
    const std::string text = R"({"capturedAt": 1789387200, "weekly": {"used_percentage": 1}})";
    EXPECT_TRUE(GrokRateLimitStore::decode(text, testNow + 43200));
    EXPECT_FALSE(GrokRateLimitStore::decode(text, testNow + 43201));
}

TEST(GrokRateLimitStore, planWithoutANameIsTheOneThatGetsHere) {
    for (const char* plan : {"", R"(, "plan_type": "")", R"(, "plan_type": null)", R"(, "plan_type": 3)"}) {
        const auto snapshot =
            GrokRateLimitStore::decodeRaw(R"({"weekly": {"used_percentage": 1})" + std::string{plan} + "}", testNow);
        ASSERT_TRUE(snapshot) << plan;
        EXPECT_EQ(snapshot->planType, "SuperGrok");
    }
}

TEST(GrokRateLimitStore, whatHasNoWeekIsNoData) {
    for (const char* text : {"", "null", "[]", "3", "{}", R"({"weekly": {"used_percentage": 1})",
                             R"([{"weekly": {"used_percentage": 1}}])", R"({"weekly": 3})", R"({"weekly": {}})",
                             R"({"weekly": {"used_percentage": "1"}})", R"({"seven_day": {"used_percentage": 1}})",
                             R"({"five_hour": {"used_percentage": 1}})"})
        EXPECT_FALSE(GrokRateLimitStore::decodeRaw(text, testNow)) << text;
}

TEST(GrokRateLimitStore, decodeIsAbsentOnceTheWeekWasReset) {
    EXPECT_TRUE(GrokRateLimitStore::decodeRaw(captured(60, 0), testNow));
    EXPECT_FALSE(GrokRateLimitStore::decode(captured(60, 0), testNow));
    EXPECT_EQ(GrokRateLimitStore::decode(captured(60, 1), testNow),
              GrokRateLimitStore::decodeRaw(captured(60, 1), testNow));
    EXPECT_FALSE(GrokRateLimitStore::decode("{", testNow));
}

TEST(GrokRateLimitStore, fileLiesInTheFolderThatTheScriptWritesTo) {
    const GrokScratchHome home;
    EXPECT_EQ(GrokRateLimitStore::defaultURL(), home.path(captureFile));
    EXPECT_FALSE(home.exists("Library"));
}

TEST(GrokRateLimitStore, loadReadsTheDefaultFileOrTheOneGiven) {
    const GrokScratchHome home;
    home.write(captureFile, captured(60));
    const std::string other = home.write("other.json", captured(120));
    EXPECT_EQ(GrokRateLimitStore::load(testNow), GrokRateLimitStore::decode(captured(60), testNow));
    EXPECT_EQ(GrokRateLimitStore::load(testNow, other), GrokRateLimitStore::decode(captured(120), testNow));
    EXPECT_TRUE(GrokRateLimitStore::isActive(testNow));
    EXPECT_TRUE(GrokRateLimitStore::isActive(testNow, other));
    EXPECT_FALSE(GrokRateLimitStore::isActive(testNow + 43200, other)) << "too old";
    EXPECT_FALSE(GrokRateLimitStore::isActive(testNow, home.write("empty.json", "")));
}

TEST(GrokRateLimitStore, fileThatCannotBeReadIsNoData) {
    const GrokScratchHome home;
    for (const bool isFolder : {false, true}) {
        if (isFolder) home.makeFolder(captureFile);
        EXPECT_FALSE(GrokRateLimitStore::load(testNow));
        EXPECT_FALSE(GrokRateLimitStore::isActive(testNow));
        EXPECT_FALSE(GrokRateLimitStore::awaitingResetHint(testNow));
        EXPECT_FALSE(GrokRateLimitStore::clear());
    }
}

struct HintCase {
    const char* name;
    std::string text;
    bool expected = false;
};
void PrintTo(const HintCase& row, std::ostream* stream) {
    *stream << row.name;
}
class GrokRateLimitHint : public ::testing::TestWithParam<HintCase> {};

TEST_P(GrokRateLimitHint, tellsOfAResetWithoutFreshData) {
    const GrokScratchHome home;
    const std::string file = home.write("limits.json", GetParam().text);
    EXPECT_EQ(GrokRateLimitStore::awaitingResetHint(testNow, file), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(ByFile, GrokRateLimitHint,
                         ::testing::Values(HintCase{"current", captured(60)},
                                           HintCase{"resetLately", captured(600, -60), true},
                                           HintCase{"resetAtThisMoment", captured(600, 0), true},
                                           HintCase{"resetSixHoursAgo", captured(30000, -21600), true},
                                           HintCase{"resetLongerAgo", captured(30000, -21601)},
                                           HintCase{"resetLatelyButTooOldACapture", captured(43201, -60)},
                                           HintCase{"noReset", R"({"weekly": {"used_percentage": 1}})"},
                                           HintCase{"noWeek", "{}"}, HintCase{"noJSON", "x"}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(GrokRateLimitStore, clearRemovesTheFileOnce) {
    const GrokScratchHome home;
    EXPECT_FALSE(GrokRateLimitStore::clear()) << "there is none";
    home.write(captureFile, captured(60));
    const std::string other = home.write("other.json", captured(60));
    EXPECT_TRUE(GrokRateLimitStore::clear(other));
    EXPECT_TRUE(home.exists(captureFile));
    EXPECT_TRUE(GrokRateLimitStore::clear());
    EXPECT_FALSE(home.exists(captureFile));
    EXPECT_FALSE(GrokRateLimitStore::clear(other));
}

}  // namespace
}  // namespace quorvane::testing
