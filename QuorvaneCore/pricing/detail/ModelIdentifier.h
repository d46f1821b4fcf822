#pragma once
#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace quorvane::detail {

[[nodiscard]] constexpr bool isDigit(char character) noexcept {
    return character >= '0' && character <= '9';
}
[[nodiscard]] constexpr bool isLowerLetter(char character) noexcept {
    return character >= 'a' && character <= 'z';
}

/// Identifiers are ASCII; any other byte stays as it is.
[[nodiscard]] inline std::string lowerCased(std::string_view text) {
    std::string lower{text};
    for (char& character : lower) {
        if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
    }
    return lower;
}

/// `text` without "-yyyymmdd" at its end.
[[nodiscard]] inline std::string_view withoutCompactDate(std::string_view text) noexcept {
    constexpr std::size_t length = 9;
    if (text.size() < length) return text;
    const std::string_view tail = text.substr(text.size() - length);
    const bool isDate = tail.front() == '-' && std::all_of(tail.begin() + 1, tail.end(), isDigit);
    return isDate ? text.substr(0, text.size() - length) : text;
}

/// The bytes of "-build" at the end of a Grok model's identifier, in lower case; 0 for any other.
[[nodiscard]] inline std::size_t buildTailLength(std::string_view lowerCasedModel) noexcept {
    constexpr std::string_view tail = "-build";
    const bool hasTail =
        lowerCasedModel.starts_with("grok-") && lowerCasedModel.ends_with(tail) && lowerCasedModel != "grok-build";
    return hasTail ? tail.size() : 0;
}

}  // namespace quorvane::detail
