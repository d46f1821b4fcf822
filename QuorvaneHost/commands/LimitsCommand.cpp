#include <memory>
#include <string>

#include "QuorvaneCore/model/ProviderCatalog.h"
#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/platform/ISODate.h"
#include "QuorvaneCore/platform/JSONTree.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "QuorvaneHost/LimitsReport.h"
#include "QuorvaneHost/Output.h"
#include "QuorvaneHost/commands/Command.h"
#include "QuorvaneHost/text/Amounts.h"
#include "QuorvaneHost/text/Cells.h"
#include "QuorvaneHost/text/Table.h"
#include "QuorvaneHost/text/Terminal.h"

namespace quorvane::host {
namespace {

void addWindow(JSONTree::Object& object, const RateLimitWindow& window) {
    object.emplace("used_percent", window.usedPercent);
    object.emplace("window_minutes", window.windowMinutes);
    if (window.resetsAt) object.emplace("resets_at", ISODate::text(*window.resetsAt));
}

JSONTree windowJSON(const RateLimitWindow& window) {
    JSONTree::Object object;
    addWindow(object, window);
    return object;
}

JSONTree headroomJSON(const ProviderHeadroom& headroom) {
    JSONTree::Object object{{"state", std::string{headroom.stateToken()}}};
    if (const auto* official = std::get_if<ProviderHeadroom::Official>(&headroom.verdict)) {
        object.emplace("remaining_percent", official->remainingPercent);
        object.emplace("window_minutes", official->windowMinutes);
        if (official->resetsAt) object.emplace("resets_at", ISODate::text(*official->resetsAt));
    }
    return object;
}

JSONTree rowJSON(const LimitsReport::Row& row) {
    JSONTree::Object object{{"headroom", headroomJSON(row.headroom)}, {"awaiting_reset", row.isAwaitingReset}};
    if (!row.limits) return object;
    if (row.limits->primary) object.emplace("primary", windowJSON(*row.limits->primary));
    if (row.limits->secondary) object.emplace("secondary", windowJSON(*row.limits->secondary));
    if (row.limits->planType) object.emplace("plan_type", *row.limits->planType);
    if (row.limits->capturedAt) object.emplace("captured_at", ISODate::text(*row.limits->capturedAt));
    JSONTree::Array modelWindows;
    for (const ModelScopedRateLimitWindow& scoped : row.limits->modelWindows) {
        JSONTree::Object window{{"key", scoped.key}, {"label", scoped.label()}};
        addWindow(window, scoped.window);
        modelWindows.emplace_back(std::move(window));
    }
    object.emplace("model_windows", std::move(modelWindows));
    return object;
}

std::string asJSON(const LimitsReport& report) {
    JSONTree::Object providers;
    for (const LimitsReport::Row& row : report.rows)
        providers.emplace(rawName(row.id), rowJSON(row));
    return JSONWriter::pretty(JSONTree::Object{{"providers", std::move(providers)}});
}

std::string verdict(const LimitsReport::Row& row) {
    if (const std::optional<double> left = row.headroom.remainingPercent()) return wholePercent(*left) + " left";
    if (std::holds_alternative<ProviderHeadroom::LikelyExhausted>(row.headroom.verdict)) return "likely exhausted";
    return row.isAwaitingReset ? "just reset" : "unknown";
}

std::string asTable(const LimitsReport& report) {
    Table table{{"Provider", "Window", "Used", "Resets", "Headroom"}};
    std::string silent;
    for (const LimitsReport::Row& row : report.rows) {
        std::string name = ProviderCatalog::descriptor(row.id)->name;
        if (!row.limits) {
            if (row.isAwaitingReset) {
                table.add({name, "", "", "", verdict(row)});
            } else {
                silent += (silent.empty() ? "" : ", ") + name;
            }
            continue;
        }
        std::string headroom = verdict(row);
        const auto add = [&](const std::string& window, const RateLimitWindow& limit) {
            table.add({name, window, wholePercent(limit.usedPercent),
                       limit.resetsAt ? timeUntil(*limit.resetsAt, report.now) : "", headroom});
            name.clear();
            headroom.clear();
        };
        if (row.limits->primary) add(windowName(row.limits->primary->windowMinutes), *row.limits->primary);
        if (row.limits->secondary) add(windowName(row.limits->secondary->windowMinutes), *row.limits->secondary);
        for (const ModelScopedRateLimitWindow& scoped : row.limits->modelWindows) {
            add(printable(scoped.label()) + " " + windowName(scoped.window.windowMinutes), scoped.window);
        }
    }
    const Terminal terminal{Terminal::Stream::Output};
    std::string text = table.isEmpty() ? "" : table.text(Ink{terminal.hasColour()}, terminal.width(), 0);
    if (!silent.empty()) text += "No limits are known of " + silent + "; see quorvane capture.\n";
    return text.empty() ? "No coding agent has left data on this machine yet.\n" : text;
}

int runLimits(bool json) {
    const LimitsReport report = LimitsReport::collect(allReaders(), Clock::now());
    print(json ? asJSON(report) : asTable(report));
    return 0;
}

}  // namespace

void addLimitsCommand(CLI::App& parser, ChosenCommand& chosen) {
    CLI::App* command = parser.add_subcommand("limits", "The agents' newest rate limits and what is left of them");
    const auto json = std::make_shared<bool>(false);
    addJSONOption(*command, *json);
    command->callback([json, &chosen] { chosen = [json] { return runLimits(*json); }; });
}

}  // namespace quorvane::host
