#include "tests/grok/GrokTestSupport.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <ostream>

#include <fmt/format.h>

#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/ISODate.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/JSONWriter.h"

namespace quorvane::testing {
namespace {

struct InOneForm {
    JSONTree operator()(std::int64_t number) const { return static_cast<double>(number); }
    JSONTree operator()(std::uint64_t number) const { return static_cast<double>(number); }
    JSONTree operator()(const JSONTree::Object& object) const {
        JSONTree::Object changed;
        for (const auto& [key, value] : object)
            changed[key] = std::visit(*this, value.content);
        return changed;
    }
    template <typename Other>
    JSONTree operator()(const Other& other) const {
        return other;
    }
};

std::string windowText(const std::optional<RateLimitWindow>& window) {
    if (!window) return "none";
    const std::string reset = window->resetsAt ? fmt::format("{:.3f}", window->resetsAt->secondsSince1970) : "never";
    return fmt::format("{}% of {} min until {}", window->usedPercent, window->windowMinutes, reset);
}

}  // namespace

void GrokScratchHome::moveHomeTo(std::string_view folder) const {
    makeFolder(folder);
    ::setenv("HOME", path(folder).c_str(), 1);
}

std::string GrokScratchHome::home() const {
    return std::getenv("HOME");
}

std::string GrokScratchHome::inHome(std::string_view relative) const {
    return home().append("/").append(relative);
}

void GrokScratchHome::makeProgram(std::string_view path) const {
    std::filesystem::permissions(write(path, "#!/bin/sh\n"), std::filesystem::perms::owner_all);
}

std::string turnLine(std::string_view turn, std::string_view usage, double when) {
    return fmt::format(
        R"({{"timestamp":{:.0f},"method":"session/update","params":{{"sessionId":"s","update":{{"sessionUpdate":)"
        R"("turn_completed","prompt_id":"p-{}","stop_reason":"end_turn","usage":{}}}}},"_meta":{{"eventId":"{}",)"
        R"("agentTimestampMs":{:.0f}}}}})",
        std::floor(when), turn, usage, turn, when * 1000);
}

std::string grokUsage(std::int64_t input, std::int64_t output, std::int64_t cached, std::int64_t reasoning) {
    return fmt::format(R"({{"inputTokens":{},"outputTokens":{},"cachedReadTokens":{},"reasoningTokens":{}}})", input,
                       output, cached, reasoning);
}

std::string told(const UsageEvent& event) {
    return fmt::format("{} {} {} {} {:.3f} {}/{}/{}/{}/{} {}", rawName(event.provider), event.messageId,
                       event.requestId, event.model, event.timestamp.secondsSince1970, event.usage.input,
                       event.usage.output, event.usage.cacheCreate5m, event.usage.cacheCreate1h, event.usage.cacheRead,
                       event.project.value_or("(none)"));
}

std::vector<std::string> told(const std::vector<UsageEvent>& events) {
    std::vector<std::string> texts;
    for (const UsageEvent& event : events)
        texts.push_back(told(event));
    std::sort(texts.begin(), texts.end());
    return texts;
}

std::string isoTime(Date date) {
    const double seconds = std::floor(date.secondsSince1970);
    std::string text = ISODate::text(Date{seconds});
    text.pop_back();
    return fmt::format("{}.{:03.0f}Z", text, (date.secondsSince1970 - seconds) * 1000);
}

std::string billingLine(double percent, double secondsAgo, double periodEnd) {
    return fmt::format(
        R"({{"ts":"{}","pid":4121,"lvl":"info","msg":"billing: fetched credits config","ctx":{{"config":)"
        R"({{"creditUsagePercent":{},"currentPeriod":{{"type":"USAGE_PERIOD_TYPE_WEEKLY","start":"{}","end":"{}"}}}},)"
        R"("subscriptionTier":"SuperGrok Heavy"}}}})",
        isoTime(testNow - secondsAgo), percent, ISODate::text(testNow + periodEnd - 7 * 24 * hour),
        ISODate::text(testNow + periodEnd));
}

std::string logLine(std::string_view context, std::string_view message) {
    return fmt::format(R"({{"ts":"2026-09-14T11:59:00Z","pid":4121,"lvl":"info","msg":"{}","ctx":{}}})", message,
                       context);
}

std::string told(const std::optional<JSONTree::Object>& record) {
    return record ? JSONWriter::compact(InOneForm{}(*record)) : "none";
}

std::string toldJSON(std::string_view json) {
    const std::optional<JSONTree> tree = JSONParser::parseTree(json);
    return tree ? JSONWriter::compact(std::visit(InOneForm{}, tree->content)) : "";
}

std::vector<HookCommand> hookCommands(std::string_view hookJSON) {
    std::vector<HookCommand> commands;
    JSONParser parser;
    parser.parse(hookJSON)["hooks"].forEachMember([&](std::string_view event, JSONValue groups) {
        groups.forEachElement([&](JSONValue group) {
            group["hooks"].forEachElement([&](JSONValue hook) {
                if (hook["type"].string() != "command") return;
                commands.push_back({.event = std::string{event},
                                    .command = std::string{hook["command"].string().value_or("")},
                                    .timeout = JSONNumber::asInt(hook["timeout"])});
            });
        });
    });
    return commands;
}

ProgramRun runCommand(const std::string& command) {
    return ProgramRun::of({"/bin/sh", "-c", command});
}

}  // namespace quorvane::testing

namespace quorvane {

void PrintTo(const RateLimitSnapshot& snapshot, std::ostream* stream) {
    *stream << "primary " << testing::windowText(snapshot.primary) << ", secondary "
            << testing::windowText(snapshot.secondary) << ", plan " << snapshot.planType.value_or("none")
            << ", captured at "
            << (snapshot.capturedAt ? fmt::format("{:.3f}", snapshot.capturedAt->secondsSince1970) : "none");
}

}  // namespace quorvane
