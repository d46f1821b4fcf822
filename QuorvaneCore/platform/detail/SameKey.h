#pragma once
// Not installed: comparing keys of JSON objects, which are too short to be worth a call.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace quorvane::detail {

/// For texts of the same size, of one word at least.
template <typename Word>
[[nodiscard]] bool isSameInWords(const char* left, const char* right, std::size_t size) noexcept {
    const auto isSameAt = [&](std::size_t at) noexcept {
        Word leftWord = 0;
        Word rightWord = 0;
        std::memcpy(&leftWord, left + at, sizeof leftWord);
        std::memcpy(&rightWord, right + at, sizeof rightWord);
        return leftWord == rightWord;
    };
    for (std::size_t at = 0; at + sizeof(Word) < size; at += sizeof(Word)) {
        if (!isSameAt(at)) return false;
    }
    return isSameAt(size - sizeof(Word));
}

[[nodiscard]] inline bool isSameKey(std::string_view left, std::string_view right) noexcept {
    const std::size_t size = left.size();
    if (size != right.size()) return false;
    if (size >= sizeof(std::uint64_t)) return isSameInWords<std::uint64_t>(left.data(), right.data(), size);
    if (size >= sizeof(std::uint32_t)) return isSameInWords<std::uint32_t>(left.data(), right.data(), size);
    return left == right;
}

}  // namespace quorvane::detail
