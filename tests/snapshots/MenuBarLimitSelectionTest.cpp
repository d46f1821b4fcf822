#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "QuorvaneCore/snapshots/MenuBarLabelRenderer.h"

namespace quorvane {

// Failing rows name the limit in words.
static void PrintTo(const MenuBarProviderLimit& limit, std::ostream* stream) {
    *stream << limit.shortName << ' ' << limit.usedPct << "% tokens " << limit.tokenCount.value_or(-1) << " estimate "
            << limit.isEstimate << limit.windowSuffix();
}

namespace {

using Limit = MenuBarProviderLimit;
using Summary = MenuBarProviderLimitSummary;
using Shown = MenuBarProviderLimit::Window;
using Renderer = MenuBarLabelRenderer;
using Limits = std::vector<Limit>;
using Summaries = std::vector<Summary>;

/// Both windows, nothing estimated.
Summary both(std::string id, double primary, double secondary) {
    return {.id = id,
            .name = id + "!",
            .primaryUsedPct = primary,
            .primaryWindowMinutes = 300,
            .secondaryUsedPct = secondary,
            .secondaryWindowMinutes = 10080};
}
Summary primaryOnly(std::string id, double used, std::optional<std::int64_t> minutes = 300) {
    return {.id = id, .name = id + "!", .primaryUsedPct = used, .primaryWindowMinutes = minutes};
}
Summary secondaryOnly(std::string id, double used, std::optional<std::int64_t> minutes = 10080) {
    return {.id = id, .name = id + "!", .secondaryUsedPct = used, .secondaryWindowMinutes = minutes};
}
Summary tokensOnly(std::string id, std::int64_t count, std::optional<double> share = std::nullopt) {
    return {.id = id, .name = id + "!", .estimatedUsedPct = share, .estimatedTokenCount = count};
}
Summary with(Summary summary, std::int64_t tokens, std::optional<double> share = std::nullopt) {
    summary.estimatedTokenCount = tokens;
    summary.estimatedUsedPct = share;
    return summary;
}
Limit share(std::string name, double used, Shown window) {
    return {.shortName = std::move(name), .usedPct = used, .window = window};
}
Limit tokens(std::string name, std::int64_t count, double used = 0, Shown window = Shown::Other) {
    return {.shortName = std::move(name), .usedPct = used, .tokenCount = count, .isEstimate = true, .window = window};
}

struct LimitCase {
    const char* name;
    const char* format;
    Summaries summaries;
    std::optional<Limit> limit;
};
class MenuBarLimit : public ::testing::TestWithParam<LimitCase> {};

TEST_P(MenuBarLimit, isTheOneThatTheChoiceAsksFor) {
    const LimitCase& row = GetParam();
    const MenuBarDisplayFormat format = MenuBarDisplayFormat::normalized(row.format);
    ASSERT_EQ(format.rawValue(), row.format);
    EXPECT_EQ(Renderer::limit(format, row.summaries), row.limit);
    // A choice that names a provider, and the total, show the same limit whoever's turn it is.
    if (!format.isRotating()) {
        EXPECT_EQ(Renderer::pillLimit(format, Limits{share("turn", 1, Shown::Other)}, 0, row.summaries), row.limit);
    }
}
INSTANTIATE_TEST_SUITE_P(
    ByChoice, MenuBarLimit,
    ::testing::Values(
        LimitCase{"totalHasNone", "total", {both("a", 10, 20)}, {}},
        LimitCase{"noSummaries", "limit:a:fiveHour", {}, {}},
        LimitCase{"fiveHour", "limit:a:fiveHour", {both("a", 10, 20)}, share("a!", 10, Shown::FiveHour)},
        LimitCase{"weekly", "limit:a:weekly", {both("a", 10, 20)}, share("a!", 20, Shown::Weekly)},
        LimitCase{
            "bothKindsChooseAlike", "totalAndLimit:a:weekly", {both("a", 10, 20)}, share("a!", 20, Shown::Weekly)},
        LimitCase{"other", "limit:a:other", {both("a", 10, 20)}, share("a!", 10, Shown::FiveHour)},
        LimitCase{"withoutWindow", "limit:a", {both("a", 10, 20)}, share("a!", 10, Shown::FiveHour)},
        LimitCase{"anyProvider", "limit", {both("a", 10, 20), both("b", 30, 40)}, share("a!", 10, Shown::FiveHour)},
        LimitCase{
            "theChosenProvider", "limit:b", {both("a", 10, 20), both("b", 30, 40)}, share("b!", 30, Shown::FiveHour)},
        LimitCase{"unknownProvider", "limit:c", {both("a", 10, 20)}, {}},
        LimitCase{"fiveHourNeedsThePrimary", "limit:a:fiveHour", {secondaryOnly("a", 20)}, {}},
        LimitCase{"weeklyNeedsTheSecondary", "limit:a:weekly", {primaryOnly("a", 20)}, {}},
        LimitCase{"theFirstThatServes",
                  "limit",
                  {tokensOnly("a", 0), secondaryOnly("b", 20)},
                  share("b!", 20, Shown::Weekly)},
        LimitCase{"aSecondSummaryOfTheProviderServes",
                  "limit:a:weekly",
                  {primaryOnly("a", 1), secondaryOnly("a", 2)},
                  share("a!", 2, Shown::Weekly)},
        LimitCase{"otherTakesTheSecondary", "limit:a:other", {secondaryOnly("a", 20)}, share("a!", 20, Shown::Weekly)},
        LimitCase{
            "withoutWindowTakesTheSecondary", "limit:a", {secondaryOnly("a", 20)}, share("a!", 20, Shown::Weekly)},
        LimitCase{"otherFollowsThePrimaryMinutes",
                  "limit:a:other",
                  {primaryOnly("a", 5, 10080)},
                  share("a!", 5, Shown::Weekly)},
        LimitCase{"unusualMinutesAreOther", "limit:a", {primaryOnly("a", 5, 1440)}, share("a!", 5, Shown::Other)},
        LimitCase{"absentMinutesAreOther", "limit:a", {primaryOnly("a", 5, {})}, share("a!", 5, Shown::Other)},
        LimitCase{
            "absentSecondaryMinutesAreOther", "limit:a", {secondaryOnly("a", 5, {})}, share("a!", 5, Shown::Other)},
        LimitCase{"fiveHourIsItselfWhateverTheMinutes",
                  "limit:a:fiveHour",
                  {primaryOnly("a", 5, 60)},
                  share("a!", 5, Shown::FiveHour)},
        LimitCase{"weeklyIsItselfWhateverTheMinutes",
                  "limit:a:weekly",
                  {secondaryOnly("a", 5, {})},
                  share("a!", 5, Shown::Weekly)},
        LimitCase{"tokensServeTheFiveHourWindow",
                  "limit:a:fiveHour",
                  {tokensOnly("a", 5000)},
                  tokens("a!", 5000, 0, Shown::FiveHour)},
        LimitCase{"tokensServeTheWeeklyWindow",
                  "limit:a:weekly",
                  {tokensOnly("a", 5000, 12)},
                  tokens("a!", 5000, 12, Shown::Weekly)},
        LimitCase{"tokensServeOther", "limit:a:other", {tokensOnly("a", 5000, 12)}, tokens("a!", 5000, 12)},
        LimitCase{"tokensServeNoWindow", "limit:a", {tokensOnly("a", 5000)}, tokens("a!", 5000)},
        LimitCase{"noTokensServeNothing", "limit:a", {tokensOnly("a", 0)}, {}},
        LimitCase{"negativeTokensServeNothing", "limit:a", {tokensOnly("a", -5)}, {}},
        LimitCase{"oneTokenServes", "limit:a", {tokensOnly("a", 1)}, tokens("a!", 1)},
        LimitCase{"estimate", "limit:a:estimate", {tokensOnly("a", 5000, 12)}, tokens("a!", 5000, 12)},
        LimitCase{"estimateWithoutShare", "limit:a:estimate", {tokensOnly("a", 5000)}, tokens("a!", 5000)},
        LimitCase{"estimateNeedsACount", "limit:a:estimate", {tokensOnly("a", 0, 12)}, {}},
        LimitCase{"estimateWithoutACountStopsTheSearch",
                  "limit:a:estimate",
                  {tokensOnly("a", 0, 12), tokensOnly("a", 9, 12)},
                  {}},
        LimitCase{"estimateIsNotServedByAShare", "limit:a:estimate", {both("a", 1, 2)}, {}},
        LimitCase{"estimateFollowsThePrimaryMinutes",
                  "limit:a:estimate",
                  {with(primaryOnly("a", 5), 700, 12)},
                  tokens("a!", 700, 12, Shown::FiveHour)},
        LimitCase{"estimateFollowsTheSecondaryMinutes",
                  "limit:a:estimate",
                  {with(secondaryOnly("a", 5), 700, 12)},
                  tokens("a!", 700, 12, Shown::Weekly)},
        LimitCase{"aShareHidesTheTokens", "limit:a", {with(primaryOnly("a", 5), 700)}, share("a!", 5, Shown::FiveHour)},
        LimitCase{"weeklyThroughTokensShowsTheEstimate",
                  "limit:a:weekly",
                  {with(primaryOnly("a", 5), 700, 12)},
                  share("a!", 12, Shown::Weekly)},
        LimitCase{"fiveHourThroughTokensShowsZero",
                  "limit:a:fiveHour",
                  {with(secondaryOnly("a", 5), 700)},
                  share("a!", 0, Shown::FiveHour)},
        LimitCase{"anEstimatedShareAloneIsNothing", "limit:a", {tokensOnly("a", 0, 40)}, {}}),
    [](const auto& row) { return std::string{row.param.name}; });

struct RotationCase {
    const char* name;
    Summaries summaries;
    Limits limits;
};
class MenuBarRotation : public ::testing::TestWithParam<RotationCase> {};

TEST_P(MenuBarRotation, holdsTheLimitsThatTakeTurns) {
    EXPECT_EQ(Renderer::rotatableLimits(GetParam().summaries), GetParam().limits);
}
INSTANTIATE_TEST_SUITE_P(
    BySummaries, MenuBarRotation,
    ::testing::Values(
        RotationCase{"none", {}, {}},
        RotationCase{
            "bothWindows", {both("a", 10, 20)}, {share("a!", 10, Shown::FiveHour), share("a!", 20, Shown::Weekly)}},
        RotationCase{"inOrder",
                     {secondaryOnly("b", 3), both("a", 10, 20)},
                     {share("b!", 3, Shown::Weekly), share("a!", 10, Shown::FiveHour), share("a!", 20, Shown::Weekly)}},
        RotationCase{"belowHalfAPercentIsLeftOut", {both("a", 0.4, 20)}, {share("a!", 20, Shown::Weekly)}},
        RotationCase{"halfAPercentTakesPart", {both("a", 0.5, 0)}, {share("a!", 0.5, Shown::FiveHour)}},
        RotationCase{"nothingUsed", {both("a", 0, 0)}, {}},
        RotationCase{"unusualMinutes", {primaryOnly("a", 9, 1440)}, {share("a!", 9, Shown::Other)}},
        RotationCase{"absentMinutes", {primaryOnly("a", 9, {})}, {share("a!", 9, Shown::Other)}},
        RotationCase{"tokens", {tokensOnly("a", 5000, 12)}, {tokens("a!", 5000, 12)}},
        RotationCase{"tokensWithoutShare", {tokensOnly("a", 1)}, {tokens("a!", 1)}},
        RotationCase{"noTokens", {tokensOnly("a", 0, 12)}, {}},
        RotationCase{"tokensWhenNoWindowTookPart", {with(both("a", 0.4, 0), 5000)}, {tokens("a!", 5000)}},
        RotationCase{"noTokensWhenAWindowTookPart", {with(both("a", 0, 20), 5000)}, {share("a!", 20, Shown::Weekly)}}),
    [](const auto& row) { return std::string{row.param.name}; });

struct TurnCase {
    const char* name;
    std::int64_t index;
    int limitCount;
    std::optional<double> usedPct;  ///< the limits are used by 1 %, 2 %, …
};
class MenuBarTurn : public ::testing::TestWithParam<TurnCase> {};

TEST_P(MenuBarTurn, goesRoundAndRound) {
    Limits limits;
    for (int number = 1; number <= GetParam().limitCount; ++number)
        limits.push_back(share("a", number, Shown::Other));
    for (const char* format : {"limit", "totalAndLimit"}) {
        const auto limit = Renderer::pillLimit(MenuBarDisplayFormat::normalized(format), limits, GetParam().index,
                                               Summaries{both("unused", 99, 99)});
        ASSERT_EQ(limit.has_value(), GetParam().usedPct.has_value());
        if (limit) {
            EXPECT_EQ(limit->usedPct, *GetParam().usedPct);
        }
    }
}
INSTANTIATE_TEST_SUITE_P(ByIndex, MenuBarTurn,
                         ::testing::Values(TurnCase{"first", 0, 3, 1.0}, TurnCase{"second", 1, 3, 2.0},
                                           TurnCase{"last", 2, 3, 3.0}, TurnCase{"roundAgain", 3, 3, 1.0},
                                           TurnCase{"farOn", 3'000'000'001, 3, 2.0},
                                           TurnCase{"greatest", std::numeric_limits<std::int64_t>::max(), 2, 2.0},
                                           TurnCase{"single", 17, 1, 1.0}, TurnCase{"backwards", -1, 3, 3.0},
                                           TurnCase{"noLimits", 0, 0, std::nullopt},
                                           TurnCase{"noLimitsLater", 5, 0, std::nullopt}),
                         [](const auto& row) { return std::string{row.param.name}; });

struct AttentionCase {
    const char* name;
    Summaries summaries;
    MenuBarAttentionState state;
};
class MenuBarAttention : public ::testing::TestWithParam<AttentionCase> {};

TEST_P(MenuBarAttention, followsTheFullestWindow) {
    EXPECT_EQ(Renderer::attentionState(GetParam().summaries), GetParam().state);
}
using State = MenuBarAttentionState;
INSTANTIATE_TEST_SUITE_P(
    BySummaries, MenuBarAttention,
    ::testing::Values(AttentionCase{"none", {}, State::Normal},
                      AttentionCase{"low", {both("a", 10, 20)}, State::Normal},
                      AttentionCase{"justBelowWarning", {primaryOnly("a", 79.9)}, State::Normal},
                      AttentionCase{"exactlyWarning", {primaryOnly("a", 80)}, State::Warning},
                      AttentionCase{"justBelowCritical", {primaryOnly("a", 94.99)}, State::Warning},
                      AttentionCase{"exactlyCritical", {primaryOnly("a", 95)}, State::Critical},
                      AttentionCase{"beyondAll", {primaryOnly("a", 140)}, State::Critical},
                      AttentionCase{"secondaryCounts", {both("a", 1, 96)}, State::Critical},
                      AttentionCase{"anyProviderCounts", {both("a", 1, 2), secondaryOnly("b", 81)}, State::Warning},
                      AttentionCase{"theFullestCounts", {both("a", 96, 2), both("b", 81, 3)}, State::Critical},
                      AttentionCase{"estimatesHaveNoPart", {tokensOnly("a", 9000, 100)}, State::Normal},
                      AttentionCase{"estimatesBesideAWindow", {with(primaryOnly("a", 5), 9000, 100)}, State::Normal}),
    [](const auto& row) { return std::string{row.param.name}; });

}  // namespace
}  // namespace quorvane
