#pragma once
#include <cstdint>
#include <optional>
#include <string_view>

namespace quorvane {

/// Which of a provider's limits a menu bar shows. Stored by raw name.
enum class MenuBarDisplayWindow : std::uint8_t { FiveHour, Weekly, Estimate, Other };

/// The name in settings; the view lives for ever.
[[nodiscard]] std::string_view rawName(MenuBarDisplayWindow window) noexcept;

/// The exact inverse of `rawName`; absent for any other text.
[[nodiscard]] std::optional<MenuBarDisplayWindow> menuBarDisplayWindowFromRawName(std::string_view text) noexcept;

/// What follows the provider's name in a title; may be empty.
[[nodiscard]] std::string_view titleSuffix(MenuBarDisplayWindow window) noexcept;

/// The window of a limit of so many minutes; `Estimate` for an estimate of any length.
[[nodiscard]] MenuBarDisplayWindow menuBarDisplayWindow(std::optional<std::int64_t> windowMinutes,
                                                        bool isEstimate) noexcept;

}  // namespace quorvane
