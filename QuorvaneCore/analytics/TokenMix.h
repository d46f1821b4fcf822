#pragma once
#include <cstdint>

namespace quorvane {

/// What kinds of token usage consists of.
struct TokenMix {
    std::int64_t input = 0;
    std::int64_t output = 0;
    std::int64_t cache5m = 0;
    std::int64_t cache1h = 0;
    std::int64_t cacheRead = 0;

    /// The sum of all five, checked.
    [[nodiscard]] std::int64_t total() const noexcept;

    /// The share of all tokens, output included, that was read from a cache, 0 to 1; 0 without tokens.
    [[nodiscard]] double cacheHitRate() const noexcept;

    friend bool operator==(const TokenMix&, const TokenMix&) = default;
};

}  // namespace quorvane
