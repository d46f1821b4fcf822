#include "QuorvaneHost/html/AnalyticsPageData.h"

#include <algorithm>
#include <iterator>
#include <map>

#include "QuorvaneCore/analytics/AnalyticsAggregation.h"
#include "QuorvaneCore/model/ProviderBasis.h"

namespace quorvane::host {
namespace {

double cacheSavings(const std::vector<ModelDaySummary>& rows, const CostCalculator& calculator) {
    double sum = 0;
    for (const AnalyticsModelTotal& total : AnalyticsAggregation::modelTotals(rows)) {
        const TokenUsage usage{.cacheRead = total.cacheReadTokens};
        sum += calculator.cacheReadSavings(total.model, usage).value_or(0);
    }
    return sum;
}

HourWeekdayMatrix summedHours(const std::map<ProviderID, HourWeekdayMatrix>& byProvider) {
    std::vector<HourWeekdayMatrix> matrices;
    for (const auto& [provider, matrix] : byProvider)
        matrices.push_back(matrix);
    return HourWeekdayMatrix::summed(matrices);
}

}  // namespace

AnalyticsPageData AnalyticsPageData::gathered(const AnalyticsData& data) {
    const auto isSummed = [](ProviderID provider) { return isAggregable(providerBasisOf(provider)); };
    std::vector<ProviderID> summed;
    std::copy_if(data.providers.begin(), data.providers.end(), std::back_inserter(summed), isSummed);
    const UsageIndex& index = *data.index;
    AnalyticsPageData page{.days = data.days, .now = data.now, .calendar = data.calendar, .locale = Locale::current()};
    for (ModelDaySummary& row : data.modelDays())
        (isSummed(row.provider) ? page.rows : page.estimates).push_back(std::move(row));
    page.projects = index.projectCostSummaries(summed, data.days, data.calculator, data.now, data.calendar);
    page.hours = summedHours(index.hourWeekdayBins(summed, data.days, data.calculator, data.now, data.calendar));
    for (const ModelDaySummary& row : page.rows) {
        if (!data.calculator.pricing().price(row.model)) page.unpricedModels.insert(row.model);
    }
    page.cacheSavings = quorvane::host::cacheSavings(page.rows, data.calculator);
    return page;
}

}  // namespace quorvane::host
