#include <algorithm>
#include <array>
#include <vector>

#include <fmt/format.h>

#include "QuorvaneHost/html/HTMLText.h"
#include "QuorvaneHost/html/Sections.h"

namespace quorvane::host {
namespace {

constexpr std::size_t topProjects = 12;

struct Row {
    std::string name;  // HTML
    UsageFigures figures;
    bool isRest = false;  // several projects, which no bar compares with one
};

/// At most `most` rows; those beyond are one more.
std::vector<Row> rowsOf(const PageContext& context, std::size_t most) {
    std::vector<Row> rows;
    UsageFigures rest;
    const std::vector<ProjectCostSummary>& projects = context.data.projects;
    for (std::size_t at = 0; at < projects.size(); ++at) {
        if (at < most) {
            rows.push_back({HTMLText::name(projects[at].project), UsageFigures{projects[at]}});
        } else {
            rest += UsageFigures{projects[at]};
        }
    }
    if (projects.size() > most)
        rows.push_back(
            {context.format.counted(static_cast<std::int64_t>(projects.size() - most), "more project"), rest, true});
    return rows;
}

UsageFigures sumOf(const std::vector<Row>& rows) {
    UsageFigures sum;
    for (const Row& row : rows)
        sum += row.figures;
    return sum;
}

std::string barStyle(const UsageFigures& figures, const UsageFigures& peaks) {
    std::string style;
    for (const AnalyticsMeasure measure : pageMeasures) {
        const double peak = peaks.value(measure);
        style += fmt::format("--{}:{:.3g};", letterOf(measure), peak > 0 ? figures.value(measure) / peak : 0.0);
    }
    return style;
}

std::string cells(const PageFormat& format, const UsageFigures& figures) {
    return fmt::format("<td class=\"nc\">{}</td><td class=\"nt\">{}</td><td class=\"ne\">{}</td></tr>\n",
                       HTMLText::escaped(format.money(figures.cost)), HTMLText::escaped(format.tokens(figures.tokens)),
                       HTMLText::escaped(format.count(figures.events)));
}

std::string table(const PageContext& context, const std::vector<Row>& rows, const std::string& caption, bool hasBars) {
    std::vector<UsageFigures> figures;
    for (const Row& row : rows) {
        if (!row.isRest) figures.push_back(row.figures);
    }
    const UsageFigures peaks = PageContext::peaksOf(figures);
    const std::string barHead = hasBars ? "<td></td>" : "";
    std::string html = fmt::format(
        "<table class=\"figures{}\"><caption{}>{}</caption>\n<thead><tr><th scope=\"col\">"
        "Project</th>{}<th scope=\"col\" class=\"nc\">Cost</th><th scope=\"col\" "
        "class=\"nt\">Tokens</th><th scope=\"col\" class=\"ne\">Calls</th></tr></thead>\n"
        "<tbody>\n",
        hasBars ? " projects" : "", hasBars ? " class=\"vh\"" : "", caption, barHead);
    for (const Row& row : rows) {
        html += "<tr><th scope=\"row\">" + row.name + "</th>";
        if (hasBars && row.isRest) html += "<td></td>";
        if (hasBars && !row.isRest)
            html += "<td><b class=\"bar\" style=\"" + barStyle(row.figures, peaks) + "\"></b></td>";
        html += cells(context.format, row.figures);
    }
    return html + "</tbody>\n<tfoot><tr><th scope=\"row\">Total</th>" + barHead + cells(context.format, sumOf(rows)) +
           "</tfoot></table>\n";
}

/// How few projects it takes to make up four fifths.
std::string finding(const PageContext& context, AnalyticsMeasure measure) {
    constexpr double mostOfIt = 0.8;
    std::vector<double> values;
    double sum = 0;
    for (const ProjectCostSummary& project : context.data.projects) {
        values.push_back(UsageFigures{project}.value(measure));
        sum += values.back();
    }
    std::sort(values.rbegin(), values.rend());
    double reached = 0;
    std::int64_t count = 0;
    for (; count < static_cast<std::int64_t>(values.size()) && reached < sum * mostOfIt; ++count)
        reached += values[static_cast<std::size_t>(count)];
    if (count == 0) return "Nothing that has a price.";
    static constexpr std::array<const char*, 3> nouns{"calls", "tokens", "cost"};
    return fmt::format("{} of {} make{} up {} of the {}.", context.format.count(count),
                       context.format.counted(static_cast<std::int64_t>(values.size()), "project"),
                       count == 1 ? "s" : "", HTMLText::escaped(context.format.percent(reached, sum)),
                       nouns[static_cast<std::size_t>(measure)]);
}

}  // namespace

std::string projectsSection(const PageContext& context) {
    constexpr std::size_t mostRows = 100;
    const std::size_t count = context.data.projects.size();
    if (count == 0) return {};
    const std::string side = "<p class=\"find\">" +
                             perMeasure([&](AnalyticsMeasure measure) { return finding(context, measure); }) + "</p>\n";
    std::string main = table(context, rowsOf(context, topProjects), "The most expensive projects", true);
    if (count > topProjects) {
        main += foldedTable(context.format.counted(static_cast<std::int64_t>(count), "project") + " as a table",
                            table(context, rowsOf(context, mostRows), "Projects, the most expensive first", false));
    }
    return sectionFrame("projects", "Projects", side, main);
}

}  // namespace quorvane::host
