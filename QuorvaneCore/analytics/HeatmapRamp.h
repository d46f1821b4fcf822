#pragma once
#include <string>
#include <string_view>

#include "QuorvaneCore/snapshots/HexColor.h"

namespace quorvane {

/// Colours between a neutral track and an accent, in levels of eight bits. Pure; any thread.
/// `t` and `maxAlpha` are held between 0 and 1; a hex text that is no colour counts as `HexColor::fallback`.
class HeatmapRamp {
public:
    HeatmapRamp() = delete;

    /// The track for a `t` of 0; for a `t` of 1 so much of the accent as `maxAlpha` says.
    [[nodiscard]] static HexColor::Components cellComponents(double t, std::string_view accentHex,
                                                             std::string_view trackHex, double maxAlpha) noexcept;

    /// The same as six digits in upper case, without "#".
    [[nodiscard]] static std::string cellHex(double t, std::string_view accentHex, std::string_view trackHex,
                                             double maxAlpha);
};

}  // namespace quorvane
