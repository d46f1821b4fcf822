#include <gtest/gtest.h>

#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetEntryView.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetPalette.h"
#include "tests/widget/Snapshots.h"

namespace quorvane {
namespace {

using testing::providerRow;
using testing::widgetSnapshot;

const WidgetEnvironment surroundings{.now = Date{1500}};

QuorvaneWidgetEntryView viewOf(const WidgetSnapshot& snapshot, QuorvaneWidgetFamily family) {
    return {.entry = {.date = Date{1500}, .snapshot = snapshot}, .family = family};
}

TEST(QuorvaneWidgetEntryViewTest, drawsEachFamilyInItsWidget) {
    using enum QuorvaneWidgetFamily;
    const WidgetSnapshot snapshot = widgetSnapshot();
    EXPECT_TRUE(std::holds_alternative<SmallSpendWidget>(viewOf(snapshot, small).body(surroundings)));
    EXPECT_TRUE(std::holds_alternative<MediumSpendWidget>(viewOf(snapshot, medium).body(surroundings)));
    EXPECT_TRUE(std::holds_alternative<LargeSpendWidget>(viewOf(snapshot, large).body(surroundings)));
}

TEST(SmallSpendWidgetTest, holdsItsTextsFromTopToBottom) {
    WidgetSnapshot snapshot = widgetSnapshot();
    snapshot.errorMessage = "The index could not be read";
    const SmallSpendWidget widget = SmallSpendWidget::of({.snapshot = snapshot}, surroundings);
    EXPECT_EQ(widget.header, (WidgetHeader{.title = "All providers", .compact = true}));
    EXPECT_EQ(widget.totalToday, "$12.50");
    EXPECT_EQ(widget.badge, std::nullopt);
    EXPECT_EQ(widget.todayLabel, "today");
    EXPECT_EQ(widget.sparkline.values, snapshot.series);
    EXPECT_EQ(widget.sparkline.tintHex, "#DF7A2E");
    ASSERT_TRUE(widget.caption);
    EXPECT_EQ(widget.caption->text, "The index could not be read");
}

TEST(SmallSpendWidgetTest, hasABadgeWhereTheTotalIsNotAllMoneySpent) {
    WidgetSnapshot snapshot = widgetSnapshot();
    for (const WidgetCostBasis basis :
         {WidgetCostBasis::NotionalListPrice, WidgetCostBasis::RealAndNotionalListPrice}) {
        snapshot.basis = basis;
        const SmallSpendWidget widget = SmallSpendWidget::of({.snapshot = snapshot}, surroundings);
        ASSERT_TRUE(widget.badge);
        EXPECT_EQ(widget.badge->text, shortLabel(basis));
    }
}

TEST(MediumSpendWidgetTest, listsProvidersWithLimitsOnlyWhereTheyAreAskedFor) {
    WidgetSnapshot snapshot = widgetSnapshot();
    snapshot.providers = {providerRow("claude", "Claude Code", 10)};
    snapshot.providers[0].usedPercent = 60;
    snapshot.providers[0].usageOfficial = true;
    QuorvaneWidgetEntry entry{.snapshot = snapshot};
    const auto limitOf = [&entry] {
        const MediumSpendWidget widget = MediumSpendWidget::of(entry, surroundings);
        return std::get<std::vector<ProviderGaugeRow>>(widget.gauges.providers).at(0).limit;
    };
    ASSERT_TRUE(limitOf());
    EXPECT_EQ(limitOf()->percent, 60);
    entry.configuration.showLimits = false;
    EXPECT_FALSE(limitOf());
}

TEST(MediumSpendWidgetTest, hasAFullHeaderTheTotalAndACaptionOnlyIfSomethingIsToSay) {
    const MediumSpendWidget widget = MediumSpendWidget::of({.snapshot = widgetSnapshot()}, surroundings);
    EXPECT_EQ(widget.header, (WidgetHeader{.title = "All providers", .compact = false}));
    EXPECT_EQ(widget.totalToday, "$12.50");
    EXPECT_EQ(widget.caption, std::nullopt);
}

TEST(LargeSpendWidgetTest, holdsBothFiguresWithTheirLabels) {
    WidgetSnapshot snapshot = widgetSnapshot();
    snapshot.providers = {providerRow("claude", "Claude Code", 10), providerRow("codex", "Codex", 2.5),
                          providerRow("grok", "Grok", 1)};
    const LargeSpendWidget widget = LargeSpendWidget::of({.snapshot = snapshot}, surroundings);
    EXPECT_EQ(widget.totalToday, "$12.50");
    EXPECT_EQ(widget.todayLabel, "today");
    EXPECT_EQ(widget.totalWindow, "$125.00");
    EXPECT_EQ(widget.windowLabel, "last 30 days");
    EXPECT_EQ(widget.sparkline.tintHex, WidgetPalette::brandTintHex);
    EXPECT_EQ(std::get<std::vector<ProviderGaugeRow>>(widget.gauges.providers).size(), 3U);
    EXPECT_EQ(widget.footer.freshness.text, "Updated 8 min. ago");
    EXPECT_EQ(widget.footer.notice, std::nullopt);
}

TEST(SpendWidgetsTest, drawNoRowsWithoutProviders) {
    const MediumSpendWidget medium = MediumSpendWidget::of({.snapshot = widgetSnapshot()}, surroundings);
    EXPECT_TRUE(std::get<std::vector<ProviderGaugeRow>>(medium.gauges.providers).empty());
    const LargeSpendWidget large = LargeSpendWidget::of({.snapshot = widgetSnapshot()}, surroundings);
    EXPECT_TRUE(std::get<std::vector<ProviderGaugeRow>>(large.gauges.providers).empty());
    EXPECT_EQ(large.gauges.more, "");
}

}  // namespace
}  // namespace quorvane
