#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/pricing/CostCalculator.h"

namespace quorvane::host {

/// What the analytic commands draw from: the index after a refresh, of every reader, and the moment they speak of.
struct AnalyticsData {
    std::shared_ptr<UsageIndex> index;
    std::vector<ProviderID> providers;  ///< of all readers
    CostCalculator calculator;
    Date now;
    Calendar calendar;
    std::int64_t days = 0;

    /// Refreshes the index. Throws `Failure`.
    [[nodiscard]] static AnalyticsData refreshed(std::int64_t days);

    [[nodiscard]] std::vector<ModelDaySummary> modelDays() const;
    [[nodiscard]] std::vector<ProjectCostSummary> projects() const;
    [[nodiscard]] std::map<ProviderID, HourWeekdayMatrix> hours() const;
};

/// Names the providers among the rows whose figures are an estimate, which `summary` leaves out of its totals: one line
/// with a line feed, empty if there is none.
[[nodiscard]] std::string estimatesNote(const std::vector<ModelDaySummary>& rows);

}  // namespace quorvane::host
