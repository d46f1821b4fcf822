#include "QuorvaneCore/providers/OpenCodeProvider.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "QuorvaneCore/ingest/FileCursor.h"
#include "QuorvaneCore/model/Deduplicator.h"
#include "QuorvaneCore/platform/CheckedArithmetic.h"
#include "QuorvaneCore/platform/UTF8.h"
#include "QuorvaneCore/providers/MuseSparkProvider.h"
#include "QuorvaneCore/providers/detail/OpenCodeLogFields.h"
#include "QuorvaneCore/providers/detail/OpenCodeLogReader.h"
#include "QuorvaneCore/providers/detail/OpenCodeStore.h"
#include "QuorvaneCore/providers/detail/OpenCodeStorePaths.h"
#include "QuorvaneCore/providers/detail/ProviderModelNormalization.h"

namespace quorvane {
namespace {

constexpr std::string_view unnamedModel = "opencode";

std::int64_t remainder(std::int64_t whole, std::int64_t part) noexcept {
    return std::max<std::int64_t>(checkedSubtract(whole, part), 0);
}

TokenUsage without(const TokenUsage& usage, const TokenUsage& part) noexcept {
    return {.input = remainder(usage.input, part.input),
            .output = remainder(usage.output, part.output),
            .cacheCreate5m = remainder(usage.cacheCreate5m, part.cacheCreate5m),
            .cacheRead = remainder(usage.cacheRead, part.cacheRead)};
}

/// The column as a JSON object's "id" if it is one, in which a letter may be escaped, and as it stands.
bool namesMuseSpark(const std::optional<std::string>& column) {
    if (!column) return false;
    return MuseSparkProvider::isSparkModelID(MuseSparkProvider::parseModelColumn(column).id) ||
           MuseSparkProvider::isSparkModelID(column);
}

/// A session's row holds the sum of all its messages; `sparkTotals` is what Muse Spark's messages used.
std::optional<UsageEvent> eventOf(const OpenCodeSessionRow& session,
                                  const std::unordered_map<std::string, TokenUsage>& sparkTotals) {
    const auto spark = sparkTotals.find(session.id);
    const TokenUsage usage = spark == sparkTotals.end() ? session.usage : without(session.usage, spark->second);
    if (usage.total() < 1 || namesMuseSpark(session.rawModel)) return std::nullopt;
    UsageEvent event;
    event.messageId = session.id;
    event.requestId = "opencode-db";
    event.provider = ProviderID::Opencode;
    event.model = OpenCodeProvider::modelID(session.rawModel);
    event.timestamp = Date{static_cast<double>(session.timeCreatedMillis) / 1000};
    event.usage = usage;
    event.project = session.projectID;
    return event;
}

std::vector<UsageEvent> eventsOf(OpenCodeStore& store) {
    const std::unordered_map<std::string, TokenUsage> sparkTotals = store.museSparkMessageTotals();
    std::vector<UsageEvent> events;
    store.forEachSession([&](const OpenCodeSessionRow& session) {
        if (auto event = eventOf(session, sparkTotals)) events.push_back(*std::move(event));
    });
    return events;
}

}  // namespace

OpenCodeProvider::OpenCodeProvider(std::optional<std::string> root)
    : root_{root ? *std::move(root) : OpenCodeStorePaths::defaultRoot()} {}

std::vector<std::string> OpenCodeProvider::dataFiles() const {
    return OpenCodeStorePaths::dataFiles(root_);
}

bool OpenCodeProvider::canTailAppend() const {
    const std::vector<std::string> files = dataFiles();
    return files.empty() || !OpenCodeStorePaths::isDatabase(files.front());
}

std::vector<UsageEvent> OpenCodeProvider::loadEvents() const {
    if (const auto database = OpenCodeStorePaths::database(root_)) {
        return Deduplicator::dedupe(decodeDatabase(*database));
    }
    if (const auto log = OpenCodeStorePaths::log(root_)) return OpenCodeLogReader::parse(*log, reader_).opencode;
    return {};
}

DecodedFile OpenCodeProvider::decodeFile(const std::string& file, std::int64_t offset) const {
    if (OpenCodeStorePaths::isDatabase(file)) {
        // Asked first: of a database that grows meanwhile, more may have been read than is said, and never less.
        const std::optional<FileCursor::Status> status = FileCursor::state(file);
        return {.events = decodeDatabase(file), .consumed = status ? status->size : 0};
    }
    DecodedFile decoded = parseUsage(file, offset, reader_);
    decoded.events = Deduplicator::dedupe(decoded.events);
    return decoded;
}

DecodedFile OpenCodeProvider::parseUsage(const std::string& file, std::int64_t from, const JSONLStreamReader& reader) {
    DecodedFile decoded;
    decoded.consumed = reader.read(file, from, [&](std::string_view line) {
        if (!detail::mayTellOfTokens(line) || !isUTF8(line)) return;
        if (auto event = decode(parseFields(line))) decoded.events.push_back(*std::move(event));
    });
    return decoded;
}

std::vector<UsageEvent> OpenCodeProvider::decodeDatabase(const std::string& file) {
    std::vector<UsageEvent> events;
    try {
        OpenCodeStore::read(file, [&](OpenCodeStore& store) { events = eventsOf(store); });
    } catch (const SQLiteError&) {
        events.clear();
    }
    return events;
}

OpenCodeProvider::Fields OpenCodeProvider::parseFields(std::string_view line) {
    return detail::parseOpenCodeLogFields(line);
}

std::optional<UsageEvent> OpenCodeProvider::decode(const Fields& fields) {
    const std::string_view model = detail::openCodeLogModel(fields);
    if (MuseSparkProvider::isSparkModelID(model)) return std::nullopt;
    std::optional<UsageEvent> event = detail::openCodeLogCall(fields);
    if (!event) return std::nullopt;
    event->provider = ProviderID::Opencode;
    event->model = ProviderModelNormalization::strippingVendorPrefix(model, unnamedModel);
    return event;
}

std::string OpenCodeProvider::modelID(const std::optional<std::string>& fromSessionColumn) {
    const std::optional<std::string> id = MuseSparkProvider::parseModelColumn(fromSessionColumn).id;
    const bool hasID = id && !id->empty();
    return ProviderModelNormalization::strippingVendorPrefix(hasID ? id : fromSessionColumn, unnamedModel);
}

}  // namespace quorvane
