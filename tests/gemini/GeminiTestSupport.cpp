#include "tests/gemini/GeminiTestSupport.h"

#include <fmt/format.h>

namespace quorvane::testing {

std::string geminiMessage(std::string_view id, const GeminiTokens& tokens, std::string_view model) {
    return fmt::format(
        R"({{"id":"{}","type":"gemini","model":"{}","content":"Done.","thoughts":[],"tokens":{{"input":{},"output":{},)"
        R"("cached":{},"thoughts":{},"tool":{},"total":{}}},"timestamp":"2026-03-02T10:00:41.250Z"}})",
        id, model, tokens.input, tokens.output, tokens.cached, tokens.thoughts, tokens.tool,
        tokens.input + tokens.output + tokens.thoughts + tokens.tool);
}

std::string geminiMessageWith(std::string_view id, std::string_view tokens) {
    return fmt::format(R"({{"id":"{}","type":"gemini","model":"m","timestamp":"2026-03-02T10:00:41Z","tokens":{}}})",
                       id, tokens);
}

std::string geminiChat(std::string_view session, const std::vector<std::string>& messages) {
    return fmt::format(R"({{"sessionId":"{}","projectHash":"9c1e","startTime":"2026-03-02T10:00:00.000Z",)"
                       R"("lastUpdated":"2026-03-02T10:09:31.000Z","messages":[{}]}})",
                       session, fmt::join(messages, ","));
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
    return texts;
}

std::string ChatHome::write(std::string_view file, std::string_view content) const {
    return home.write(path(file), content);
}

std::string ChatHome::path(std::string_view file) const {
    return home.path(".gemini/tmp/" + std::string{file});
}

std::vector<UsageEvent> ChatHome::parse(std::string_view content) const {
    return GeminiProvider::parseUsage(write("p/chats/session-parsed.json", content));
}

}  // namespace quorvane::testing
