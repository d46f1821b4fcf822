#include "QuorvaneCore/providers/MuseSparkProvider.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "QuorvaneCore/ingest/FileCursor.h"
#include "QuorvaneCore/ingest/JSONLStreamReader.h"
#include "QuorvaneCore/model/Deduplicator.h"
#include "QuorvaneCore/platform/FileHandle.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/UTF8.h"
#include "QuorvaneCore/providers/detail/OpenCodeLogFields.h"
#include "QuorvaneCore/providers/detail/OpenCodeLogReader.h"
#include "QuorvaneCore/providers/detail/OpenCodeStore.h"
#include "QuorvaneCore/providers/detail/OpenCodeStorePaths.h"
#include "QuorvaneCore/providers/detail/ProviderModelNormalization.h"

namespace quorvane {
namespace {

constexpr std::string_view museSpark = "muse-spark";
constexpr JSONLStreamReader logReader{.chunkSize = 65536};

Date dateOf(std::int64_t milliseconds) noexcept {
    return Date{static_cast<double>(milliseconds) / 1000};
}

std::optional<std::string> textOf(const JSONValue& value) {
    const std::optional<std::string_view> text = value.string();
    if (!text) return std::nullopt;
    return std::string{*text};
}

UsageEvent eventOf(const OpenCodeMessageRow& message, std::optional<std::string> project) {
    UsageEvent event;
    event.messageId = message.messageID;
    event.requestId = message.sessionID;
    event.provider = ProviderID::MuseSpark;
    event.model = MuseSparkProvider::normalizedModelID(message.modelID);
    event.timestamp = dateOf(message.createdMillis);
    event.usage = message.usage;
    event.project = std::move(project);
    return event;
}

/// The events of the messages, with the time of the newest one. A failure takes the events away and leaves the time
/// that was reached.
DecodedFile decodeMessages(OpenCodeStore& store, std::int64_t createdAtOrAfterMillis) {
    DecodedFile decoded{.events = {}, .consumed = createdAtOrAfterMillis};
    const auto projects = store.projectIDsBySession();
    const auto projectOf = [&](const std::string& session) -> std::optional<std::string> {
        const auto found = projects.find(session);
        return found == projects.end() ? std::nullopt : found->second;
    };
    try {
        store.forEachAssistantMessage(createdAtOrAfterMillis, [&](const OpenCodeMessageRow& message) {
            if (message.createdMillis == 0) return;
            decoded.consumed = std::max(decoded.consumed, message.createdMillis);
            if (!MuseSparkProvider::isSparkModelObject(message.modelID, message.providerID)) return;
            if (message.usage.total() < 1) return;
            decoded.events.push_back(eventOf(message, projectOf(message.sessionID)));
        });
    } catch (const SQLiteError&) {
        decoded.events.clear();
    }
    return decoded;
}

/// For a database of an old version, whose messages tell nothing.
std::vector<UsageEvent> decodeSessions(OpenCodeStore& store) {
    std::vector<UsageEvent> events;
    store.forEachSession([&](const OpenCodeSessionRow& session) {
        const MuseSparkProvider::Model model = MuseSparkProvider::parseModelColumn(session.rawModel);
        if (!MuseSparkProvider::isSparkModelObject(model.id, model.providerID)) return;
        if (session.usage.total() < 1) return;
        UsageEvent& event = events.emplace_back();
        event.messageId = session.id;
        event.requestId = "opencode-db";
        event.provider = ProviderID::MuseSpark;
        event.model = MuseSparkProvider::normalizedModelID(model.id);
        event.timestamp = dateOf(session.timeCreatedMillis);
        event.usage = session.usage;
        event.project = session.projectID;
    });
    return events;
}

bool databaseNamesMuseSpark(const std::string& file) {
    bool found = false;
    try {
        OpenCodeStore::read(
            file, [&](OpenCodeStore& store) { found = store.containsSparkMessage() || store.containsSparkSession(); });
    } catch (const SQLiteError&) {
        found = false;
    }
    return found;
}

bool logNamesMuseSpark(const std::string& file) {
    constexpr std::size_t window = 262144;
    std::optional<FileHandle> handle = FileHandle::open(file);
    if (!handle) return false;
    std::string text(window, '\0');
    const std::optional<std::size_t> size = handle->read(text);
    if (!size) return false;
    text.resize(*size);
    return isUTF8(text) && MuseSparkProvider::isSparkModelID(text);
}

}  // namespace

MuseSparkProvider::MuseSparkProvider(std::optional<std::string> root)
    : root_{root ? *std::move(root) : OpenCodeStorePaths::defaultRoot()} {}

bool MuseSparkProvider::isAvailable() const {
    if (const auto database = OpenCodeStorePaths::database(root_)) return databaseNamesMuseSpark(*database);
    if (const auto log = OpenCodeStorePaths::log(root_)) return logNamesMuseSpark(*log);
    return false;
}

std::vector<UsageEvent> MuseSparkProvider::loadEvents() const {
    if (const auto database = OpenCodeStorePaths::database(root_)) {
        return Deduplicator::dedupe(decodeDatabase(*database));
    }
    if (const auto log = OpenCodeStorePaths::log(root_)) return OpenCodeLogReader::parse(*log, logReader).museSpark;
    return {};
}

std::vector<std::string> MuseSparkProvider::dataFiles() const {
    return OpenCodeStorePaths::dataFiles(root_);
}

ResetPolicy MuseSparkProvider::resetPolicy() const {
    const std::vector<std::string> files = dataFiles();
    const bool isDatabase = !files.empty() && OpenCodeStorePaths::isDatabase(files.front());
    return isDatabase ? ResetPolicy::Watermark : ResetPolicy::RereadWhole;
}

DecodedFile MuseSparkProvider::decodeFile(const std::string& file, std::int64_t offset) const {
    if (OpenCodeStorePaths::isDatabase(file)) return decodeDatabase(file, offset);
    const std::optional<FileCursor::Status> status = FileCursor::state(file);
    return {.events = OpenCodeLogReader::parse(file, logReader).museSpark, .consumed = status ? status->size : 0};
}

std::optional<Date> MuseSparkProvider::watermarkTimestamp(std::int64_t offset) const {
    return offset >= 1 ? std::optional{dateOf(offset)} : std::nullopt;
}

std::vector<UsageEvent> MuseSparkProvider::decodeDatabase(const std::string& file) {
    return decodeDatabase(file, 0).events;
}

DecodedFile MuseSparkProvider::decodeDatabase(const std::string& file, std::int64_t createdAtOrAfterMillis) {
    DecodedFile decoded;
    decoded.consumed = createdAtOrAfterMillis;
    try {
        OpenCodeStore::read(file, [&](OpenCodeStore& store) {
            decoded = decodeMessages(store, createdAtOrAfterMillis);
            const bool isComplete = !decoded.events.empty() || createdAtOrAfterMillis > 0;
            if (!isComplete) decoded.events = decodeSessions(store);
        });
    } catch (const SQLiteError&) {
        decoded.events.clear();
    }
    return decoded;
}

std::optional<UsageEvent> MuseSparkProvider::decode(const Fields& fields) {
    const std::string_view model = detail::openCodeLogModel(fields);
    if (!isSparkModelID(model)) return std::nullopt;
    std::optional<UsageEvent> event = detail::openCodeLogCall(fields);
    if (!event) return std::nullopt;
    event->provider = ProviderID::MuseSpark;
    event->model = normalizedModelID(model);
    return event;
}

bool MuseSparkProvider::isSparkModelID(std::optional<std::string_view> model) noexcept {
    return model && ProviderModelNormalization::containsIgnoringCase(*model, museSpark);
}

bool MuseSparkProvider::isSparkModelObject(std::optional<std::string_view> id,
                                           std::optional<std::string_view> providerID) noexcept {
    if (!id) return false;
    if (isSparkModelID(id)) return true;
    constexpr std::string_view vendor = "meta";
    const bool isOfVendor = providerID && providerID->size() == vendor.size() &&
                            ProviderModelNormalization::containsIgnoringCase(*providerID, vendor);
    return isOfVendor && ProviderModelNormalization::containsIgnoringCase(*id, "spark");
}

std::string MuseSparkProvider::normalizedModelID(std::optional<std::string_view> model) {
    return ProviderModelNormalization::strippingVendorPrefix(model, "muse-spark-1.1");
}

MuseSparkProvider::Model MuseSparkProvider::parseModelColumn(const std::optional<std::string>& column) {
    // Most columns are a plain name, which needs no parser.
    if (column && column->find('{') != std::string::npos) {
        JSONParser parser;
        const JSONValue document = parser.parse(*column);
        if (document.isObject()) return {.id = textOf(document["id"]), .providerID = textOf(document["providerID"])};
    }
    return {.id = column, .providerID = std::nullopt};
}

}  // namespace quorvane
