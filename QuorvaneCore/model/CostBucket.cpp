#include "QuorvaneCore/model/CostBucket.h"

#include "QuorvaneCore/platform/CheckedArithmetic.h"

namespace quorvane {

void CostBucket::add(const UsageEvent& event, std::optional<double> eventCost) {
    addGrouped(event.model, event.usage, eventCost, 1);
}

void CostBucket::addGrouped(std::string_view model, const TokenUsage& groupUsage, std::optional<double> groupCost,
                            std::int64_t count) {
    usage += groupUsage;
    eventCount = checkedAdd(eventCount, count);
    if (groupCost) {
        cost += *groupCost;
    } else if (!unpricedModels.contains(model)) {
        unpricedModels.emplace(model);
    }
}

}  // namespace quorvane
