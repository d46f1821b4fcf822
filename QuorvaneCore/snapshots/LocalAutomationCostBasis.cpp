#include "QuorvaneCore/snapshots/LocalAutomationCostBasis.h"

#include <array>

namespace quorvane {
namespace {

using Basis = LocalAutomationCostBasis;

constexpr std::array allBases{Basis::RealSpend, Basis::NotionalListPrice, Basis::RealAndNotionalListPrice,
                              Basis::TokenEstimate};

}  // namespace

std::string_view rawName(LocalAutomationCostBasis basis) noexcept {
    switch (basis) {
        case Basis::RealSpend: return "real_spend";
        case Basis::NotionalListPrice: return "notional_list_price";
        case Basis::RealAndNotionalListPrice: return "real_and_notional_list_price";
        case Basis::TokenEstimate: return "token_estimate";
    }
    return {};
}

std::string_view reportLabel(LocalAutomationCostBasis basis) noexcept {
    switch (basis) {
        case Basis::RealSpend: return "real spend";
        case Basis::NotionalListPrice: return "notional list-price";
        case Basis::RealAndNotionalListPrice: return "incl notional";
        case Basis::TokenEstimate: return "token estimate";
    }
    return {};
}

std::optional<LocalAutomationCostBasis> localAutomationCostBasisFromRawName(std::string_view text) noexcept {
    for (const Basis basis : allBases) {
        if (rawName(basis) == text) return basis;
    }
    return std::nullopt;
}

}  // namespace quorvane
