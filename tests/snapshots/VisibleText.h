#pragma once
#include <array>
#include <string>
#include <string_view>
#include <utility>

namespace quorvane::testing {

/// `text` with the characters that cannot be told apart on paper written as "[...]": no-break spaces and marks of
/// direction.
inline std::string visible(std::string_view text) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 5> hidden{
        {{"\u00A0", "[nbsp]"}, {"\u202F", "[nnbsp]"}, {"\u200E", "[lrm]"}, {"\u200F", "[rlm]"}, {"\u061C", "[alm]"}}};
    std::string result{text};
    for (const auto& [character, name] : hidden) {
        for (std::size_t at = result.find(character); at != std::string::npos; at = result.find(character, at)) {
            result.replace(at, character.size(), name);
        }
    }
    return result;
}

}  // namespace quorvane::testing
