#pragma once
#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "QuorvaneCore/analytics/HeatmapDay.h"
#include "QuorvaneCore/index/AnalyticsMeasure.h"
#include "QuorvaneCore/index/HourWeekdayMatrix.h"
#include "QuorvaneHost/AnalyticsData.h"
#include "QuorvaneHost/text/HeatCells.h"
#include "QuorvaneHost/text/Ink.h"

namespace quorvane::host {

/// When the work was done: by day and by weekday and hour.
struct ActivityReport {
    std::int64_t days = 0;
    AnalyticsMeasure measure = AnalyticsMeasure::cost;
    Calendar calendar{"UTC"};
    std::vector<HeatmapDay> heatmap;                ///< one a day, the oldest first
    std::map<ProviderID, HourWeekdayMatrix> hours;  ///< of every reader
    HourWeekdayMatrix allHours;                     ///< their sum
    std::string note;                               ///< of estimates among the figures

    [[nodiscard]] static ActivityReport collect(const AnalyticsData& data, AnalyticsMeasure measure);

    /// Month blocks side by side, as many as the width takes, and the week below.
    [[nodiscard]] std::string text(const Ink& ink, const HeatCells& cells, std::size_t width) const;
    [[nodiscard]] std::string json() const;
};

}  // namespace quorvane::host
