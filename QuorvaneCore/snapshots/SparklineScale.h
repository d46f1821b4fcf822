#pragma once
#include <span>
#include <vector>

namespace quorvane {

/// The vertical scale of a sparkline. Pure; any thread.
class SparklineScale {
public:
    SparklineScale() = delete;

    /// The least part of the greatest value that the height stands for.
    static constexpr double headroomFraction = 0.15;

    /// Where each value lies between the smallest and the greatest, from 0 to 1, in order. A series that hardly changes
    /// stays low rather than filling the height, and one that does not change lies at 0.
    [[nodiscard]] static std::vector<double> fractions(std::span<const double> values);
};

}  // namespace quorvane
