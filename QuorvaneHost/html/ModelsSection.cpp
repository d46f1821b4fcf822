#include <algorithm>
#include <array>
#include <vector>

#include <fmt/format.h>

#include "QuorvaneCore/analytics/AnalyticsAggregation.h"
#include "QuorvaneCore/model/ProviderCatalog.h"
#include "QuorvaneCore/platform/CheckedArithmetic.h"
#include "QuorvaneHost/html/BarShape.h"
#include "QuorvaneHost/html/HTMLText.h"
#include "QuorvaneHost/html/Sections.h"

namespace quorvane::host {
namespace {

constexpr std::int64_t topModels = 8;
constexpr std::int64_t barHeight = 60;

/// One model, or all that are not among the top.
struct Row {
    std::string name;      // HTML
    std::string provider;  // HTML
    std::string colour;    // classes
    double total = 0;
    std::vector<double> days;
};

struct Chart {
    std::vector<Row> rows;
    double sum = 0;
};

Chart chartOf(const PageContext& context, AnalyticsMeasure measure) {
    const ModelDayGrid grid = AnalyticsAggregation::modelDayGrid(context.rows, measure, context.drawnDays, topModels,
                                                                 context.data.now, context.data.calendar);
    Chart chart{.sum = context.total.value(measure)};
    Row rest{.name = {}, .provider = {}, .colour = "p", .total = chart.sum, .days = {}};
    for (const UsageFigures& day : context.days)
        rest.days.push_back(day.value(measure));
    for (std::size_t at = 0; at < grid.rows.size(); ++at) {
        const ModelDayGrid::Row& row = grid.rows[at];
        if (!(row.total > 0)) break;
        for (std::size_t day = 0; day < rest.days.size(); ++day)
            rest.days[day] -= grid.values[at][day];
        rest.total -= row.total;
        chart.rows.push_back({.name = HTMLText::name(context.modelName(row.provider, row.model)),
                              .provider = HTMLText::escaped(ProviderCatalog::descriptor(row.provider)->shortName),
                              .colour = providerClass(row.provider),
                              .total = row.total,
                              .days = grid.values[at]});
    }
    const std::size_t models = AnalyticsAggregation::modelTotals(context.rows).size();
    if (models > chart.rows.size() && rest.total > chart.sum * 1e-9) {
        rest.name = context.format.counted(static_cast<std::int64_t>(models - chart.rows.size()), "other model");
        chart.rows.push_back(std::move(rest));
    }
    return chart;
}

std::vector<double> byPeriod(const PageContext& context, const std::vector<double>& days, const PagePeriods& periods) {
    std::vector<double> values(periods.size(), 0.0);
    for (std::size_t at = 0; at < days.size(); ++at)
        values[periods.indexOf(context.firstDay + static_cast<std::int64_t>(at))] += days[at];
    return values;
}

std::string bars(const PageContext& context, const Row& row, AnalyticsMeasure measure, std::size_t number,
                 double peak) {
    const std::vector<double> values = byPeriod(context, row.days, context.periods);
    std::vector<std::int64_t> heights;
    for (const double value : values) {
        const bool isRounding = value < peak * 1e-9;  // what a difference of equal sums leaves
        heights.push_back(isRounding ? 0 : BarShape::units(value, peak, barHeight));
    }
    const auto most = std::max_element(values.begin(), values.end());
    const auto used = std::count_if(heights.begin(), heights.end(), [](std::int64_t height) { return height > 0; });
    const std::string label =
        fmt::format("{} of {}, most in {}: {}", context.format.count(used),
                    context.format.counted(static_cast<std::int64_t>(values.size()), context.periods.noun()),
                    context.periodName(static_cast<std::size_t>(std::distance(values.begin(), most))),
                    context.format.amount(*most, measure));
    return fmt::format(
        "<svg viewBox=\"0 0 {0} {1}\" preserveAspectRatio=\"none\" role=\"img\" "
        "aria-labelledby=\"bars-{2}{3}\"><title id=\"bars-{2}{3}\">{4}</title>"
        "<path class=\"{5}\" d=\"{6}\"/></svg>",
        static_cast<std::int64_t>(values.size()) * BarShape::place, barHeight, letterOf(measure), number,
        HTMLText::escaped(label), row.colour, BarShape::path(heights, barHeight));
}

std::string topTable(const PageContext& context) {
    const std::string noun = context.periods.noun();
    std::string html = "<table class=\"figures tops\"><caption class=\"vh\">The top models by " + noun +
                       "</caption>\n<thead><tr><th scope=\"col\">Model</th><th scope=\"col\">By " + noun +
                       "</th><th scope=\"col\">" +
                       perMeasure([](AnalyticsMeasure measure) { return std::string{titleOf(measure)}; }) +
                       "</th><th scope=\"col\">Share</th></tr></thead>\n";
    for (const AnalyticsMeasure measure : pageMeasures) {
        const Chart chart = chartOf(context, measure);
        double peak = 0;
        for (const Row& row : chart.rows) {
            for (const double value : byPeriod(context, row.days, context.periods))
                peak = std::max(peak, value);
        }
        html += fmt::format("<tbody class=\"m{}\">\n", letterOf(measure));
        for (std::size_t at = 0; at < chart.rows.size(); ++at) {
            const Row& row = chart.rows[at];
            html +=
                fmt::format("<tr><th scope=\"row\">{}<small>{}</small></th><td>{}</td><td>{}</td><td>{}</td></tr>\n",
                            row.name, row.provider, bars(context, row, measure, at, peak),
                            HTMLText::escaped(context.format.figure(row.total, measure)),
                            HTMLText::escaped(context.format.percent(row.total, chart.sum)));
        }
        html += "</tbody>\n";
    }
    return html + "</table>\n";
}

std::string columnName(const PageFormat& format, const PagePeriods& periods, std::size_t at) {
    const LocalDay first = periods.all()[at].first;
    switch (periods.unit()) {
        case PagePeriods::Unit::Day:
        case PagePeriods::Unit::Week: return format.dayOfMonth(first);
        case PagePeriods::Unit::Month: return format.monthAndYear(first);
        case PagePeriods::Unit::Year: return format.year(first);
    }
    return {};
}

/// Columns that a person can still take in.
PagePeriods coarsePeriods(const PageContext& context) {
    constexpr std::int64_t mostForDays = 10;
    constexpr std::int64_t mostForWeeks = 92;
    constexpr std::int64_t mostForMonths = 740;
    const auto of = [&](PagePeriods::Unit unit) {
        return PagePeriods{context.firstDay, context.lastDay, unit, context.data.calendar};
    };
    if (context.drawnDays <= mostForDays) return of(PagePeriods::Unit::Day);
    if (context.drawnDays <= mostForWeeks) return of(PagePeriods::Unit::Week);
    return of(context.drawnDays <= mostForMonths ? PagePeriods::Unit::Month : PagePeriods::Unit::Year);
}

std::string topFigures(const PageContext& context, const PagePeriods& periods) {
    const PageFormat& format = context.format;
    std::string html;
    for (const AnalyticsMeasure measure : pageMeasures) {
        const Chart chart = chartOf(context, measure);
        html += fmt::format(
            "<table class=\"figures m{}\"><caption>{} of the top models by {}</caption>\n<thead><tr>"
            "<th scope=\"col\">Model</th>",
            letterOf(measure), titleOf(measure), periods.noun());
        for (std::size_t at = 0; at < periods.size(); ++at)
            html += "<th scope=\"col\">" + format.localized(columnName(format, periods, at)) + "</th>";
        html += "<th scope=\"col\">Total</th></tr></thead>\n<tbody>\n";
        for (const Row& row : chart.rows) {
            html += "<tr><th scope=\"row\">" + row.name + "<small>" + row.provider + "</small></th>";
            for (const double value : byPeriod(context, row.days, periods)) {
                html += value > chart.sum * 1e-12 ? "<td>" + HTMLText::escaped(format.figure(value, measure)) + "</td>"
                                                  : "<td>–</td>";
            }
            html += "<td>" + HTMLText::escaped(format.figure(row.total, measure)) + "</td></tr>\n";
        }
        html += "</tbody></table>\n";
    }
    return html;
}

void add(AnalyticsModelTotal& sum, const AnalyticsModelTotal& other) {
    sum.eventCount = checkedAdd(sum.eventCount, other.eventCount);
    sum.inputTokens = checkedAdd(sum.inputTokens, other.inputTokens);
    sum.outputTokens = checkedAdd(sum.outputTokens, other.outputTokens);
    sum.cache5mTokens = checkedAdd(sum.cache5mTokens, other.cache5mTokens);
    sum.cache1hTokens = checkedAdd(sum.cache1hTokens, other.cache1hTokens);
    sum.cacheReadTokens = checkedAdd(sum.cacheReadTokens, other.cacheReadTokens);
    sum.cost += other.cost;
}

std::string totalCells(const PageFormat& format, const AnalyticsModelTotal& total, bool isPriced) {
    std::string html = "<td>" + HTMLText::escaped(format.count(total.eventCount)) + "</td>";
    for (const std::int64_t tokens : {total.inputTokens, total.outputTokens, total.cache5mTokens, total.cache1hTokens,
                                      total.cacheReadTokens, total.totalTokens()})
        html += "<td>" + HTMLText::escaped(format.tokens(tokens)) + "</td>";
    return html + "<td>" + (isPriced ? HTMLText::escaped(format.money(total.cost)) : "no price") + "</td></tr>\n";
}

std::string allModels(const PageContext& context, std::vector<AnalyticsModelTotal> totals) {
    constexpr std::size_t mostRows = 80;
    const PageFormat& format = context.format;
    std::stable_sort(
        totals.begin(), totals.end(), [](const AnalyticsModelTotal& left, const AnalyticsModelTotal& right) {
            return left.cost != right.cost ? left.cost > right.cost : left.totalTokens() > right.totalTokens();
        });
    std::string html =
        "<table class=\"figures\"><caption>Every model as the logs name it, the most expensive first</caption>\n"
        "<thead><tr><th scope=\"col\">Model</th><th scope=\"col\">Agent</th><th scope=\"col\">Calls</th>"
        "<th scope=\"col\">Input</th><th scope=\"col\">Output</th><th scope=\"col\">Cache write, 5 min</th>"
        "<th scope=\"col\">Cache write, 1 h</th><th scope=\"col\">Cache read</th><th scope=\"col\">Tokens</th>"
        "<th scope=\"col\">Cost</th></tr></thead>\n<tbody>\n";
    AnalyticsModelTotal sum;
    AnalyticsModelTotal rest;
    for (std::size_t at = 0; at < totals.size(); ++at) {
        const AnalyticsModelTotal& total = totals[at];
        add(sum, total);
        if (at >= mostRows) {
            add(rest, total);
            continue;
        }
        html += fmt::format("<tr><th scope=\"row\">{}</th><td>{}</td>",
                            total.model.empty() ? "(no name)" : HTMLText::name(total.model),
                            HTMLText::escaped(ProviderCatalog::descriptor(total.provider)->shortName)) +
                totalCells(format, total, context.data.unpricedModels.count(total.model) == 0);
    }
    if (totals.size() > mostRows) {
        html += fmt::format("<tr><th scope=\"row\">{} more</th><td></td>",
                            format.count(static_cast<std::int64_t>(totals.size() - mostRows))) +
                totalCells(format, rest, true);
    }
    return html + "</tbody>\n<tfoot><tr><th scope=\"row\">Total</th><td></td>" + totalCells(format, sum, true) +
           "</tfoot></table>\n";
}

std::string finding(const PageContext& context, AnalyticsMeasure measure) {
    const Chart chart = chartOf(context, measure);
    if (chart.rows.empty()) return "No model here has a price.";
    const Row& first = chart.rows.front();
    static constexpr std::array<const char*, 3> nouns{"calls", "tokens", "cost"};
    return fmt::format("{} alone makes up {} of the {}.", first.name,
                       HTMLText::escaped(context.format.percent(first.total, chart.sum)),
                       nouns[static_cast<std::size_t>(measure)]);
}

}  // namespace

std::string modelsSection(const PageContext& context) {
    const std::vector<AnalyticsModelTotal> totals = AnalyticsAggregation::modelTotals(context.rows);
    const PagePeriods periods = coarsePeriods(context);
    const std::string side = "<p class=\"find\">" +
                             perMeasure([&](AnalyticsMeasure measure) { return finding(context, measure); }) +
                             "</p>\n<p class=\"soft\">All rows have the same scale.</p>\n";
    const std::string main =
        topTable(context) +
        foldedTable(fmt::format("The top models by {} as a table", periods.noun()), topFigures(context, periods)) +
        foldedTable(
            context.format.counted(static_cast<std::int64_t>(totals.size()), "model") + " with all their tokens",
            allModels(context, totals));
    return sectionFrame("models", "Models", side, main);
}

}  // namespace quorvane::host
