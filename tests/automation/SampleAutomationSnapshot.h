#pragma once
#include "QuorvaneCore/snapshots/LocalAutomationSnapshot.h"

namespace quorvane::testing {

/// A snapshot in which every field has a value, and no two the same one.
inline LocalAutomationSnapshot sampleAutomationSnapshot() {
    LocalAutomationProvider claude{
        .id = "claude",
        .name = "Claude Code",
        .currencyCode = "USD",
        .today = 1.25,
        .window = 40.5,
        .costBasis = LocalAutomationCostBasis::RealSpend,
        .valueMetric = WidgetValueMetric::Dollars,
        .series = {39.25, 1.25},
        .eventsToday = 3,
        .eventsWindow = 77,
        .unpricedModels = {"nimbus", "zephyr"},
        .headroom = {.state = "official", .remainingPercent = 57.5, .windowMinutes = 300, .resetsAt = Date{1772361000}},
        .aiuWindow = 12.5,
    };
    LocalAutomationProvider copilot{
        .id = "copilot",
        .name = "GitHub Copilot",
        .currencyCode = "USD",
        .today = 1200,
        .window = 34000,
        .costBasis = LocalAutomationCostBasis::TokenEstimate,
        .valueMetric = WidgetValueMetric::Tokens,
        .eventsToday = 1,
        .eventsWindow = 9,
        .headroom = {.state = "unknown"},
    };
    LocalAutomationSnapshot snapshot{
        .generatedAt = Date{1772357400},  // 2026-03-01T09:30:00Z
        .source = "a-test",
        .windowDays = 30,
        .currencyCode = "USD",
        .totalToday = 1.3,
        .totalWindow = 41,
        .costBasis = LocalAutomationCostBasis::RealSpend,
        .valueMetric = WidgetValueMetric::Dollars,
        .series = {39.7, 1.3},
        .providers = {claude, copilot},
        .status = "ok",
        .notice = "A notice.",
    };
    snapshot.rateLimits["claude"] = {
        .planType = "max",
        .primary5h =
            LocalAutomationRateLimitWindow{
                .usedPercent = 42.5, .windowMinutes = 300, .resetsAt = Date{1772361000}, .official = true},
        .secondaryWeekly = LocalAutomationRateLimitWindow{.usedPercent = 50, .windowMinutes = 10080, .official = false},
    };
    return snapshot;
}

}  // namespace quorvane::testing
