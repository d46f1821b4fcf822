#include "QuorvaneHost/html/HTMLText.h"

#include <cstddef>
#include <cstdint>
#include <vector>

#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace quorvane::host {
namespace {

constexpr std::size_t mostCharacters = 80;
constexpr std::string_view replacement = "\uFFFD";

bool turnsDirection(UChar32 character) {
    return (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
}

bool isFit(UChar32 character) {
    if (character < 0 || U_IS_UNICODE_NONCHAR(character) || turnsDirection(character)) return false;
    const int type = u_charType(character);
    return type != U_CONTROL_CHAR && type != U_LINE_SEPARATOR && type != U_PARAGRAPH_SEPARATOR;
}

std::string_view entity(std::string_view character) {
    if (character == "&") return "&amp;";
    if (character == "<") return "&lt;";
    if (character == ">") return "&gt;";
    if (character == "\"") return "&quot;";
    if (character == "'") return "&#39;";
    return character;
}

/// Each character as it is written.
std::vector<std::string_view> charactersOf(std::string_view text) {
    std::vector<std::string_view> characters;
    const auto length = static_cast<std::int32_t>(text.size());
    for (std::int32_t at = 0; at < length;) {
        const std::int32_t begin = at;
        UChar32 character = 0;
        U8_NEXT(text.data(), at, length, character);  // NOLINT: the library's own macro
        const std::string_view bytes =
            text.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(at - begin));
        characters.push_back(isFit(character) ? entity(bytes) : replacement);
    }
    return characters;
}

}  // namespace

std::string HTMLText::escaped(std::string_view text) {
    std::string result;
    for (const std::string_view character : charactersOf(text))
        result += character;
    return result;
}

std::string HTMLText::plainName(std::string_view text) {
    const std::vector<std::string_view> characters = charactersOf(text);
    const bool isWhole = characters.size() <= mostCharacters;
    const std::size_t head = isWhole ? characters.size() : mostCharacters / 2;
    const std::size_t tail = isWhole ? characters.size() : characters.size() - (mostCharacters - head - 1);
    std::string result;
    for (std::size_t at = 0; at < head; ++at)
        result += characters[at];
    if (!isWhole) result += "…";
    for (std::size_t at = tail; at < characters.size(); ++at)
        result += characters[at];
    return result;
}

std::string HTMLText::name(std::string_view text) {
    return "<bdi>" + plainName(text) + "</bdi>";
}

}  // namespace quorvane::host
