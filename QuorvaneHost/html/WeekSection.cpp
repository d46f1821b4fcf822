#include <vector>

#include <fmt/format.h>

#include "QuorvaneHost/html/HTMLText.h"
#include "QuorvaneHost/html/HeatLevels.h"
#include "QuorvaneHost/html/Sections.h"

namespace quorvane::host {
namespace {

constexpr int daysAWeek = static_cast<int>(HourWeekdayMatrix::weekdayCount);
constexpr int hours = static_cast<int>(HourWeekdayMatrix::hourCount);

/// The matrix's sums, by weekday from Sunday on and by hour.
struct Margins {
    std::vector<UsageFigures> weekdays{static_cast<std::size_t>(daysAWeek)};
    std::vector<UsageFigures> hoursOfDay{static_cast<std::size_t>(hours)};
    std::vector<UsageFigures> cells;

    explicit Margins(const HourWeekdayMatrix& matrix) {
        for (int weekday = 1; weekday <= daysAWeek; ++weekday) {
            for (int hour = 0; hour < hours; ++hour) {
                const UsageFigures figures{matrix.cell(weekday, hour)};
                weekdays[static_cast<std::size_t>(weekday - 1)] += figures;
                hoursOfDay[static_cast<std::size_t>(hour)] += figures;
                cells.push_back(figures);
            }
        }
    }
};

std::string finding(const PageContext& context, AnalyticsMeasure measure) {
    const auto peak = context.data.hours.peak(measure);
    if (!peak) return "Nothing that has a price.";
    return fmt::format("Busiest: {}, {:02}:00 to {:02}:00, with {}.",
                       context.format.localized(context.format.weekday(static_cast<int>(peak->weekday))), peak->hour,
                       peak->hour + 1, HTMLText::escaped(context.format.amount(peak->value, measure)));
}

/// The share of the largest sum as the length of a bar, for each measure.
std::string lengths(const UsageFigures& figures, const UsageFigures& peaks) {
    std::string style;
    for (const AnalyticsMeasure measure : pageMeasures) {
        const double peak = peaks.value(measure);
        style += fmt::format("--{}:{:.3g};", letterOf(measure), peak > 0 ? figures.value(measure) / peak : 0.0);
    }
    return style;
}

std::string row(const PageContext& context, int weekday, const Margins& margins, const UsageFigures& peaks,
                const UsageFigures& weekdayPeaks) {
    const PageFormat& format = context.format;
    const std::string name = format.shortWeekday(weekday);
    std::string html =
        fmt::format("<tr><th scope=\"row\"{}>{}</th>", format.languageAttribute(), HTMLText::escaped(name));
    for (int hour = 0; hour < hours; ++hour) {
        const UsageFigures figures{context.data.hours.cell(weekday, hour)};
        html += fmt::format("<td{}><i>{} {:02}:00: {}</i></td>", HeatLevels::classAttribute(figures, peaks),
                            format.localized(name), hour, HTMLText::escaped(format.all(figures)));
    }
    const UsageFigures& sum = margins.weekdays[static_cast<std::size_t>(weekday - 1)];
    return html + fmt::format("<td class=\"sum\"><b class=\"bar\" style=\"{}\"></b><i>{}: {}</i></td></tr>\n",
                              lengths(sum, weekdayPeaks), format.localized(format.weekday(weekday)),
                              HTMLText::escaped(format.all(sum)));
}

std::string sums(const PageContext& context, const Margins& margins) {
    const UsageFigures peaks = PageContext::peaksOf(margins.hoursOfDay);
    std::string html = "<tr><th scope=\"row\"><span class=\"vh\">All days</span></th>";
    for (int hour = 0; hour < hours; ++hour) {
        const UsageFigures& sum = margins.hoursOfDay[static_cast<std::size_t>(hour)];
        html += fmt::format("<td class=\"sum\"><b class=\"post\" style=\"{}\"></b><i>All days {:02}:00: {}</i></td>",
                            lengths(sum, peaks), hour, HTMLText::escaped(context.format.all(sum)));
    }
    return html + "<td class=\"sum\"><i>All days and hours: " + HTMLText::escaped(context.format.all(context.total)) +
           "</i></td></tr>\n";
}

std::string hoursHead() {
    constexpr int labelled = 3;
    std::string html = "<tr><td class=\"x\"></td>";
    for (int hour = 0; hour < hours; ++hour)
        html +=
            fmt::format("<th scope=\"col\"><span{}>{}</span></th>", hour % labelled == 0 ? "" : " class=\"vh\"", hour);
    return html + "<th scope=\"col\"><span class=\"vh\">All hours</span></th></tr>";
}

}  // namespace

std::string weekSection(const PageContext& context) {
    const Calendar& calendar = context.data.calendar;
    const Margins margins{context.data.hours};
    const UsageFigures peaks = PageContext::peaksOf(margins.cells);
    const UsageFigures weekdayPeaks = PageContext::peaksOf(margins.weekdays);
    std::string main =
        "<div class=\"read\"><p class=\"hint\" aria-hidden=\"true\">Point at an hour to read it</p>\n"
        "<table class=\"week heat\" data-rove><caption class=\"vh\">Usage by weekday and hour of the day</caption>\n"
        "<thead>" +
        hoursHead() + "</thead>\n<tbody>\n";
    for (int at = 0; at < daysAWeek; ++at)
        main += row(context, (calendar.firstWeekday() - 1 + at) % daysAWeek + 1, margins, peaks, weekdayPeaks);
    main += "</tbody>\n<tfoot>" + sums(context, margins) + "</tfoot></table></div>\n";
    const std::string side = "<p class=\"find\">" +
                             perMeasure([&](AnalyticsMeasure measure) { return finding(context, measure); }) +
                             "</p>\n<p class=\"soft\">Hours are those of " + HTMLText::escaped(calendar.timeZoneID()) +
                             ". The bars are the sums of the rows and columns.</p>\n";
    return sectionFrame("week", "The week", side, main);
}

}  // namespace quorvane::host
