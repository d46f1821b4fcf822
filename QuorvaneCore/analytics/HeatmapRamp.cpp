#include "QuorvaneCore/analytics/HeatmapRamp.h"

#include <cmath>

#include <fmt/format.h>

namespace quorvane {
namespace {

constexpr double levels = 255;

/// Between 0 and 1; what is no number counts as 0.
double held(double value) noexcept {
    if (!(value > 0)) return 0;
    return value < 1 ? value : 1;
}

double quantised(double value) noexcept {
    return std::round(held(value) * levels) / levels;
}

int level(double component) noexcept {
    return static_cast<int>(std::round(component * levels));
}

}  // namespace

HexColor::Components HeatmapRamp::cellComponents(double t, std::string_view accentHex, std::string_view trackHex,
                                                 double maxAlpha) noexcept {
    const double alpha = held(maxAlpha) * held(t);
    const HexColor::Components accent = HexColor::componentsOrFallback(accentHex);
    const HexColor::Components track = HexColor::componentsOrFallback(trackHex);
    const auto mixed = [alpha](double from, double to) noexcept { return quantised(from + alpha * (to - from)); };
    return {.red = mixed(track.red, accent.red),
            .green = mixed(track.green, accent.green),
            .blue = mixed(track.blue, accent.blue)};
}

std::string HeatmapRamp::cellHex(double t, std::string_view accentHex, std::string_view trackHex, double maxAlpha) {
    const HexColor::Components colour = cellComponents(t, accentHex, trackHex, maxAlpha);
    return fmt::format("{:02X}{:02X}{:02X}", level(colour.red), level(colour.green), level(colour.blue));
}

}  // namespace quorvane
