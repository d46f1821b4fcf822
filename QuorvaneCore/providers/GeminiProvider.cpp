#include "QuorvaneCore/providers/GeminiProvider.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "QuorvaneCore/ingest/FileCursor.h"
#include "QuorvaneCore/model/Deduplicator.h"
#include "QuorvaneCore/model/ISOTimestamp.h"
#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/CheckedArithmetic.h"
#include "QuorvaneCore/platform/DirectoryWalk.h"
#include "QuorvaneCore/platform/FileContents.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/FileStatus.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/UserFolders.h"

namespace quorvane {
namespace {

bool isSessionFile(const std::string& file) {
    return FilePath::lastComponent(file).starts_with("session-") &&
           FilePath::lastComponent(FilePath::parent(file)) == "chats";
}

/// The text of a string; empty for an empty one and for anything else.
std::string_view textOf(JSONValue value) noexcept {
    return value.string().value_or(std::string_view{});
}

TokenUsage decodeTokens(JSONValue tokens) noexcept {
    const auto [input, output, cached, thoughts, tool] =
        tokens.members<5>({"input", "output", "cached", "thoughts", "tool"});
    const std::int64_t cacheRead = JSONNumber::asInt(cached);
    // The agent counts cached tokens inside its input figure.
    const std::int64_t uncached = std::max<std::int64_t>(checkedSubtract(JSONNumber::asInt(input), cacheRead), 0);
    return {.input = checkedAdd(uncached, JSONNumber::asInt(tool)),
            .output = checkedAdd(JSONNumber::asInt(output), JSONNumber::asInt(thoughts)),
            .cacheRead = cacheRead};
}

/// Makes the events of one chat, message by message.
class Chat {
public:
    explicit Chat(std::string_view session) : session_{session} {}

    void take(JSONValue message) {
        const auto [type, messageId, tokens, model, timestamp] =
            message.members<5>({"type", "id", "tokens", "model", "timestamp"});
        if (type.string() != "gemini" || !tokens.isObject()) return;
        const std::string_view identity = textOf(messageId);
        // The first message of an identity stands, even one that used nothing.
        if (identity.empty() || !seen_.insert(identity).second) return;
        const TokenUsage usage = decodeTokens(tokens);
        if (usage.total() == 0) return;

        UsageEvent event;
        event.messageId = identity;
        event.requestId = session_;
        event.provider = ProviderID::Gemini;
        event.model = textOf(model).empty() ? "gemini" : textOf(model);
        event.timestamp = ISOTimestamp::parse(timestamp.string(), Date::distantPast());
        event.usage = usage;
        events.push_back(std::move(event));
    }

    std::vector<UsageEvent> events;

private:
    std::string_view session_;
    std::unordered_set<std::string_view> seen_;  ///< texts of the document
};

}  // namespace

GeminiProvider::GeminiProvider(std::optional<std::string> root)
    : root_{root ? *std::move(root) : FilePath::joining(UserFolders::home(), ".gemini/tmp")} {}

bool GeminiProvider::isAvailable() const {
    return FileStatus::of(root_).has_value();
}

std::vector<std::string> GeminiProvider::sessionFiles() const {
    std::vector<std::string> files = DirectoryWalk::entries(root_, "json");
    std::erase_if(files, [](const std::string& file) { return !isSessionFile(file); });
    return files;
}

std::vector<UsageEvent> GeminiProvider::parseUsage(const std::string& file) {
    std::optional<std::string> content = readFile(file);
    if (!content) return {};
    const std::size_t size = content->size();
    content->resize(size + JSONParser::padding);
    JSONParser parser;
    const JSONValue document = parser.parsePadded(std::string_view{*content}.substr(0, size));
    const auto [session, messages] = document.members<2>({"sessionId", "messages"});
    if (textOf(session).empty()) return {};
    Chat chat{textOf(session)};
    messages.forEachElement([&](JSONValue message) { chat.take(message); });
    return std::move(chat.events);
}

std::vector<UsageEvent> GeminiProvider::loadEvents() const {
    Deduplicator best;
    for (const std::string& file : sessionFiles()) {
        for (UsageEvent& event : parseUsage(file))
            best.add(std::move(event));
    }
    return best.events();
}

DecodedFile GeminiProvider::decodeFile(const std::string& file, std::int64_t /*offset*/) const {
    DecodedFile decoded{.events = parseUsage(file), .consumed = 0};
    if (const std::optional<FileCursor::Status> status = FileCursor::state(file)) decoded.consumed = status->size;
    return decoded;
}

}  // namespace quorvane
