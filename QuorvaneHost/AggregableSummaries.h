#pragma once
#include <cstdint>
#include <span>

#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/pricing/CostCalculator.h"

namespace quorvane::host {

/// One window of several providers, as people are shown it: an entry for each provider, and an aggregate that leaves
/// out those whose dollars are too rough to be added up.
[[nodiscard]] UsageWindowSummaries aggregableSummaries(const UsageIndex& index, std::span<const ProviderID> ids,
                                                       std::int64_t days, const CostCalculator& calculator, Date now,
                                                       const Calendar& calendar);

}  // namespace quorvane::host
