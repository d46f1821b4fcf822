#include "QuorvaneHost/ActivityReport.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <fmt/format.h>

#include "QuorvaneCore/analytics/AnalyticsAggregation.h"
#include "QuorvaneCore/analytics/CalendarMonthLayout.h"
#include "QuorvaneCore/platform/DateFormat.h"
#include "QuorvaneCore/platform/JSONTree.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "QuorvaneCore/platform/Locale.h"
#include "QuorvaneHost/text/Amounts.h"
#include "QuorvaneHost/text/Cells.h"

namespace quorvane::host {
namespace {

constexpr std::size_t cellColumns = 2;
constexpr std::size_t gap = 2;
constexpr int daysAWeek = 7;

std::string blanks(std::size_t count) {
    return std::string(count, ' ');
}

std::string amount(double value, AnalyticsMeasure measure) {
    switch (measure) {
        case AnalyticsMeasure::events: return grouped(std::llround(value)) + (value == 1 ? " call" : " calls");
        case AnalyticsMeasure::tokens: return compactTokens(std::llround(value)) + " tokens";
        case AnalyticsMeasure::cost: return money(value);
    }
    return {};
}

/// The names of a week's days, from the first on, as the locale has them.
struct WeekdayNames {
    WeekdayNames(const Calendar& calendar, std::string_view form) {
        const DateFormat format = DateFormat::localized(Locale::current(), form);
        const Calendar utc{"UTC"};
        for (int row = 0; row < daysAWeek; ++row) {
            const int weekday = (calendar.firstWeekday() - 1 + row) % daysAWeek + 1;
            constexpr LocalDay sunday{3};  // 1970-01-04
            weekdays[static_cast<std::size_t>(row)] = weekday;
            names[static_cast<std::size_t>(row)] = format.text(utc.start(sunday + (weekday - 1)), utc);
            width = std::max(width, cellWidth(names[static_cast<std::size_t>(row)]));
        }
    }

    /// Filled up to the width of the longest one.
    [[nodiscard]] std::string padded(std::size_t row) const {
        return names[row] + blanks(width - cellWidth(names[row]));
    }

