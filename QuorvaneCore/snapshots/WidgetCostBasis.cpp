#include "QuorvaneCore/snapshots/WidgetCostBasis.h"

namespace quorvane {

std::string_view rawName(WidgetCostBasis basis) noexcept {
    switch (basis) {
        case WidgetCostBasis::RealSpend: return "realSpend";
        case WidgetCostBasis::NotionalListPrice: return "notionalListPrice";
        case WidgetCostBasis::RealAndNotionalListPrice: return "realAndNotionalListPrice";
    }
    return {};
}

std::optional<WidgetCostBasis> widgetCostBasisFromRawName(std::string_view text) noexcept {
    for (const WidgetCostBasis basis :
         {WidgetCostBasis::RealSpend, WidgetCostBasis::NotionalListPrice, WidgetCostBasis::RealAndNotionalListPrice}) {
        if (rawName(basis) == text) return basis;
    }
    return std::nullopt;
}

std::string_view shortLabel(WidgetCostBasis basis) noexcept {
    switch (basis) {
        case WidgetCostBasis::RealSpend: return "real spend";
        case WidgetCostBasis::NotionalListPrice: return "notional";
        case WidgetCostBasis::RealAndNotionalListPrice: return "incl notional";
    }
    return {};
}

}  // namespace quorvane
