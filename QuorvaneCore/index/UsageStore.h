#pragma once
#include <cstdint>
#include <span>
#include <utility>

#include "QuorvaneCore/model/UsageEvent.h"
#include "QuorvaneCore/model/UsageRollup.h"
#include "QuorvaneCore/platform/Calendar.h"
#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/pricing/CostCalculator.h"

namespace quorvane {

/// `UsageIndex::rollup` over events in memory, without an index. A value; any thread.
class UsageStore {
public:
    explicit UsageStore(CostCalculator calculator) : calculator_{std::move(calculator)} {}

    /// Today and the last `days` days, at least 1, up to `now`.
    [[nodiscard]] UsageRollup rollup(std::span<const UsageEvent> events, std::int64_t days, Date now,
                                     const Calendar& calendar) const;

private:
    CostCalculator calculator_;
};

}  // namespace quorvane
