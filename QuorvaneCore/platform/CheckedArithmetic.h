#pragma once
#include <cstdint>

namespace quorvane {

/// Sums and conversions of counters. A result that does not fit ends the process: one line on standard error, then
/// `std::abort()`. A wrong total is worse than none, and no real counter comes near the limits.
/// All operations are pure; any thread may call them.

namespace detail {
[[noreturn]] void arithmeticFailure(const char* operation) noexcept;
}

[[nodiscard]] inline std::int64_t checkedAdd(std::int64_t left, std::int64_t right) noexcept {
    std::int64_t sum = 0;
    if (__builtin_add_overflow(left, right, &sum)) detail::arithmeticFailure("addition");
    return sum;
}

[[nodiscard]] inline std::int64_t checkedSubtract(std::int64_t left, std::int64_t right) noexcept {
    std::int64_t difference = 0;
    if (__builtin_sub_overflow(left, right, &difference)) detail::arithmeticFailure("subtraction");
    return difference;
}

[[nodiscard]] inline std::int64_t checkedMultiply(std::int64_t left, std::int64_t right) noexcept {
    std::int64_t product = 0;
    if (__builtin_mul_overflow(left, right, &product)) detail::arithmeticFailure("multiplication");
    return product;
}

/// Truncates toward zero. Not finite, or at or beyond plus or minus 2^63, ends the process.
[[nodiscard]] std::int64_t checkedInt64(double value) noexcept;

/// 2^63 and above ends the process.
[[nodiscard]] std::int64_t checkedInt64(std::uint64_t value) noexcept;

}  // namespace quorvane
