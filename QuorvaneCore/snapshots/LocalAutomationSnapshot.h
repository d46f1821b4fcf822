#pragma once
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/ratelimits/ProviderHeadroom.h"
#include "QuorvaneCore/snapshots/LocalAutomationCostBasis.h"
#include "QuorvaneCore/snapshots/WidgetValueMetric.h"

namespace quorvane {

/// The records of "latest-snapshot.json", which local scripts read: docs/automation.md tells every key. Money and
/// percentages are rounded to cents by whoever builds them. Plain values; any thread.
struct LocalAutomationRateLimitWindow {
    double usedPercent = 0;          ///< 0 to 100
    std::int64_t windowMinutes = 0;  ///< length of the window
    std::optional<Date> resetsAt;
    bool official = false;  ///< the provider's own figure rather than an estimate

    friend bool operator==(const LocalAutomationRateLimitWindow&, const LocalAutomationRateLimitWindow&) = default;
};

struct LocalAutomationRateLimits {
    std::optional<std::string> planType;
    std::optional<LocalAutomationRateLimitWindow> primary5h;
    std::optional<LocalAutomationRateLimitWindow> secondaryWeekly;

    friend bool operator==(const LocalAutomationRateLimits&, const LocalAutomationRateLimits&) = default;
};

struct LocalAutomationHeadroom {
    std::string state;                       ///< "official", "likely_exhausted" or "unknown"
    std::optional<double> remainingPercent;  ///< with "official" only, as the two below
    std::optional<std::int64_t> windowMinutes;
    std::optional<Date> resetsAt;

    /// The verdict as the file has it.
    [[nodiscard]] static LocalAutomationHeadroom from(const ProviderHeadroom& headroom);

    friend bool operator==(const LocalAutomationHeadroom&, const LocalAutomationHeadroom&) = default;
};

struct LocalAutomationProvider {
    std::string id;            ///< the provider's raw name
    std::string name;          ///< to show
    std::string currencyCode;  ///< ISO code
    double today = 0;          ///< dollars or tokens, as `valueMetric` says
    double window = 0;
    LocalAutomationCostBasis costBasis = LocalAutomationCostBasis::RealSpend;
    WidgetValueMetric valueMetric = WidgetValueMetric::Dollars;
    std::vector<double> series;  ///< dollars by day, today last; empty where tokens are told
    std::int64_t eventsToday = 0;
    std::int64_t eventsWindow = 0;
    std::vector<std::string> unpricedModels;  ///< of the window, ascending
    LocalAutomationHeadroom headroom;
    std::optional<double> aiuWindow;  ///< Copilot's AI units of the window, from a host that has them

    friend bool operator==(const LocalAutomationProvider&, const LocalAutomationProvider&) = default;
};

struct LocalAutomationSnapshot {
    static constexpr std::int64_t currentSchemaVersion = 4;

    std::int64_t schemaVersion = currentSchemaVersion;
    Date generatedAt;
    std::string source;  ///< the writer's word for itself
    std::int64_t windowDays = 0;
    std::string currencyCode;
    double totalToday = 0;
    double totalWindow = 0;
    LocalAutomationCostBasis costBasis = LocalAutomationCostBasis::RealSpend;
    WidgetValueMetric valueMetric = WidgetValueMetric::Dollars;
    std::vector<double> series;
    std::vector<LocalAutomationProvider> providers;
    std::map<std::string, LocalAutomationRateLimits, std::less<>> rateLimits;  ///< by provider id
    std::string status;                                                        ///< "ok" or "no_sources"
    std::optional<std::string> notice;

    /// The same figures as a short Markdown text, money in the environment's locale, without a line feed at the end.
    [[nodiscard]] std::string markdownReport() const;

    /// Whether a reader would learn nothing new: all is compared but the version, the time and the top-level metric,
    /// which only changes with the rows.
    [[nodiscard]] bool hasSameContent(const LocalAutomationSnapshot& other) const;

    friend bool operator==(const LocalAutomationSnapshot&, const LocalAutomationSnapshot&) = default;
};

}  // namespace quorvane
