#pragma once
#include <string>
#include <string_view>

namespace quorvane {

/// Whether all bytes of `text` are well-formed UTF-8: nothing overlong, no surrogates, nothing cut short.
/// Pure; any thread.
[[nodiscard]] bool isUTF8(std::string_view text) noexcept;

/// `text` with each piece that is no UTF-8 replaced by U+FFFD, one for the longest beginning of a character and one for
/// each other byte. Text that is UTF-8 comes back unchanged. Pure; any thread.
[[nodiscard]] std::string repairedUTF8(std::string_view text);

}  // namespace quorvane
