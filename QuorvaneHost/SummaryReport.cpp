#include "QuorvaneHost/SummaryReport.h"

#include <algorithm>

#include "QuorvaneCore/model/ProviderBasis.h"
#include "QuorvaneHost/AggregableSummaries.h"
#include "QuorvaneHost/Remark.h"

namespace quorvane::host {
namespace {

std::vector<SummaryReport::ModelRow> modelRows(const UsageRollup& rollup) {
    std::vector<SummaryReport::ModelRow> rows;
    for (const auto& [model, bucket] : rollup.byModel7d) {
        rows.push_back({.model = model, .window = bucket, .isPriced = bucket.unpricedModels.empty()});
    }
    std::sort(rows.begin(), rows.end(), [](const auto& left, const auto& right) {
        if (left.window.cost != right.window.cost) return left.window.cost > right.window.cost;
        const std::int64_t leftTokens = left.window.usage.total();
        const std::int64_t rightTokens = right.window.usage.total();
        return leftTokens != rightTokens ? leftTokens > rightTokens : left.model < right.model;
    });
    return rows;
}

}  // namespace

SummaryReport SummaryReport::collect(const UsageIndex& index, const std::vector<Reader>& readers, std::int64_t days,
                                     const CostCalculator& calculator, Date now, const Calendar& calendar) {
    std::vector<ProviderID> ids;
    for (const Reader& reader : readers)
        ids.push_back(reader->id());
    UsageWindowSummaries summaries = aggregableSummaries(index, ids, days, calculator, now, calendar);
    SummaryReport report{.days = days,
                         .now = now,
                         .firstDay = (calendar.day(now) - (days - 1)).text(),
                         .lastDay = calendar.day(now).text(),
                         .total = std::move(summaries.aggregate)};
    for (const Reader& reader : readers) {
        ProviderRow row{.id = reader->id(),
                        .isAvailable = reader->isAvailable(),
                        .isInTotals = isAggregable(providerBasisOf(reader->id())),
                        .summary = std::move(summaries.providers.at(reader->id()))};
        if (row.isAvailable || row.summary.rollup.last7d.eventCount > 0) report.providers.push_back(std::move(row));
    }
    report.models = modelRows(report.total.rollup);
    for (const ModelRow& row : report.models) {
        report.cacheSavings += calculator.cacheReadSavings(row.model, row.window.usage).value_or(0);
    }
    report.limits = LimitsReport::collect(readers, now);
    report.remark = weeklyRemark(index, report.limits, calculator, calendar);
    return report;
}

}  // namespace quorvane::host
