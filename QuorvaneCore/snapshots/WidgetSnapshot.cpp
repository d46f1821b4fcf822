#include "QuorvaneCore/snapshots/WidgetSnapshot.h"

#include <algorithm>

#include "QuorvaneCore/snapshots/detail/Cents.h"

namespace quorvane {
namespace {

constexpr std::string_view allProviders = "all";

bool sameMoney(double one, double other) noexcept {
    return detail::wholeCents(one) == detail::wholeCents(other);
}

bool sameSeries(const std::vector<double>& one, const std::vector<double>& other) {
    return std::ranges::equal(one, other, sameMoney);
}

bool sameRow(const WidgetProviderSnapshot& one, const WidgetProviderSnapshot& other) {
    return one.id == other.id && one.name == other.name && one.tintHex == other.tintHex &&
           one.currencyCode == other.currencyCode && one.metric == other.metric && one.basis == other.basis &&
           one.usageOfficial == other.usageOfficial && one.usedPercent == other.usedPercent &&
           one.weeklyUsedPercent == other.weeklyUsedPercent && sameMoney(one.today, other.today) &&
           sameMoney(one.window, other.window) && sameSeries(one.series, other.series);
}

bool sameProviderWindow(const WidgetProviderWindow& one, const WidgetProviderWindow& other) {
    return sameMoney(one.window, other.window) && sameSeries(one.series, other.series);
}

/// Both maps are in the order of their keys, so they are compared side by side.
template <typename Map, typename SameValue>
bool sameMap(const Map& one, const Map& other, SameValue sameValue) {
    return std::ranges::equal(one, other, [&sameValue](const auto& left, const auto& right) {
        return left.first == right.first && sameValue(left.second, right.second);
    });
}

bool sameWindow(const WidgetWindowSnapshot& one, const WidgetWindowSnapshot& other) {
    return one.days == other.days && sameMoney(one.totalWindow, other.totalWindow) &&
           sameSeries(one.series, other.series) &&
           sameMap(one.providerWindows, other.providerWindows, sameProviderWindow);
}

}  // namespace

std::optional<std::string> WidgetSnapshot::disclosureNotice() const {
    return errorMessage ? errorMessage : availabilityNotice;
}

bool WidgetSnapshot::hasSameContent(const WidgetSnapshot& other) const {
    return schemaVersion == other.schemaVersion && title == other.title && currencyCode == other.currencyCode &&
           metric == other.metric && windowDays == other.windowDays && basis == other.basis &&
           sameMoney(totalToday, other.totalToday) && sameMoney(totalWindow, other.totalWindow) &&
           sameSeries(series, other.series) && std::ranges::equal(providers, other.providers, sameRow) &&
           errorMessage == other.errorMessage && availabilityNotice == other.availabilityNotice &&
           sameMap(windows, other.windows, sameWindow);
}

WidgetSnapshot WidgetSnapshot::focused(std::optional<std::string_view> providerID) const {
    if (!providerID || *providerID == allProviders) return *this;
    const auto row = std::ranges::find(providers, *providerID, &WidgetProviderSnapshot::id);
    if (row == providers.end()) return *this;
    return {
        .generatedAt = generatedAt,
        .title = row->name,
        .totalToday = row->today,
        .totalWindow = row->window,
        .currencyCode = row->currencyCode,
        .metric = row->metric,
        .windowDays = windowDays,
        .basis = row->basis,
        .series = row->series,
        .providers = {*row},
        .staleAfter = staleAfter,
        .errorMessage = errorMessage,
        .availabilityNotice = std::nullopt,  // it speaks of all providers
        .windows = windows,
    };
}

WidgetSnapshot WidgetSnapshot::selectingWindow(std::int64_t days) const {
    const auto found = windows.find(days);
    if (found == windows.end()) return *this;
    const WidgetWindowSnapshot& entry = found->second;
    WidgetSnapshot selected = *this;
    selected.schemaVersion = currentSchemaVersion;
    selected.windowDays = entry.days;
    selected.totalWindow = entry.totalWindow;
    selected.series = entry.series;
    for (WidgetProviderSnapshot& row : selected.providers) {
        const auto figures = entry.providerWindows.find(row.id);
        if (figures == entry.providerWindows.end()) continue;
        row.window = figures->second.window;
        row.series = figures->second.series;
    }
    return selected;
}

}  // namespace quorvane