    std::array<int, daysAWeek> weekdays{};
    std::array<std::string, daysAWeek> names;
    std::size_t width = 0;
};

/// How many months stand side by side, from `first` on.
std::size_t monthsInARow(const std::vector<CalendarMonthBlock>& months, std::size_t first, std::size_t room) {
    std::size_t used = 0;
    std::size_t count = 0;
    while (first + count < months.size()) {
        const CalendarMonthBlock& month = months[first + count];
        const std::size_t columns = std::max(month.columns.size() * cellColumns, cellWidth(month.label)) + gap;
        if (count > 0 && used + columns > room + gap) break;
        used += columns;
        ++count;
    }
    return count;
}

std::string slotText(const CalendarSlot& slot, const HeatCells& cells, double peak) {
    const auto* const day = std::get_if<HeatmapDay>(&slot);
    return day == nullptr ? blanks(cellColumns) : cells.cell(day->value, peak);
}

/// One row of months.
std::string monthsText(std::span<const CalendarMonthBlock> months, const WeekdayNames& weekdays, const Ink& ink,
                       const HeatCells& cells, double peak) {
    const auto columnsOf = [](const CalendarMonthBlock& month) {
        return std::max(month.columns.size() * cellColumns, cellWidth(month.label)) + gap;
    };
    std::string labels = blanks(weekdays.width + 1);
    for (const CalendarMonthBlock& month : months)
        labels += month.label + blanks(columnsOf(month) - cellWidth(month.label));
    std::string text = ink.dim(labels.substr(0, labels.find_last_not_of(' ') + 1)) + "\n";
    for (std::size_t row = 0; row < daysAWeek; ++row) {
        std::string line = ink.dim(weekdays.padded(row)) + " ";
        for (const CalendarMonthBlock& month : months) {
            for (const auto& week : month.columns)
                line += slotText(week[row], cells, peak);
            line += blanks(columnsOf(month) - month.columns.size() * cellColumns);
        }
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

std::string calendarText(const ActivityReport& report, const Ink& ink, const HeatCells& cells, std::size_t width) {
    const WeekdayNames weekdays{report.calendar, "ccc"};
    const std::vector<CalendarMonthBlock> months = CalendarMonthLayout::months(report.heatmap, report.calendar);
    double peak = 0;
    for (const HeatmapDay& day : report.heatmap)
        peak = std::max(peak, day.value);
    const std::size_t room = width > weekdays.width + 1 ? width - weekdays.width - 1 : 0;
    std::string text;
    for (std::size_t first = 0; first < months.size();) {
        const std::size_t count = monthsInARow(months, first, room);
        text += (text.empty() ? "" : "\n") +
                monthsText(std::span{months}.subspan(first, count), weekdays, ink, cells, peak);
        first += count;
    }
    return text;
}

std::string weekText(const ActivityReport& report, const Ink& ink, const HeatCells& cells) {
    const WeekdayNames weekdays{report.calendar, "ccc"};
    constexpr int hoursALabel = 3;
    std::string hours = blanks(weekdays.width + 1);
    for (int hour = 0; hour < HourWeekdayMatrix::hourCount; hour += hoursALabel)
        hours += fmt::format("{:<{}}", hour, hoursALabel * static_cast<int>(cellColumns));
    std::string text = ink.dim(hours.substr(0, hours.find_last_not_of(' ') + 1)) + "\n";
    const auto peak = report.allHours.peak(report.measure);
    for (std::size_t row = 0; row < daysAWeek; ++row) {
        text += ink.dim(weekdays.padded(row)) + " ";
        for (int hour = 0; hour < HourWeekdayMatrix::hourCount; ++hour)
            text +=
                cells.cell(report.allHours.value(weekdays.weekdays[row], hour, report.measure), peak ? peak->value : 0);
        text += "\n";
    }
    return text;
}

std::string totalsText(const ActivityReport& report, const HeatCells& cells) {
    const AnalyticsMeasure measure = report.measure;
    double total = 0;
    const HeatmapDay* best = nullptr;
    for (const HeatmapDay& day : report.heatmap) {
        total += day.value;
        if (day.value > 0 && (best == nullptr || day.value > best->value)) best = &day;
    }
    const std::string span = report.days == 1 ? "1 day" : fmt::format("{} days", report.days);
    std::string text = fmt::format("{} in {}", amount(total, measure), span);
    if (best != nullptr)
        text += fmt::format(", most on {}: {}", report.calendar.day(best->day).text(), amount(best->value, measure));
    return text + "\n" + cells.legend() + "\n";
}

std::string peakText(const ActivityReport& report) {
    const auto peak = report.allHours.peak(report.measure);
    if (!peak) return {};
    const WeekdayNames names{report.calendar, "cccc"};
    const auto row = std::find(names.weekdays.begin(), names.weekdays.end(), peak->weekday) - names.weekdays.begin();
    return fmt::format("Busiest hour: {} {:02}:00, {}\n", names.names[static_cast<std::size_t>(row)], peak->hour,
                       amount(peak->value, report.measure));
}

JSONTree::Array matrixJSON(const HourWeekdayMatrix& matrix, AnalyticsMeasure measure) {
    JSONTree::Array rows;
    for (const auto& row : matrix.cells) {
        JSONTree::Array hours;
        for (const HourWeekdayMatrix::Cell& cell : row)
            hours.emplace_back(cell.value(measure));
        rows.emplace_back(std::move(hours));
    }
    return rows;
}

}  // namespace

ActivityReport ActivityReport::collect(const AnalyticsData& data, AnalyticsMeasure measure) {
    const std::vector<ModelDaySummary> rows = data.modelDays();
    ActivityReport report{
        .days = data.days,
        .measure = measure,
        .calendar = data.calendar,
        .heatmap = AnalyticsAggregation::heatmapDays(rows, measure, data.days, data.now, data.calendar),
        .hours = data.hours(),
        .allHours = {},
        .note = estimatesNote(rows)};
    std::vector<HourWeekdayMatrix> matrices;
    for (const auto& [provider, matrix] : report.hours)
        matrices.push_back(matrix);
    report.allHours = HourWeekdayMatrix::summed(matrices);
    return report;
}

std::string ActivityReport::text(const Ink& ink, const HeatCells& cells, std::size_t width) const {
    if (allHours.isEmpty(AnalyticsMeasure::events)) return "No model calls in these days.\n";
    return calendarText(*this, ink, cells, width) + "\n" + totalsText(*this, cells) + "\n" +
           weekText(*this, ink, cells) + "\n" + peakText(*this) + ink.dim(note);
}

std::string ActivityReport::json() const {
    JSONTree::Array byDay;
    for (const HeatmapDay& day : heatmap) {
        JSONTree::Object entry{{"date", calendar.day(day.day).text()}, {"value", day.value}};
        byDay.emplace_back(std::move(entry));
    }
    JSONTree::Object byProvider;
    for (const auto& [provider, matrix] : hours)
        byProvider.emplace(rawName(provider), matrixJSON(matrix, measure));
    return JSONWriter::pretty(JSONTree::Object{
        {"days", days},
        {"measure", std::string{rawName(measure)}},
        {"heatmap", std::move(byDay)},
        {"hours", JSONTree::Object{{"total", matrixJSON(allHours, measure)}, {"providers", std::move(byProvider)}}}});
}

}  // namespace quorvane::host
