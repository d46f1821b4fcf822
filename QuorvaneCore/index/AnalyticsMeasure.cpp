#include "QuorvaneCore/index/AnalyticsMeasure.h"

namespace quorvane {

std::string_view rawName(AnalyticsMeasure measure) noexcept {
    switch (measure) {
        case AnalyticsMeasure::events: return "events";
        case AnalyticsMeasure::tokens: return "tokens";
        case AnalyticsMeasure::cost: return "cost";
    }
    return {};
}

std::optional<AnalyticsMeasure> analyticsMeasureFromRawName(std::string_view name) noexcept {
    for (const AnalyticsMeasure measure : allAnalyticsMeasures) {
        if (rawName(measure) == name) return measure;
    }
    return std::nullopt;
}

}  // namespace quorvane
