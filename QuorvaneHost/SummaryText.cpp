#include "QuorvaneHost/SummaryText.h"

#include <algorithm>
#include <utility>
#include <variant>
#include <vector>

#include <fmt/format.h>

#include "QuorvaneCore/model/ProviderCatalog.h"
#include "QuorvaneCore/platform/JSONTree.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "QuorvaneHost/text/Amounts.h"
#include "QuorvaneHost/text/Cells.h"
#include "QuorvaneHost/text/Sparkline.h"
#include "QuorvaneHost/text/Table.h"

namespace quorvane::host {
namespace {

constexpr std::size_t margin = 2;
constexpr std::size_t mostModels = 6;

std::string padded(const std::string& text, std::size_t width) {
    const std::size_t used = cellWidth(text);
    return std::string(used < width ? width - used : 0, ' ') + text;
}

std::string windowLabel(const SummaryReport& report) {
    return report.days == 1 ? "1 day" : fmt::format("{} days", report.days);
}

std::int64_t cached(const TokenUsage& usage) {
    return (TokenUsage{.cacheCreate5m = usage.cacheCreate5m,
                       .cacheCreate1h = usage.cacheCreate1h,
                       .cacheRead = usage.cacheRead})
        .total();
}

std::string calls(std::int64_t count) {
    return grouped(count) + (count == 1 ? " call" : " calls");
}

std::string heading(const SummaryReport& report, const Ink& ink, std::size_t width) {
    const std::string name = "Quorvane";
    const std::string span = report.days == 1 ? report.lastDay : report.firstDay + " to " + report.lastDay;
    const std::size_t used = margin + name.size() + span.size();
    const std::size_t room = std::min<std::size_t>(width, 80);  // as wide as the tables below usually are
    return std::string(margin, ' ') + ink.bold(name) +
           std::string(room > used + margin ? room - used - margin : 2, ' ') + ink.dim(span) + "\n";
}

std::string totals(const SummaryReport& report, const Ink& ink) {
    const CostBucket& today = report.total.rollup.today;
    const CostBucket& window = report.total.rollup.last7d;
    const std::string label = windowLabel(report);
    const std::string todayMoney = money(today.cost);
    const std::string windowMoney = money(window.cost);
    const std::size_t labelWidth = std::max<std::size_t>(label.size(), 7);
    const std::size_t moneyWidth = std::max(cellWidth(todayMoney), cellWidth(windowMoney)) + 2;
    const auto line = [&](const std::string& name, const std::string& amount, const CostBucket& bucket) {
        return std::string(margin, ' ') + name + std::string(labelWidth - name.size(), ' ') +
               std::string(moneyWidth - cellWidth(amount), ' ') + ink.bold(amount) +
               ink.dim(padded(compactTokens(bucket.usage.total()), 9) + " tokens" +
                       padded(calls(bucket.eventCount), 15)) +
               "\n";
    };
    std::string text = line("Today", todayMoney, today);
    if (report.days > 1) text += line(label, windowMoney, window);
    return text;
}

std::string days(const SummaryReport& report, const Ink& ink, std::size_t width) {
    const std::vector<double>& series = report.total.dailyCostSeries;
    if (series.size() < 2) return {};
    const auto peak = std::max_element(series.begin(), series.end());
    if (*peak <= 0) return {};
    const auto ago = std::distance(peak, series.end()) - 1;
    const std::string when = ago == 0 ? "today" : ago == 1 ? "yesterday" : fmt::format("{} days ago", ago);
    const double average = report.total.rollup.last7d.cost / static_cast<double>(series.size());
    const std::string caption = fmt::format("  {} a day, most {} {}", money(average), money(*peak), when);
    const std::size_t taken = 2 * margin + cellWidth(caption);
    const std::size_t room = width > taken ? std::clamp<std::size_t>(width - taken, 10, 60) : 10;
    return "\n" + std::string(margin, ' ') + ink.accent(sparkline(series, room)) + ink.dim(caption) + "\n";
}

std::string providers(const SummaryReport& report, const Ink& ink, std::size_t width) {
    Table table{{"Provider", "Today", windowLabel(report), "Share", "Calls", "Tokens"}};
    const double whole = report.total.rollup.last7d.cost;
    for (const SummaryReport::ProviderRow& row : report.providers) {
        const UsageRollup& rollup = row.summary.rollup;
        const std::string mark = row.isInTotals ? "" : " ~";
        table.add({ProviderCatalog::descriptor(row.id)->name + mark, money(rollup.today.cost),
                   money(rollup.last7d.cost), row.isInTotals ? percent(rollup.last7d.cost, whole) : "",
                   grouped(rollup.last7d.eventCount), compactTokens(rollup.last7d.usage.total())});
    }
    if (table.isEmpty()) return {};
    return "\n" + table.text(ink, width, margin);
}

/// "5h 42% used, resets in 2h 10m"
std::string windowLine(const RateLimitWindow& window, Date now) {
    const std::string reset = window.resetsAt ? ", resets " + timeUntil(*window.resetsAt, now) : "";
    return fmt::format("{} {} used{}", windowName(window.windowMinutes), wholePercent(window.usedPercent), reset);
}

/// What one agent told of its limits; empty if it told nothing.
std::string limitsLine(const LimitsReport::Row& row, Date now, const Ink& ink) {
    std::string line;
    const auto add = [&](const std::string& piece) { line += (line.empty() ? "" : " · ") + piece; };
    if (row.limits && row.limits->primary) add(windowLine(*row.limits->primary, now));
    if (row.limits && row.limits->secondary) add(windowLine(*row.limits->secondary, now));
    if (std::holds_alternative<ProviderHeadroom::LikelyExhausted>(row.headroom.verdict)) {
        add(ink.warning("likely exhausted"));
    } else if (!row.limits && row.isAwaitingReset) {
        add("just reset, nothing heard since");
    }
    return line;
}

std::string limits(const SummaryReport& report, const Ink& ink) {
    std::vector<std::pair<std::string, std::string>> lines;
    std::size_t nameWidth = 0;
    for (const LimitsReport::Row& row : report.limits.rows) {
        const std::string line = limitsLine(row, report.now, ink);
        if (line.empty()) continue;
        lines.emplace_back(ProviderCatalog::descriptor(row.id)->shortName, line);
        nameWidth = std::max(nameWidth, cellWidth(lines.back().first));
    }
    std::string text;
    for (const auto& [name, line] : lines) {
        text += std::string(margin, ' ') + name + std::string(nameWidth - cellWidth(name) + 2, ' ') + line + "\n";
    }
    return text.empty() ? text : "\n" + text;
}

std::string models(const SummaryReport& report, const Ink& ink, std::size_t width) {
    Table table{{"Model", windowLabel(report), "Share", "Calls", "Input", "Output", "Cached"}};
    const double whole = report.total.rollup.last7d.cost;
    CostBucket rest;
    std::size_t restModels = 0;
    std::size_t shown = 0;
    for (const SummaryReport::ModelRow& row : report.models) {
        const CostBucket& window = row.window;
        if (!row.isPriced) continue;
        if (shown == mostModels) {
            rest.addGrouped(row.model, window.usage, window.cost, window.eventCount);
            ++restModels;
            continue;
        }
        ++shown;
        table.add({printable(row.model), money(window.cost), percent(window.cost, whole), grouped(window.eventCount),
                   compactTokens(window.usage.input), compactTokens(window.usage.output),
                   compactTokens(cached(window.usage))});
    }
    if (restModels > 0) {
        table.add({fmt::format("{} more", restModels), money(rest.cost), percent(rest.cost, whole),
                   grouped(rest.eventCount), compactTokens(rest.usage.input), compactTokens(rest.usage.output),
                   compactTokens(cached(rest.usage))});
    }
    if (table.isEmpty()) return {};
    return "\n" + table.text(ink, width, margin);
}

std::string remarks(const SummaryReport& report, const Ink& ink) {
    std::string text;
    const std::string indent(margin, ' ');
    for (const SummaryReport::ModelRow& row : report.models) {
        if (row.isPriced) continue;
        text += indent + ink.warning("No price for " + printable(row.model)) +
                fmt::format(": {} tokens in {} are not in the totals\n", compactTokens(row.window.usage.total()),
                            calls(row.window.eventCount));
    }
    const bool hasEstimates =
        std::any_of(report.providers.begin(), report.providers.end(), [](const auto& row) { return !row.isInTotals; });
    if (hasEstimates) text += indent + ink.dim("~ an estimate, not in the totals") + "\n";
    if (report.remark) text += indent + *report.remark + "\n";
    if (report.cacheSavings > 0) {
        text += indent + ink.dim("Reading from the cache saved " + money(report.cacheSavings)) + "\n";
    }
    return text.empty() ? text : "\n" + text;
}

JSONTree::Object bucketJSON(const CostBucket& bucket) {
    return {{"cost_usd", bucket.cost},
            {"events", bucket.eventCount},
            {"input_tokens", bucket.usage.input},
            {"output_tokens", bucket.usage.output},
            {"cache_5m_tokens", bucket.usage.cacheCreate5m},
            {"cache_1h_tokens", bucket.usage.cacheCreate1h},
            {"cache_read_tokens", bucket.usage.cacheRead}};
}

JSONTree::Array seriesJSON(const std::vector<double>& series) {
    return {series.begin(), series.end()};
}

}  // namespace

std::string summaryText(const SummaryReport& report, const Ink& ink, std::size_t width) {
    std::string text = "\n" + heading(report, ink, width) + "\n" + totals(report, ink);
    if (report.total.rollup.last7d.eventCount == 0) {
        text += "\n" + std::string(margin, ' ') + ink.dim("No model calls in these days.") + "\n";
    }
    text += days(report, ink, width) + providers(report, ink, width) + limits(report, ink) + models(report, ink, width);
    return text + remarks(report, ink) + "\n";
}

std::string summaryJSON(const SummaryReport& report) {
    JSONTree::Object providers;
    for (const SummaryReport::ProviderRow& row : report.providers) {
        providers.emplace(rawName(row.id),
                          JSONTree::Object{{"available", row.isAvailable},
                                           {"in_totals", row.isInTotals},
                                           {"today", bucketJSON(row.summary.rollup.today)},
                                           {"window", bucketJSON(row.summary.rollup.last7d)},
                                           {"daily_cost_usd", seriesJSON(row.summary.dailyCostSeries)}});
    }
    JSONTree::Array models;
    JSONTree::Array unpriced;
    for (const SummaryReport::ModelRow& row : report.models) {
        JSONTree::Object model = bucketJSON(row.window);
        model.emplace("model", row.model);
        if (!row.isPriced) {
            model.erase("cost_usd");
            unpriced.push_back(row.model);
        }
        models.push_back(std::move(model));
    }
    JSONTree::Object summary{{"days", report.days},
                             {"first_day", report.firstDay},
                             {"last_day", report.lastDay},
                             {"today", bucketJSON(report.total.rollup.today)},
                             {"window", bucketJSON(report.total.rollup.last7d)},
                             {"daily_cost_usd", seriesJSON(report.total.dailyCostSeries)},
                             {"providers", std::move(providers)},
                             {"models", std::move(models)},
                             {"unpriced_models", std::move(unpriced)},
                             {"cache_savings_usd", report.cacheSavings}};
    if (report.remark) summary.emplace("remark", *report.remark);
    return JSONWriter::pretty(std::move(summary));
}

}  // namespace quorvane::host
