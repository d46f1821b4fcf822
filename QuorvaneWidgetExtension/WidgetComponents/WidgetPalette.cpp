#include "QuorvaneWidgetExtension/WidgetComponents/WidgetPalette.h"

#include "QuorvaneCore/snapshots/ProviderTintLegibility.h"

namespace quorvane {
namespace {

/// The contrast that a line or an area of a provider's colour has with the background at least (WCAG 2.0).
constexpr double vizContrast = 2.9;

/// One role's colour in both schemes.
struct Role {
    std::string_view light;
    std::string_view dark;

    [[nodiscard]] std::string_view hex(WidgetColorScheme scheme) const noexcept {
        return scheme == WidgetColorScheme::Dark ? dark : light;
    }
    [[nodiscard]] WidgetColor color(WidgetColorScheme scheme, double opacity = 1) const noexcept {
        return WidgetColor::fromHex(hex(scheme), opacity);
    }
};

constexpr Role ink{.light = "221D15", .dark = "F2F1EC"};
constexpr Role muted{.light = "6C6253", .dark = "B8B6AE"};
constexpr Role warning{.light = "A84D14", .dark = "FBA85F"};
constexpr Role backgroundFirst{.light = "FFFDF7", .dark = "2B2622"};
constexpr Role backgroundSecond{.light = "FAF6EC", .dark = "221E1B"};
constexpr Role backgroundThird{.light = "F4ECDA", .dark = "191512"};
constexpr Role honey{.light = "EDB454", .dark = "EBB454"};
constexpr Role rim{.light = "221D15", .dark = "FFFFFF"};
constexpr Role badge{.light = "FDCD2D", .dark = "FDCD2D"};
constexpr Role track{.light = "4E4A40", .dark = "ECDCBD"};
/// What a provider's colour is judged against: the paper's brightest part in the light scheme, its middle in the dark.
constexpr Role vizBackground{.light = "FFFDF7", .dark = "221E1B"};

}  // namespace

WidgetColor WidgetPalette::primaryText(WidgetColorScheme scheme) noexcept {
    return ink.color(scheme);
}

WidgetColor WidgetPalette::mutedText(WidgetColorScheme scheme) noexcept {
    return muted.color(scheme);
}

WidgetColor WidgetPalette::warningText(WidgetColorScheme scheme) noexcept {
    return warning.color(scheme);
}

std::array<WidgetColor, 3> WidgetPalette::background(WidgetColorScheme scheme) noexcept {
    return {backgroundFirst.color(scheme), backgroundSecond.color(scheme), backgroundThird.color(scheme)};
}

WidgetColor WidgetPalette::honeyWash(WidgetColorScheme scheme) noexcept {
    return honey.color(scheme, 0.25);
}

WidgetColor WidgetPalette::markRim(WidgetColorScheme scheme) noexcept {
    return rim.color(scheme, scheme == WidgetColorScheme::Dark ? 0.48 : 0.12);
}

WidgetColor WidgetPalette::mascotBadge(WidgetColorScheme scheme) noexcept {
    return badge.color(scheme);
}

WidgetColor WidgetPalette::gaugeTrack(WidgetColorScheme scheme) noexcept {
    return track.color(scheme);
}

WidgetColor WidgetPalette::viz(std::string_view tintHex, WidgetColorScheme scheme) {
    return WidgetColor::fromHex(ProviderTintLegibility::legibleHex(tintHex, vizBackground.hex(scheme), ink.hex(scheme),
                                                                   scheme == WidgetColorScheme::Dark, vizContrast));
}

}  // namespace quorvane
