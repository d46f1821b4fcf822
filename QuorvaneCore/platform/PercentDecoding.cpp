#include "QuorvaneCore/platform/PercentDecoding.h"

#include "QuorvaneCore/platform/UTF8.h"

namespace quorvane {
namespace {

/// Absent for anything but a hexadecimal digit.
std::optional<unsigned> valueOfDigit(char digit) noexcept {
    if (digit >= '0' && digit <= '9') return static_cast<unsigned>(digit - '0');
    if (digit >= 'a' && digit <= 'f') return static_cast<unsigned>(digit - 'a') + 10;
    if (digit >= 'A' && digit <= 'F') return static_cast<unsigned>(digit - 'A') + 10;
    return std::nullopt;
}

}  // namespace

std::optional<std::string> percentDecoded(std::string_view text) {
    std::string decoded;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            decoded += text[at];
            continue;
        }
        if (text.size() - at < 3) return std::nullopt;
        const std::optional<unsigned> high = valueOfDigit(text[at + 1]);
        const std::optional<unsigned> low = valueOfDigit(text[at + 2]);
        if (!high || !low) return std::nullopt;
        decoded += static_cast<char>(*high * 16 + *low);
        at += 2;
    }
    if (!isUTF8(decoded)) return std::nullopt;
    return decoded;
}

}  // namespace quorvane
