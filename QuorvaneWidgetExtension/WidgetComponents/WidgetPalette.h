#pragma once
#include <array>
#include <string_view>

#include "QuorvaneWidgetExtension/WidgetComponents/WidgetColor.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetColorScheme.h"

namespace quorvane {

/// The widget's colours. Pure; any thread.
class WidgetPalette {
public:
    WidgetPalette() = delete;

    /// The orange of the product's own lines, before `viz` makes it legible.
    static constexpr std::string_view brandTintHex = "#DF7A2E";

    [[nodiscard]] static WidgetColor primaryText(WidgetColorScheme scheme) noexcept;
    [[nodiscard]] static WidgetColor mutedText(WidgetColorScheme scheme) noexcept;
    /// For what is stale, for notices, and for badges.
    [[nodiscard]] static WidgetColor warningText(WidgetColorScheme scheme) noexcept;
    /// A linear gradient from the top leading to the bottom trailing corner, its colours evenly apart.
    [[nodiscard]] static std::array<WidgetColor, 3> background(WidgetColorScheme scheme) noexcept;
    [[nodiscard]] static WidgetColor honeyWash(WidgetColorScheme scheme) noexcept;
    [[nodiscard]] static WidgetColor markRim(WidgetColorScheme scheme) noexcept;
    [[nodiscard]] static WidgetColor mascotBadge(WidgetColorScheme scheme) noexcept;
    /// The part of a gauge that is not filled.
    [[nodiscard]] static WidgetColor gaugeTrack(WidgetColorScheme scheme) noexcept;

    /// A provider's colour, changed as far as it takes to stand out from the background.
    [[nodiscard]] static WidgetColor viz(std::string_view tintHex, WidgetColorScheme scheme);
};

}  // namespace quorvane
