// Gemini CLI's chats: the reader gives exactly what a full parse and the plain rules give.

#include <algorithm>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/model/ISOTimestamp.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/providers/GeminiProvider.h"
#include "fuzz/Counts.h"
#include "fuzz/FuzzTarget.h"
#include "fuzz/MemoryFile.h"

using quorvane::Date;
using quorvane::GeminiProvider;
using quorvane::ISOTimestamp;
using quorvane::JSONParser;
using quorvane::JSONValue;
using quorvane::ProviderID;
using quorvane::UsageEvent;
using quorvane::fuzz::Counts;
using quorvane::fuzz::MemoryFile;
using quorvane::fuzz::require;

namespace {

constexpr std::size_t largestDocument = 65536;

std::optional<std::string> filled(JSONValue value) {
    const auto text = value.string();
    return text && !text->empty() ? std::optional{std::string{*text}} : std::nullopt;
}

struct Reading {
    std::vector<UsageEvent> events;
    Counts counts;
};

void takeByTheRules(JSONValue message, const std::string& session, std::set<std::string>& seen, Reading& reading) {
    const JSONValue tokens = message["tokens"];
    if (message["type"].string() != "gemini" || !tokens.isObject()) return;
    const std::optional<std::string> identity = filled(message["id"]);
    if (!identity || !seen.insert(*identity).second) return;
    Counts& counts = reading.counts;
    const std::int64_t cached = counts.of(tokens["cached"]);
    const std::int64_t uncached = std::max<std::int64_t>(counts.difference(counts.of(tokens["input"]), cached), 0);
    const std::int64_t input = counts.sum(uncached, counts.of(tokens["tool"]));
    const std::int64_t output = counts.sum(counts.of(tokens["output"]), counts.of(tokens["thoughts"]));
    if (counts.sum(counts.sum(input, output), cached) == 0) return;
    UsageEvent event;
    event.messageId = *identity;
    event.requestId = session;
    event.provider = ProviderID::Gemini;
    event.model = filled(message["model"]).value_or("gemini");
    event.timestamp = ISOTimestamp::parse(message["timestamp"].string(), Date::distantPast());
    event.usage.input = input;
    event.usage.output = output;
    event.usage.cacheRead = cached;
    reading.events.push_back(event);
}

Reading readByTheRules(std::string_view content) {
    Reading reading;
    JSONParser parser;
    const JSONValue document = parser.parse(content);
    const std::optional<std::string> session = filled(document["sessionId"]);
    if (!session) return reading;
    std::set<std::string> seen;
    document["messages"].forEachElement([&](JSONValue message) { takeByTheRules(message, *session, seen, reading); });
    return reading;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > largestDocument) return 0;
    const std::string_view content{reinterpret_cast<const char*>(data), size};
    const Reading expected = readByTheRules(content);
    if (!expected.counts.fit) return 0;

    const MemoryFile file{content};
    const std::vector<UsageEvent> events = GeminiProvider::parseUsage(file.path());
    require(events.size() == expected.events.size(), "as many events");
    for (std::size_t index = 0; index < events.size(); ++index) {
        const UsageEvent& event = events[index];
        const UsageEvent& wanted = expected.events[index];
        require(event.messageId == wanted.messageId, "messageId");
        require(event.requestId == wanted.requestId, "requestId");
        require(event.provider == wanted.provider, "provider");
        require(event.model == wanted.model, "model");
        require(event.timestamp == wanted.timestamp, "timestamp");
        require(event.usage == wanted.usage, "usage");
        require(event.project == wanted.project, "project");
    }
    return 0;
}
