// Grok Build's two logs. Of the session log the reader, which passes over most lines after a search for a few bytes,
// gives exactly what a full parse and the plain rules give, line by line, from a file at once, and in two steps. Of the
// billing log the last line that gives a record counts, and what is written of it reads back as it was.
//
// Input: one byte that chooses the line at which the file is read in two steps, and then the content of either log.

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "QuorvaneCore/platform/UTF8.h"
#include "QuorvaneCore/providers/GrokProvider.h"
#include "QuorvaneCore/ratelimits/GrokRateLimitCapture.h"
#include "QuorvaneCore/ratelimits/GrokRateLimitStore.h"
#include "fuzz/Counts.h"
#include "fuzz/FuzzTarget.h"
#include "fuzz/MemoryFile.h"

using quorvane::Date;
using quorvane::DecodedFile;
using quorvane::GrokProvider;
using quorvane::GrokRateLimitCapture;
using quorvane::GrokRateLimitStore;
using quorvane::JSONNumber;
using quorvane::JSONParser;
using quorvane::JSONTree;
using quorvane::JSONValue;
using quorvane::JSONWriter;
using quorvane::ProviderID;
using quorvane::RateLimitSnapshot;
using quorvane::TokenUsage;
using quorvane::UsageEvent;
using quorvane::fuzz::Counts;
using quorvane::fuzz::MemoryFile;
using quorvane::fuzz::require;

