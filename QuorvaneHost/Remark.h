#pragma once
#include <optional>
#include <string>

#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/pricing/CostCalculator.h"
#include "QuorvaneHost/LimitsReport.h"

namespace quorvane::host {

/// The one remark about the last week that matters most: a limit that is likely hit, then a pace that will hit it, then
/// a model that costs far more than its share; of several providers the one with the most cost speaks. Absent when
/// there is nothing to remark.
[[nodiscard]] std::optional<std::string> weeklyRemark(const UsageIndex& index, const LimitsReport& limits,
                                                      const CostCalculator& calculator, const Calendar& calendar);

}  // namespace quorvane::host
