#pragma once
#include <array>
#include <cstdint>

#include "QuorvaneCore/analytics/AnalyticsModelTotal.h"
#include "QuorvaneCore/index/AnalyticsMeasure.h"
#include "QuorvaneCore/index/HourWeekdayMatrix.h"
#include "QuorvaneCore/index/ModelDaySummary.h"
#include "QuorvaneCore/index/ProjectCostSummary.h"

namespace quorvane::host {

/// The measures in the order of the page's switch.
inline constexpr std::array pageMeasures{AnalyticsMeasure::cost, AnalyticsMeasure::tokens, AnalyticsMeasure::events};

/// Stands for a measure in the page's classes: c, t or e.
[[nodiscard]] char letterOf(AnalyticsMeasure measure) noexcept;

/// "Cost", "Tokens" or "Calls".
[[nodiscard]] const char* titleOf(AnalyticsMeasure measure) noexcept;

/// What was used, by all three measures. Sums of counters are checked.
struct UsageFigures {
    double cost = 0;  ///< US dollars
    std::int64_t tokens = 0;
    std::int64_t events = 0;

    UsageFigures() = default;
    UsageFigures(double dollars, std::int64_t tokenCount, std::int64_t eventCount) noexcept
        : cost{dollars}, tokens{tokenCount}, events{eventCount} {}
    explicit UsageFigures(const ModelDaySummary& row) noexcept;
    explicit UsageFigures(const AnalyticsModelTotal& total) noexcept;
    explicit UsageFigures(const ProjectCostSummary& project) noexcept;
    explicit UsageFigures(const HourWeekdayMatrix::Cell& cell) noexcept;

    UsageFigures& operator+=(const UsageFigures& other) noexcept;

    [[nodiscard]] double value(AnalyticsMeasure measure) const noexcept;
};

}  // namespace quorvane::host
