#pragma once
#include <vector>

namespace quorvane::host {

/// Round values for the lines of an axis from 0 up to a peak.
struct AxisScale {
    /// From the lowest above 0, at most five, none above `peak`; empty if `peak` is not above 0. `isWhole`: only whole
    /// numbers.
    [[nodiscard]] static std::vector<double> ticks(double peak, bool isWhole);
};

}  // namespace quorvane::host
