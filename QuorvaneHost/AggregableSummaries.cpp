#include "QuorvaneHost/AggregableSummaries.h"

#include <vector>

#include "QuorvaneCore/model/ProviderBasis.h"

namespace quorvane::host {

UsageWindowSummaries aggregableSummaries(const UsageIndex& index, std::span<const ProviderID> ids, std::int64_t days,
                                         const CostCalculator& calculator, Date now, const Calendar& calendar) {
    std::vector<ProviderID> summed;
    std::vector<ProviderID> apart;
    for (const ProviderID id : ids)
        (isAggregable(providerBasisOf(id)) ? summed : apart).push_back(id);
    UsageWindowSummaries summaries = index.windowSummaries(summed, days, calculator, now, calendar);
    if (!apart.empty())
        summaries.providers.merge(index.windowSummaries(apart, days, calculator, now, calendar).providers);
    return summaries;
}

}  // namespace quorvane::host
