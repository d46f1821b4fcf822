#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "QuorvaneCore/ratelimits/SignatureInsight.h"

namespace quorvane {
namespace {

constexpr Date noon{1'767'268'800.0};
using Verdict = SignatureInsight::BurnVerdict;
using Spend = SignatureInsight::ModelSpend;

/// The arguments, each with a value under which its remark does not apply.
struct Usage {
    bool limitLikelyHit = false;
    std::optional<double> usedPct;
    std::optional<double> minutesToReset;
    std::optional<std::int64_t> windowMinutes = 300;
    double week = 0;
    std::int64_t weekEvents = 0;
    std::vector<Spend> models;
};

std::optional<SignatureInsight> insightOf(const Usage& usage) {
    std::optional<Date> resetsAt;
    if (usage.minutesToReset) resetsAt = noon + *usage.minutesToReset * 60;
    return SignatureInsight::compute(usage.limitLikelyHit, usage.usedPct, resetsAt, usage.windowMinutes, usage.week,
                                     usage.weekEvents, usage.models, noon);
}

/// One model with nine tenths of the bill and a tenth of the turns.
Usage concentrated(Usage usage) {
    usage.week = 100;
    usage.weekEvents = 10;
    usage.models = {{.model = "cheap", .cost = 10, .eventCount = 9}, {.model = "dear", .cost = 90, .eventCount = 1}};
    return usage;
}

SignatureInsight concentrationOnDear() {
    return {SignatureInsight::CostConcentration{.model = "dear", .turnShare = 0.1, .billShare = 0.9}};
}

SignatureInsight pace(double usedPct, double elapsed, Verdict verdict) {
    return {SignatureInsight::BurnPace{.usedPct = usedPct, .windowElapsedFraction = elapsed, .verdict = verdict}};
}

TEST(SignatureInsight, aFrozenLimitComesFirst) {
    const auto insight = insightOf(concentrated({.limitLikelyHit = true, .usedPct = 96, .minutesToReset = 150}));
    EXPECT_EQ(insight, SignatureInsight{SignatureInsight::LimitFrozen{.usedPct = 96}});
    EXPECT_TRUE(insight->isEstimate());
}

TEST(SignatureInsight, aFrozenLimitWithoutAFigureGoesStraightToTheCost) {
    EXPECT_EQ(insightOf(concentrated({.limitLikelyHit = true, .usedPct = {}, .minutesToReset = 150})),
              concentrationOnDear());
}

TEST(SignatureInsight, thePaceComesBeforeTheCost) {
    const auto insight = insightOf(concentrated({.usedPct = 50, .minutesToReset = 150}));
    EXPECT_EQ(insight, pace(50, 0.5, Verdict::OnPace));
    EXPECT_TRUE(insight->isEstimate());
}

struct PaceCase {
    const char* name;
    Usage usage;
    std::optional<SignatureInsight> expected;
};
class SignatureInsightPace : public testing::TestWithParam<PaceCase> {};

TEST_P(SignatureInsightPace, comparesUseWithTime) {
    EXPECT_EQ(insightOf(GetParam().usage), GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(
    ByFigures, SignatureInsightPace,
    testing::Values(
        PaceCase{"hot", {.usedPct = 60, .minutesToReset = 150}, pace(60, 0.5, Verdict::RunningHot)},
        PaceCase{"under", {.usedPct = 40, .minutesToReset = 150}, pace(40, 0.5, Verdict::WellUnderPace)},
        PaceCase{"pastResetIsTheWholeWindow", {.usedPct = 90, .minutesToReset = -60}, pace(90, 1, Verdict::OnPace)},
        PaceCase{"exactlyTheUpperRatioIsOnPace", {.usedPct = 115, .minutesToReset = 0}, pace(115, 1, Verdict::OnPace)},
        PaceCase{"aboveTheUpperRatioIsHot",
                 {.usedPct = 115.001, .minutesToReset = 0},
                 pace(115.001, 1, Verdict::RunningHot)},
        PaceCase{"exactlyTheLowerRatioIsOnPace", {.usedPct = 85, .minutesToReset = 0}, pace(85, 1, Verdict::OnPace)},
        PaceCase{"belowTheLowerRatioIsUnder",
                 {.usedPct = 84.999, .minutesToReset = 0},
                 pace(84.999, 1, Verdict::WellUnderPace)},
        PaceCase{"aTwentiethOfTheWindowIsTooEarly", {.usedPct = 50, .minutesToReset = 285}, {}},
        PaceCase{"justBeyondATwentiethApplies",
                 {.usedPct = 50, .minutesToReset = 284},
                 pace(50, 16.0 / 300, Verdict::RunningHot)},
        PaceCase{"resetBeyondTheWindowIsTooEarly", {.usedPct = 50, .minutesToReset = 600}, {}},
        PaceCase{"withoutUse", {.usedPct = {}, .minutesToReset = 150}, {}},
        PaceCase{"withoutReset", {.usedPct = 50, .minutesToReset = {}}, {}},
        PaceCase{"withoutLength", {.usedPct = 50, .minutesToReset = 150, .windowMinutes = {}}, {}},
        PaceCase{"lengthOfNothing", {.usedPct = 50, .minutesToReset = 150, .windowMinutes = 0}, {}},
        PaceCase{"lengthOfAMinute",
                 {.usedPct = 50, .minutesToReset = 0, .windowMinutes = 1},
                 pace(50, 1, Verdict::WellUnderPace)}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(SignatureInsight, tooEarlyForThePaceTheCostIsLookedAt) {
    const auto insight = insightOf(concentrated({.usedPct = 50, .minutesToReset = 285}));
    EXPECT_EQ(insight, concentrationOnDear());
    EXPECT_FALSE(insight->isEstimate());
}

struct ConcentrationCase {
    const char* name;
    double week;
    std::int64_t weekEvents;
    std::vector<Spend> models;
    std::optional<SignatureInsight> expected;
};
class SignatureInsightConcentration : public testing::TestWithParam<ConcentrationCase> {};

TEST_P(SignatureInsightConcentration, namesTheModelThatCostsMoreThanItsShare) {
    const ConcentrationCase& row = GetParam();
    EXPECT_EQ(insightOf({.usedPct = {},
                         .minutesToReset = {},
                         .week = row.week,
                         .weekEvents = row.weekEvents,
                         .models = row.models}),
              row.expected);
}
SignatureInsight on(std::string model, double turnShare, double billShare) {
    return {
        SignatureInsight::CostConcentration{.model = std::move(model), .turnShare = turnShare, .billShare = billShare}};
}
INSTANTIATE_TEST_SUITE_P(
    ByModels, SignatureInsightConcentration,
    testing::Values(
        ConcentrationCase{"plain", 100, 10, {{"a", 80, 2}, {"b", 20, 8}}, on("a", 0.2, 0.8)},
        ConcentrationCase{"widestGapAndNotTheDearest", 100, 100, {{"a", 60, 50}, {"b", 40, 10}}, on("b", 0.1, 0.4)},
        ConcentrationCase{"exactlyATenthIsNothing", 10, 10, {{"a", 1, 0}, {"b", 9, 10}}, {}},
        ConcentrationCase{"justAboveATenth", 10, 10, {{"a", 1.01, 0}, {"b", 8.99, 10}}, on("a", 0, 1.01 / 10)},
        ConcentrationCase{"earlierOfEqualGaps", 10, 10, {{"a", 5, 2}, {"b", 5, 2}}, on("a", 0.2, 0.5)},
        ConcentrationCase{"singlePricedModel", 100, 10, {{"a", 100, 1}}, {}},
        ConcentrationCase{"unpricedModelsDoNotMakeTwo", 100, 10, {{"a", 100, 1}, {"b", {}, 9}}, {}},
        ConcentrationCase{
            "unpricedModelsAreNeverTheSubject", 100, 10, {{"u", {}, 0}, {"a", 90, 1}, {"b", 10, 4}}, on("a", 0.1, 0.9)},
        ConcentrationCase{"freeIsPriced", 100, 10, {{"free", 0, 9}, {"a", 100, 1}}, on("a", 0.1, 1)},
        ConcentrationCase{"nothingSpent", 0, 10, {{"a", 80, 2}, {"b", 20, 8}}, {}},
        ConcentrationCase{"lessThanNothingSpent", -1, 10, {{"a", 80, 2}, {"b", 20, 8}}, {}},
        ConcentrationCase{"noEvents", 100, 0, {{"a", 80, 2}, {"b", 20, 8}}, {}},
        ConcentrationCase{"noModels", 100, 10, {}, {}}),
    [](const auto& row) { return std::string{row.param.name}; });

}  // namespace
}  // namespace quorvane
