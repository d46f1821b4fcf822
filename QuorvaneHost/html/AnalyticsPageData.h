#pragma once
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "QuorvaneCore/index/HourWeekdayMatrix.h"
#include "QuorvaneCore/index/ModelDaySummary.h"
#include "QuorvaneCore/index/ProjectCostSummary.h"
#include "QuorvaneCore/platform/Calendar.h"
#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/platform/Locale.h"
#include "QuorvaneHost/AnalyticsData.h"

namespace quorvane::host {

/// All that the page of figures is drawn from. As in `summary`, providers whose figures are an estimate stand apart and
/// are in no sum.
struct AnalyticsPageData {
    std::int64_t days = 30;  ///< the length of the window, at least 1
    Date now;                ///< the moment that it ends
    Calendar calendar{"UTC"};
    Locale locale{""};
    std::vector<ModelDaySummary> rows;         ///< of the window, without estimates
    std::vector<ModelDaySummary> estimates;    ///< the other rows
    std::vector<ProjectCostSummary> projects;  ///< without estimates, the most expensive first
    HourWeekdayMatrix hours;                   ///< without estimates
    std::set<std::string> unpricedModels;      ///< models of `rows` that cost something, but nobody knows what
    double cacheSavings = 0;                   ///< US dollars that reading from the cache saved against plain input

    /// Reads the index as it is. Throws `SQLiteError`.
    [[nodiscard]] static AnalyticsPageData gathered(const AnalyticsData& data);
};

}  // namespace quorvane::host
