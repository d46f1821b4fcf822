#include "QuorvaneHost/html/AxisScale.h"

#include <algorithm>
#include <cmath>

namespace quorvane::host {
namespace {

double stepFor(double peak, bool isWhole) {
    constexpr double most = 4.5;  // so many steps and a half are at most four or five lines
    const double least = peak / most;
    const double power = std::pow(10, std::floor(std::log10(least)));
    double step = 10 * power;
    for (const double factor : {5.0, 2.5, 2.0, 1.0}) {
        const bool isCrooked = isWhole && std::floor(factor * power) != factor * power;
        if (factor * power >= least && !isCrooked) step = factor * power;
    }
    return isWhole ? std::max(step, 1.0) : step;
}

}  // namespace

std::vector<double> AxisScale::ticks(double peak, bool isWhole) {
    std::vector<double> values;
    if (!(peak > 0) || !std::isfinite(peak)) return values;
    const double step = stepFor(peak, isWhole);
    for (int at = 1; at * step <= peak * (1 + 1e-9); ++at)
        values.push_back(at * step);
    return values;
}

}  // namespace quorvane::host
