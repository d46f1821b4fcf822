#include "tests/ingest/IngestTestSupport.h"

#include <array>
#include <filesystem>
#include <ostream>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include "QuorvaneCore/index/SQLiteStatement.h"
#include "QuorvaneCore/ingest/FileCursor.h"
#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/JSONParser.h"

namespace quorvane::testing {
namespace {

[[noreturn]] void fail(const std::string& operation) {
    throw std::system_error{errno, std::generic_category(), operation};
}

UsageEvent eventOf(std::string_view message, std::int64_t output, double when, ProviderID provider) {
    UsageEvent event;
    event.messageId = message;
    event.requestId = "r";
    event.provider = provider;
    event.model = "model";
    event.timestamp = Date{when};
    event.usage.output = output;
    return event;
}

std::optional<UsageEvent> decode(std::string_view line, ProviderID provider) {
    JSONParser parser;
    const JSONValue document = parser.parsePadded(line);
    const auto message = document["message"].string();
    if (!message) return std::nullopt;
    return eventOf(*message, JSONNumber::asInt(document["output"]), JSONNumber::asDouble(document["when"]).value_or(0),
                   provider);
}

std::string text(SQLiteStatement& row, std::int32_t column) {
    return row.text(column).value_or("NULL");
}

}  // namespace

OpenWatch::OpenWatch(const std::vector<std::string>& files) : descriptor_{::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)} {
    if (descriptor_ < 0) fail("inotify_init1");
    for (const std::string& file : files) {
        if (::inotify_add_watch(descriptor_, file.c_str(), IN_OPEN | IN_ACCESS) < 0) fail("watch " + file);
    }
}

OpenWatch::~OpenWatch() {
    ::close(descriptor_);
}

bool OpenWatch::hasSeenAnOpen() const {
    alignas(inotify_event) std::array<char, 4096> buffer{};
    bool seen = false;
    while (::read(descriptor_, buffer.data(), buffer.size()) > 0)
        seen = true;
    return seen;
}

std::size_t openDescriptors() {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator{"/proc/self/fd"})
        ++count;
    return count;
}

void setModificationTime(const std::string& file, std::int64_t seconds, std::int64_t nanoseconds) {
    const std::array<timespec, 2> times{timespec{0, UTIME_OMIT}, timespec{seconds, nanoseconds}};
    if (::utimensat(AT_FDCWD, file.c_str(), times.data(), 0) != 0) fail("utimensat " + file);
}

std::string logLine(std::string_view message, std::int64_t output, double when) {
    return fmt::format("{{\"message\":\"{}\",\"output\":{},\"when\":{}}}\n", message, output, when);
}

DecodedFile FakeProvider::decodeFile(const std::string& file, std::int64_t offset) const {
    decodes.push_back({file, offset});
    beforeDecode();
    DecodedFile decoded;
    decoded.consumed = JSONLStreamReader{}.read(file, offset, [&](std::string_view line) {
        if (auto event = decode(line, provider)) decoded.events.push_back(*std::move(event));
    });
    return decoded;
}

std::optional<Date> FakeProvider::watermarkTimestamp(std::int64_t offset) const {
    watermarksAsked.push_back(offset);
    return watermark;
}

IndexedHome::IndexedHome() {
    provider.files = {log};
}

Lines IndexedHome::rows() const {
    const auto database = SQLiteDatabase::openReadOnly(index->path());
    const auto select = database->prepare(
        "SELECT msg_id || ' ' || output, path FROM events LEFT JOIN paths ON paths.id = path_id ORDER BY msg_id");
    Lines rows;
    while (select->step()) {
        const std::string path = text(*select, 1);
        rows.push_back(text(*select, 0) + " " + path.substr(path.rfind('/') + 1));
    }
    return rows;
}

Lines IndexedHome::allRows(const std::string& indexPath) {
    const auto database = SQLiteDatabase::openReadOnly(indexPath);
    const auto select = database->prepare(
        "SELECT provider, msg_id, req_id, model, quote(ts), project, input, output, cache5m, cache1h, cache_read, path "
        "FROM events LEFT JOIN paths ON paths.id = path_id ORDER BY provider, msg_id, req_id");
    constexpr std::int32_t columns = 12;
    Lines rows;
    while (select->step()) {
        std::string row;
        for (std::int32_t column = 0; column < columns; ++column)
            row += text(*select, column) + "|";
        rows.push_back(row);
    }
    return rows;
}

void IndexedHome::plant(std::string_view message, double when) const {
    const std::vector<UsageEvent> events{eventOf(message, 1, when, provider.provider)};
    index->ingest(events, log);
}

void IndexedHome::execute(const std::string& script) const {
    SQLiteDatabase::open(index->path())->execute(script);
}

FileState IndexedHome::cursor(const std::string& file) const {
    const auto state = index->cursor(file);
    if (!state) throw std::runtime_error{"no cursor of " + file};
    return *state;
}

void IndexedHome::setCursor(const std::string& file, const std::function<void(FileState&)>& change) const {
    const auto status = FileCursor::state(file);
    if (!status) throw std::runtime_error{"no file " + file};
    FileState state{.size = status->size,
                    .mtime = status->mtime,
                    .offset = status->size,
                    .fingerprint = FileCursor::fingerprint(file, status->size),
                    .ctime = status->ctime,
                    .provider = std::string{rawName(provider.provider)},
                    .parserRevision = provider.revision};
    change(state);
    index->deleteCursor(file);
    index->setCursor(file, state.size, state.mtime, state.offset, state.fingerprint, state.ctime,
                     providerFromRawName(state.provider), state.parserRevision);
}

void IndexedHome::changeMode(const std::string& file) const {
    // The file system's clock ticks every few milliseconds only.
    const auto before = FileCursor::changeTime(file);
    mode_t mode = 0600;
    while (FileCursor::changeTime(file) == before) {
        mode ^= 0044;
        if (::chmod(file.c_str(), mode) != 0) fail("chmod " + file);
    }
}

}  // namespace quorvane::testing

namespace quorvane {

void PrintTo(const UsageIndexer::Stats& stats, std::ostream* stream) {
    *stream << "read " << stats.filesRead << ", skipped " << stats.filesSkipped << ", ingested " << stats.eventsIngested
            << ", fingerprints " << stats.fingerprintReads;
}

}  // namespace quorvane
