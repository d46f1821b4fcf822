#pragma once
#include <cstddef>
#include <cstring>
#include <string_view>

namespace quorvane {

/// The position of the first `pattern` in `text`, from position `from` on; npos if there is none, or `from` is beyond
/// the end. As `text.find(pattern, from)`, which stops at every byte that looks like the first one of the pattern, and
/// several times faster over log lines. Pure; any thread.
[[nodiscard]] inline std::size_t findBytes(std::string_view text, std::string_view pattern,
                                           std::size_t from = 0) noexcept {
    if (from > text.size()) return std::string_view::npos;
    const void* found = ::memmem(text.data() + from, text.size() - from, pattern.data(), pattern.size());
    if (found == nullptr) return std::string_view::npos;
    return static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

}  // namespace quorvane
