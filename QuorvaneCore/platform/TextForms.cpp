#include "QuorvaneCore/platform/TextForms.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

namespace quorvane {
namespace {

std::int32_t lengthOf(std::string_view text) noexcept {
    return static_cast<std::int32_t>(text.size());
}

bool isWhiteSpace(UChar32 character) noexcept {
    return u_isUWhiteSpace(character) != 0;
}

}  // namespace

std::string capitalisingFirst(std::string_view text) {
    if (text.empty()) return {};
    std::int32_t end = 0;
    U8_FWD_1(text.data(), end, lengthOf(text));
    const auto size = static_cast<std::size_t>(end);
    icu::UnicodeString first = icu::UnicodeString::fromUTF8({text.data(), end});
    std::string result;
    first.toUpper(icu::Locale::getRoot()).toUTF8String(result);
    return result.append(text.substr(size));
}

std::string_view trimmed(std::string_view text) noexcept {
    std::size_t begin = text.size();
    std::size_t end = text.size();
    for (std::int32_t next = 0; next < lengthOf(text);) {
        const std::int32_t here = next;
        UChar32 character = 0;
        U8_NEXT(text.data(), next, lengthOf(text), character);
        if (isWhiteSpace(character)) continue;
        begin = std::min(begin, static_cast<std::size_t>(here));
        end = static_cast<std::size_t>(next);
    }
    return text.substr(begin, end - begin);
}

}  // namespace quorvane
