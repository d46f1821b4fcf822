#include "QuorvaneWidgetExtension/WidgetComponents/ProviderBasisBadge.h"

namespace quorvane {

std::optional<std::string_view> ProviderBasisBadge::word(const WidgetProviderSnapshot& provider) noexcept {
    if (provider.metric == WidgetValueMetric::Tokens) return "estimate";
    switch (provider.basis) {
        case WidgetCostBasis::NotionalListPrice: return "notional";
        case WidgetCostBasis::RealAndNotionalListPrice: return "incl notional";
        case WidgetCostBasis::RealSpend: break;
    }
    return std::nullopt;
}

std::optional<ProviderBasisBadge> ProviderBasisBadge::of(const WidgetProviderSnapshot& provider) {
    const std::optional<std::string_view> text = word(provider);
    if (!text) return std::nullopt;
    return ProviderBasisBadge{std::string{*text}};
}

std::optional<ProviderBasisBadge> ProviderBasisBadge::of(const WidgetSnapshot& snapshot) {
    if (!snapshot.disclosesNotionalBasis()) return std::nullopt;
    return ProviderBasisBadge{std::string{shortLabel(snapshot.basis)}};
}

}  // namespace quorvane
