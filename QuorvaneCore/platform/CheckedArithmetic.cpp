#include "QuorvaneCore/platform/CheckedArithmetic.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace quorvane {

void detail::arithmeticFailure(const char* operation) noexcept {
    std::fprintf(stderr, "quorvane: 64 bits overflowed in an integer %s\n", operation);
    std::abort();
}

std::int64_t checkedInt64(double value) noexcept {
    constexpr double limit = 9223372036854775808.0;  // 2^63
    if (!std::isfinite(value) || value >= limit || value <= -limit) detail::arithmeticFailure("conversion");
    return static_cast<std::int64_t>(value);
}

std::int64_t checkedInt64(std::uint64_t value) noexcept {
    if (value > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        detail::arithmeticFailure("conversion");
    }
    return static_cast<std::int64_t>(value);
}

}  // namespace quorvane
