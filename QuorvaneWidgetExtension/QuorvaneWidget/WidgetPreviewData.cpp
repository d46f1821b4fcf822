#include "QuorvaneWidgetExtension/QuorvaneWidget/WidgetPreviewData.h"

#include <array>
#include <cstddef>
#include <numeric>

#include "QuorvaneCore/platform/Clock.h"

namespace quorvane {
namespace {

/// How a fortnight of work looks: busy days, quiet ends of weeks, and more of it lately.
constexpr std::array<double, 14> fortnight{5, 7, 6, 8, 7, 2, 1, 6, 9, 8, 10, 9, 3, 12};

/// A series of so many days that ends as the fortnight ends and has that sum.
std::vector<double> series(std::size_t days, double total) {
    std::vector<double> values(days);
    for (std::size_t ago = 0; ago < days; ++ago) {
        values[days - 1 - ago] = fortnight[fortnight.size() - 1 - ago % fortnight.size()];
    }
    const double sum = std::accumulate(values.begin(), values.end(), 0.0);
    for (double& value : values)
        value *= total / sum;
    return values;
}

WidgetProviderSnapshot row(std::string id, std::string name, std::string tintHex, double today, double window) {
    return {.id = std::move(id),
            .name = std::move(name),
            .tintHex = std::move(tintHex),
            .today = today,
            .window = window,
            .currencyCode = "USD",
            .basis = WidgetCostBasis::NotionalListPrice,
            .series = series(14, window)};
}

std::vector<WidgetProviderSnapshot> rows() {
    WidgetProviderSnapshot claude = row("claude", "Claude Code", "#D6783F", 1009.89, 7970.04);
    claude.basis = WidgetCostBasis::RealSpend;
    claude.usedPercent = 60;
    claude.weeklyUsedPercent = 42;
    claude.usageOfficial = true;
    WidgetProviderSnapshot codex = row("codex", "Codex", "#2F2F33", 225.19, 4439.43);
    codex.usedPercent = 83;
    codex.weeklyUsedPercent = 62;
    codex.usageOfficial = true;
    WidgetProviderSnapshot grok = row("grok", "Grok", "#111111", 42.18, 318.42);
    grok.weeklyUsedPercent = 23;
    grok.usageOfficial = true;
    WidgetProviderSnapshot copilot = row("copilot", "GitHub Copilot", "#6E40C9", 184200, 1482000);
    WidgetProviderSnapshot cursor = row("cursor", "Cursor", "#4A4A52", 143800, 1118000);
    for (WidgetProviderSnapshot* estimate : {&copilot, &cursor}) {
        estimate->metric = WidgetValueMetric::Tokens;
        estimate->basis = WidgetCostBasis::RealSpend;
    }
    return {claude, codex, grok, row("muse_spark", "Muse Spark", "#0866FF", 12.4, 96.8), copilot, cursor};
}

WidgetWindowSnapshot window(std::int64_t days, double total, double claude, double codex) {
    const auto length = static_cast<std::size_t>(days);
    WidgetWindowSnapshot window{.days = days, .totalWindow = total, .series = series(length, total)};
    window.providerWindows["claude"] = {.window = claude, .series = series(length, claude)};
    window.providerWindows["codex"] = {.window = codex, .series = series(length, codex)};
    return window;
}

WidgetSnapshot made(Date now) {
    constexpr double total = 12409.47;
    WidgetSnapshot snapshot{.generatedAt = now,
                            .title = "All providers",
                            .totalToday = 1235.08,
                            .totalWindow = total,
                            .currencyCode = "USD",
                            .windowDays = 14,
                            .basis = WidgetCostBasis::RealAndNotionalListPrice,
                            .series = series(14, total),
                            .providers = rows(),
                            .staleAfter = now + WidgetPreviewData::freshSeconds};
    snapshot.windows[7] = window(7, 5900, 3700, 2200);
    snapshot.windows[14] = window(14, total, 7970.04, 4439.43);
    snapshot.windows[30] = window(30, 24500, 15700, 8800);
    snapshot.windows[90] = window(90, 68000, 44000, 24000);
    return snapshot;
}

}  // namespace

const WidgetSnapshot& WidgetPreviewData::snapshot() {
    static const WidgetSnapshot sample = made(Clock::now());
    return sample;
}

}  // namespace quorvane
