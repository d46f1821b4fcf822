#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "QuorvaneCore/model/UsageProvider.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/ratelimits/RateLimit.h"

namespace quorvane {
namespace {

constexpr Date noon{1'767'268'800.0};
constexpr double hour = 3600.0;

RateLimitWindow windowResetting(std::optional<Date> resetsAt, double usedPercent = 50) {
    return {.usedPercent = usedPercent, .windowMinutes = 300, .resetsAt = resetsAt};
}

ModelScopedRateLimitWindow scoped(std::string key, std::optional<Date> resetsAt = noon + hour) {
    return {.key = std::move(key), .window = windowResetting(resetsAt)};
}

struct ParseCase {
    const char* name;
    const char* json;
    std::optional<double> usedPercent;
    std::optional<Date> resetsAt;
};
class RateLimitWindowParsing : public testing::TestWithParam<ParseCase> {};

TEST_P(RateLimitWindowParsing, readsTheWindow) {
    const ParseCase& row = GetParam();
    JSONParser parser;
    const auto window = RateLimitWindow::fromJSON(parser.parse(row.json), 300);
    ASSERT_EQ(window.has_value(), row.usedPercent.has_value());
    if (!window) return;
    EXPECT_EQ(window->usedPercent, *row.usedPercent);
    EXPECT_EQ(window->windowMinutes, 300);
    EXPECT_EQ(window->resetsAt, row.resetsAt);
}
INSTANTIATE_TEST_SUITE_P(
    ByText, RateLimitWindowParsing,
    testing::Values(
        ParseCase{"integersAreNumbers", R"({"used_percentage": 42, "resets_at": 1767268800})", 42.0, noon},
        ParseCase{"floatsAreNumbers", R"({"used_percentage": 42.5, "resets_at": 1767268800.25})", 42.5, noon + 0.25},
        ParseCase{"resetMayBeMissing", R"({"used_percentage": 42})", 42.0, std::nullopt},
        ParseCase{"resetThatIsATextIsAbsent", R"({"used_percentage": 42, "resets_at": "1767268800"})", 42.0, {}},
        ParseCase{"nullResetIsAbsent", R"({"used_percentage": 42, "resets_at": null})", 42.0, {}},
        ParseCase{"shareThatIsATextIsNoWindow", R"({"used_percentage": "50", "resets_at": 1767268800})", {}, {}},
        ParseCase{"shareThatIsABooleanIsNoWindow", R"({"used_percentage": true})", {}, {}},
        ParseCase{"nullShareIsNoWindow", R"({"used_percentage": null})", {}, {}},
        ParseCase{"missingShareIsNoWindow", R"({"resets_at": 1767268800})", {}, {}},
        ParseCase{"belowZeroIsHeldAtZero", R"({"used_percentage": -5})", 0.0, {}},
        ParseCase{"aboveAHundredIsHeldAtAHundred", R"({"used_percentage": 140})", 100.0, {}},
        ParseCase{"bothEndsStay", R"({"used_percentage": 100})", 100.0, {}},
        ParseCase{"windowLengthIsNotRead", R"({"used_percentage": 1, "window_minutes": 7})", 1.0, {}},
        ParseCase{"arrayIsNoWindow", R"([{"used_percentage": 1}])", {}, {}},
        ParseCase{"textIsNoWindow", R"("used_percentage")", {}, {}}, ParseCase{"brokenTextIsNoWindow", "{", {}, {}}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(RateLimitWindow, notANumberCountsAsZero) {
    const JSONTree tree{JSONTree::Object{{"used_percentage", JSONTree{std::numeric_limits<double>::quiet_NaN()}}}};
    const auto window = RateLimitWindow::fromJSON(JSONValue{tree}, 300);
    ASSERT_TRUE(window);
    EXPECT_EQ(window->usedPercent, 0);
}

TEST(RateLimitWindow, nothingGivesNoWindow) {
    EXPECT_EQ(RateLimitWindow::fromJSON(JSONValue{}, 300), std::nullopt);
}

TEST(RateLimitWindow, whatIsGivenDirectlyIsKept) {
    const RateLimitWindow window{.usedPercent = 140, .windowMinutes = -1, .resetsAt = {}};
    EXPECT_EQ(window.current(noon)->usedPercent, 140);
}

struct ResetCase {
    const char* name;
    std::optional<double> resetOffset;  ///< seconds from now to the reset
    double grace;
    bool isCurrent;
    bool isRecentlyReset;
};
class RateLimitWindowReset : public testing::TestWithParam<ResetCase> {};

TEST_P(RateLimitWindowReset, isJudgedAgainstTheDate) {
    const ResetCase& row = GetParam();
    std::optional<Date> resetsAt;
    if (row.resetOffset) resetsAt = noon + *row.resetOffset;
    const RateLimitWindow window = windowResetting(resetsAt);
    EXPECT_EQ(window.current(noon), row.isCurrent ? std::optional{window} : std::nullopt);
    EXPECT_EQ(window.recentlyReset(noon, row.grace), row.isRecentlyReset);
    const ModelScopedRateLimitWindow inner{.key = "some_key", .window = window};
    EXPECT_EQ(inner.current(noon), row.isCurrent ? std::optional{inner} : std::nullopt);
}
INSTANTIATE_TEST_SUITE_P(ByReset, RateLimitWindowReset,
                         testing::Values(ResetCase{"withoutResetAlwaysCurrent", {}, 1e9, true, false},
                                         ResetCase{"aheadIsCurrent", 0.001, 1e9, true, false},
                                         ResetCase{"atTheDateHasExpired", 0.0, 0, false, true},
                                         ResetCase{"atTheDateWithGrace", 0.0, 21600, false, true},
                                         ResetCase{"atTheDateWithNegativeGrace", 0.0, -1, false, false},
                                         ResetCase{"exactlyGraceAgo", -21600.0, 21600, false, true},
                                         ResetCase{"aSecondBeyondGrace", -21601.0, 21600, false, false}),
                         [](const auto& row) { return std::string{row.param.name}; });

struct LabelCase {
    const char* name;
    const char* key;
    const char* label;
};
class ModelScopedRateLimitWindowLabel : public testing::TestWithParam<LabelCase> {};

TEST_P(ModelScopedRateLimitWindowLabel, comesFromTheKey) {
    EXPECT_EQ(scoped(GetParam().key).label(), GetParam().label);
    EXPECT_EQ(scoped(GetParam().key).id(), GetParam().key);
}
INSTANTIATE_TEST_SUITE_P(
    ByKey, ModelScopedRateLimitWindowLabel,
    testing::Values(LabelCase{"opusHasANameOfItsOwn", "seven_day_opus", "Fable"},
                    LabelCase{"sonnet", "seven_day_sonnet", "Sonnet"},
                    LabelCase{"overage", "seven_day_overage_included", "Weekly incl. credits"},
                    LabelCase{"prefixIsRemoved", "seven_day_extra_fast", "Extra Fast"},
                    LabelCase{"otherPrefixStays", "five_hour", "Five Hour"},
                    LabelCase{"prefixOnlyInFront", "my_seven_day_x", "My Seven Day X"},
                    LabelCase{"prefixIsRemovedOnce", "seven_day_seven_day_x", "Seven Day X"},
                    LabelCase{"prefixAloneIsItself", "seven_day_", "seven_day_"},
                    LabelCase{"underscoresAloneAreThemselves", "___", "___"},
                    LabelCase{"prefixAndUnderscoresAreThemselves", "seven_day___", "seven_day___"},
                    LabelCase{"emptyIsItself", "", ""}, LabelCase{"emptyPiecesAreLeftOut", "_a__bC_", "A BC"},
                    LabelCase{"restOfAWordStays", "seven_day_gPT_4o", "GPT 4o"},
                    LabelCase{"wordsBeginWithAnyCharacter", "seven_day_\xC3\xA9lan", "\xC3\x89lan"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(RateLimitSnapshot, graceIsSixHours) {
    EXPECT_EQ(RateLimitSnapshot::resetHintGrace, 21600.0);
}

TEST(RateLimitSnapshot, expiredPrimaryGoesAndTheRestStays) {
    const RateLimitSnapshot snapshot{.primary = windowResetting(noon - hour),
                                     .secondary = windowResetting(noon + hour, 20),
                                     .planType = "max",
                                     .capturedAt = noon - 60,
                                     .modelWindows = {scoped("a", noon + 1), scoped("b", noon), scoped("c", {})}};
    const auto current = snapshot.current(noon);
    ASSERT_TRUE(current);
    EXPECT_EQ(current->primary, std::nullopt);
    EXPECT_EQ(current->secondary, snapshot.secondary);
    EXPECT_EQ(current->planType, "max");
    EXPECT_EQ(current->capturedAt, noon - 60);
    ASSERT_EQ(current->modelWindows.size(), 2U);
    EXPECT_EQ(current->modelWindows[0].key, "a");
    EXPECT_EQ(current->modelWindows[1].key, "c");
    EXPECT_FALSE(snapshot.awaitingFreshDataAfterReset(noon, RateLimitSnapshot::resetHintGrace));
}

TEST(RateLimitSnapshot, modelWindowsAloneNeverKeepItAlive) {
    RateLimitSnapshot snapshot{.modelWindows = {scoped("a")}};
    EXPECT_EQ(snapshot.current(noon), std::nullopt);
    EXPECT_FALSE(snapshot.awaitingFreshDataAfterReset(noon, RateLimitSnapshot::resetHintGrace));
    snapshot.primary = windowResetting(noon - 1);
    snapshot.secondary = windowResetting(noon - 1);
    EXPECT_EQ(snapshot.current(noon), std::nullopt);
}

TEST(RateLimitSnapshot, whatIsWhollyCurrentIsUnchanged) {
    const RateLimitSnapshot snapshot{.primary = windowResetting({}),
                                     .secondary = windowResetting(noon + 1),
                                     .planType = "pro",
                                     .capturedAt = noon,
                                     .modelWindows = {scoped("a"), scoped("b")}};
    EXPECT_EQ(snapshot.current(noon), snapshot);
}

struct AwaitingCase {
    const char* name;
    std::optional<double> primaryReset;  ///< hours from now
    std::optional<double> secondaryReset;
    bool isAwaiting;
};
class RateLimitSnapshotAwaiting : public testing::TestWithParam<AwaitingCase> {};

TEST_P(RateLimitSnapshotAwaiting, freshDataAfterAReset) {
    const AwaitingCase& row = GetParam();
    RateLimitSnapshot snapshot;
    if (row.primaryReset) snapshot.primary = windowResetting(noon + *row.primaryReset * hour);
    if (row.secondaryReset) snapshot.secondary = windowResetting(noon + *row.secondaryReset * hour);
    EXPECT_EQ(snapshot.awaitingFreshDataAfterReset(noon, RateLimitSnapshot::resetHintGrace), row.isAwaiting);
}
INSTANTIATE_TEST_SUITE_P(ByResets, RateLimitSnapshotAwaiting,
                         testing::Values(AwaitingCase{"oldPrimaryRecentSecondary", -8, -1, true},
                                         AwaitingCase{"recentPrimaryOldSecondary", -1, -8, true},
                                         AwaitingCase{"recentPrimaryAlone", -1, {}, true},
                                         AwaitingCase{"recentSecondaryAlone", {}, -6, true},
                                         AwaitingCase{"bothOld", -8, -7, false},
                                         AwaitingCase{"oldPrimaryAlone", -8, {}, false},
                                         AwaitingCase{"expiredPrimaryCurrentSecondary", -1, 1, false},
                                         AwaitingCase{"nothingKnown", {}, {}, false}),
                         [](const auto& row) { return std::string{row.param.name}; });

struct AtLimitCase {
    const char* name;
    std::optional<double> primaryUsed;
    std::optional<double> secondaryUsed;
    std::optional<double> ageMinutes;
    bool isLikely;
};
class RateLimitSnapshotAtLimit : public testing::TestWithParam<AtLimitCase> {};

TEST_P(RateLimitSnapshotAtLimit, isAHighReadingWithSilenceSince) {
    const AtLimitCase& row = GetParam();
    RateLimitSnapshot snapshot;
    if (row.primaryUsed) snapshot.primary = windowResetting(noon - 100 * hour, *row.primaryUsed);
    if (row.secondaryUsed) snapshot.secondary = windowResetting(noon + hour, *row.secondaryUsed);
    if (row.ageMinutes) snapshot.capturedAt = noon - *row.ageMinutes * 60;
    EXPECT_EQ(snapshot.likelyAtLimit(noon, 85, 10), row.isLikely);
}
INSTANTIATE_TEST_SUITE_P(ByReading, RateLimitSnapshotAtLimit,
                         testing::Values(AtLimitCase{"highAndStale", 90, {}, 11, true},
                                         AtLimitCase{"exactlyTheThresholdIsHigh", 85, {}, 11, true},
                                         AtLimitCase{"justBelowIsNot", 84.9, {}, 1440, false},
                                         AtLimitCase{"exactlyTheAgeIsNotStale", 90, {}, 10, false},
                                         AtLimitCase{"freshIsNot", 90, {}, 1, false},
                                         AtLimitCase{"capturedLaterIsNot", 90, {}, -60, false},
                                         AtLimitCase{"withoutCaptureDateNever", 100, {}, {}, false},
                                         AtLimitCase{"secondaryPlaysNoPart", 10, 100, 60, false},
                                         AtLimitCase{"withoutPrimaryNever", {}, 100, 60, false}),
                         [](const auto& row) { return std::string{row.param.name}; });

class SilentProvider : public UsageProvider {
public:
    [[nodiscard]] ProviderID id() const override { return ProviderID::Gemini; }
    [[nodiscard]] std::vector<std::string> watchPaths() const override { return {}; }
    [[nodiscard]] bool isAvailable() const override { return false; }
    [[nodiscard]] std::vector<UsageEvent> loadEvents() const override { return {}; }
};

TEST(UsageProvider, aReaderWithoutAQuotaSourceKnowsNoLimits) {
    const SilentProvider provider;
    EXPECT_EQ(provider.latestRateLimits(), std::nullopt);
    EXPECT_FALSE(provider.latestRateLimitAwaitingReset(noon));
}

}  // namespace
}  // namespace quorvane
