#pragma once
#include <cstdint>
#include <optional>
#include <string_view>

namespace quorvane {

/// How real the dollars of an automation snapshot are. Serialised by raw name.
enum class LocalAutomationCostBasis : std::uint8_t {
    RealSpend,                 ///< money that is billed
    NotionalListPrice,         ///< list prices of what a subscription covers
    RealAndNotionalListPrice,  ///< a sum of both
    TokenEstimate,             ///< no money at all: tokens
};

/// The word in files, and the one in reports; the views live for ever.
[[nodiscard]] std::string_view rawName(LocalAutomationCostBasis basis) noexcept;
[[nodiscard]] std::string_view reportLabel(LocalAutomationCostBasis basis) noexcept;

/// The exact inverse of `rawName`; absent for any other text.
[[nodiscard]] std::optional<LocalAutomationCostBasis> localAutomationCostBasisFromRawName(
    std::string_view text) noexcept;

}  // namespace quorvane
