#include "QuorvaneHost/html/HeatLevels.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "QuorvaneCore/analytics/HeatmapRamp.h"
#include "QuorvaneCore/snapshots/HexColor.h"

namespace quorvane::host {
namespace {

struct Scheme {
    std::string_view accent;
    std::string_view track;
};

constexpr Scheme light{"C4500B", "EEE8DD"};
constexpr Scheme dark{"FFA45C", "2A2621"};

double linear(double component) {
    constexpr double knee = 0.04045;
    return component <= knee ? component / 12.92 : std::pow((component + 0.055) / 1.055, 2.4);
}

double luminance(const HexColor::Components& colour) {
    return 0.2126 * linear(colour.red) + 0.7152 * linear(colour.green) + 0.0722 * linear(colour.blue);
}

}  // namespace

int HeatLevels::level(double value, double peak) noexcept {
    if (!(value > 0) || !(peak > 0)) return 0;
    const double strength = std::sqrt(std::min(value / peak, 1.0));
    return std::clamp(static_cast<int>(std::ceil(strength * most)), 1, most);
}

std::string HeatLevels::classAttribute(const UsageFigures& figures, const UsageFigures& peaks) {
    std::string classes;
    for (const AnalyticsMeasure measure : pageMeasures) {
        const int reached = level(figures.value(measure), peaks.value(measure));
        if (reached > 0) classes += fmt::format("{}{}{}", classes.empty() ? "" : " ", letterOf(measure), reached);
    }
    return classes.empty() ? classes : " class=\"" + classes + "\"";
}

std::string HeatLevels::colour(int level, bool isDark) {
    constexpr double weakest = 0.1;  // what is not nothing never looks like nothing
    const double strength = level == 0 ? 0 : weakest + (1 - weakest) * level / most;
    const Scheme& scheme = isDark ? dark : light;
    return HeatmapRamp::cellHex(strength, scheme.accent, scheme.track, 1);
}

std::string_view HeatLevels::textColour(int level, bool isDark) {
    constexpr double evenLuminance = 0.179;  // black and white are equally far from it
    return luminance(HexColor::componentsOrFallback(colour(level, isDark))) > evenLuminance ? "000" : "fff";
}

std::string HeatLevels::styles() {
    std::string colours;
    std::string rules;
    for (int at = 0; at <= most; ++at) {
        colours += fmt::format("--h{0}:light-dark(#{1},#{2});--k{0}:light-dark(#{3},#{4});", at, colour(at, false),
                               colour(at, true), textColour(at, false), textColour(at, true));
        rules += fmt::format(".h{0}{{background:var(--h{0})}}", at);
        if (at == 0) continue;
        for (const AnalyticsMeasure measure : pageMeasures)
            rules += fmt::format(".{0}{1}{{--{0}h:var(--h{1});--{0}k:var(--k{1})}}", letterOf(measure), at);
    }
    return ":root{" + colours + "}" + rules;
}

}  // namespace quorvane::host
