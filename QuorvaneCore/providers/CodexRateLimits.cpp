#include "QuorvaneCore/providers/CodexRateLimits.h"

#include <cmath>
#include <utility>
#include <vector>

#include "QuorvaneCore/ingest/FileCursor.h"
#include "QuorvaneCore/model/ISOTimestamp.h"
#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/providers/RateLimitTailCache.h"
#include "QuorvaneCore/providers/detail/CodexLine.h"

namespace quorvane {
namespace {

constexpr std::int64_t fiveHours = 300;  // in minutes, as the next one
constexpr std::int64_t week = 10080;

std::optional<RateLimitWindow> windowOf(JSONValue json) {
    const std::optional<double> usedPercent = JSONNumber::asDouble(json["used_percent"]);
    if (!usedPercent) return std::nullopt;
    RateLimitWindow window{
        .usedPercent = *usedPercent, .windowMinutes = JSONNumber::asInt(json["window_minutes"]), .resetsAt = {}};
    if (const std::optional<double> reset = JSONNumber::asDouble(json["resets_at"])) window.resetsAt = Date{*reset};
    return window;
}

std::optional<CodexRateLimitRecord> recordOf(JSONValue line) {
    const auto [type, timestamp, payload] = line.members<3>({"type", "timestamp", "payload"});
    if (type.string() != "event_msg") return std::nullopt;
    const auto [event, rateLimits] = payload.members<2>({"type", "rate_limits"});
    if (event.string() != "token_count") return std::nullopt;
    const std::optional<std::string_view> limit = rateLimits["limit_id"].string();
    if (limit && *limit != "codex") return std::nullopt;
    std::optional<RateLimitSnapshot> snapshot = CodexRateLimits::snapshot(rateLimits);
    if (!snapshot) return std::nullopt;
    return CodexRateLimitRecord{.date = ISOTimestamp::parse(timestamp.string(), Date::distantPast()),
                                .snapshot = *std::move(snapshot)};
}

/// For lines as the stream reader delivers them, with padding behind.
std::optional<CodexRateLimitRecord> recordOfPadded(std::string_view line, JSONParser& parser) {
    if (!CodexLine::mayCountTokens(line)) return std::nullopt;
    return recordOf(parser.parsePadded(line));
}

std::optional<RateLimitWindow> firstOfLength(const RateLimitSnapshot& snapshot, std::int64_t minutes) {
    for (const std::optional<RateLimitWindow>* window : {&snapshot.primary, &snapshot.secondary}) {
        if (*window && (*window)->windowMinutes == minutes) return *window;
    }
    return std::nullopt;
}

/// Whether there is a weekly window of exactly 0 %, with a reset, and no other.
bool isWeeklyZero(const RateLimitSnapshot& normalized) noexcept {
    const std::optional<RateLimitWindow>& weekly = normalized.secondary;
    return !normalized.primary && weekly && weekly->usedPercent == 0 && weekly->resetsAt;
}

std::optional<CodexRateLimitRecord> readingOf(std::optional<CodexRateLimitRecord> newest,
                                              const std::optional<CodexRateLimitRecord>& previous) {
    if (newest && CodexRateLimits::isRollingZeroPlaceholder(*newest, previous)) return std::nullopt;
    return newest;
}

std::optional<CodexRateLimitRecord> scan(const std::string& file, const JSONLStreamReader& reader) {
    CodexRateLimits::TailRateLimitResult tail =
        CodexRateLimits::latestRateLimitsFromTail(file, CodexRateLimits::tailBytes);
    return tail.foundRecord ? std::move(tail.value) : CodexRateLimits::latestRateLimits(file, reader);
}

}  // namespace

std::optional<CodexRateLimitRecord> CodexRateLimits::rateLimitSnapshot(std::string_view line) {
    if (!CodexLine::mayCountTokens(line)) return std::nullopt;
    JSONParser parser;
    return recordOf(parser.parse(line));
}

std::optional<RateLimitSnapshot> CodexRateLimits::snapshot(JSONValue rateLimits) {
    const auto [primary, secondary, plan] = rateLimits.members<3>({"primary", "secondary", "plan_type"});
    RateLimitSnapshot snapshot;
    snapshot.primary = windowOf(primary);
    snapshot.secondary = windowOf(secondary);
    if (!snapshot.primary && !snapshot.secondary) return std::nullopt;
    if (const std::optional<std::string_view> name = plan.string()) snapshot.planType = std::string{*name};
    return snapshot;
}

RateLimitSnapshot CodexRateLimits::normalizedIgnoringExpiry(const RateLimitSnapshot& snapshot) {
    return {.primary = firstOfLength(snapshot, fiveHours),
            .secondary = firstOfLength(snapshot, week),
            .planType = snapshot.planType,
            .capturedAt = snapshot.capturedAt,
            .modelWindows = {}};
}

bool CodexRateLimits::isRollingZeroPlaceholder(const CodexRateLimitRecord& newest,
                                               const std::optional<CodexRateLimitRecord>& previous) {
    constexpr double toleranceSeconds = 2.0;
    if (!previous) return false;
    const RateLimitSnapshot now = normalizedIgnoringExpiry(newest.snapshot);
    const RateLimitSnapshot before = normalizedIgnoringExpiry(previous->snapshot);
    if (!isWeeklyZero(now) || !isWeeklyZero(before)) return false;
    const double clockMoved = newest.date - previous->date;
    const double resetMoved = *now.secondary->resetsAt - *before.secondary->resetsAt;
    return clockMoved > 0 && std::abs(clockMoved - resetMoved) <= toleranceSeconds;
}

CodexRateLimits::TailRateLimitResult CodexRateLimits::latestRateLimitsFromTail(const std::string& file,
                                                                               std::uint64_t maxBytes) {
    JSONParser parser;
    std::vector<CodexRateLimitRecord> records = JSONLStreamReader::matchingTail(
        file, maxBytes, 2, [&](std::string_view line) { return recordOfPadded(line, parser); });
    if (records.empty()) return {};
    const std::optional<CodexRateLimitRecord> previous =
        records.size() > 1 ? std::optional{std::move(records[1])} : std::nullopt;
    return {.foundRecord = true, .value = readingOf(std::move(records[0]), previous)};
}

std::optional<CodexRateLimitRecord> CodexRateLimits::latestRateLimits(const std::string& file,
                                                                      const JSONLStreamReader& reader) {
    JSONParser parser;
    std::optional<CodexRateLimitRecord> newest;
    std::optional<CodexRateLimitRecord> previous;
    reader.read(file, [&](std::string_view line) {
        std::optional<CodexRateLimitRecord> record = recordOfPadded(line, parser);
        if (!record) return;
        previous = std::move(newest);
        newest = std::move(record);
    });
    return readingOf(std::move(newest), previous);
}

std::optional<CodexRateLimitRecord> CodexRateLimits::cachedRateLimitEntry(const std::string& file,
                                                                          const JSONLStreamReader& reader) {
    const std::optional<FileCursor::Status> status = FileCursor::state(file);
    if (!status) return scan(file, reader);
    RateLimitTailCache& cache = RateLimitTailCache::shared();
    const bool isLive = Clock::now() - Date{status->mtime} < liveSeconds;
    if (!isLive) {
        std::optional<RateLimitTailCache::Entry> known = cache.entry(file);
        if (known && known->size == status->size && known->mtime == status->mtime) return std::move(known->result);
    }
    std::optional<CodexRateLimitRecord> result = scan(file, reader);
    cache.store(file, {.size = status->size, .mtime = status->mtime, .result = result});
    return result;
}

}  // namespace quorvane
