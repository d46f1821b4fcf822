#pragma once
#include <cstdint>

namespace quorvane {

/// The tokens of one model call, or of a sum of calls. All zero is the neutral value.
/// Sums are checked: an overflow of any counter ends the process.
struct TokenUsage {
    std::int64_t input = 0;          ///< uncached input tokens
    std::int64_t output = 0;         ///< output tokens
    std::int64_t cacheCreate5m = 0;  ///< written to a prompt cache that lives 5 minutes
    std::int64_t cacheCreate1h = 0;  ///< written to a prompt cache that lives 1 hour
    std::int64_t cacheRead = 0;      ///< read from a prompt cache

    /// The sum of all five counters.
    [[nodiscard]] std::int64_t total() const noexcept;

    /// Field by field; all five sums are made before one is stored.
    TokenUsage& operator+=(const TokenUsage& other) noexcept;

    friend bool operator==(const TokenUsage&, const TokenUsage&) = default;
};

[[nodiscard]] TokenUsage operator+(const TokenUsage& left, const TokenUsage& right) noexcept;

}  // namespace quorvane
