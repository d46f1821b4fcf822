#pragma once
#include <cmath>
#include <limits>

namespace quorvane::detail {

/// `dollars` in whole cents, halves away from zero. Amounts mean the decimal number that they are written as: 1.005 is
/// half a cent above 1.00 although the float of that name, and its product with 100, lie a hair below. A product is off
/// by at most one place in the last digit, so one step outwards brings a half back and lifts nothing else that matters.
[[nodiscard]] inline double wholeCents(double dollars) noexcept {
    const double scaled = dollars * 100.0;
    return std::round(std::nextafter(scaled, std::copysign(std::numeric_limits<double>::infinity(), scaled)));
}

/// The same in dollars again.
[[nodiscard]] inline double roundedToCents(double dollars) noexcept {
    return wholeCents(dollars) / 100.0;
}

}  // namespace quorvane::detail
