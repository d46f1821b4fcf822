#include "QuorvaneCore/platform/UTF8.h"

#include <cstdint>

#include <simdjson.h>
#include <unicode/utf8.h>

namespace quorvane {

bool isUTF8(std::string_view text) noexcept {
    return simdjson::validate_utf8(text.data(), text.size());
}

std::string repairedUTF8(std::string_view text) {
    std::string repaired;
    repaired.reserve(text.size());
    if (isUTF8(text)) return repaired.append(text);
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto size = static_cast<std::int64_t>(text.size());
    for (std::int64_t at = 0; at < size;) {
        const std::int64_t begin = at;
        UChar32 character = 0;
        U8_NEXT(bytes, at, size, character);
        if (character < 0) {
            repaired += "\xEF\xBF\xBD";
        } else {
            repaired.append(text.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(at - begin)));
        }
    }
    return repaired;
}

}  // namespace quorvane
