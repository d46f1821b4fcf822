#include "QuorvaneHost/AnalyticsData.h"

#include <set>
#include <string>

#include "QuorvaneCore/model/ProviderBasis.h"
#include "QuorvaneCore/model/ProviderCatalog.h"
#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneHost/Readers.h"
#include "QuorvaneHost/RefreshRun.h"
#include "QuorvaneHost/Session.h"

namespace quorvane::host {

AnalyticsData AnalyticsData::refreshed(std::int64_t days) {
    const std::vector<Reader> readers = allReaders();
    std::shared_ptr<UsageIndex> index = openIndex();
    static_cast<void>(refreshAll(index, readers));
    std::vector<ProviderID> providers;
    for (const Reader& reader : readers)
        providers.push_back(reader->id());
    return {.index = std::move(index),
            .providers = std::move(providers),
            .calculator = currentPrices(),
            .now = Clock::now(),
            .calendar = Calendar::current(),
            .days = days};
}

std::vector<ModelDaySummary> AnalyticsData::modelDays() const {
    return index->modelDaySummaries(providers, days, calculator, now, calendar);
}

std::vector<ProjectCostSummary> AnalyticsData::projects() const {
    return index->projectCostSummaries(providers, days, calculator, now, calendar);
}

std::map<ProviderID, HourWeekdayMatrix> AnalyticsData::hours() const {
    return index->hourWeekdayBins(providers, days, calculator, now, calendar);
}

std::string estimatesNote(const std::vector<ModelDaySummary>& rows) {
    std::set<std::string> names;
    for (const ModelDaySummary& row : rows) {
        if (!isAggregable(providerBasisOf(row.provider))) names.insert(ProviderCatalog::descriptor(row.provider)->name);
    }
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : ", ") + name;
    return list.empty() ? list : "With estimates, which summary leaves out of its totals: " + list + "\n";
}

}  // namespace quorvane::host
