#include <numeric>

#include <gtest/gtest.h>

#include "QuorvaneWidgetExtension/QuorvaneWidget/WidgetPreviewData.h"

namespace quorvane {
namespace {

struct RowCase {
    const char* id;
    const char* name;
    const char* tint;
    double today;
    double window;
    WidgetValueMetric metric;
    WidgetCostBasis basis;
    std::optional<double> used;
    std::optional<double> weekly;
    bool official;
};

using enum WidgetValueMetric;
using enum WidgetCostBasis;

constexpr RowCase rows[]{
    {"claude", "Claude Code", "#D6783F", 1009.89, 7970.04, Dollars, RealSpend, 60, 42, true},
    {"codex", "Codex", "#2F2F33", 225.19, 4439.43, Dollars, NotionalListPrice, 83, 62, true},
    {"grok", "Grok", "#111111", 42.18, 318.42, Dollars, NotionalListPrice, std::nullopt, 23, true},
    {"muse_spark", "Muse Spark", "#0866FF", 12.4, 96.8, Dollars, NotionalListPrice, std::nullopt, std::nullopt, false},
    {"copilot", "GitHub Copilot", "#6E40C9", 184200, 1482000, Tokens, RealSpend, std::nullopt, std::nullopt, false},
    {"cursor", "Cursor", "#4A4A52", 143800, 1118000, Tokens, RealSpend, std::nullopt, std::nullopt, false},
};

TEST(WidgetPreviewDataTest, hasItsRowsInOrder) {
    const WidgetSnapshot& sample = WidgetPreviewData::snapshot();
    ASSERT_EQ(sample.providers.size(), std::size(rows));
    for (std::size_t place = 0; place < std::size(rows); ++place) {
        const WidgetProviderSnapshot& row = sample.providers[place];
        SCOPED_TRACE(rows[place].id);
        EXPECT_EQ(row.id, rows[place].id);
        EXPECT_EQ(row.name, rows[place].name);
        EXPECT_EQ(row.tintHex, rows[place].tint);
        EXPECT_EQ(row.today, rows[place].today);
        EXPECT_EQ(row.window, rows[place].window);
        EXPECT_EQ(row.metric, rows[place].metric);
        EXPECT_EQ(row.basis, rows[place].basis);
        EXPECT_EQ(row.usedPercent, rows[place].used);
        EXPECT_EQ(row.weeklyUsedPercent, rows[place].weekly);
        EXPECT_EQ(row.usageOfficial, rows[place].official);
        EXPECT_EQ(row.currencyCode, "USD");
    }
}

TEST(WidgetPreviewDataTest, hasItsTotalsAndTimeframes) {
    const WidgetSnapshot& sample = WidgetPreviewData::snapshot();
    EXPECT_EQ(sample.schemaVersion, 4);
    EXPECT_EQ(sample.title, "All providers");
    EXPECT_EQ(sample.metric, Dollars);
    EXPECT_EQ(sample.basis, RealAndNotionalListPrice);
    EXPECT_EQ(sample.windowDays, 14);
    EXPECT_EQ(sample.totalToday, 1235.08);
    EXPECT_EQ(sample.totalWindow, 12409.47);
    EXPECT_EQ(sample.staleAfter - sample.generatedAt, 1800);
    ASSERT_EQ(sample.windows.size(), 4U);
    EXPECT_EQ(sample.windows.at(7).totalWindow, 5900);
    EXPECT_EQ(sample.windows.at(14).totalWindow, 12409.47);
    EXPECT_EQ(sample.windows.at(30).totalWindow, 24500);
    EXPECT_EQ(sample.windows.at(90).totalWindow, 68000);
    EXPECT_EQ(sample.windows.at(7).providerWindows.at("claude").window, 3700);
    EXPECT_EQ(sample.windows.at(7).providerWindows.at("codex").window, 2200);
    EXPECT_EQ(sample.windows.at(30).providerWindows.at("claude").window, 15700);
    EXPECT_EQ(sample.windows.at(30).providerWindows.at("codex").window, 8800);
    EXPECT_EQ(sample.windows.at(90).providerWindows.at("claude").window, 44000);
    EXPECT_EQ(sample.windows.at(90).providerWindows.at("codex").window, 24000);
}

TEST(WidgetPreviewDataTest, hasSeriesOfTheTimeframesLengthAndSum) {
    for (const auto& [days, window] : WidgetPreviewData::snapshot().windows) {
        EXPECT_EQ(window.days, days);
        EXPECT_EQ(window.series.size(), static_cast<std::size_t>(days));
        EXPECT_NEAR(std::accumulate(window.series.begin(), window.series.end(), 0.0), window.totalWindow, 1e-6);
    }
}

TEST(WidgetPreviewDataTest, isMadeOnce) {
    EXPECT_EQ(&WidgetPreviewData::snapshot(), &WidgetPreviewData::snapshot());
}

}  // namespace
}  // namespace quorvane
