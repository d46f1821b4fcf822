#include "QuorvaneHost/SummaryReport.h"

#include <algorithm>

#include "QuorvaneCore/model/ProviderBasis.h"
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

/// Splits the readers by whether their dollars may be added up.
std::vector<ProviderID> idsOf(const std::vector<Reader>& readers, bool aggregable) {
    std::vector<ProviderID> ids;
    for (const Reader& reader : readers) {
        if (isAggregable(providerBasisOf(reader->id())) == aggregable) ids.push_back(reader->id());
    }
    return ids;
}

}  // namespace

SummaryReport SummaryReport::collect(const UsageIndex& index, const std::vector<Reader>& readers, std::int64_t days,
                                     const CostCalculator& calculator, Date now, const Calendar& calendar) {
    UsageWindowSummaries summed = index.windowSummaries(idsOf(readers, true), days, calculator, now, calendar);
    UsageWindowSummaries apart = index.windowSummaries(idsOf(readers, false), days, calculator, now, calendar);

    SummaryReport report{.days = days,
                         .now = now,
                         .firstDay = (calendar.day(now) - (days - 1)).text(),
                         .lastDay = calendar.day(now).text(),
                         .total = std::move(summed.aggregate)};
    for (const Reader& reader : readers) {
        const bool isInTotals = summed.providers.contains(reader->id());
        UsageWindowSummaries& source = isInTotals ? summed : apart;
        ProviderRow row{.id = reader->id(),
                        .isAvailable = reader->isAvailable(),
                        .isInTotals = isInTotals,
                        .summary = std::move(source.providers.at(reader->id()))};
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
