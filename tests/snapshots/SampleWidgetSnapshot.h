#pragma once
#include "QuorvaneCore/snapshots/WidgetSnapshot.h"

namespace quorvane::testing {

/// A snapshot in which every field has a value of its own and no amount lies near half a cent. Two providers; the
/// second stands in the timeframe of 30 days alone, and has no limits.
inline WidgetSnapshot sampleWidgetSnapshot() {
    const WidgetProviderSnapshot claude{.id = "claude",
                                        .name = "Claude Code",
                                        .tintHex = "#D97757",
                                        .today = 50.001,
                                        .window = 300.25,
                                        .currencyCode = "USD",
                                        .metric = WidgetValueMetric::Dollars,
                                        .basis = WidgetCostBasis::RealSpend,
                                        .usedPercent = 50.0,
                                        .weeklyUsedPercent = 20.0,
                                        .usageOfficial = true,
                                        .series = {1, 2.5, 50}};
    const WidgetProviderSnapshot copilot{.id = "copilot",
                                         .name = "GitHub Copilot",
                                         .tintHex = "000000",
                                         .today = 1200,
                                         .window = 56000,
                                         .currencyCode = "EUR",
                                         .metric = WidgetValueMetric::Tokens,
                                         .basis = WidgetCostBasis::NotionalListPrice,
                                         .series = {}};
    return {.generatedAt = Date{1767268800},
            .title = "All agents",
            .totalToday = 51.5,
            .totalWindow = 310.75,
            .currencyCode = "USD",
            .metric = WidgetValueMetric::Dollars,
            .windowDays = 30,
            .basis = WidgetCostBasis::RealAndNotionalListPrice,
            .series = {1.5, 3, 51.5},
            .providers = {claude, copilot},
            .staleAfter = Date{1767272400},
            .errorMessage = "could not read \"Codex\"",
            .availabilityNotice = "Grok — no data",
            .windows = {{7,
                         {.days = 7,
                          .totalWindow = 70.5,
                          .series = {10, 60.5},
                          .providerWindows = {{"claude", {.window = 70.25, .series = {9.75, 60.5}}}}}},
                        {30,
                         {.days = 30,
                          .totalWindow = 310.75,
                          .series = {1.5, 3, 51.5},
                          .providerWindows = {{"claude", {.window = 300.25, .series = {1, 2.5, 50}}},
                                              {"copilot", {.window = 56000, .series = {}}}}}}}};
}

}  // namespace quorvane::testing
