#include "QuorvaneCore/index/UsageStore.h"

#include <algorithm>

#include "QuorvaneCore/index/detail/UsageDays.h"
#include "QuorvaneCore/index/detail/WindowAccumulator.h"

namespace quorvane {

UsageRollup UsageStore::rollup(std::span<const UsageEvent> events, std::int64_t days, Date now,
                               const Calendar& calendar) const {
    const std::int64_t length = std::max<std::int64_t>(days, 1);
    const detail::UsageDays range{now, calendar};
    const Date windowStart = range.windowStart(length);
    detail::WindowAccumulator sums = detail::WindowAccumulator::withoutSeries(length);
    for (const UsageEvent& event : events) {
        if (event.timestamp > now) continue;
        const std::optional<double> cost = calculator_.cost(event.model, event.usage);
        if (event.timestamp >= range.startOfToday) sums.today.add(event, cost);
        if (event.timestamp >= windowStart) sums.addToWindow(event.model, event.usage, cost, 1);
    }
    return std::move(sums).finished().rollup;
}

}  // namespace quorvane
