#include "QuorvaneCore/analytics/TokenMix.h"

#include "QuorvaneCore/model/TokenUsage.h"

namespace quorvane {

std::int64_t TokenMix::total() const noexcept {
    const TokenUsage tokens{
        .input = input, .output = output, .cacheCreate5m = cache5m, .cacheCreate1h = cache1h, .cacheRead = cacheRead};
    return tokens.total();
}

double TokenMix::cacheHitRate() const noexcept {
    const std::int64_t all = total();
    return all == 0 ? 0 : static_cast<double>(cacheRead) / static_cast<double>(all);
}

}  // namespace quorvane
