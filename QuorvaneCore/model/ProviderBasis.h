#pragma once
#include <array>
#include <cstdint>
#include <string_view>

#include "QuorvaneCore/model/ProviderID.h"

namespace quorvane {

/// How a provider's dollar figures are to be read.
enum class ProviderBasis : std::uint8_t {
    Real,      ///< money that is billed
    Notional,  ///< list prices of what a subscription covers
    Estimate,  ///< too rough for money: tokens are shown instead
};

inline constexpr std::array allProviderBases{ProviderBasis::Real, ProviderBasis::Notional, ProviderBasis::Estimate};

/// All operations are pure; any thread may call them.
[[nodiscard]] ProviderBasis providerBasisOf(ProviderID provider) noexcept;

/// The same by raw name; `Real` for a text that names no provider.
[[nodiscard]] ProviderBasis providerBasisOfRawID(std::string_view rawID) noexcept;

/// The word to show; the view lives for ever.
[[nodiscard]] std::string_view badge(ProviderBasis basis) noexcept;

/// Whether its dollars may be added to those of other providers.
[[nodiscard]] bool isAggregable(ProviderBasis basis) noexcept;

[[nodiscard]] bool showsTokens(ProviderBasis basis) noexcept;

/// Whether its dollars are not what is billed; true of `Estimate` too.
[[nodiscard]] bool isNotional(ProviderBasis basis) noexcept;

}  // namespace quorvane
