#pragma once
#include <cstdint>
#include <optional>
#include <variant>

#include "QuorvaneCore/platform/JSONValue.h"

namespace quorvane::fuzz {

/// Counts of tokens, as the plain rules make them. One that 64 bits cannot hold ends the process by design: here `fit`
/// becomes false instead, and the reader is not asked.
class Counts {
public:
    bool fit = true;

    std::int64_t of(JSONValue value) {
        const std::optional<JSONNumberValue> number = value.number();
        if (!number) return 0;
        if (const auto* integer = std::get_if<std::int64_t>(&*number)) return *integer;
        constexpr double limit = 9223372036854775808.0;  // 2^63
        const auto* real = std::get_if<double>(&*number);
        const bool held = real != nullptr && *real > -limit && *real < limit;
        fit = fit && held;
        return held ? static_cast<std::int64_t>(*real) : 0;
    }

    std::int64_t sum(std::int64_t left, std::int64_t right) {
        std::int64_t result = 0;
        if (__builtin_add_overflow(left, right, &result)) fit = false;
        return result;
    }

    std::int64_t difference(std::int64_t left, std::int64_t right) {
        std::int64_t result = 0;
        if (__builtin_sub_overflow(left, right, &result)) fit = false;
        return result;
    }
};

}  // namespace quorvane::fuzz
