#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "QuorvaneWidgetExtension/WidgetComponents/WidgetColorScheme.h"

namespace quorvane::desktop {

/// Whether a widget is light or dark, as its user set it. Stored by raw name.
enum class ColorSchemeChoice : std::uint8_t { desktop, light, dark };

inline constexpr std::array allColorSchemeChoices{ColorSchemeChoice::desktop, ColorSchemeChoice::light,
                                                  ColorSchemeChoice::dark};

/// "desktop", "light" or "dark"; the view lives for ever.
[[nodiscard]] std::string_view rawName(ColorSchemeChoice choice) noexcept;

/// The exact inverse of `rawName`; absent for any other text.
[[nodiscard]] std::optional<ColorSchemeChoice> colorSchemeChoiceFromRawName(std::string_view text) noexcept;

/// The words to show; the view lives for ever.
[[nodiscard]] std::string_view displayText(ColorSchemeChoice choice) noexcept;

/// What the choice comes to on a desktop of that scheme.
[[nodiscard]] WidgetColorScheme resolved(ColorSchemeChoice choice, WidgetColorScheme ofDesktop) noexcept;

}  // namespace quorvane::desktop
