#pragma once
#include <cstdint>
#include <span>
#include <string>

namespace quorvane::host {

/// Rows of bars as the outline of one SVG path, so that a year takes some kilobytes.
class BarShape {
public:
    BarShape() = delete;

    /// Each bar's place is so many units wide.
    static constexpr std::int64_t place = 10;

    /// The height of a bar in units: 0 for nothing, at least 1 for something, `height` for the peak.
    [[nodiscard]] static std::int64_t units(double value, double peak, std::int64_t height) noexcept;

    /// The "d" of a path whose bars stand on the line y = `height`. Up to some four months of days there are gaps
    /// between them.
    [[nodiscard]] static std::string path(std::span<const std::int64_t> bars, std::int64_t height);
};

}  // namespace quorvane::host
