#pragma once
#include <cstdint>
#include <span>

namespace quorvane {

/// The 64-bit FNV-1a hash: fast, stable across machines, and no protection against an adversary.
class FNV1a {
public:
    void add(std::span<const char> bytes) noexcept {
        for (const char byte : bytes) {
            value_ ^= static_cast<unsigned char>(byte);
            value_ *= 0x100000001b3ULL;
        }
    }
    [[nodiscard]] std::uint64_t value() const noexcept { return value_; }

private:
    std::uint64_t value_ = 0xcbf29ce484222325ULL;
};

}  // namespace quorvane
