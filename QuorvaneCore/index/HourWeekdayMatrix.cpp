#include "QuorvaneCore/index/HourWeekdayMatrix.h"

namespace quorvane {
namespace {

bool isPlace(std::int64_t weekday, std::int64_t hour) noexcept {
    return weekday >= 1 && weekday <= HourWeekdayMatrix::weekdayCount && hour >= 0 &&
           hour < HourWeekdayMatrix::hourCount;
}

void addTo(HourWeekdayMatrix::Cell& cell, double events, double tokens, double cost) noexcept {
    cell.events += events;
    cell.tokens += tokens;
    cell.cost += cost;
}

}  // namespace

double HourWeekdayMatrix::Cell::value(AnalyticsMeasure measure) const noexcept {
    switch (measure) {
        case AnalyticsMeasure::events: return events;
        case AnalyticsMeasure::tokens: return tokens;
        case AnalyticsMeasure::cost: return cost;
    }
    return 0;
}

void HourWeekdayMatrix::add(std::int64_t weekday, std::int64_t hour, double events, double tokens,
                            double cost) noexcept {
    if (!isPlace(weekday, hour)) return;
    addTo(cells[static_cast<std::size_t>(weekday - 1)][static_cast<std::size_t>(hour)], events, tokens, cost);
}

HourWeekdayMatrix::Cell HourWeekdayMatrix::cell(std::int64_t weekday, std::int64_t hour) const noexcept {
    if (!isPlace(weekday, hour)) return {};
    return cells[static_cast<std::size_t>(weekday - 1)][static_cast<std::size_t>(hour)];
}

double HourWeekdayMatrix::value(std::int64_t weekday, std::int64_t hour, AnalyticsMeasure measure) const noexcept {
    return cell(weekday, hour).value(measure);
}

bool HourWeekdayMatrix::isEmpty(AnalyticsMeasure measure) const noexcept {
    return !peak(measure);
}

std::optional<HourWeekdayMatrix::Peak> HourWeekdayMatrix::peak(AnalyticsMeasure measure) const noexcept {
    Peak best;
    for (std::int64_t weekday = 1; weekday <= weekdayCount; ++weekday) {
        for (std::int64_t hour = 0; hour < hourCount; ++hour) {
            const double here = value(weekday, hour, measure);
            if (here > best.value) best = {weekday, hour, here};
        }
    }
    return best.value > 0 ? std::optional{best} : std::nullopt;
}

HourWeekdayMatrix HourWeekdayMatrix::summed(std::span<const HourWeekdayMatrix> matrices) noexcept {
    HourWeekdayMatrix sum;
    for (const HourWeekdayMatrix& matrix : matrices) {
        for (std::size_t row = 0; row < sum.cells.size(); ++row) {
            for (std::size_t column = 0; column < sum.cells[row].size(); ++column) {
                const Cell& cell = matrix.cells[row][column];
                addTo(sum.cells[row][column], cell.events, cell.tokens, cell.cost);
            }
        }
    }
    return sum;
}

HourWeekdayMatrix HourWeekdayMatrix::bucketed(std::span<const UsageEvent> events, const CostCalculator& calculator,
                                              const Calendar& calendar) {
    HourWeekdayMatrix matrix;
    for (const UsageEvent& event : events) {
        matrix.add(calendar.weekday(event.timestamp), calendar.hour(event.timestamp), 1,
                   static_cast<double>(event.usage.total()), calculator.cost(event.model, event.usage).value_or(0));
    }
    return matrix;
}

}  // namespace quorvane
