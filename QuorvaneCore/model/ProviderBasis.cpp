#include "QuorvaneCore/model/ProviderBasis.h"

#include <optional>

namespace quorvane {

ProviderBasis providerBasisOf(ProviderID provider) noexcept {
    if (provider == ProviderID::Codex || provider == ProviderID::Grok || provider == ProviderID::MuseSpark) {
        return ProviderBasis::Notional;
    }
    if (provider == ProviderID::Copilot || provider == ProviderID::Cursor) return ProviderBasis::Estimate;
    return ProviderBasis::Real;
}

ProviderBasis providerBasisOfRawID(std::string_view rawID) noexcept {
    const std::optional<ProviderID> provider = providerFromRawName(rawID);
    return provider ? providerBasisOf(*provider) : ProviderBasis::Real;
}

std::string_view badge(ProviderBasis basis) noexcept {
    switch (basis) {
        case ProviderBasis::Real: return "real";
        case ProviderBasis::Notional: return "notional";
        case ProviderBasis::Estimate: return "estimate";
    }
    return {};
}

bool isAggregable(ProviderBasis basis) noexcept {
    return basis != ProviderBasis::Estimate;
}

bool showsTokens(ProviderBasis basis) noexcept {
    return basis == ProviderBasis::Estimate;
}

bool isNotional(ProviderBasis basis) noexcept {
    return basis != ProviderBasis::Real;
}

}  // namespace quorvane
