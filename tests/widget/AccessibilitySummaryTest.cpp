#include <gtest/gtest.h>

#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetEntryView.h"
#include "tests/widget/Snapshots.h"

namespace quorvane {
namespace {

using testing::providerRow;
using testing::tokenRow;
using testing::widgetSnapshot;

constexpr Date fresh{1500};
constexpr Date late{2800};

std::string spoken(const WidgetSnapshot& snapshot, QuorvaneWidgetFamily family = QuorvaneWidgetFamily::large,
                   Date now = fresh, std::string_view locale = "en_US") {
    const QuorvaneWidgetEntryView view{.entry = {.date = now, .snapshot = snapshot}, .family = family};
    return view.accessibilitySummary({.locale = Locale{locale}, .now = now});
}

/// What is spoken of one row.
std::string spokenRow(const WidgetProviderSnapshot& row) {
    WidgetSnapshot snapshot = widgetSnapshot();
    snapshot.providers = {row};
    const std::string whole = spoken(snapshot);
    const std::string first = spoken(widgetSnapshot()) + ", ";
    EXPECT_TRUE(whole.starts_with(first)) << whole;
    return whole.substr(first.size());
}

TEST(AccessibilitySummaryTest, withoutProvidersIsTheTotalsAlone) {
    EXPECT_EQ(spoken(widgetSnapshot()), "All providers, today $12.50, real spend, last 30 days");
}

TEST(AccessibilitySummaryTest, withoutProvidersStillTellsStaleDataAndNotices) {
    WidgetSnapshot snapshot = widgetSnapshot();
    snapshot.availabilityNotice = "No price for o9";
    EXPECT_EQ(spoken(snapshot, QuorvaneWidgetFamily::large, late),
              "All providers, today $12.50, real spend, last 30 days, data may be stale, open Quorvane to refresh, "
              "No price for o9");
}

TEST(AccessibilitySummaryTest, namesEachProviderButInTheSmallSize) {
    WidgetSnapshot snapshot = widgetSnapshot();
    snapshot.providers = {providerRow("claude", "Claude Code", 10), providerRow("codex", "Codex", 2.5)};
    const std::string all = "All providers, today $12.50, real spend, last 30 days, Claude Code $10.00, Codex $2.50";
    EXPECT_EQ(spoken(snapshot, QuorvaneWidgetFamily::large), all);
    EXPECT_EQ(spoken(snapshot, QuorvaneWidgetFamily::medium), all);
    EXPECT_EQ(spoken(snapshot, QuorvaneWidgetFamily::small), "All providers, today $12.50, real spend, last 30 days");
}

TEST(AccessibilitySummaryTest, tellsAProvidersOwnPercentageInWholeNumbersHalvesAwayFromZero) {
    WidgetProviderSnapshot row = providerRow("claude", "Claude Code", 10);
    row.usageOfficial = true;
    row.weeklyUsedPercent = 77;
    EXPECT_EQ(spokenRow(row), "Claude Code $10.00");
    row.usedPercent = 49.5;
    EXPECT_EQ(spokenRow(row), "Claude Code $10.00, 50% used");
    row.usedPercent = 48.5;  // away from zero, not to the even number
    EXPECT_EQ(spokenRow(row), "Claude Code $10.00, 49% used");
    row.usedPercent = -0.4;
    EXPECT_EQ(spokenRow(row), "Claude Code $10.00, 0% used");
    row.usedPercent = 49.4;
    EXPECT_EQ(spokenRow(row), "Claude Code $10.00, 49% used");
    row.usedPercent = 130;
    EXPECT_EQ(spokenRow(row), "Claude Code $10.00, 130% used");
    row.usageOfficial = false;
    EXPECT_EQ(spokenRow(row), "Claude Code $10.00");
}

TEST(AccessibilitySummaryTest, tellsWhatIsNotMoneySpent) {
    WidgetProviderSnapshot row = providerRow("codex", "Codex", 2.5);
    row.basis = WidgetCostBasis::NotionalListPrice;
    EXPECT_EQ(spokenRow(row), "Codex $2.50, notional");
    row.basis = WidgetCostBasis::RealAndNotionalListPrice;
    EXPECT_EQ(spokenRow(row), "Codex $2.50, incl notional");
    row.usageOfficial = true;
    row.usedPercent = 83;
    EXPECT_EQ(spokenRow(row), "Codex $2.50, 83% used, incl notional");
}

TEST(AccessibilitySummaryTest, tellsTokensAsAnEstimateWhateverTheirBasis) {
    WidgetProviderSnapshot row = tokenRow("copilot", "GitHub Copilot", 184200);
    for (const WidgetCostBasis basis :
         {WidgetCostBasis::RealSpend, WidgetCostBasis::NotionalListPrice, WidgetCostBasis::RealAndNotionalListPrice}) {
        row.basis = basis;
        EXPECT_EQ(spokenRow(row), "GitHub Copilot 184.2K tok, estimate");
    }
}

TEST(AccessibilitySummaryTest, tellsThatDataIsStaleBeforeTheErrorAndNotTheNoticeBesideAnError) {
    WidgetSnapshot snapshot = widgetSnapshot();
    snapshot.errorMessage = "The index could not be read";
    snapshot.availabilityNotice = "No price for o9";
    EXPECT_EQ(spoken(snapshot, QuorvaneWidgetFamily::small, late),
              "All providers, today $12.50, real spend, last 30 days, data may be stale, open Quorvane to refresh, "
              "The index could not be read");
}

TEST(AccessibilitySummaryTest, tellsTheBasisOfTheTotalAndTokensWhereTheSnapshotCountsThem) {
    WidgetSnapshot snapshot = widgetSnapshot();
    snapshot.basis = WidgetCostBasis::RealAndNotionalListPrice;
    EXPECT_EQ(spoken(snapshot), "All providers, today $12.50, " +
                                    std::string{shortLabel(WidgetCostBasis::RealAndNotionalListPrice)} +
                                    ", last 30 days");
    snapshot.metric = WidgetValueMetric::Tokens;
    snapshot.totalToday = 999;
    EXPECT_TRUE(spoken(snapshot).starts_with("All providers, today 999 tok, ")) << spoken(snapshot);
}

TEST(AccessibilitySummaryTest, writesMoneyAfterTheLocale) {
    WidgetSnapshot snapshot = widgetSnapshot();
    snapshot.currencyCode = "EUR";
    EXPECT_EQ(spoken(snapshot, QuorvaneWidgetFamily::small, fresh, "de_DE"),
              "All providers, today 12,50\u00a0€, real spend, last 30 days");
}

}  // namespace
}  // namespace quorvane
