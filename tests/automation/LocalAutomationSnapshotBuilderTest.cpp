#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/model/ProviderCatalog.h"
#include "QuorvaneCore/snapshots/LocalAutomationSnapshotBuilder.h"

namespace quorvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Builder = LocalAutomationSnapshotBuilder;
using Basis = LocalAutomationCostBasis;

constexpr Date now{1772357400};

UsageWindowSummary summaryOf(double today, double window, std::vector<double> series, TokenUsage tokens = {}) {
    UsageWindowSummary summary{.rollup = {.windowDays = 7}, .dailyCostSeries = std::move(series)};
    summary.rollup.today = {.cost = today, .usage = tokens, .eventCount = 2};
    summary.rollup.last7d = {.cost = window, .usage = tokens + tokens, .eventCount = 5};
    return summary;
}

LocalAutomationSnapshot build(const UsageWindowSummaries& summaries, const std::vector<ProviderID>& ids,
                              const std::map<ProviderID, RateLimitSnapshot>& limits = {}) {
    return Builder::build(summaries, ids, limits, "a-test", now);
}

/// A summary for each of the providers, of a dollar today.
UsageWindowSummaries summariesFor(const std::vector<ProviderID>& ids) {
    UsageWindowSummaries summaries{.aggregate = summaryOf(10, 70, {60, 10})};
    for (const ProviderID id : ids)
        summaries.providers[id] = summaryOf(1, 7, {6, 1}, {.input = 100, .output = 10});
    return summaries;
}

