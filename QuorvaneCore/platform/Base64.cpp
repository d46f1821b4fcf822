#include "QuorvaneCore/platform/Base64.h"

#include <cstdint>

namespace quorvane {
namespace {

/// The six bits that a character stands for; -1 for one outside the alphabet.
int sixBits(char character) noexcept {
    if (character >= 'A' && character <= 'Z') return character - 'A';
    if (character >= 'a' && character <= 'z') return character - 'a' + 26;
    if (character >= '0' && character <= '9') return character - '0' + 52;
    if (character == '+') return 62;
    return character == '/' ? 63 : -1;
}

}  // namespace

std::optional<std::string> base64Decoded(std::string_view text) {
    constexpr std::size_t group = 4;
    if (text.size() % group != 0) return std::nullopt;
    if (text.ends_with('=')) text.remove_suffix(text.ends_with("==") ? 2 : 1);
    std::string bytes;
    bytes.reserve(text.size() / group * 3 + 2);
    std::uint32_t bits = 0;
    int count = 0;  // of the bits that are not yet given out
    for (const char character : text) {
        const int six = sixBits(character);
        if (six < 0) return std::nullopt;
        bits = (bits << 6) | static_cast<std::uint32_t>(six);
        count += 6;
        if (count < 8) continue;
        count -= 8;
        bytes += static_cast<char>((bits >> count) & 0xff);
    }
    return bytes;
}

}  // namespace quorvane
