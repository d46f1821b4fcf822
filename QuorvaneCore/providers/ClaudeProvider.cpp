#include "QuorvaneCore/providers/ClaudeProvider.h"

#include <algorithm>
#include <array>
#include <utility>

#include "QuorvaneCore/model/Deduplicator.h"
#include "QuorvaneCore/model/ISOTimestamp.h"
#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/platform/DirectoryWalk.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/FileStatus.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/JSONTopLevelScan.h"
#include "QuorvaneCore/platform/UserFolders.h"
#include "QuorvaneCore/ratelimits/ClaudeRateLimitStore.h"

namespace quorvane {
namespace {

/// Most bytes of a log are in lines of other types (tool results, progress); their type stands near the beginning, so
/// they are passed over without a parse. Never says no to a line that tells of a call.
bool mayTellOfACall(std::string_view line) noexcept {
    const std::optional<std::string_view> type = scanTopLevelString(line, "type");
    return !type || *type == "assistant";
}

/// The text of a string that is not empty.
std::optional<std::string_view> filledString(const JSONValue& value) noexcept {
    const std::optional<std::string_view> text = value.string();
    return text && !text->empty() ? text : std::nullopt;
}

// In the order in which the agent writes them; the last one of the line is rare.
constexpr std::array<std::string_view, 6> lineKeys{"cwd",       "type",      "message",
                                                   "requestId", "timestamp", "isApiErrorMessage"};
constexpr std::array<std::string_view, 3> messageKeys{"model", "id", "usage"};
constexpr std::array<std::string_view, 5> usageKeys{"input_tokens", "cache_creation_input_tokens",
                                                    "cache_read_input_tokens", "cache_creation", "output_tokens"};
constexpr std::array<std::string_view, 2> cacheCreationKeys{"ephemeral_5m_input_tokens", "ephemeral_1h_input_tokens"};

TokenUsage decodeUsage(const JSONValue& usage) noexcept {
    const auto [input, cacheCreationTotal, cacheRead, cacheCreation, output] = usage.members(usageKeys);
    TokenUsage tokens{.input = JSONNumber::asInt(input),
                      .output = JSONNumber::asInt(output),
                      .cacheRead = JSONNumber::asInt(cacheRead)};
    if (cacheCreation.isObject()) {
        const auto [fiveMinutes, oneHour] = cacheCreation.members(cacheCreationKeys);
        tokens.cacheCreate5m = JSONNumber::asInt(fiveMinutes);
        tokens.cacheCreate1h = JSONNumber::asInt(oneHour);
    } else {
        // Older logs do not split the write by its lifetime; it is priced as a 5-minute write.
        tokens.cacheCreate5m = JSONNumber::asInt(cacheCreationTotal);
    }
    return tokens;
}

/// Fills `event` from the document of a line that tells of a call. False for any other; `event` is as it was then.
/// An event has four texts, and there are hundreds of thousands of them, so each is made in its place.
bool decodeDocument(const JSONValue& line, UsageEvent& event) {
    const auto [folder, type, message, requestId, timestamp, isError] = line.members(lineKeys);
    if (type.string() != "assistant" || isError.boolean() == true) return false;
    const auto [model, messageId, usage] = message.members(messageKeys);
    if (!usage.isObject() || usage.isEmpty()) return false;
    const std::optional<std::string_view> messageText = filledString(messageId);
    const std::optional<std::string_view> requestText = filledString(requestId);
    const std::optional<std::string_view> modelText = filledString(model);
    if (!messageText || !requestText || !modelText) return false;

    event.messageId = *messageText;
    event.requestId = *requestText;
    event.provider = ProviderID::Claude;
    event.model = *modelText;
    event.timestamp = ISOTimestamp::parse(timestamp.string(), Date::distantPast());
    event.usage = decodeUsage(usage);
    if (const std::optional<std::string_view> path = folder.string()) event.project = FilePath::lastComponent(*path);
    return true;
}

/// Room for one more, growing in larger steps than a vector does: to move an event costs as much as to make one.
void makeRoom(std::vector<UsageEvent>& events) {
    constexpr std::size_t eventsOfASmallFile = 64;
    constexpr std::size_t step = 4;
    if (events.size() == events.capacity()) events.reserve(std::max(eventsOfASmallFile, step * events.capacity()));
}

}  // namespace

ClaudeProvider::ClaudeProvider(std::optional<std::string> root)
    : root_{root ? *std::move(root) : FilePath::joining(UserFolders::home(), ".claude/projects")} {}

bool ClaudeProvider::isAvailable() const {
    return FileStatus::of(root_).has_value();
}

std::optional<RateLimitSnapshot> ClaudeProvider::latestRateLimits() const {
    return ClaudeRateLimitStore::load(Clock::now());
}

bool ClaudeProvider::latestRateLimitAwaitingReset(Date now) const {
    return ClaudeRateLimitStore::awaitingResetHint(now);
}

std::vector<std::string> ClaudeProvider::jsonlFiles() const {
    return DirectoryWalk::entries(root_, "jsonl");
}

std::optional<UsageEvent> ClaudeProvider::decode(std::string_view line) {
    if (!mayTellOfACall(line)) return std::nullopt;
    JSONParser parser;
    UsageEvent event;
    if (!decodeDocument(parser.parse(line), event)) return std::nullopt;
    return event;
}

DecodedFile ClaudeProvider::decodeFile(const std::string& file, std::int64_t offset) const {
    DecodedFile decoded;
    // Kept for the next file: the memory of a new one for each of thousands of small files costs a few percent.
    thread_local JSONParser parser;
    decoded.consumed = reader_.read(file, offset, [&](std::string_view line) {
        if (!mayTellOfACall(line)) return;
        const JSONValue document = parser.parsePadded(line);
        makeRoom(decoded.events);
        if (!decodeDocument(document, decoded.events.emplace_back())) decoded.events.pop_back();
    });
    return decoded;
}

std::vector<UsageEvent> ClaudeProvider::loadEvents() const {
    Deduplicator best;
    JSONParser parser;
    for (const std::string& file : jsonlFiles()) {
        reader_.read(file, [&](std::string_view line) {
            UsageEvent event;
            if (mayTellOfACall(line) && decodeDocument(parser.parsePadded(line), event)) best.add(std::move(event));
        });
    }
    return best.events();
}

}  // namespace quorvane
