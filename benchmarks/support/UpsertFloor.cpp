#include "benchmarks/support/UpsertFloor.h"

#include <memory>
#include <stdexcept>

#include <sqlite3.h>

#include "QuorvaneCore/model/ProviderID.h"

namespace quorvane::benchmarks {
namespace {

constexpr const char* schema =
    "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL;"
    "CREATE TABLE events (provider TEXT NOT NULL, msg_id TEXT NOT NULL, req_id TEXT NOT NULL, model TEXT NOT NULL, "
    "ts REAL NOT NULL, project TEXT, input INTEGER NOT NULL, output INTEGER NOT NULL, cache5m INTEGER NOT NULL, "
    "cache1h INTEGER NOT NULL, cache_read INTEGER NOT NULL, path_id INTEGER, "
    "PRIMARY KEY (provider, msg_id, req_id)) WITHOUT ROWID;"
    "CREATE INDEX idx_events_ts ON events(ts);"
    "CREATE INDEX idx_events_scan ON events(provider, ts, model, input, output, cache5m, cache1h, cache_read);"
    "CREATE INDEX idx_events_path_id ON events(path_id);";

constexpr const char* upsert =
    "INSERT INTO events (provider, msg_id, req_id, model, ts, project, input, output, cache5m, cache1h, cache_read, "
    "path_id) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12) "
    "ON CONFLICT(provider, msg_id, req_id) DO UPDATE SET model=excluded.model, ts=excluded.ts, "
    "project=excluded.project, input=excluded.input, output=excluded.output, cache5m=excluded.cache5m, "
    "cache1h=excluded.cache1h, cache_read=excluded.cache_read, path_id=coalesce(excluded.path_id, events.path_id) "
    "WHERE excluded.output > events.output OR (excluded.output = events.output AND (excluded.input + "
    "excluded.output + excluded.cache5m + excluded.cache1h + excluded.cache_read) > (events.input + events.output + "
    "events.cache5m + events.cache1h + events.cache_read));";

struct Close {
    void operator()(sqlite3* handle) const noexcept { ::sqlite3_close_v2(handle); }
    void operator()(sqlite3_stmt* statement) const noexcept { ::sqlite3_finalize(statement); }
};
using Handle = std::unique_ptr<sqlite3, Close>;
using Statement = std::unique_ptr<sqlite3_stmt, Close>;

void check(int result) {
    if (result != SQLITE_OK && result != SQLITE_DONE) throw std::runtime_error{::sqlite3_errstr(result)};
}

void bindText(sqlite3_stmt* statement, int index, std::string_view text) {
    check(::sqlite3_bind_text(statement, index, text.data(), static_cast<int>(text.size()), SQLITE_STATIC));
}

void store(sqlite3_stmt* statement, const UsageEvent& event, std::int64_t file) {
    bindText(statement, 1, rawName(event.provider));
    bindText(statement, 2, event.messageId);
    bindText(statement, 3, event.requestId);
    bindText(statement, 4, event.model);
    check(::sqlite3_bind_double(statement, 5, event.timestamp.secondsSince1970));
    if (event.project) bindText(statement, 6, *event.project);
    check(::sqlite3_bind_int64(statement, 7, event.usage.input));
    check(::sqlite3_bind_int64(statement, 8, event.usage.output));
    check(::sqlite3_bind_int64(statement, 9, event.usage.cacheCreate5m));
    check(::sqlite3_bind_int64(statement, 10, event.usage.cacheCreate1h));
    check(::sqlite3_bind_int64(statement, 11, event.usage.cacheRead));
    check(::sqlite3_bind_int64(statement, 12, file));
    check(::sqlite3_step(statement));
    check(::sqlite3_reset(statement));
}

}  // namespace

void UpsertFloor::run(const std::string& database, const EventsByFile& events) {
    sqlite3* opened = nullptr;
    const int result = ::sqlite3_open(database.c_str(), &opened);
    const Handle handle{opened};
    check(result);
    const auto execute = [&](const char* sql) { check(::sqlite3_exec(handle.get(), sql, nullptr, nullptr, nullptr)); };
    execute(schema);
    sqlite3_stmt* prepared = nullptr;
    check(::sqlite3_prepare_v2(handle.get(), upsert, -1, &prepared, nullptr));
    const Statement statement{prepared};
    std::int64_t file = 0;
    for (const std::vector<UsageEvent>& ofFile : events) {
        ++file;
        if (ofFile.empty()) continue;
        execute("BEGIN;");
        for (const UsageEvent& event : ofFile)
            store(statement.get(), event, file);
        execute("COMMIT;");
    }
}

}  // namespace quorvane::benchmarks
