#pragma once
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/snapshots/WidgetCostBasis.h"
#include "QuorvaneCore/snapshots/WidgetValueMetric.h"

namespace quorvane {

/// One provider's figures for one timeframe.
struct WidgetProviderWindow {
    double window = 0;           ///< total over the timeframe
    std::vector<double> series;  ///< by day

    friend bool operator==(const WidgetProviderWindow&, const WidgetProviderWindow&) = default;
};

/// All figures for one timeframe.
struct WidgetWindowSnapshot {
    std::int64_t days = 0;                                                     ///< length of the timeframe
    double totalWindow = 0;                                                    ///< of all providers over the timeframe
    std::vector<double> series;                                                ///< of all providers, by day
    std::map<std::string, WidgetProviderWindow, std::less<>> providerWindows;  ///< by provider id

    friend bool operator==(const WidgetWindowSnapshot&, const WidgetWindowSnapshot&) = default;
};

/// One provider's row.
struct WidgetProviderSnapshot {
    std::string id;            ///< the provider's raw name
    std::string name;          ///< to show
    std::string tintHex;       ///< its colour, as `HexColor` reads it
    double today = 0;          ///< today's value
    double window = 0;         ///< value over the current timeframe
    std::string currencyCode;  ///< ISO code of the values
    WidgetValueMetric metric = WidgetValueMetric::Dollars;
    WidgetCostBasis basis = WidgetCostBasis::RealSpend;
    std::optional<double> usedPercent;        ///< of the short limit window
    std::optional<double> weeklyUsedPercent;  ///< of the weekly limit window
    bool usageOfficial = false;               ///< the percentages are the provider's own
    std::vector<double> series;               ///< by day over the current timeframe

    friend bool operator==(const WidgetProviderSnapshot&, const WidgetProviderSnapshot&) = default;
};

/// Everything the widget shows, for every provider and timeframe that a user may choose: narrowing it is pure
/// computation. A plain value; nothing here throws, and any thread may call any operation.
struct WidgetSnapshot {
    /// The version of this format; files of any other are not read.
    static constexpr std::int64_t currentSchemaVersion = 4;

    std::int64_t schemaVersion = currentSchemaVersion;
    Date generatedAt;          ///< when it was built
    std::string title;         ///< the heading
    double totalToday = 0;     ///< of all providers
    double totalWindow = 0;    ///< of all providers over `windowDays`
    std::string currencyCode;  ///< ISO code of the totals
    WidgetValueMetric metric = WidgetValueMetric::Dollars;
    std::int64_t windowDays = 0;  ///< length of the current timeframe
    WidgetCostBasis basis = WidgetCostBasis::RealSpend;
    std::vector<double> series;                     ///< of all providers, by day over the current timeframe
    std::vector<WidgetProviderSnapshot> providers;  ///< in the order of display
    Date staleAfter;                                ///< from this instant on the snapshot counts as stale
    std::optional<std::string> errorMessage;
    std::optional<std::string> availabilityNotice;         ///< says what data is not available
    std::map<std::int64_t, WidgetWindowSnapshot> windows;  ///< the timeframes to choose from, by their days

    [[nodiscard]] bool isStale(Date now) const noexcept { return now >= staleAfter; }

    /// Whether the values are not, or not all, money that was spent.
    [[nodiscard]] bool disclosesNotionalBasis() const noexcept { return basis != WidgetCostBasis::RealSpend; }

    /// The error message, else the notice, else absent.
    [[nodiscard]] std::optional<std::string> disclosureNotice() const;

    /// Whether both would look the same to a user: money is compared in whole cents, limits exactly, and the two dates
    /// not at all.
    [[nodiscard]] bool hasSameContent(const WidgetSnapshot& other) const;

    /// The snapshot narrowed to the first row of that provider. Without an id, for the id "all", and for a provider
    /// that has no row: the snapshot itself. To be called after `selectingWindow`, never before it.
    [[nodiscard]] WidgetSnapshot focused(std::optional<std::string_view> providerID) const;

    /// The snapshot switched to the timeframe of so many days; the snapshot itself if it holds no such timeframe. A row
    /// that the timeframe does not know keeps its figures.
    [[nodiscard]] WidgetSnapshot selectingWindow(std::int64_t days) const;

    friend bool operator==(const WidgetSnapshot&, const WidgetSnapshot&) = default;
};

}  // namespace quorvane
