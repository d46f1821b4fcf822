#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane {

/// One provider's limits, as a host assembles them.
struct MenuBarProviderLimitSummary {
    std::string id;
    std::string name;                                    ///< to show
    std::optional<double> primaryUsedPct;                ///< used share of the first window, in percent
    std::optional<std::int64_t> primaryWindowMinutes;    ///< its length
    std::optional<double> secondaryUsedPct;              ///< used share of the second window, in percent
    std::optional<std::int64_t> secondaryWindowMinutes;  ///< its length
    bool isOfficial = false;                             ///< the figures are the provider's own
    std::optional<std::string> planLabel;                ///< the plan's name
    std::optional<double> estimatedUsedPct;              ///< in percent, if there is no official share
    std::optional<std::int64_t> estimatedTokenCount;     ///< today's tokens, for a provider without quota data
};

/// One limit, ready to be shown. A plain value; any thread.
struct MenuBarProviderLimit {
    enum class Window : std::uint8_t { FiveHour, Weekly, Other };

    std::string shortName;                   ///< to show
    double usedPct = 0;                      ///< in percent
    std::optional<std::int64_t> tokenCount;  ///< if present, it is shown in place of the share
    bool isEstimate = false;
    Window window = Window::Other;

    /// The window of so many minutes.
    [[nodiscard]] static Window windowOf(std::optional<std::int64_t> minutes) noexcept;

    /// What follows the share in a title; may be empty. The view lives for ever.
    [[nodiscard]] std::string_view windowSuffix() const noexcept;

    /// What follows the share in speech; may be empty. The view lives for ever.
    [[nodiscard]] std::string_view windowSpoken() const noexcept;

    friend bool operator==(const MenuBarProviderLimit&, const MenuBarProviderLimit&) = default;
};

}  // namespace quorvane
