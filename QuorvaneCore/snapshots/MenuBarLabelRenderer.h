#pragma once
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/platform/Locale.h"
#include "QuorvaneCore/snapshots/MenuBarDisplayFormat.h"
#include "QuorvaneCore/snapshots/MenuBarProviderLimit.h"

namespace quorvane {

/// How real the amounts of a tooltip are.
enum class MenuBarTooltipCostBasis : std::uint8_t { RealSpend, NotionalListPrice, RealAndNotionalListPrice };

/// How urgent the limits are.
enum class MenuBarAttentionState : std::uint8_t { Normal, Warning, Critical };

/// All words of a menu bar item. The host passes in what it knows and draws what comes back: nothing here reads a file
/// or a clock. Pure; any thread.
class MenuBarLabelRenderer {
public:
    MenuBarLabelRenderer() = delete;

    /// The limit that a choice asks for: of the first provider (or of the chosen one) that has what the chosen window
    /// needs. Absent for the total, and if none has it.
    [[nodiscard]] static std::optional<MenuBarProviderLimit> limit(
        const MenuBarDisplayFormat& format, std::span<const MenuBarProviderLimitSummary> providerLimits);

    /// The same; for a choice that takes turns, the one of `rotatableLimits` whose turn `rotationIndex` is, counted
    /// round and round.
    [[nodiscard]] static std::optional<MenuBarProviderLimit> pillLimit(
        const MenuBarDisplayFormat& format, std::span<const MenuBarProviderLimit> rotatableLimits,
        std::int64_t rotationIndex, std::span<const MenuBarProviderLimitSummary> providerLimits);

    /// The limits that take turns: every window with 1 % or more of use, rounded, and the tokens of providers that have
    /// no such window.
    [[nodiscard]] static std::vector<MenuBarProviderLimit> rotatableLimits(
        std::span<const MenuBarProviderLimitSummary> providerLimits);

    /// By the fullest window of all: critical from 95 %, a warning from 80 %. Estimates have no part in it.
    [[nodiscard]] static MenuBarAttentionState attentionState(
        std::span<const MenuBarProviderLimitSummary> providerLimits) noexcept;

    /// The titles of a choice in the settings, naming the limit whose turn it is.
    [[nodiscard]] static std::string renderedSettingsTitle(const MenuBarDisplayFormat& format,
                                                           const std::optional<MenuBarProviderLimit>& limit);
    [[nodiscard]] static std::string renderedSettingsSubtitle(const MenuBarDisplayFormat& format,
                                                              const std::optional<MenuBarProviderLimit>& limit);

    /// The item's text: the day's amount, the limit, or both. "…" stands for an amount that is not known yet and "—"
    /// for one that no provider can give.
    [[nodiscard]] static std::string compactStatusTitle(std::optional<double> aggregateToday,
                                                        const std::optional<MenuBarProviderLimit>& limit,
                                                        const MenuBarDisplayFormat& displayFormat,
                                                        std::string_view currencyCode, bool allProvidersUnavailable,
                                                        const Locale& locale);

    /// The same as it is read out.
    [[nodiscard]] static std::string accessibilityValue(std::optional<double> aggregateToday, bool includesNotional,
                                                        const std::optional<MenuBarProviderLimit>& limit,
                                                        std::string_view currencyCode, bool allProvidersUnavailable,
                                                        const Locale& locale);

    /// Everything at once: the amounts, a line a limit, and how fresh the data is; sections are parted by empty lines.
    [[nodiscard]] static std::string tooltip(std::optional<double> aggregateToday, std::optional<double> windowTotal,
                                             std::optional<std::int64_t> windowDays, MenuBarTooltipCostBasis costBasis,
                                             std::span<const MenuBarProviderLimitSummary> providerLimits,
                                             const std::optional<std::string>& freshnessText,
                                             std::string_view currencyCode, bool allProvidersUnavailable,
                                             const Locale& locale);
};

}  // namespace quorvane
