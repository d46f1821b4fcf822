#pragma once
#include <cstdint>
#include <span>
#include <vector>

#include "QuorvaneCore/analytics/AnalyticsDrillFilter.h"
#include "QuorvaneCore/analytics/AnalyticsModelTotal.h"
#include "QuorvaneCore/analytics/HeatmapDay.h"
#include "QuorvaneCore/analytics/ModelDayGrid.h"
#include "QuorvaneCore/analytics/TokenMix.h"
#include "QuorvaneCore/index/AnalyticsMeasure.h"
#include "QuorvaneCore/index/ModelDaySummary.h"
#include "QuorvaneCore/platform/Calendar.h"
#include "QuorvaneCore/platform/Date.h"

namespace quorvane {

/// What a dashboard makes of the rows of `UsageIndex::modelDaySummaries`. Pure; any thread.
///
/// Windows: `days` days (at least 1) are the local day of `now` and the days before it. A row of another day is not in
/// the window; totals, mix and filter have no window.
class AnalyticsAggregation {
public:
    AnalyticsAggregation() = delete;

    /// The row's calls, its tokens of all five kinds, or its cost.
    [[nodiscard]] static double value(const ModelDaySummary& row, AnalyticsMeasure measure) noexcept;

    /// One entry for each day of the window, the oldest first, 0 for a day without rows. Empty where the calendar does
    /// not reach back so far.
    [[nodiscard]] static std::vector<HeatmapDay> heatmapDays(std::span<const ModelDaySummary> rows,
                                                             AnalyticsMeasure measure, std::int64_t days, Date now,
                                                             const Calendar& calendar);

    /// Each model's sums, by the provider's raw name and by the model, both compared byte by byte.
    [[nodiscard]] static std::vector<AnalyticsModelTotal> modelTotals(std::span<const ModelDaySummary> rows);

    [[nodiscard]] static TokenMix tokenMix(std::span<const ModelDaySummary> rows) noexcept;

    /// The `topModels` models with the largest totals by day; of equal totals the one that comes first in `rows`.
    /// The days are there without models, too.
    [[nodiscard]] static ModelDayGrid modelDayGrid(std::span<const ModelDaySummary> rows, AnalyticsMeasure measure,
                                                   std::int64_t days, std::int64_t topModels, Date now,
                                                   const Calendar& calendar);

    /// The rows that match, in their order.
    [[nodiscard]] static std::vector<ModelDaySummary> filteredRows(std::span<const ModelDaySummary> rows,
                                                                   const AnalyticsDrillFilter& matching,
                                                                   const Calendar& calendar);
};

}  // namespace quorvane
