// Claude Code's log lines: the decoder, which passes over most lines after a look at their beginning, gives exactly
// what a full parse and the plain rules give.

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "QuorvaneCore/model/ISOTimestamp.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/providers/ClaudeProvider.h"
#include "fuzz/FuzzTarget.h"

using quorvane::ClaudeProvider;
using quorvane::Date;
using quorvane::ISOTimestamp;
using quorvane::JSONNumberValue;
using quorvane::JSONParser;
using quorvane::JSONValue;
using quorvane::ProviderID;
using quorvane::UsageEvent;
using quorvane::fuzz::require;

namespace {

constexpr std::size_t largestLine = 65536;

struct Count {
    std::int64_t value = 0;
    bool fits = true;  ///< in 64 bits
};

Count countOf(JSONValue value) {
    const std::optional<JSONNumberValue> number = value.number();
    if (!number) return {};
    if (const auto* integer = std::get_if<std::int64_t>(&*number)) return {*integer};
    constexpr double limit = 9223372036854775808.0;  // 2^63
    const auto* real = std::get_if<double>(&*number);
    if (real == nullptr || !(*real > -limit && *real < limit)) return {0, false};
    return {static_cast<std::int64_t>(*real)};
}

std::string lastComponent(std::string path) {
    const bool isRooted = path.starts_with('/');
    while (path.ends_with('/'))
        path.pop_back();
    if (path.empty()) return isRooted ? "/" : "";
    return path.substr(path.rfind('/') + 1);
}

struct Reading {
    std::optional<UsageEvent> event;
    bool fits = true;  ///< all counts that the event is made of
};

/// The rules one after the other, on a fully parsed line.
Reading readByTheRules(JSONValue line) {
    if (line["type"].string() != "assistant") return {};
    if (line["isApiErrorMessage"].boolean() == true) return {};
    const JSONValue message = line["message"];
    const JSONValue usage = message["usage"];
    if (!message.isObject() || !usage.isObject() || usage.isEmpty()) return {};
    const auto messageId = message["id"].string();
    const auto requestId = line["requestId"].string();
    const auto model = message["model"].string();
    if (!messageId || messageId->empty()) return {};
    if (!requestId || requestId->empty()) return {};
    if (!model || model->empty()) return {};

    const JSONValue split = usage["cache_creation"];
    const std::array counts{
        countOf(usage["input_tokens"]), countOf(usage["output_tokens"]),
        countOf(split.isObject() ? split["ephemeral_5m_input_tokens"] : usage["cache_creation_input_tokens"]),
        countOf(split["ephemeral_1h_input_tokens"]), countOf(usage["cache_read_input_tokens"])};
    Reading reading;
    for (const Count& count : counts)
        reading.fits = reading.fits && count.fits;
    UsageEvent event;
    event.messageId = *messageId;
    event.requestId = *requestId;
    event.provider = ProviderID::Claude;
    event.model = *model;
    event.timestamp = ISOTimestamp::parse(line["timestamp"].string(), Date::distantPast());
    event.usage = {.input = counts[0].value,
                   .output = counts[1].value,
                   .cacheCreate5m = counts[2].value,
                   .cacheCreate1h = counts[3].value,
                   .cacheRead = counts[4].value};
    if (const auto folder = line["cwd"].string()) event.project = lastComponent(std::string{*folder});
    reading.event = event;
    return reading;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > largestLine) return 0;
    const std::string_view line{reinterpret_cast<const char*>(data), size};
    JSONParser parser;
    const Reading expected = readByTheRules(parser.parse(line));
    // A token count that 64 bits cannot hold ends the process by design. Such a line is not given to the decoder: the
    // rules above, which judge each count without converting it, tell that the decoder would come to that count. Lines
    // with such a number anywhere else do go to the decoder.
    if (!expected.fits) return 0;

    const std::optional<UsageEvent> event = ClaudeProvider::decode(line);
    require(event.has_value() == expected.event.has_value(), "the same lines tell of a call");
    if (!event) return 0;
    require(event->messageId == expected.event->messageId, "messageId");
    require(event->requestId == expected.event->requestId, "requestId");
    require(event->provider == expected.event->provider, "provider");
    require(event->model == expected.event->model, "model");
    require(event->timestamp == expected.event->timestamp, "timestamp");
    require(event->usage == expected.event->usage, "usage");
    require(event->project == expected.event->project, "project");
    return 0;
}
