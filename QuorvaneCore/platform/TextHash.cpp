#include "QuorvaneCore/platform/TextHash.h"

#include <cstring>

namespace quorvane {
namespace {

std::uint64_t word(const char* from) noexcept {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, from, sizeof bytes);
    return bytes;
}

constexpr std::uint64_t multiplier = 0x9e3779b97f4a7c15;

/// Spreads the bits of a word upwards by the product and down again by the shift.
std::uint64_t mixed(std::uint64_t bits) noexcept {
    bits *= multiplier;
    return bits ^ (bits >> 32);
}

}  // namespace

std::uint64_t textHash(std::string_view text) noexcept {
    constexpr std::size_t wordBytes = sizeof(std::uint64_t);
    // Spread over all bits, so that a length and a first character do not stand for others.
    std::uint64_t hash = text.size() * multiplier;
    if (text.size() < wordBytes) {
        std::uint64_t bytes = 0;
        for (const char byte : text)
            bytes = bytes << 8 | static_cast<unsigned char>(byte);
        return mixed(mixed(hash ^ bytes));
    }
    for (std::size_t at = 0; at + wordBytes < text.size(); at += wordBytes)
        hash = mixed(hash ^ word(text.data() + at));
    return mixed(mixed(hash ^ word(text.data() + text.size() - wordBytes)));
}

}  // namespace quorvane
