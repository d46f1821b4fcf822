#include "QuorvaneCore/snapshots/SparklineScale.h"

#include <algorithm>

namespace quorvane {

std::vector<double> SparklineScale::fractions(std::span<const double> values) {
    std::vector<double> result;
    if (values.empty()) return result;
    const auto [least, greatest] = std::ranges::minmax(values);
    const double range = std::max({greatest - least, headroomFraction * greatest, 0.000001});
    result.reserve(values.size());
    for (const double value : values)
        result.push_back((value - least) / range);
    return result;
}

}  // namespace quorvane
