#include "QuorvaneHost/ProjectsReport.h"

#include <fmt/format.h>

#include "QuorvaneCore/platform/CheckedArithmetic.h"
#include "QuorvaneCore/platform/JSONTree.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "QuorvaneHost/text/Amounts.h"
#include "QuorvaneHost/text/Cells.h"
#include "QuorvaneHost/text/Table.h"

namespace quorvane::host {

ProjectsReport ProjectsReport::collect(const AnalyticsData& data) {
    return {.days = data.days, .projects = data.projects(), .note = estimatesNote(data.modelDays())};
}

std::string ProjectsReport::text(const Ink& ink, std::size_t width) const {
    if (projects.empty()) return "No model calls in these days.\n";
    double cost = 0;
    std::int64_t calls = 0;
    std::int64_t tokens = 0;
    for (const ProjectCostSummary& project : projects) {
        cost += project.cost;
        calls = checkedAdd(calls, project.eventCount);
        tokens = checkedAdd(tokens, project.totalTokens());
    }
    const std::string window = days == 1 ? "Project, 1 day" : fmt::format("Project, {} days", days);
    Table table{{window, "Cost", "Share", "Calls", "Tokens", "Output"}};
    for (const ProjectCostSummary& project : projects) {
        table.add({printable(project.project), money(project.cost), percent(project.cost, cost),
                   grouped(project.eventCount), compactTokens(project.totalTokens()),
                   compactTokens(project.outputTokens)});
    }
    std::string text = table.text(ink, width, 0);
    text += "\n" + fmt::format("{} in {} calls, {} tokens\n", money(cost), grouped(calls), compactTokens(tokens));
    return text + ink.dim(note);
}

std::string ProjectsReport::json() const {
    JSONTree::Array rows;
    for (const ProjectCostSummary& project : projects) {
        JSONTree::Object row{{"project", project.project},
                             {"events", project.eventCount},
                             {"input_tokens", project.inputTokens},
                             {"output_tokens", project.outputTokens},
                             {"cache_5m_tokens", project.cache5mTokens},
                             {"cache_1h_tokens", project.cache1hTokens},
                             {"cache_read_tokens", project.cacheReadTokens},
                             {"cost_usd", project.cost}};
        rows.emplace_back(std::move(row));
    }
    return JSONWriter::pretty(JSONTree::Object{{"days", days}, {"projects", std::move(rows)}});
}

}  // namespace quorvane::host