namespace {

constexpr std::size_t largestContent = 65536;
constexpr Date now{1789387200};

std::optional<std::string> filled(JSONValue value) {
    const auto text = value.string();
    return text && !text->empty() ? std::optional{std::string{*text}} : std::nullopt;
}

std::optional<TokenUsage> usageByTheRules(JSONValue usage, Counts& counts) {
    const std::int64_t cached = counts.of(usage["cachedReadTokens"]);
    const std::int64_t uncached = counts.difference(counts.of(usage["inputTokens"]), cached);
    const std::int64_t input = std::max<std::int64_t>(uncached, 0);
    const std::int64_t output = counts.sum(counts.of(usage["outputTokens"]), counts.of(usage["reasoningTokens"]));
    if (counts.sum(counts.sum(input, output), cached) < 1) return std::nullopt;
    return TokenUsage{.input = input, .output = output, .cacheCreate5m = 0, .cacheCreate1h = 0, .cacheRead = cached};
}

Date dateByTheRules(JSONValue line) {
    const std::optional<double> ofAgent = JSONNumber::asDouble(line["_meta"]["agentTimestampMs"]);
    if (ofAgent && *ofAgent > 0) return Date{*ofAgent / 1000};
    const std::optional<double> ofLine = JSONNumber::asDouble(line["timestamp"]);
    if (!ofLine || *ofLine <= 0) return Date::distantPast();
    return *ofLine > 1e12 ? Date{*ofLine / 1000} : Date{*ofLine};
}

/// The rules one after the other, on a fully parsed line.
std::vector<UsageEvent> eventsByTheRules(JSONValue line, const std::optional<std::string>& project, Counts& counts) {
    const JSONValue params = line["params"];
    const JSONValue update = params["update"];
    const JSONValue usage = update["usage"];
    if (update["sessionUpdate"].string() != "turn_completed" || !usage.isObject()) return {};
    const std::optional<std::string> prompt = filled(update["prompt_id"]);
    const std::optional<std::string> eventId = filled(line["_meta"]["eventId"]);
    const std::optional<std::string> turn = eventId ? eventId : prompt;
    if (!turn) return {};
    UsageEvent event;
    event.provider = ProviderID::Grok;
    event.timestamp = dateByTheRules(line);
    event.project = project;
    event.requestId = *turn;
    if (const auto session = params["sessionId"].string()) event.requestId = *session;
    if (prompt) event.requestId = *prompt;

    std::vector<UsageEvent> events;
    const JSONValue models = usage["modelUsage"];
    if (models.isObject() && !models.isEmpty()) {
        models.forEachMember([&](std::string_view key, JSONValue used) {
            if (!used.isObject()) return;
            const auto tokens = usageByTheRules(used, counts);
            if (!tokens) return;
            event.model = key.empty() ? "grok" : std::string{key};
            event.messageId = *turn + "-" + event.model;
            event.usage = *tokens;
            events.push_back(event);
        });
    } else if (const auto tokens = usageByTheRules(usage, counts)) {
        event.model = "grok";
        event.messageId = *turn;
        event.usage = *tokens;
        events.push_back(event);
    }
    return events;
}

void requireSame(const std::vector<UsageEvent>& events, const std::vector<UsageEvent>& expected) {
    require(events.size() == expected.size(), "as many events");
    for (std::size_t index = 0; index < events.size(); ++index) {
        const UsageEvent& event = events[index];
        const UsageEvent& wanted = expected[index];
        require(event.messageId == wanted.messageId, "messageId");
        require(event.requestId == wanted.requestId, "requestId");
        require(event.provider == wanted.provider, "provider");
        require(event.model == wanted.model, "model");
        require(event.timestamp == wanted.timestamp, "timestamp");
        require(event.usage == wanted.usage, "usage");
        require(event.project == wanted.project, "project");
    }
}

/// The content's lines without the empty ones; views of `content`.
std::vector<std::string_view> linesOf(std::string_view content) {
    std::vector<std::string_view> lines;
    while (!content.empty()) {
        const std::size_t length = std::min(content.find('\n'), content.size());
        if (length > 0) lines.push_back(content.substr(0, length));
        content.remove_prefix(std::min(length + 1, content.size()));
    }
    return lines;
}

void checkSessionLog(const std::string& content, std::size_t splitLine) {
    const MemoryFile file{content};
    const std::vector<std::string_view> lines = linesOf(content);
    const std::optional<std::string> project = GrokProvider::projectName(file.path());
    std::vector<UsageEvent> expected;
    Counts counts;
    for (const std::string_view line : lines) {
        JSONParser parser;
        const std::vector<UsageEvent> ofLine = eventsByTheRules(parser.parse(line), project, counts);
        if (!counts.fit) return;
        requireSame(GrokProvider::decode(line, project).value_or(std::vector<UsageEvent>{}), ofLine);
        expected.insert(expected.end(), ofLine.begin(), ofLine.end());
    }

    const GrokProvider provider{"/nowhere"};
    const DecodedFile whole = provider.decodeFile(file.path(), 0);
    requireSame(whole.events, expected);
    require(whole.consumed == static_cast<std::int64_t>(content.size()), "all is consumed");
    if (lines.empty()) return;
    const auto split = static_cast<std::size_t>(lines[splitLine % lines.size()].data() - content.data());
    const MemoryFile beginning{std::string_view{content}.substr(0, split)};
    DecodedFile first = provider.decodeFile(beginning.path(), 0);
    const DecodedFile second = provider.decodeFile(file.path(), first.consumed);
    first.events.insert(first.events.end(), second.events.begin(), second.events.end());
    require(second.consumed == whole.consumed, "two steps come as far as one");
    requireSame(first.events, expected);
}

void checkBillingLog(const std::string& content) {
    std::optional<JSONTree::Object> last;
    for (const std::string_view line : linesOf(content)) {
        if (auto record = GrokRateLimitCapture::parseBillingLogLine(quorvane::repairedUTF8(line), now)) last = record;
    }
    const MemoryFile log{content};
    require(GrokRateLimitCapture::scrapeLatestBilling(log.path(), now) == last, "the last record counts");
    if (!last) return;
    const std::string written = JSONWriter::pretty(JSONTree{*last});
    const Date captured{std::get<double>(last->at("capturedAt").content)};
    const std::optional<RateLimitSnapshot> snapshot = GrokRateLimitStore::decodeRaw(written, captured);
    require(snapshot && snapshot->secondary, "a record is a snapshot");
    require(snapshot->capturedAt == captured, "the moment reads back");
    const auto& weekly = std::get<JSONTree::Object>(last->at("weekly").content);
    const double used = std::get<double>(weekly.at("used_percentage").content);
    require(used >= 0 && used <= 100 && snapshot->secondary->usedPercent == used, "the percentage is one");
    const auto reset = weekly.find("resets_at");
    require(snapshot->secondary->resetsAt.has_value() == (reset != weekly.end()), "the reset is there or not");
    if (reset != weekly.end())
        require(snapshot->secondary->resetsAt == Date{std::get<double>(reset->second.content)}, "the reset reads back");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1 || size > largestContent) return 0;
    // Behind a last line feed there is nothing that could still be in the writing.
    const std::string content = std::string{reinterpret_cast<const char*>(data) + 1, size - 1} + "\n";
    checkSessionLog(content, data[0]);
    checkBillingLog(content);
    return 0;
}
