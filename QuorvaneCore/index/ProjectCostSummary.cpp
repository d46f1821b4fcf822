#include "QuorvaneCore/index/ProjectCostSummary.h"

#include "QuorvaneCore/index/detail/ProjectAccumulator.h"
#include "QuorvaneCore/platform/CheckedArithmetic.h"

namespace quorvane {

std::int64_t ProjectCostSummary::totalTokens() const noexcept {
    const TokenUsage tokens{.input = inputTokens,
                            .output = outputTokens,
                            .cacheCreate5m = cache5mTokens,
                            .cacheCreate1h = cache1hTokens,
                            .cacheRead = cacheReadTokens};
    return tokens.total();
}

std::vector<ProjectCostSummary> ProjectCostSummary::bucketed(std::span<const UsageEvent> events,
                                                             const CostCalculator& calculator) {
    detail::ProjectAccumulator sums;
    for (const UsageEvent& event : events) {
        sums.add(event.project ? std::string_view{*event.project} : std::string_view{}, event.usage,
                 calculator.cost(event.model, event.usage).value_or(0));
    }
    return std::move(sums).finished();
}

}  // namespace quorvane
