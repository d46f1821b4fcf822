#pragma once
#include <cstdint>
#include <string_view>

namespace quorvane {

/// A hash of a text for tables in memory: fast for texts of the length of ids, with 64 good bits, and no protection
/// against an adversary. It may differ from machine to machine. Pure; any thread.
[[nodiscard]] std::uint64_t textHash(std::string_view text) noexcept;

}  // namespace quorvane
