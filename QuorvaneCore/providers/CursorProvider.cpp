#include "QuorvaneCore/providers/CursorProvider.h"

#include <algorithm>
#include <array>
#include <utility>

#include "QuorvaneCore/ingest/FileCursor.h"
#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/Base64.h"
#include "QuorvaneCore/platform/CheckedArithmetic.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/FileStatus.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/UTF8.h"
#include "QuorvaneCore/providers/CursorEventCache.h"
#include "QuorvaneCore/ratelimits/CursorHookSetup.h"

namespace quorvane {
namespace {

/// The text of a field that stands there plainly or, with another key, in base64. Empty if there is none.
std::string decodedString(JSONValue plain, JSONValue encoded) {
    if (const std::optional<std::string_view> text = plain.string()) return std::string{*text};
    const std::optional<std::string_view> text = encoded.string();
    std::optional<std::string> bytes = text ? base64Decoded(*text) : std::nullopt;
    return bytes && isUTF8(*bytes) ? *std::move(bytes) : std::string{};
}

/// Absent if a count is below zero, or there is not one token.
std::optional<TokenUsage> decodeUsage(JSONValue line) {
    const auto counters = line.members<4>({"input_tokens", "output_tokens", "cache_read_tokens", "cache_write_tokens"});
    const std::array<std::int64_t, 4> counts{JSONNumber::asInt(counters[0]), JSONNumber::asInt(counters[1]),
                                             JSONNumber::asInt(counters[2]), JSONNumber::asInt(counters[3])};
    if (*std::min_element(counts.begin(), counts.end()) < 0) return std::nullopt;
    const auto [input, output, cacheRead, cacheWrite] = counts;
    // The agent counts both cache counters inside its input figure.
    const std::int64_t uncached = checkedSubtract(checkedSubtract(input, cacheRead), cacheWrite);
    const TokenUsage usage{.input = std::max<std::int64_t>(uncached, 0),
                           .output = output,
                           .cacheCreate5m = cacheWrite,
                           .cacheRead = cacheRead};
    return usage.total() < 1 ? std::nullopt : std::optional{usage};
}

std::optional<UsageEvent> decodeDocument(JSONValue line) {
    const auto [generation, generationEncoded, conversation, conversationEncoded, model, modelEncoded, capturedAt] =
        line.members<7>({"generation_id", "generation_id_b64", "conversation_id", "conversation_id_b64", "model",
                         "model_b64", "captured_at"});
    UsageEvent event;
    event.messageId = decodedString(generation, generationEncoded);
    if (event.messageId.empty()) return std::nullopt;
    const std::optional<double> seconds = JSONNumber::asDouble(capturedAt);
    if (!seconds || !(*seconds > 0)) return std::nullopt;
    event.timestamp = Date{*seconds};
    event.requestId = decodedString(conversation, conversationEncoded);
    if (event.requestId.empty()) event.requestId = "unknown-conversation";
    event.provider = ProviderID::Cursor;
    event.model = decodedString(model, modelEncoded);
    if (event.model.empty()) event.model = "cursor";
    const std::optional<TokenUsage> usage = decodeUsage(line);
    if (!usage) return std::nullopt;
    event.usage = *usage;
    return event;
}

}  // namespace

CursorProvider::CursorProvider(std::optional<std::string> root)
    : root_{root ? *std::move(root) : CursorHookSetup::captureURL()} {}

std::vector<std::string> CursorProvider::watchPaths() const {
    return {FilePath::parent(root_)};
}

bool CursorProvider::isAvailable() const {
    return FileStatus::of(root_).has_value();
}

std::vector<std::string> CursorProvider::dataFiles() const {
    return isAvailable() ? std::vector<std::string>{root_} : std::vector<std::string>{};
}

std::optional<UsageEvent> CursorProvider::decode(std::string_view line) {
    JSONParser parser;
    return decodeDocument(parser.parse(line));
}

std::vector<UsageEvent> CursorProvider::loadEvents() const {
    CursorEventCache& cache = CursorEventCache::shared();
    const std::optional<FileCursor::Status> status = FileCursor::state(root_);
    if (status) {
        if (std::optional<std::vector<UsageEvent>> known = cache.events(root_, *status)) return *std::move(known);
    }
    cache.countTraversal();
    std::vector<UsageEvent> events;
    JSONParser parser;
    reader_.read(root_, [&](std::string_view line) {
        if (std::optional<UsageEvent> event = decodeDocument(parser.parsePadded(line))) {
            events.push_back(*std::move(event));
        }
    });
    if (status) cache.store({root_, status->size, status->mtime, status->ctime, events});
    return events;
}

DecodedFile CursorProvider::decodeFile(const std::string& file, std::int64_t offset) const {
    DecodedFile decoded;
    JSONParser parser;
    decoded.consumed = reader_.read(file, offset, [&](std::string_view line) {
        if (std::optional<UsageEvent> event = decodeDocument(parser.parsePadded(line))) {
            decoded.events.push_back(*std::move(event));
        }
    });
    return decoded;
}

}  // namespace quorvane
