#include "QuorvaneHost/html/BarShape.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

namespace quorvane::host {
namespace {

/// Adds a move along one axis; none for a distance of 0.
void move(std::string& path, char axis, std::int64_t distance) {
    if (distance != 0) path += fmt::format("{}{}", axis, distance);
}

}  // namespace

std::int64_t BarShape::units(double value, double peak, std::int64_t height) noexcept {
    if (!(value > 0) || !(peak > 0)) return 0;
    return std::clamp<std::int64_t>(std::llround(value / peak * static_cast<double>(height)), 1, height);
}

std::string BarShape::path(std::span<const std::int64_t> bars, std::int64_t height) {
    constexpr std::size_t mostWithGaps = 130;
    const std::int64_t gap = bars.size() <= mostWithGaps ? 2 : 0;
    std::string path = fmt::format("M0 {}", height);
    std::int64_t reached = 0;  // the height of the pen
    std::int64_t along = 0;    // how far the pen has yet to go to the right
    const auto rise = [&](std::int64_t level) {
        if (level == reached) return;
        move(path, 'h', along);
        move(path, 'v', reached - level);
        along = 0;
        reached = level;
    };
    for (const std::int64_t bar : bars) {
        rise(bar);
        along += place - gap;
        if (gap > 0) rise(0);
        along += gap;
    }
    rise(0);
    return path + "z";
}

}  // namespace quorvane::host
