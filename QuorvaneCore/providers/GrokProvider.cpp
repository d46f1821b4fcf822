#include "QuorvaneCore/providers/GrokProvider.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "QuorvaneCore/model/GrokHome.h"
#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/ByteSearch.h"
#include "QuorvaneCore/platform/CheckedArithmetic.h"
#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/PercentDecoding.h"
#include "QuorvaneCore/ratelimits/GrokRateLimitCapture.h"
#include "QuorvaneCore/ratelimits/GrokRateLimitStore.h"

namespace quorvane {
namespace {

constexpr std::string_view completedTurn = "turn_completed";

/// Far less than one line in a hundred is a completed turn; the others are passed over without a parse. Never says no
/// to a line that is one: its kind stands in it as it is, or with letters written as escapes, of which the underscore
/// and the small letters are `\u005f` and `\u0061` to `\u007a`.
bool mayBeACompletedTurn(std::string_view line) noexcept {
    if (findBytes(line, completedTurn) != std::string_view::npos) return true;
    constexpr std::string_view escape = "\\u00";
    for (std::size_t at = findBytes(line, escape); at != std::string_view::npos;
         at = findBytes(line, escape, at + escape.size())) {
        const std::size_t digit = at + escape.size();
        if (digit < line.size() && line[digit] >= '5' && line[digit] <= '7') return true;
    }
    return false;
}

/// The text of a string; empty for an empty one and for anything else.
std::string_view textOf(JSONValue value) noexcept {
    return value.string().value_or(std::string_view{});
}

/// The first of two texts that is not empty.
std::string_view filledOf(std::string_view preferred, std::string_view fallback) noexcept {
    return preferred.empty() ? fallback : preferred;
}

std::optional<std::vector<UsageEvent>> decodeDocument(JSONValue line, const std::optional<std::string>& project) {
    const JSONValue params = line["params"];
    const auto [kind, usage, promptId] = params["update"].members<3>({"sessionUpdate", "usage", "prompt_id"});
    if (kind.string() != completedTurn || !usage.isObject()) return std::nullopt;
    const JSONValue meta = line["_meta"];
    const std::string_view prompt = textOf(promptId);
    const std::string_view turn = filledOf(textOf(meta["eventId"]), prompt);
    if (turn.empty()) return std::nullopt;

    UsageEvent event;
    event.requestId = prompt.empty() ? params["sessionId"].string().value_or(turn) : prompt;
    event.provider = ProviderID::Grok;
    event.timestamp = GrokProvider::decodeTimestamp(line, meta);
    event.project = project;

    std::vector<UsageEvent> events;
    const auto addEvent = [&](std::string messageId, std::string_view model, JSONValue used) {
        const std::optional<TokenUsage> tokens = GrokProvider::tokenUsage(used);
        if (!tokens) return;
        event.messageId = std::move(messageId);
        event.model = model;
        event.usage = *tokens;
        events.push_back(event);
    };
    const JSONValue models = usage["modelUsage"];
    if (models.isObject() && !models.isEmpty()) {
        models.forEachMember([&](std::string_view key, JSONValue used) {
            const std::string_view model = filledOf(key, "grok");
            if (used.isObject()) addEvent(std::string{turn}.append("-").append(model), model, used);
        });
    } else {
        addEvent(std::string{turn}, "grok", usage);
    }
    if (events.empty()) return std::nullopt;
    return events;
}

/// For lines as the stream reader delivers them, with padding behind. Adds the calls to `events`.
void addEvents(std::string_view line, const std::optional<std::string>& project, JSONParser& parser,
               std::vector<UsageEvent>& events) {
    if (!mayBeACompletedTurn(line)) return;
    if (std::optional<std::vector<UsageEvent>> more = decodeDocument(parser.parsePadded(line), project))
        std::move(more->begin(), more->end(), std::back_inserter(events));
}

}  // namespace

GrokProvider::GrokProvider(std::optional<std::string> root) : root_{GrokHome::path(root)} {}

bool GrokProvider::isAvailable() const {
    return GrokHome::hasSessionLogs(root_);
}

std::string GrokProvider::sessionsRoot() const {
    return GrokHome::sessions(root_);
}

std::vector<std::string> GrokProvider::updatesFiles() const {
    return GrokHome::updatesFiles(root_);
}

std::optional<std::vector<UsageEvent>> GrokProvider::decode(std::string_view line,
                                                            const std::optional<std::string>& project) {
    if (!mayBeACompletedTurn(line)) return std::nullopt;
    JSONParser parser;
    return decodeDocument(parser.parse(line), project);
}

Date GrokProvider::decodeTimestamp(JSONValue object, JSONValue meta) {
    constexpr double millisecondsPerSecond = 1000;
    const double ofAgent = JSONNumber::asDouble(meta["agentTimestampMs"]).value_or(0);
    if (ofAgent > 0) return Date{ofAgent / millisecondsPerSecond};
    const double ofLine = JSONNumber::asDouble(object["timestamp"]).value_or(0);
    // As seconds this would be the year 33658.
    constexpr double latestSeconds = 1e12;
    if (ofLine > latestSeconds) return Date{ofLine / millisecondsPerSecond};
    return ofLine > 0 ? Date{ofLine} : Date::distantPast();
}

std::optional<TokenUsage> GrokProvider::tokenUsage(JSONValue usage) {
    const auto [input, output, cachedRead, reasoning] =
        usage.members<4>({"inputTokens", "outputTokens", "cachedReadTokens", "reasoningTokens"});
    TokenUsage tokens;
    tokens.cacheRead = JSONNumber::asInt(cachedRead);
    tokens.input = std::max<std::int64_t>(checkedSubtract(JSONNumber::asInt(input), tokens.cacheRead), 0);
    tokens.output = checkedAdd(JSONNumber::asInt(output), JSONNumber::asInt(reasoning));
    if (tokens.total() < 1) return std::nullopt;
    return tokens;
}

std::optional<std::string> GrokProvider::projectName(std::string_view updatesFile) {
    const std::string folder = FilePath::parent(FilePath::parent(updatesFile));
    const std::string_view name = FilePath::lastComponent(folder);
    if (name.empty() || name == "/" || name == "sessions") return std::nullopt;
    std::optional<std::string> decoded = percentDecoded(name);
    return decoded ? *std::move(decoded) : std::string{name};
}

DecodedFile GrokProvider::decodeFile(const std::string& file, std::int64_t offset) const {
    DecodedFile decoded;
    const std::optional<std::string> project = projectName(file);
    JSONParser parser;
    decoded.consumed =
        reader_.read(file, offset, [&](std::string_view line) { addEvents(line, project, parser, decoded.events); });
    return decoded;
}

std::vector<UsageEvent> GrokProvider::loadEvents() const {
    std::vector<UsageEvent> events;
    JSONParser parser;
    for (const std::string& file : updatesFiles()) {
        const std::optional<std::string> project = projectName(file);
        reader_.read(file, [&](std::string_view line) { addEvents(line, project, parser, events); });
    }
    return events;
}

bool GrokProvider::isGrokBuildDetected(const std::optional<std::string>& home) {
    return GrokHome::isDetected(home);
}

void GrokProvider::refreshCapture(Date now) const {
    if (!GrokRateLimitCapture::isInstalled(root_)) return;
    static_cast<void>(GrokRateLimitCapture::refreshFromLogs(root_, std::nullopt, std::nullopt, now));
}

std::optional<RateLimitSnapshot> GrokProvider::latestRateLimits() const {
    const Date now = Clock::now();
    refreshCapture(now);
    return GrokRateLimitStore::load(now);
}

bool GrokProvider::latestRateLimitAwaitingReset(Date now) const {
    refreshCapture(now);
    return GrokRateLimitStore::awaitingResetHint(now);
}

}  // namespace quorvane
