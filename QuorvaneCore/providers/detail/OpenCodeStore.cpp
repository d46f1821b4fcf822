#include "QuorvaneCore/providers/detail/OpenCodeStore.h"

#include <array>
#include <string_view>
#include <utility>

#include "QuorvaneCore/index/SQLiteStatement.h"
#include "QuorvaneCore/ingest/FileCursor.h"
#include "QuorvaneCore/platform/CheckedArithmetic.h"
#include "QuorvaneCore/platform/FileHandle.h"
#include "QuorvaneCore/platform/FileStatus.h"

namespace quorvane {
namespace {

constexpr const char* sessionsSQL =
    "SELECT id, tokens_input, tokens_output, tokens_reasoning, tokens_cache_read,\n"
    "       tokens_cache_write, model, time_created, project_id\n"
    "FROM session";

constexpr const char* projectsSQL = "SELECT id, project_id FROM session";

constexpr const char* sparkMessageSQL =
    "SELECT 1 FROM message\n"
    "WHERE json_extract(data, '$.role') = 'assistant'\n"
    "  AND lower(coalesce(json_extract(data, '$.modelID'), '')) LIKE '%muse-spark%'\n"
    "LIMIT 1";

constexpr const char* sparkSessionSQL =
    "SELECT 1 FROM session\n"
    "WHERE lower(coalesce(model, '')) LIKE '%muse-spark%'\n"
    "LIMIT 1";

constexpr const char* sparkTotalsSQL =
    "SELECT session_id,\n"
    "       coalesce(sum(json_extract(data, '$.tokens.input')), 0),\n"
    "       coalesce(sum(json_extract(data, '$.tokens.output')), 0)\n"
    "         + coalesce(sum(json_extract(data, '$.tokens.reasoning')), 0),\n"
    "       coalesce(sum(json_extract(data, '$.tokens.cache.write')), 0),\n"
    "       coalesce(sum(json_extract(data, '$.tokens.cache.read')), 0)\n"
    "FROM message\n"
    "WHERE json_extract(data, '$.role') = 'assistant'\n"
    "  AND lower(coalesce(json_extract(data, '$.modelID'), '')) LIKE '%muse-spark%'\n"
    "GROUP BY session_id";

constexpr const char* messagesSQL =
    "SELECT session_id, id,\n"
    "       json_extract(data, '$.time.created'),\n"
    "       json_extract(data, '$.modelID'),\n"
    "       json_extract(data, '$.providerID'),\n"
    "       json_extract(data, '$.tokens.input'),\n"
    "       json_extract(data, '$.tokens.output'),\n"
    "       json_extract(data, '$.tokens.reasoning'),\n"
    "       json_extract(data, '$.tokens.cache.read'),\n"
    "       json_extract(data, '$.tokens.cache.write')\n"
    "FROM message\n"
    "WHERE json_extract(data, '$.role') = 'assistant'\n"
    "  AND json_extract(data, '$.time.created') >= ?1";

/// The beginning of every SQLite file: a text with its NUL byte, the page size, and whether the file is in write-ahead
/// mode, once for writers and once for readers.
constexpr std::string_view magic{"SQLite format 3", 16};
constexpr std::size_t headerSize = 100;
constexpr std::size_t readVersion = 19;
constexpr char writeAhead = 2;

/// What lies on the disk at one moment.
struct Sight {
    FileCursor::Status database;
    bool isWriteAhead = false;
    bool hasLog = false;           ///< a "-wal" file, empty or not
    bool hasLogContent = false;    ///< and something in it
    bool hasSharedMemory = false;  ///< a "-shm" file

