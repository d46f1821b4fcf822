#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include <fmt/format.h>

#include "QuorvaneCore/model/ProviderCatalog.h"
#include "QuorvaneCore/platform/TextForms.h"
#include "QuorvaneHost/html/AxisScale.h"
#include "QuorvaneHost/html/BarShape.h"
#include "QuorvaneHost/html/HTMLText.h"
#include "QuorvaneHost/html/Sections.h"

namespace quorvane::host {
namespace {

constexpr std::int64_t chartHeight = 400;

std::vector<double> valuesOf(const std::vector<UsageFigures>& figures, AnalyticsMeasure measure) {
    std::vector<double> values;
    for (const UsageFigures& one : figures)
        values.push_back(one.value(measure));
    return values;
}

std::string finding(const PageContext& context, AnalyticsMeasure measure) {
    const PageFormat& format = context.format;
    const std::vector<double> values = valuesOf(context.byPeriod, measure);
    const auto peak = std::max_element(values.begin(), values.end());
    if (!(*peak > 0)) return "Nothing that has a price.";
    const double average = context.total.value(measure) / static_cast<double>(values.size());
    const auto at = static_cast<std::size_t>(std::distance(values.begin(), peak));
    if (values.size() == 1) return HTMLText::escaped(format.amount(*peak, measure)) + " in one day.";
    return fmt::format("{} a {} on average; most {} {}: {}.", HTMLText::escaped(format.amount(average, measure)),
                       context.periods.noun(), context.periods.unit() == PagePeriods::Unit::Day ? "on" : "in",
                       format.localized(context.periodName(at)), HTMLText::escaped(format.amount(*peak, measure)));
}

/// One path a provider, each drawn up to the sum of itself and all below it: the highest first, so that the others
/// cover its foot.
std::string stack(const PageContext& context, AnalyticsMeasure measure, double peak) {
    std::vector<double> sums(context.periods.size(), 0.0);
    std::string paths;
    for (const PageContext::Provider& provider : context.providers) {
        if (!(provider.window.value(measure) > 0)) continue;
        std::vector<std::int64_t> heights;
        for (std::size_t at = 0; at < sums.size(); ++at) {
            sums[at] += provider.periods[at].value(measure);
            heights.push_back(BarShape::units(sums[at], peak, chartHeight));
        }
        paths.insert(0, fmt::format("<path class=\"{}\" d=\"{}\"/>\n", providerClass(provider.id),
                                    BarShape::path(heights, chartHeight)));
    }
    return paths;
}

/// The mean of the seven days up to each day, once there are seven.
std::string weeklyMean(const std::vector<double>& values, double peak) {
    constexpr std::size_t week = 7;
    constexpr std::size_t fewest = 60;  // below, the bars themselves are easy to follow
    if (values.size() < fewest || !(peak > 0)) return {};
    std::string points;
    for (std::size_t at = week - 1; at < values.size(); ++at) {
        const auto end = values.begin() + static_cast<std::ptrdiff_t>(at + 1);
        const double mean = std::accumulate(end - static_cast<std::ptrdiff_t>(week), end, 0.0) / week;
        const std::int64_t y = chartHeight - std::llround(mean / peak * chartHeight);
        const std::int64_t x = static_cast<std::int64_t>(at) * BarShape::place + BarShape::place / 2;
        points += fmt::format("{}{},{}", points.empty() ? "" : " ", x, y);
    }
    return "<polyline points=\"" + points + "\"/>\n";
}

std::string chart(const PageContext& context, AnalyticsMeasure measure) {
    const PageFormat& format = context.format;
    const std::vector<double> values = valuesOf(context.byPeriod, measure);
    const double peak = *std::max_element(values.begin(), values.end());
    const char letter = letterOf(measure);
    std::string lines;
    for (const double tick : AxisScale::ticks(peak, measure != AnalyticsMeasure::cost))
        lines += fmt::format("<span style=\"bottom:{:.1f}%\">{}</span>", tick / peak * 100,
                             HTMLText::escaped(format.tick(tick, measure)));
    return fmt::format(
        "<div class=\"m{0}\"><div class=\"ys\" aria-hidden=\"true\">{1}</div>\n"
        "<svg viewBox=\"0 0 {2} {3}\" preserveAspectRatio=\"none\" role=\"img\" aria-labelledby=\"daily-{0}\">"
        "<title id=\"daily-{0}\">{4} by {5} and agent, {6} to {7}; the figures are in the table below</title>\n"
        "{8}{9}</svg></div>\n",
        letter, lines, static_cast<std::int64_t>(values.size()) * BarShape::place, chartHeight, titleOf(measure),
        context.periods.noun(), HTMLText::escaped(format.fullDay(context.firstDay)),
        HTMLText::escaped(format.fullDay(context.lastDay)), stack(context, measure, peak),
        context.periods.unit() == PagePeriods::Unit::Day ? weeklyMean(values, peak) : std::string{});
}

struct Label {
    std::size_t at;
    std::string text;
};

/// Where the axis of time has a name: days, weeks' first days, months or years, as many as there is room for.
std::vector<Label> timeLabels(const PageContext& context) {
    constexpr std::size_t fewDays = 10;
    constexpr std::size_t someDays = 62;
    constexpr std::size_t fewMonths = 18;
    const PageFormat& format = context.format;
    const std::vector<PagePeriods::Period>& periods = context.periods.all();
    const bool isByMonth = context.periods.unit() == PagePeriods::Unit::Month;
    std::vector<Label> labels;
    for (std::size_t at = 0; at < periods.size(); ++at) {
        const LocalDay day = periods[at].first;
        const LocalDay before = day - 1;
        const bool beginsWeek = day.weekday() == context.data.calendar.firstWeekday();
        const bool beginsMonth = context.data.calendar.firstOfMonth(day) == day;
        const bool beginsYear = format.year(day) != format.year(before);
        if (isByMonth) {
            if (periods.size() <= fewMonths) {
                labels.push_back({at, beginsYear ? format.year(day) : format.month(day)});
            } else if (beginsYear) {
                labels.push_back({at, format.year(day)});
            }
        } else if (periods.size() <= fewDays || (periods.size() <= someDays && beginsWeek)) {
            labels.push_back({at, format.dayOfMonth(day)});
        } else if (periods.size() > someDays && beginsMonth) {
            labels.push_back({at, beginsYear ? format.year(day) : format.month(day)});
        }
    }
    return labels;
}

std::string timeAxis(const PageContext& context) {
    constexpr double lastPlace = 94;  // percent; a name that begins further right would stick out
    std::string html = "<div class=\"xs\" aria-hidden=\"true\"" + context.format.languageAttribute() + ">";
    bool isOdd = false;
    for (const Label& label : timeLabels(context)) {
        const double left = static_cast<double>(label.at) * 100 / static_cast<double>(context.periods.size());
        if (left > lastPlace) continue;
        html += fmt::format("<span{} style=\"left:{:.2f}%\">{}</span>", isOdd ? " class=\"odd\"" : "", left,
                            HTMLText::escaped(label.text));
        isOdd = !isOdd;
    }
    return html + "</div>\n";
}

/// An unseen column over each bar, which tells its figures when it is pointed at.
std::string zones(const PageContext& context) {
    std::string html = fmt::format("<div class=\"zones\" aria-hidden=\"true\" data-label=\"{} by {}\">", "Figures",
                                   context.periods.noun());
    for (std::size_t at = 0; at < context.periods.size(); ++at) {
        html += "<b><i>" + context.format.localized(context.periodName(at)) + ": " +
                HTMLText::escaped(context.format.all(context.byPeriod[at])) + "</i></b>";
    }
    return html + "</div>\n";
}

std::string figuresCells(const PageFormat& format, const UsageFigures& figures) {
    return fmt::format("<td>{}</td><td>{}</td><td>{}</td>", HTMLText::escaped(format.money(figures.cost)),
                       HTMLText::escaped(format.tokens(figures.tokens)),
                       HTMLText::escaped(format.count(figures.events)));
}

std::string table(const PageContext& context) {
    const PageFormat& format = context.format;
    const std::string noun = context.periods.noun();
    std::string html = fmt::format(
        "<table class=\"figures\"><caption>Cost, tokens and calls by {}, and the cost by agent; the newest first"
        "</caption>\n<thead><tr><th scope=\"col\">{}</th><th scope=\"col\">Cost</th><th scope=\"col\">Tokens</th>"
        "<th scope=\"col\">Calls</th>",
        noun, capitalisingFirst(noun));
    for (const PageContext::Provider& provider : context.providers)
        html += "<th scope=\"col\">" + HTMLText::escaped(ProviderCatalog::descriptor(provider.id)->shortName) + "</th>";
    html += "</tr></thead>\n<tbody>\n";
    for (std::size_t at = context.periods.size(); at-- > 0;) {
        const LocalDay first = context.periods.all()[at].first;
        const bool isDay = context.periods.unit() == PagePeriods::Unit::Day;
        html += "<tr><th scope=\"row\">" +
                format.localized(isDay ? format.fullDay(first) : format.monthAndYear(first)) + "</th>" +
                figuresCells(format, context.byPeriod[at]);
        for (const PageContext::Provider& provider : context.providers) {
            const UsageFigures& own = provider.periods[at];
            html += own.events == 0 ? "<td>–</td>" : "<td>" + HTMLText::escaped(format.money(own.cost)) + "</td>";
        }
        html += "</tr>\n";
    }
    html += "</tbody>\n<tfoot><tr><th scope=\"row\">Total</th>" + figuresCells(format, context.total);
    for (const PageContext::Provider& provider : context.providers)
        html += "<td>" + HTMLText::escaped(format.money(provider.window.cost)) + "</td>";
    return html + "</tr></tfoot></table>\n";
}

std::string title(const PageContext& context) {
    return context.periods.unit() == PagePeriods::Unit::Day ? "Day by day" : "Month by month";
}

}  // namespace

std::string dailySection(const PageContext& context) {
    const bool hasMean = context.periods.unit() == PagePeriods::Unit::Day && context.periods.size() >= 60;
    std::string side = "<p class=\"find\">" +
                       perMeasure([&](AnalyticsMeasure measure) { return finding(context, measure); }) + "</p>\n";
    if (hasMean) side += "<p class=\"key\"><b class=\"line\"></b>The mean of seven days</p>\n";
    std::string main =
        "<div class=\"read chart\"><p class=\"hint\" aria-hidden=\"true\">Point at a bar to read it</p>\n<div "
        "class=\"plot\">\n";
    for (const AnalyticsMeasure measure : pageMeasures)
        main += chart(context, measure);
    main += zones(context) + "</div>\n" + timeAxis(context) + "</div>\n" + providersTable(context);
    main += foldedTable(fmt::format("Every {} as a table", context.periods.noun()), table(context));
    return sectionFrame("daily", title(context), side, main);
}

}  // namespace quorvane::host
