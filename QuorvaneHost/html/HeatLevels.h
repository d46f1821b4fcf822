#pragma once
#include <string>
#include <string_view>

#include "QuorvaneHost/html/UsageFigures.h"

namespace quorvane::host {

/// The colours of the heat maps: eight levels from a neutral track to the accent, in two schemes. What is spent is
/// spread unevenly, so the level goes with the square root of the share of the peak.
class HeatLevels {
public:
    HeatLevels() = delete;

    static constexpr int most = 7;

    /// 0 for nothing, at least 1 for something, `most` for the peak.
    [[nodiscard]] static int level(double value, double peak) noexcept;

    /// The classes of a cell, " class=\"c4 t3\"": one for each measure that is not nothing; empty where all are.
    [[nodiscard]] static std::string classAttribute(const UsageFigures& figures, const UsageFigures& peaks);

    /// The rules of those classes and the colours behind them, made by `HeatmapRamp`. The text on a level is black or
    /// white, whichever is easier to read there.
    [[nodiscard]] static std::string styles();

    /// Six digits, for a level in the light or the dark scheme.
    [[nodiscard]] static std::string colour(int level, bool isDark);
    [[nodiscard]] static std::string_view textColour(int level, bool isDark);
};

}  // namespace quorvane::host
