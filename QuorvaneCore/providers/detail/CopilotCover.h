#pragma once
// Not installed: which of several records of one call counts.
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "QuorvaneCore/platform/TextTable.h"
#include "QuorvaneCore/providers/CopilotOTelParser.h"

namespace quorvane {

/// What a record says of the call that it speaks of.
struct CopilotClaim {
    std::string_view response;              ///< empty for none
    std::uint32_t trace = TextTable::none;  ///< equal traces have equal numbers, and these are small
    CopilotOTelParser::RecordKind kind{};
    bool hasCall = true;  ///< whether a call was made of the record
};

/// A kind as a bit, so that several are one number.
[[nodiscard]] constexpr unsigned kindBit(CopilotOTelParser::RecordKind kind) noexcept {
    return 1U << static_cast<unsigned>(kind);
}

/// Whether one of these kinds is more reliable than that one, and so covers it.
[[nodiscard]] constexpr bool covers(unsigned kindBits, CopilotOTelParser::RecordKind kind) noexcept {
    return (kindBits & (kindBit(kind) - 1)) != 0;
}

/// Tells of each claim whether one of a more reliable kind, ahead of it or behind, has its trace or its response.
[[nodiscard]] std::vector<bool> coveredClaims(std::span<const CopilotClaim> claims);

}  // namespace quorvane
