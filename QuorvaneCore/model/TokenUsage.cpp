#include "QuorvaneCore/model/TokenUsage.h"

#include "QuorvaneCore/platform/CheckedArithmetic.h"

namespace quorvane {

std::int64_t TokenUsage::total() const noexcept {
    std::int64_t sum = checkedAdd(input, output);
    sum = checkedAdd(sum, cacheCreate5m);
    sum = checkedAdd(sum, cacheCreate1h);
    return checkedAdd(sum, cacheRead);
}

TokenUsage& TokenUsage::operator+=(const TokenUsage& other) noexcept {
    *this = *this + other;
    return *this;
}

TokenUsage operator+(const TokenUsage& left, const TokenUsage& right) noexcept {
    return TokenUsage{
        .input = checkedAdd(left.input, right.input),
        .output = checkedAdd(left.output, right.output),
        .cacheCreate5m = checkedAdd(left.cacheCreate5m, right.cacheCreate5m),
        .cacheCreate1h = checkedAdd(left.cacheCreate1h, right.cacheCreate1h),
        .cacheRead = checkedAdd(left.cacheRead, right.cacheRead),
    };
}

}  // namespace quorvane