    friend bool operator==(const Sight&, const Sight&) = default;
};

/// Absent for anything but a file that begins as a database does. An empty file, which SQLite takes for an empty
/// database, is none either: opening it makes SQLite remove a log or journal beside it.
std::optional<Sight> lookAt(const std::string& path) {
    Sight sight;
    const std::optional<FileCursor::Status> status = FileCursor::state(path);
    if (!status) return std::nullopt;
    sight.database = *status;
    std::optional<FileHandle> file = FileHandle::open(path);
    std::array<char, headerSize> header{};
    if (!file || file->read(header) != headerSize) return std::nullopt;
    if (std::string_view{header.data(), magic.size()} != magic) return std::nullopt;
    sight.isWriteAhead = header.at(readVersion) == writeAhead;
    if (const std::optional<FileStatus> log = FileStatus::of(path + "-wal")) {
        sight.hasLog = true;
        sight.hasLogContent = log->size > 0;
    }
    sight.hasSharedMemory = FileStatus::of(path + "-shm").has_value();
    return sight;
}

/// In write-ahead mode even a reader makes the two files beside the database, unless it is told that nothing changes.
/// Without a log that is nearly true: all is in the file, and a writer that comes begins with a log. Where the two
/// files are, or in another mode, an ordinary connection makes none and keeps the rules that all its users keep.
bool canBeReadAsItLies(const Sight& sight) noexcept {
    return sight.isWriteAhead && !sight.hasLogContent && !(sight.hasLog && sight.hasSharedMemory);
}

/// A column that is NULL, and no empty text.
bool isNull(std::string_view column) noexcept {
    return column.data() == nullptr;
}

/// Keeps the memory of the text that was there; there are many rows.
void assign(std::optional<std::string>& text, std::string_view column) {
    if (isNull(column)) {
        text.reset();
    } else if (text) {
        *text = column;
    } else {
        text.emplace(column);
    }
}

}  // namespace

void OpenCodeStore::read(const std::string& path, FunctionView<void(OpenCodeStore&)> body) {
    constexpr int attempts = 3;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const std::optional<Sight> before = lookAt(path);
        if (!before) throw SQLiteError{SQLiteError::Kind::Open, "no database at " + path};
        if (!canBeReadAsItLies(*before)) break;
        // Nothing kept writers away, so what was read, or the failure to, counts only if there was none.
        try {
            OpenCodeStore store{SQLiteDatabase::openImmutable(path)};
            body(store);
            if (lookAt(path) == before) return;
        } catch (const SQLiteError&) {
            if (lookAt(path) == before) throw;
        }
    }
    OpenCodeStore store{SQLiteDatabase::openReadOnly(path)};
    body(store);
}

/// The transaction begins with its first look at the database; without that one, each statement would see rows of its
/// own moment. It ends with the connection.
OpenCodeStore::OpenCodeStore(std::shared_ptr<SQLiteDatabase> database) : database_{std::move(database)} {
    database_->execute("BEGIN;");
    database_->prepare("SELECT 1 FROM sqlite_master LIMIT 1;")->run();
}

bool OpenCodeStore::hasRow(const char* sql) {
    try {
        return database_->prepare(sql)->step();
    } catch (const SQLiteError&) {
        return false;
    }
}

bool OpenCodeStore::containsSparkMessage() {
    return hasRow(sparkMessageSQL);
}

bool OpenCodeStore::containsSparkSession() {
    return hasRow(sparkSessionSQL);
}

std::unordered_map<std::string, std::optional<std::string>> OpenCodeStore::projectIDsBySession() {
    std::unordered_map<std::string, std::optional<std::string>> projects;
    try {
        const auto row = database_->prepare(projectsSQL);
        while (row->step()) {
            if (std::optional<std::string> session = row->text(0)) projects[*std::move(session)] = row->text(1);
        }
    } catch (const SQLiteError&) {
        projects.clear();
    }
    return projects;
}

std::unordered_map<std::string, TokenUsage> OpenCodeStore::museSparkMessageTotals() {
    std::unordered_map<std::string, TokenUsage> totals;
    try {
        const auto row = database_->prepare(sparkTotalsSQL);
        while (row->step()) {
            std::optional<std::string> session = row->text(0);
            if (!session) continue;
            totals[*std::move(session)] = {.input = row->integer(1),
                                           .output = row->integer(2),
                                           .cacheCreate5m = row->integer(3),
                                           .cacheRead = row->integer(4)};
        }
    } catch (const SQLiteError&) {
        totals.clear();
    }
    return totals;
}

void OpenCodeStore::forEachSession(FunctionView<void(const OpenCodeSessionRow&)> visit) {
    const auto row = database_->prepare(sessionsSQL);
    OpenCodeSessionRow session;
    while (row->step()) {
        std::optional<std::string> id = row->text(0);
        if (!id) continue;
        session.id = *std::move(id);
        session.usage = {.input = row->integer(1),
                         .output = checkedAdd(row->integer(2), row->integer(3)),
                         .cacheCreate5m = row->integer(5),
                         .cacheRead = row->integer(4)};
        session.rawModel = row->text(6);
        session.timeCreatedMillis = row->integer(7);
        session.projectID = row->text(8);
        visit(session);
    }
}

void OpenCodeStore::forEachAssistantMessage(std::int64_t createdAtOrAfterMillis,
                                            FunctionView<void(const OpenCodeMessageRow&)> visit) {
    const auto row = database_->prepare(messagesSQL);
    row->bind(1, createdAtOrAfterMillis);
    OpenCodeMessageRow message;
    while (row->step()) {
        const std::string_view session = row->textView(0);
        const std::string_view id = row->textView(1);
        if (isNull(session) || isNull(id)) continue;
        message.sessionID = session;
        message.messageID = id;
        message.createdMillis = row->integer(2);
        assign(message.modelID, row->textView(3));
        assign(message.providerID, row->textView(4));
        message.usage = {.input = row->integer(5),
                         .output = checkedAdd(row->integer(6), row->integer(7)),
                         .cacheCreate5m = row->integer(9),
                         .cacheRead = row->integer(8)};
        visit(message);
    }
}

}  // namespace quorvane
