#include "QuorvaneHost/ModelsReport.h"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

#include "QuorvaneCore/analytics/AnalyticsAggregation.h"
#include "QuorvaneCore/model/ProviderCatalog.h"
#include "QuorvaneCore/platform/CheckedArithmetic.h"
#include "QuorvaneCore/platform/JSONTree.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "QuorvaneCore/pricing/ModelEffort.h"
#include "QuorvaneCore/pricing/ModelName.h"
#include "QuorvaneHost/text/Amounts.h"
#include "QuorvaneHost/text/Cells.h"
#include "QuorvaneHost/text/Table.h"

namespace quorvane::host {
namespace {

/// In display order; one model of several providers by their raw names.
std::vector<AnalyticsModelTotal> inDisplayOrder(std::vector<AnalyticsModelTotal> totals) {
    std::vector<std::string> models;
    for (const AnalyticsModelTotal& total : totals) {
        if (std::find(models.begin(), models.end(), total.model) == models.end()) models.push_back(total.model);
    }
    std::vector<AnalyticsModelTotal> ordered;
    for (const std::string& model : ModelName::sortedForCompactDisplay(std::move(models))) {
        std::copy_if(totals.begin(), totals.end(), std::back_inserter(ordered),
                     [&](const AnalyticsModelTotal& total) { return total.model == model; });
    }
    return ordered;
}

/// The short name, or a stand-in where a log names no model.
std::string displayName(const std::string& model) {
    const std::string name = printable(ModelName::shortName(model));
    return name.empty() ? (model.empty() ? "(no name)" : printable(model)) : name;
}

}  // namespace

TokenMix ModelsReport::Row::mix() const noexcept {
    return {.input = total.inputTokens,
            .output = total.outputTokens,
            .cache5m = total.cache5mTokens,
            .cache1h = total.cache1hTokens,
            .cacheRead = total.cacheReadTokens};
}

ModelsReport ModelsReport::collect(const AnalyticsData& data) {
    const std::vector<ModelDaySummary> modelDays = data.modelDays();
    ModelsReport report{.days = data.days, .rows = {}, .note = estimatesNote(modelDays)};
    for (AnalyticsModelTotal& total : inDisplayOrder(AnalyticsAggregation::modelTotals(modelDays))) {
        const bool isPriced = data.calculator.pricing().price(total.model).has_value();
        report.rows.push_back({.total = std::move(total), .isPriced = isPriced});
    }
    return report;
}

std::string ModelsReport::text(const Ink& ink, std::size_t width) const {
    if (rows.empty()) return "No model calls in these days.\n";
    constexpr std::size_t wide = 92;  // from here on there is room for all columns
    const bool hasRoom = width >= wide;
    std::vector<std::string> header{days == 1 ? "Model, 1 day" : fmt::format("Model, {} days", days), "Provider",
                                    "Effort"};
    if (hasRoom) header.insert(header.end(), {"Calls"});
    header.insert(header.end(), {"Input", "Output", "Cached"});
    if (hasRoom) header.insert(header.end(), {"Hits"});
    header.insert(header.end(), {"Cost"});
    Table table{std::move(header)};
    for (const Row& row : rows) {
        const TokenMix mix = row.mix();
        const std::int64_t cached = checkedAdd(checkedAdd(mix.cache5m, mix.cache1h), mix.cacheRead);
        std::vector<std::string> cells{displayName(row.total.model),
                                       ProviderCatalog::descriptor(row.total.provider)->shortName,
                                       std::string{label(ModelEffort::level(row.total.model))}};
        if (hasRoom) cells.push_back(grouped(row.total.eventCount));
        cells.insert(cells.end(), {compactTokens(mix.input), compactTokens(mix.output), compactTokens(cached)});
        if (hasRoom) cells.push_back(percent(mix.cacheHitRate(), 1));
        cells.push_back(row.isPriced ? money(row.total.cost) : "no price");
        table.add(std::move(cells));
    }
    std::string text = table.text(ink, width, 0);
    std::string legend = "Effort is what a model is assumed to run at.";
    if (hasRoom) legend += " Hits: the share of all tokens that came from a cache.";
    text += "\n" + ink.dim(legend) + "\n";
    return text + ink.dim(note);
}

std::string ModelsReport::json() const {
    JSONTree::Array models;
    for (const Row& row : rows) {
        JSONTree::Object model{{"provider", std::string{rawName(row.total.provider)}},
                               {"model", row.total.model},
                               {"short_name", ModelName::shortName(row.total.model)},
                               {"effort", std::string{rawName(ModelEffort::level(row.total.model))}},
                               {"events", row.total.eventCount},
                               {"input_tokens", row.total.inputTokens},
                               {"output_tokens", row.total.outputTokens},
                               {"cache_5m_tokens", row.total.cache5mTokens},
                               {"cache_1h_tokens", row.total.cache1hTokens},
                               {"cache_read_tokens", row.total.cacheReadTokens},
                               {"cache_hit_rate", row.mix().cacheHitRate()}};
        if (row.isPriced) model.emplace("cost_usd", row.total.cost);
        models.emplace_back(std::move(model));
    }
    return JSONWriter::pretty(JSONTree::Object{{"days", days}, {"models", std::move(models)}});
}

}  // namespace quorvane::host
