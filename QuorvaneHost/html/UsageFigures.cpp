#include "QuorvaneHost/html/UsageFigures.h"

#include <cmath>

#include "QuorvaneCore/analytics/AnalyticsAggregation.h"
#include "QuorvaneCore/platform/CheckedArithmetic.h"

namespace quorvane::host {

char letterOf(AnalyticsMeasure measure) noexcept {
    switch (measure) {
        case AnalyticsMeasure::events: return 'e';
        case AnalyticsMeasure::tokens: return 't';
        case AnalyticsMeasure::cost: return 'c';
    }
    return 'c';
}

const char* titleOf(AnalyticsMeasure measure) noexcept {
    switch (measure) {
        case AnalyticsMeasure::events: return "Calls";
        case AnalyticsMeasure::tokens: return "Tokens";
        case AnalyticsMeasure::cost: return "Cost";
    }
    return "";
}

UsageFigures::UsageFigures(const ModelDaySummary& row) noexcept
    : cost{row.cost},
      tokens{checkedAdd(
          checkedAdd(checkedAdd(row.inputTokens, row.outputTokens), checkedAdd(row.cache5mTokens, row.cache1hTokens)),
          row.cacheReadTokens)},
      events{row.eventCount} {}

UsageFigures::UsageFigures(const AnalyticsModelTotal& total) noexcept
    : cost{total.cost}, tokens{total.totalTokens()}, events{total.eventCount} {}

UsageFigures::UsageFigures(const ProjectCostSummary& project) noexcept
    : cost{project.cost}, tokens{project.totalTokens()}, events{project.eventCount} {}

UsageFigures::UsageFigures(const HourWeekdayMatrix::Cell& cell) noexcept
    : cost{cell.cost}, tokens{std::llround(cell.tokens)}, events{std::llround(cell.events)} {}

UsageFigures& UsageFigures::operator+=(const UsageFigures& other) noexcept {
    cost += other.cost;
    tokens = checkedAdd(tokens, other.tokens);
    events = checkedAdd(events, other.events);
    return *this;
}

double UsageFigures::value(AnalyticsMeasure measure) const noexcept {
    switch (measure) {
        case AnalyticsMeasure::events: return static_cast<double>(events);
        case AnalyticsMeasure::tokens: return static_cast<double>(tokens);
        case AnalyticsMeasure::cost: return cost;
    }
    return 0;
}

}  // namespace quorvane::host
