#include <algorithm>
#include <array>
#include <variant>
#include <vector>

#include <fmt/format.h>

#include "QuorvaneCore/analytics/CalendarMonthLayout.h"
#include "QuorvaneHost/html/HTMLText.h"
#include "QuorvaneHost/html/HeatLevels.h"
#include "QuorvaneHost/html/Sections.h"

namespace quorvane::host {
namespace {

constexpr int daysAWeek = 7;
constexpr std::int64_t mostLargeDays = 92;  // so long each day has room for its number

const UsageFigures& figuresOf(const PageContext& context, LocalDay day) {
    return context.days[static_cast<std::size_t>(day - context.firstDay)];
}

std::string dayCell(const PageContext& context, LocalDay day, const UsageFigures& peaks, bool isLarge) {
    const UsageFigures& figures = figuresOf(context, day);
    std::string number;
    if (isLarge) {
        const std::string date = day.text();
        const std::string digits = date.substr(date.size() - 2);
        number = "<b aria-hidden=\"true\">" + (digits[0] == '0' ? digits.substr(1) : digits) + "</b>";
    }
    return "<td" + HeatLevels::classAttribute(figures, peaks) + ">" + number + "<i>" +
           context.format.localized(context.format.day(day)) + ": " + HTMLText::escaped(context.format.all(figures)) +
           "</i></td>";
}

std::string slot(const PageContext& context, const CalendarSlot& slot, const UsageFigures& peaks, bool isLarge) {
    if (const auto* day = std::get_if<HeatmapDay>(&slot))
        return dayCell(context, context.data.calendar.day(day->day), peaks, isLarge);
    return std::holds_alternative<CalendarBlank>(slot) ? "<td class=\"x\"></td>" : "<td class=\"o\"></td>";
}

std::string month(const PageContext& context, const CalendarMonthBlock& block, const UsageFigures& peaks,
                  bool isLarge) {
    const PageFormat& format = context.format;
    const Calendar& calendar = context.data.calendar;
    std::string html = "<table class=\"cal\"><caption" + format.languageAttribute() + ">" +
                       HTMLText::escaped(block.label) + "</caption><tbody>\n";
    for (int row = 0; row < daysAWeek; ++row) {
        const int weekday = (calendar.firstWeekday() - 1 + row) % daysAWeek + 1;
        const bool isLabelled = isLarge || weekday % 2 == 0;  // Mondays, Wednesdays and Fridays are enough
        const std::string letter = HTMLText::escaped(format.narrowWeekday(weekday));
        html += fmt::format("<tr><th scope=\"row\"{}>{}<span class=\"vh\">{}</span></th>", format.languageAttribute(),
                            isLabelled ? "<span aria-hidden=\"true\">" + letter + "</span>" : std::string{},
                            HTMLText::escaped(format.weekday(weekday)));
        for (const std::vector<CalendarSlot>& week : block.columns)
            html += slot(context, week[static_cast<std::size_t>(row)], peaks, isLarge);
        html += "</tr>\n";
    }
    return html + "</tbody></table>\n";
}

std::string legend(const PageContext& context, const UsageFigures& peaks) {
    std::string html = "<p class=\"key ramp\"><span>nothing</span>";
    for (int level = 0; level <= HeatLevels::most; ++level)
        html += fmt::format("<b class=\"h{}\"></b>", level);
    return html + perMeasure([&](AnalyticsMeasure measure) {
               return HTMLText::escaped(context.format.figure(peaks.value(measure), measure));
           }) +
           "</p>\n";
}

struct Runs {
    std::int64_t active = 0;
    std::int64_t longest = 0;
};

Runs runsOf(const PageContext& context) {
    Runs runs;
    std::int64_t current = 0;
    for (const UsageFigures& day : context.days) {
        current = day.events > 0 ? current + 1 : 0;
        runs.active += day.events > 0 ? 1 : 0;
        runs.longest = std::max(runs.longest, current);
    }
    return runs;
}

double medianOfActive(const PageContext& context, AnalyticsMeasure measure) {
    std::vector<double> values;
    for (const UsageFigures& day : context.days) {
        if (day.events > 0) values.push_back(day.value(measure));
    }
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

/// The last seven days beside the seven before them.
std::string week(const PageContext& context, AnalyticsMeasure measure) {
    double last = 0;
    double before = 0;
    for (int ago = 0; ago < daysAWeek; ++ago) {
        last += (context.days.end() - 1 - ago)->value(measure);
        before += (context.days.end() - 1 - daysAWeek - ago)->value(measure);
    }
    std::string text = HTMLText::escaped(context.format.figure(last, measure));
    const std::string change = context.format.percent(last < before ? before - last : last - before, before);
    if (!change.empty()) {
        text += fmt::format("<small>{} {} than the week before</small>", HTMLText::escaped(change),
                            last < before ? "less" : "more");
    }
    return text;
}

std::string facts(const PageContext& context) {
    const PageFormat& format = context.format;
    const Runs runs = runsOf(context);
    std::string html = fmt::format(
        "<dl class=\"facts\"><div><dt>Active days</dt><dd>{} of {}</dd></div>\n<div><dt>Longest run</dt><dd>{}</dd>"
        "</div>\n<div><dt>Typical active day</dt><dd>{}</dd></div>\n",
        format.count(runs.active), format.count(context.drawnDays), format.counted(runs.longest, "day"),
        perMeasure([&](AnalyticsMeasure measure) {
            return HTMLText::escaped(format.figure(medianOfActive(context, measure), measure));
        }));
    if (context.drawnDays >= 2 * daysAWeek) {
        html += "<div><dt>Last seven days</dt><dd>" +
                perMeasure([&](AnalyticsMeasure measure) { return week(context, measure); }) + "</dd></div>\n";
    }
    return html + "</dl>\n";
}

}  // namespace

std::string calendarSection(const PageContext& context) {
    const UsageFigures peaks = PageContext::peaksOf(context.days);
    const bool isLarge = context.drawnDays <= mostLargeDays;
    const std::vector<CalendarMonthBlock> months = CalendarMonthLayout::months(
        context.heatmap, context.data.calendar, DateFormat::localized(context.data.locale, "yMMM"));
    std::string main = fmt::format(
        "<div class=\"read\"><p class=\"hint\" aria-hidden=\"true\">Point at a day to read "
        "it</p>\n<div class=\"cals heat{}\" data-rove=\"last\">\n",
        isLarge ? " large" : "");
    for (const CalendarMonthBlock& block : months)
        main += month(context, block, peaks, isLarge);
    main += "</div></div>\n";
    return sectionFrame("calendar", "The calendar", facts(context) + legend(context, peaks), main);
}

}  // namespace quorvane::host
