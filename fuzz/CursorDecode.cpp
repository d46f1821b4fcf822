// Lines of Cursor's capture file: the decoder gives exactly what a full parse and the plain rules give.

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/UTF8.h"
#include "QuorvaneCore/providers/CursorProvider.h"
#include "fuzz/FuzzTarget.h"

using quorvane::CursorProvider;
using quorvane::Date;
using quorvane::JSONNumberValue;
using quorvane::JSONParser;
using quorvane::JSONValue;
using quorvane::ProviderID;
using quorvane::UsageEvent;
using quorvane::fuzz::require;

namespace {

constexpr std::size_t largestLine = 65536;
__extension__ using Wide = __int128;
constexpr Wide largestCount = INT64_MAX;

/// Absent where 64 bits cannot hold it.
std::optional<std::int64_t> countOf(JSONValue value) {
    const std::optional<JSONNumberValue> number = value.number();
    if (!number) return 0;
    if (const auto* integer = std::get_if<std::int64_t>(&*number)) return *integer;
    constexpr double limit = 9223372036854775808.0;  // 2^63
    const auto* real = std::get_if<double>(&*number);
    if (real == nullptr || !(*real >= -limit && *real < limit)) return std::nullopt;
    return static_cast<std::int64_t>(*real);
}

/// By the definition: four characters are three bytes, each "=" at the end one byte less.
std::optional<std::string> base64(std::string_view text) {
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t filled =
        text.size() - std::min<std::size_t>(text.ends_with("==") ? 2 : text.ends_with('='), text.size());
    if (text.size() % 4 != 0 || text.substr(0, filled).find_first_not_of(alphabet) != std::string_view::npos) return {};
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); at += 4) {
        std::size_t group = 0;
        for (const char character : text.substr(at, 4))
            group = group * 64 + (character == '=' ? 0 : alphabet.find(character));
        for (const std::size_t shift : {16U, 8U, 0U})
            bytes += static_cast<char>((group >> shift) & 0xff);
    }
    bytes.resize(bytes.size() - (text.size() - filled));
    return bytes;
}

/// Empty if there is none.
std::string textOf(JSONValue line, const std::string& key) {
    if (const auto plain = line[key].string()) return std::string{*plain};
    const auto encoded = line[key + "_b64"].string();
    if (!encoded) return {};
    const std::optional<std::string> bytes = base64(*encoded);
    return bytes && quorvane::isUTF8(*bytes) ? *bytes : std::string{};
}

struct ToDouble {
    template <typename Number>
    double operator()(Number number) const {
        return static_cast<double>(number);
    }
};

struct Reading {
    std::optional<UsageEvent> event;
    bool fits = true;  ///< all counts that it is made of, and their sums
};

/// The rules one after the other, on a fully parsed line.
Reading readByTheRules(JSONValue line) {
    if (!line.isObject()) return {};
    UsageEvent event;
    event.messageId = textOf(line, "generation_id");
    if (event.messageId.empty()) return {};
    const std::optional<JSONNumberValue> time = line["captured_at"].number();
    if (!time || !(std::visit(ToDouble{}, *time) > 0)) return {};
    event.timestamp = Date{std::visit(ToDouble{}, *time)};
    event.requestId = textOf(line, "conversation_id");
    if (event.requestId.empty()) event.requestId = "unknown-conversation";
    event.model = textOf(line, "model");
    if (event.model.empty()) event.model = "cursor";

    std::array<Wide, 4> counts{};
    constexpr std::array<std::string_view, 4> keys{"input_tokens", "output_tokens", "cache_read_tokens",
                                                   "cache_write_tokens"};
    for (std::size_t index = 0; index < keys.size(); ++index) {
        const std::optional<std::int64_t> count = countOf(line[keys[index]]);
        if (!count) return {.event = {}, .fits = false};
        counts[index] = *count;
    }
    for (const Wide count : counts) {
        if (count < 0) return {};
    }
    const auto [input, output, cacheRead, cacheWrite] = counts;
    const Wide uncached = input - cacheRead - cacheWrite;
    const Wide net = uncached < 0 ? 0 : uncached;
    const Wide total = net + output + cacheRead + cacheWrite;
    if (uncached < -largestCount - 1 || total > largestCount) return {.event = {}, .fits = false};
    if (total < 1) return {};
    event.usage.input = static_cast<std::int64_t>(net);
    event.usage.output = static_cast<std::int64_t>(output);
    event.usage.cacheCreate5m = static_cast<std::int64_t>(cacheWrite);
    event.usage.cacheRead = static_cast<std::int64_t>(cacheRead);
    return {.event = event};
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > largestLine) return 0;
    const std::string_view line{reinterpret_cast<const char*>(data), size};
    JSONParser parser;
    const Reading expected = readByTheRules(parser.parse(line));
    // A token count that 64 bits cannot hold ends the process by design; such a line is not given to the decoder.
    if (!expected.fits) return 0;

    const std::optional<UsageEvent> event = CursorProvider::decode(line);
    require(event.has_value() == expected.event.has_value(), "the same lines tell of a generation");
    if (!event) return 0;
    require(event->messageId == expected.event->messageId, "messageId");
    require(event->requestId == expected.event->requestId, "requestId");
    require(event->provider == ProviderID::Cursor, "provider");
    require(event->model == expected.event->model, "model");
    require(event->timestamp == expected.event->timestamp, "timestamp");
    require(event->usage == expected.event->usage, "usage");
    require(!event->project, "project");
    return 0;
}
