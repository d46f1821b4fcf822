#include "QuorvaneCore/providers/CodexProvider.h"

#include <iterator>
#include <utility>

#include "QuorvaneCore/ingest/FileCursor.h"
#include "QuorvaneCore/model/ISOTimestamp.h"
#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/platform/DirectoryWalk.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/FileStatus.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/Pattern.h"
#include "QuorvaneCore/platform/UserFolders.h"
#include "QuorvaneCore/providers/CodexRateLimits.h"
#include "QuorvaneCore/providers/RateLimitTailCache.h"
#include "QuorvaneCore/providers/detail/CodexLine.h"
#include "QuorvaneCore/providers/detail/CodexUsageSeries.h"

namespace quorvane {
namespace {

void takeFolder(JSONValue folder, CodexUsageSeries& series) {
    if (const std::optional<std::string_view> path = folder.string()) series.setProject(FilePath::lastComponent(*path));
}

/// Whether there was a model to take.
bool takeModel(JSONValue model, CodexUsageSeries& series) {
    const std::optional<std::string_view> name = model.string();
    if (!name || name->empty()) return false;
    series.setModel(*name);
    return true;
}

void takeSessionMeta(JSONValue payload, CodexUsageSeries& series) {
    takeFolder(payload["cwd"], series);
    // A turn knows its model better than the session does.
    if (!series.knowsModel()) takeModel(payload["model"], series);
}

void takeTurnContext(JSONValue payload, CodexUsageSeries& series) {
    takeFolder(payload["cwd"], series);
    if (!takeModel(payload["model"], series)) {
        takeModel(payload["collaboration_mode"]["settings"]["model"], series);
    }
}

void takeEvent(JSONValue payload, JSONValue timestamp, CodexUsageSeries& series) {
    const auto [type, info] = payload.members<2>({"type", "info"});
    if (type.string() != "token_count") return;
    const JSONValue usage = info["total_token_usage"];
    if (!usage.isObject()) return;
    const auto [input, cached, output] = usage.members<3>({"input_tokens", "cached_input_tokens", "output_tokens"});
    series.take(
        {.input = JSONNumber::asInt(input), .cached = JSONNumber::asInt(cached), .output = JSONNumber::asInt(output)},
        ISOTimestamp::parse(timestamp.string(), Date::distantPast()));
}

void takeLine(JSONValue line, CodexUsageSeries& series) {
    const auto [typeValue, timestamp, payload] = line.members<3>({"type", "timestamp", "payload"});
    const std::optional<std::string_view> type = typeValue.string();
    if (type == "event_msg") {
        takeEvent(payload, timestamp, series);
    } else if (type == "turn_context") {
        takeTurnContext(payload, series);
    } else if (type == "session_meta") {
        takeSessionMeta(payload, series);
    }
}

/// Keeps the later of two reports; of two with the same date, the one that was there.
void keepLater(std::optional<CodexRateLimitRecord>& best, Date date, RateLimitSnapshot snapshot) {
    if (!best || date > best->date) best = CodexRateLimitRecord{.date = date, .snapshot = std::move(snapshot)};
}

}  // namespace

CodexProvider::CodexProvider(std::optional<std::string> root)
    : root_{root ? *std::move(root) : FilePath::joining(UserFolders::home(), ".codex/sessions")} {}

bool CodexProvider::isAvailable() const {
    return FileStatus::of(root_).has_value();
}

std::vector<std::string> CodexProvider::rolloutFiles() const {
    std::vector<std::string> files = DirectoryWalk::entries(root_, "jsonl");
    std::erase_if(files,
                  [](const std::string& file) { return !FilePath::lastComponent(file).starts_with("rollout-"); });
    return files;
}

std::string CodexProvider::fileUUID(std::string_view file) {
    constexpr std::size_t uuidLength = 36;
    static const Pattern uuid{"[0-9a-fA-F]{8}-[0-9a-fA-F]{4}-[0-9a-fA-F]{4}-[0-9a-fA-F]{4}-[0-9a-fA-F]{12}"};
    std::string_view name = FilePath::lastComponent(file);
    if (const std::optional<std::size_t> begin = uuid.search(name)) return std::string{name.substr(*begin, uuidLength)};
    const std::string_view extension = FilePath::extension(name);
    if (!extension.empty()) name.remove_suffix(extension.size() + 1);
    return std::string{name};
}

std::vector<UsageEvent> CodexProvider::parseUsage(const std::string& file, const JSONLStreamReader& reader) {
    CodexUsageSeries series;
    {
        JSONParser parser;
        reader.read(file, [&](std::string_view line) {
            if (CodexLine::mayTellOfUsage(line)) takeLine(parser.parsePadded(line), series);
        });
    }
    return series.events(fileUUID(file));
}

DecodedFile CodexProvider::decodeFile(const std::string& file, std::int64_t /*offset*/) const {
    const std::optional<FileCursor::Status> status = FileCursor::state(file);
    return {.events = parseUsage(file, reader_), .consumed = status ? status->size : 0};
}

std::vector<UsageEvent> CodexProvider::loadEvents() const {
    std::vector<UsageEvent> all;
    for (const std::string& file : rolloutFiles()) {
        std::vector<UsageEvent> events = parseUsage(file, reader_);
        all.insert(all.end(), std::make_move_iterator(events.begin()), std::make_move_iterator(events.end()));
    }
    return all;
}

CodexProvider::RateLimitState CodexProvider::latestRateLimitState(Date now) const {
    std::optional<CodexRateLimitRecord> bestCurrent;
    std::optional<CodexRateLimitRecord> bestKnown;
    const std::vector<std::string> files = rolloutFiles();
    for (const std::string& file : files) {
        const std::optional<CodexRateLimitRecord> record = CodexRateLimits::cachedRateLimitEntry(file, reader_);
        if (!record) continue;
        RateLimitSnapshot known = CodexRateLimits::normalizedIgnoringExpiry(record->snapshot);
        if (std::optional<RateLimitSnapshot> current = known.current(now)) {
            keepLater(bestCurrent, record->date, *std::move(current));
        }
        if (known.primary || known.secondary) keepLater(bestKnown, record->date, std::move(known));
    }
    RateLimitTailCache::shared().prune(files);
    if (bestCurrent) return {.current = std::move(bestCurrent->snapshot), .awaitingReset = false};
    return {.current = std::nullopt,
            .awaitingReset =
                bestKnown && bestKnown->snapshot.awaitingFreshDataAfterReset(now, RateLimitSnapshot::resetHintGrace)};
}

std::optional<RateLimitSnapshot> CodexProvider::latestRateLimits() const {
    return latestRateLimits(Clock::now());
}

std::optional<RateLimitSnapshot> CodexProvider::latestRateLimits(Date now) const {
    return latestRateLimitState(now).current;
}

bool CodexProvider::latestRateLimitAwaitingReset(Date now) const {
    return latestRateLimitState(now).awaitingReset;
}

}  // namespace quorvane
