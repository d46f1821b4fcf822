#pragma once
// Not installed: JSON numbers as logs mostly write them, read faster than any number can be.
// Each function gets the text of a value, which has no blanks at its ends, is not empty, and has `JSONParser::padding`
// readable bytes behind it. What is not taken need not be wrong; then the parser must tell.
#include <algorithm>
#include <bit>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <system_error>

#include "QuorvaneCore/platform/JSONField.h"

namespace quorvane::detail {

[[nodiscard]] inline bool isDigit(char character) noexcept {
    return character >= '0' && character <= '9';
}

/// The number that one digit to eight make; absent if there is anything else among them. Eight bytes are readable.
[[nodiscard]] inline std::optional<std::uint64_t> fewDigits(const char* begin, std::size_t count) noexcept {
    constexpr std::size_t wordBytes = sizeof(std::uint64_t);
    if constexpr (std::endian::native == std::endian::little) {
        // The first digit is in the lowest byte. Zeros move in there, and what is behind the digits drops out above.
        constexpr std::uint64_t ones = 0x0101010101010101;
        std::uint64_t word = 0;
        std::memcpy(&word, begin, wordBytes);
        const std::uint64_t digits = (word - '0' * ones) << (8 * (wordBytes - count));
        // A byte beyond 9 has its highest bit, or gets it here; a byte that borrowed from its neighbour did so itself.
        if (((digits | (digits + 0x76 * ones)) & (0x80 * ones)) != 0) return std::nullopt;
        const std::uint64_t pairs = digits * 10 + (digits >> 8);
        constexpr std::uint64_t everyFourth = 0x000000ff000000ff;
        const std::uint64_t high = (pairs & everyFourth) * (100 + (std::uint64_t{1000000} << 32));
        const std::uint64_t low = ((pairs >> 16) & everyFourth) * (1 + (std::uint64_t{10000} << 32));
        return (high + low) >> 32;
    }
    std::uint64_t value = 0;
    for (const char* at = begin; at < begin + count; ++at) {
        if (!isDigit(*at)) return std::nullopt;
        value = value * 10 + static_cast<std::uint64_t>(*at - '0');
    }
    return value;
}

/// Takes up to 16 digits of a number without sign, fraction and exponent; false if there are more, or anything else.
/// Nearly every number is of this kind, and a call for each can be measured.
[[nodiscard, gnu::always_inline]] inline bool takeInteger(const char* begin, const char* end,
                                                          JSONField& into) noexcept {
    constexpr std::size_t few = 8;
    const auto count = static_cast<std::size_t>(end - begin);
    if (count > 2 * few || (*begin == '0' && count > 1)) return false;
    const std::size_t ahead = count > few ? count - few : 0;
    const std::optional<std::uint64_t> low = fewDigits(begin + ahead, count - ahead);
    if (!low) return false;
    if (ahead == 0) {
        into.set(static_cast<std::int64_t>(*low));
        return true;
    }
    const std::optional<std::uint64_t> high = fewDigits(begin, ahead);
    if (high) into.set(static_cast<std::int64_t>(*high * 100'000'000 + *low));
    return high.has_value();
}

/// The same for the longest of them, in which some exporters count nanoseconds.
[[nodiscard]] inline bool takeLongInteger(const char* begin, const char* end, JSONField& into) noexcept {
    std::int64_t value = 0;
    if (*begin < '1' || *begin > '9') return false;
    const auto [behind, failure] = std::from_chars(begin, end, value);
    if (behind != end || failure != std::errc{}) return false;
    into.set(value);
    return true;
}

/// Takes a short number with digits on both sides of a point; false for any other text.
[[nodiscard]] inline bool takeFraction(const char* begin, const char* end, JSONField& into) noexcept {
    constexpr std::ptrdiff_t mostCharacters = 32;
    const char* const point = std::find(begin, end, '.');
    const bool isPlain = end - begin <= mostCharacters && point > begin && end - point > 1 &&
                         (*begin != '0' || point == begin + 1) && std::all_of(begin, point, isDigit) &&
                         std::all_of(point + 1, end, isDigit);
    double value = 0;
    if (!isPlain || std::from_chars(begin, end, value).ptr != end) return false;
    into.set(value);
    return true;
}

}  // namespace quorvane::detail
