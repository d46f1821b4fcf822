#include "QuorvaneHost/text/Cells.h"

#include <cstdint>
#include <vector>

#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace quorvane::host {
namespace {

struct Character {
    UChar32 codePoint;  ///< negative for bytes that are no UTF-8
    std::string_view bytes;
};

std::vector<Character> charactersOf(std::string_view text) {
    std::vector<Character> characters;
    const auto length = static_cast<std::int32_t>(text.size());
    for (std::int32_t at = 0; at < length;) {
        const std::int32_t begin = at;
        UChar32 codePoint = 0;
        U8_NEXT(text.data(), at, length, codePoint);  // NOLINT: the library's own macro
        characters.push_back(
            {codePoint, text.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(at - begin))});
    }
    return characters;
}

std::size_t widthOf(UChar32 codePoint) {
    switch (u_charType(codePoint)) {
        case U_NON_SPACING_MARK:
        case U_ENCLOSING_MARK:
        case U_FORMAT_CHAR: return 0;
        default: break;
    }
    const int width = u_getIntPropertyValue(codePoint, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

}  // namespace

std::string printable(std::string_view text) {
    std::string result;
    for (const Character& character : charactersOf(text)) {
        const bool isControl = character.codePoint < 0 || u_charType(character.codePoint) == U_CONTROL_CHAR;
        result += isControl ? std::string_view{"\uFFFD"} : character.bytes;
    }
    return result;
}

std::size_t cellWidth(std::string_view text) {
    std::size_t width = 0;
    for (const Character& character : charactersOf(text))
        width += widthOf(character.codePoint);
    return width;
}

std::string shortened(std::string_view text, std::size_t width) {
    const std::vector<Character> characters = charactersOf(text);
    const std::size_t whole = cellWidth(text);
    if (whole <= width) return std::string{text};
    if (width == 0) return {};
    const std::size_t tailWidth = (width - 1) / 2;
    const std::size_t headWidth = width - 1 - tailWidth;
    std::string head;
    std::size_t used = 0;
    for (const Character& character : characters) {
        used += widthOf(character.codePoint);
        if (used > headWidth) break;
        head += character.bytes;
    }
    std::string tail;
    used = 0;
    for (auto character = characters.rbegin(); character != characters.rend(); ++character) {
        used += widthOf(character->codePoint);
        if (used > tailWidth) break;
        tail.insert(0, character->bytes);
    }
    return head + "…" + tail;
}

}  // namespace quorvane::host
