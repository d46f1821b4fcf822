#include "QuorvaneCore/index/ModelDaySummary.h"

#include "QuorvaneCore/index/detail/ModelDayAccumulator.h"

namespace quorvane {

std::vector<ModelDaySummary> ModelDaySummary::bucketed(std::span<const UsageEvent> events,
                                                       const CostCalculator& calculator, const Calendar& calendar) {
    detail::ModelDayAccumulator sums;
    for (const UsageEvent& event : events) {
        sums.add(event.provider, event.model, calendar.day(event.timestamp), event.usage,
                 calculator.cost(event.model, event.usage).value_or(0));
    }
    return std::move(sums).finished(calendar);
}

}  // namespace quorvane