struct DaysCase {
    const char* name;
    std::int64_t days;
    std::int64_t supported;
};
class NormalizedDays : public ::testing::TestWithParam<DaysCase> {};
TEST_P(NormalizedDays, isTheNearestSupportedLength) {
    EXPECT_EQ(Builder::normalizedDays(GetParam().days), GetParam().supported);
}
INSTANTIATE_TEST_SUITE_P(ByDays, NormalizedDays,
                         ::testing::Values(DaysCase{"supported7", 7, 7}, DaysCase{"supported14", 14, 14},
                                           DaysCase{"supported30", 30, 30}, DaysCase{"supported90", 90, 90},
                                           DaysCase{"ten", 10, 7}, DaysCase{"eleven", 11, 14},
                                           DaysCase{"tieOf22GoesDown", 22, 14}, DaysCase{"tieOf60GoesDown", 60, 30},
                                           DaysCase{"sixtyOne", 61, 90}, DaysCase{"zero", 0, 7},
                                           DaysCase{"negative", -5, 7}, DaysCase{"thousand", 1000, 90},
                                           DaysCase{"largest", INT64_MAX, 90}, DaysCase{"smallest", INT64_MIN, 7}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(LocalAutomationSnapshotBuilder, liveProvidersAreThoseOfTheCatalog) {
    EXPECT_THAT(Builder::liveProviderIDs(),
                ElementsAre(ProviderID::Claude, ProviderID::Codex, ProviderID::Grok, ProviderID::MuseSpark));
}

TEST(LocalAutomationSnapshotBuilder, fillsARowFromTheSummary) {
    UsageWindowSummaries summaries{.aggregate = summaryOf(1.239, 7.005, {5.0049, 1.239})};
    summaries.providers[ProviderID::Claude] = summaryOf(1.239, 7.005, {5.0049, 1.239});
    summaries.providers[ProviderID::Claude].rollup.last7d.unpricedModels = {"zephyr", "nimbus"};
    const LocalAutomationSnapshot snapshot = build(summaries, {ProviderID::Claude});
    ASSERT_EQ(snapshot.providers.size(), 1U);
    const LocalAutomationProvider& row = snapshot.providers[0];
    EXPECT_EQ(row.id, "claude");
    EXPECT_EQ(row.name, "Claude Code");
    EXPECT_EQ(row.currencyCode, "USD");
    EXPECT_EQ(row.today, 1.24);
    EXPECT_EQ(row.window, 7.01);
    EXPECT_EQ(row.costBasis, Basis::RealSpend);
    EXPECT_EQ(row.valueMetric, WidgetValueMetric::Dollars);
    EXPECT_THAT(row.series, ElementsAre(5.0, 1.24));
    EXPECT_EQ(row.eventsToday, 2);
    EXPECT_EQ(row.eventsWindow, 5);
    EXPECT_THAT(row.unpricedModels, ElementsAre("nimbus", "zephyr"));
    EXPECT_EQ(row.headroom.state, "unknown");
    EXPECT_EQ(row.aiuWindow, std::nullopt);
    EXPECT_EQ(snapshot.schemaVersion, 4);
    EXPECT_EQ(snapshot.generatedAt, now);
    EXPECT_EQ(snapshot.source, "a-test");
    EXPECT_EQ(snapshot.windowDays, 7);
    EXPECT_EQ(snapshot.totalToday, 1.24);
    EXPECT_EQ(snapshot.totalWindow, 7.01);
    EXPECT_THAT(snapshot.series, ElementsAre(5.0, 1.24));
    EXPECT_EQ(snapshot.status, "ok");
    EXPECT_EQ(snapshot.notice, std::nullopt);
}

TEST(LocalAutomationSnapshotBuilder, aProviderWithoutASummaryHasLimitsAndNoRow) {
    const RateLimitSnapshot limits{.primary = RateLimitWindow{.usedPercent = 12.345, .windowMinutes = 300},
                                   .planType = "plus"};
    const LocalAutomationSnapshot snapshot =
        build({.aggregate = summaryOf(3.14159, 10, {1.005, 2.5})}, {ProviderID::Codex}, {{ProviderID::Codex, limits}});
    EXPECT_THAT(snapshot.providers, IsEmpty());
    ASSERT_TRUE(snapshot.rateLimits.contains("codex"));
    EXPECT_EQ(snapshot.rateLimits.at("codex").primary5h->usedPercent, 12.35);
    EXPECT_TRUE(snapshot.rateLimits.at("codex").primary5h->official);
    EXPECT_EQ(snapshot.rateLimits.at("codex").planType, "plus");
    EXPECT_EQ(snapshot.status, "no_sources");
    EXPECT_EQ(snapshot.notice, "No live provider sources are available on this Mac.");
    EXPECT_EQ(snapshot.costBasis, Basis::RealSpend);
    EXPECT_EQ(snapshot.valueMetric, WidgetValueMetric::Dollars);
    EXPECT_EQ(snapshot.totalToday, 3.14);
    EXPECT_THAT(snapshot.series, ElementsAre(1.01, 2.5));
}

TEST(LocalAutomationSnapshotBuilder, limitsOfProvidersNobodyAskedForAreLeftOut) {
    const std::map<ProviderID, RateLimitSnapshot> limits{{ProviderID::Grok, {}}};
    EXPECT_THAT(build(summariesFor({ProviderID::Claude}), {ProviderID::Claude}, limits).rateLimits, IsEmpty());
}

TEST(LocalAutomationSnapshotBuilder, anEmptySummaryIsAFullRowOfZeros) {
    UsageWindowSummaries summaries;
    summaries.providers[ProviderID::Claude] = {.dailyCostSeries = {0, 0}};
    const LocalAutomationSnapshot snapshot = build(summaries, {ProviderID::Claude});
    ASSERT_EQ(snapshot.providers.size(), 1U);
    EXPECT_EQ(snapshot.providers[0].today, 0);
    EXPECT_THAT(snapshot.providers[0].series, ElementsAre(0, 0));
    EXPECT_THAT(snapshot.providers[0].unpricedModels, IsEmpty());
    EXPECT_EQ(snapshot.providers[0].headroom, (LocalAutomationHeadroom{.state = "unknown"}));
    EXPECT_EQ(snapshot.windowDays, 1);
}

TEST(LocalAutomationSnapshotBuilder, headroomComesFromTheLimits) {
    const Date reset = now + 3600;
    const auto headroomOf = [&](RateLimitSnapshot limits) {
        return build(summariesFor({ProviderID::Claude}), {ProviderID::Claude}, {{ProviderID::Claude, limits}})
            .providers[0]
            .headroom;
    };
    EXPECT_EQ(headroomOf({.primary = RateLimitWindow{33.333, 300, reset}}),
              (LocalAutomationHeadroom{"official", 66.67, 300, reset}));
    EXPECT_EQ(headroomOf({.primary = RateLimitWindow{90, 300, reset}, .capturedAt = now - 1200}),
              (LocalAutomationHeadroom{.state = "likely_exhausted"}));
    EXPECT_EQ(headroomOf({.primary = RateLimitWindow{50, 300, now - 1}}),
              (LocalAutomationHeadroom{.state = "unknown"}));
}

TEST(LocalAutomationSnapshotBuilder, rowsStandInTheOrderAskedFor) {
    const std::vector<ProviderID> ids{ProviderID::MuseSpark, ProviderID::Claude};
    const LocalAutomationSnapshot snapshot = build(summariesFor(ids), ids);
    EXPECT_EQ(snapshot.providers[0].id, "muse_spark");
    EXPECT_EQ(snapshot.providers[1].id, "claude");
}

TEST(LocalAutomationSnapshotBuilder, tokenProvidersAloneAreSummedInTokens) {
    const std::vector<ProviderID> ids{ProviderID::Copilot, ProviderID::Cursor};
    const LocalAutomationSnapshot snapshot = build(summariesFor(ids), ids);
    EXPECT_EQ(snapshot.valueMetric, WidgetValueMetric::Tokens);
    EXPECT_EQ(snapshot.costBasis, Basis::TokenEstimate);
    EXPECT_EQ(snapshot.providers[0].today, 110);
    EXPECT_EQ(snapshot.providers[0].window, 220);
    EXPECT_THAT(snapshot.providers[0].series, IsEmpty());
    EXPECT_EQ(snapshot.totalToday, 220);
    EXPECT_EQ(snapshot.totalWindow, 440);
    EXPECT_THAT(snapshot.series, IsEmpty());
}

TEST(LocalAutomationSnapshotBuilder, aMixOfTokensAndDollarsReportsTheAggregatesMoney) {
    const std::vector<ProviderID> ids{ProviderID::Copilot, ProviderID::Claude};
    const LocalAutomationSnapshot snapshot = build(summariesFor(ids), ids);
    EXPECT_EQ(snapshot.valueMetric, WidgetValueMetric::Dollars);
    EXPECT_EQ(snapshot.totalToday, 10);
    EXPECT_THAT(snapshot.series, ElementsAre(60, 10));
}

struct BasisCase {
    const char* name;
    std::vector<ProviderID> ids;
    Basis basis;
};
class AggregateBasis : public ::testing::TestWithParam<BasisCase> {};
TEST_P(AggregateBasis, followsTheRows) {
    EXPECT_EQ(build(summariesFor(GetParam().ids), GetParam().ids).costBasis, GetParam().basis);
}
INSTANTIATE_TEST_SUITE_P(
    ByRows, AggregateBasis,
    ::testing::Values(
        BasisCase{"none", {}, Basis::RealSpend}, BasisCase{"claude", {ProviderID::Claude}, Basis::RealSpend},
        BasisCase{"codex", {ProviderID::Codex}, Basis::NotionalListPrice},
        BasisCase{"gemini", {ProviderID::Gemini}, Basis::NotionalListPrice},
        BasisCase{"grok", {ProviderID::Grok}, Basis::NotionalListPrice},
        BasisCase{"museSpark", {ProviderID::MuseSpark}, Basis::NotionalListPrice},
        BasisCase{"cursor", {ProviderID::Cursor}, Basis::TokenEstimate},
        BasisCase{"copilotAndClaude", {ProviderID::Copilot, ProviderID::Claude}, Basis::RealSpend},
        BasisCase{"codexAndCopilot", {ProviderID::Codex, ProviderID::Copilot}, Basis::NotionalListPrice},
        BasisCase{"codexAndClaude", {ProviderID::Codex, ProviderID::Claude}, Basis::RealAndNotionalListPrice},
        BasisCase{
            "allThree", {ProviderID::Codex, ProviderID::Claude, ProviderID::Cursor}, Basis::RealAndNotionalListPrice}),
    [](const auto& row) { return std::string{row.param.name}; });

}  // namespace
}  // namespace quorvane::testing
