#include "QuorvaneCore/snapshots/WidgetValueMetric.h"

namespace quorvane {

std::string_view rawName(WidgetValueMetric metric) noexcept {
    switch (metric) {
        case WidgetValueMetric::Dollars: return "dollars";
        case WidgetValueMetric::Tokens: return "tokens";
    }
    return {};
}

std::optional<WidgetValueMetric> widgetValueMetricFromRawName(std::string_view text) noexcept {
    for (const WidgetValueMetric metric : {WidgetValueMetric::Dollars, WidgetValueMetric::Tokens}) {
        if (rawName(metric) == text) return metric;
    }
    return std::nullopt;
}

}  // namespace quorvane
