#pragma once
#include <csignal>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/resource.h>

#include "QuorvaneCore/index/SQLiteDatabase.h"
#include "QuorvaneCore/index/SQLiteStatement.h"
#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/platform/ISODate.h"
#include "tests/support/ScratchHome.h"

namespace quorvane::testing {

/// The instant of an ISO 8601 text, with or without a fraction; ends the test program if it is none.
[[nodiscard]] Date at(std::string_view text);

/// What the tests say of an event; the rest is the same for all.
struct EventFields {
    std::string message{"message"};
    std::string request{"request"};
    ProviderID provider{ProviderID::Claude};
    std::string model{"model"};
    Date when{1000};
    TokenUsage usage{};
    std::optional<std::string> project{};
};
[[nodiscard]] UsageEvent event(EventFields fields);

/// The texts of the first column of all rows; NULL is "NULL".
[[nodiscard]] std::vector<std::string> column(SQLiteDatabase& database, const std::string& sql);
/// The same through a connection of its own, which sees what has been committed.
[[nodiscard]] std::vector<std::string> column(const std::string& path, const std::string& sql);
/// The number in the first column of the first row.
[[nodiscard]] std::int64_t number(const std::string& path, const std::string& sql);
/// Runs a script through a connection of its own.
void execute(const std::string& path, const std::string& script);

/// Every event with all its columns and the text of its path, in the order of the key.
[[nodiscard]] std::vector<std::string> storedEvents(const std::string& path);
/// The same of a file that still has the column `source_path`, which comes last.
[[nodiscard]] std::vector<std::string> storedLegacyEvents(const std::string& path);
/// The statements of all tables and indexes, by name.
[[nodiscard]] std::vector<std::string> schema(const std::string& path);
/// "ok" for a file without damage.
[[nodiscard]] std::string integrity(const std::string& path);

/// The files this process has open.
[[nodiscard]] std::size_t openDescriptors();

/// A file as old versions left it: events with the full path of their file, cursors of four columns, a table of daily
/// sums, and the indexes of the time. No events, no cursors.
inline constexpr const char* legacySchema =
    "CREATE TABLE events (\n"
    "  provider TEXT NOT NULL, msg_id TEXT NOT NULL, req_id TEXT NOT NULL,\n"
    "  model TEXT NOT NULL, ts REAL NOT NULL, project TEXT,\n"
    "  input INTEGER NOT NULL, output INTEGER NOT NULL,\n"
    "  cache5m INTEGER NOT NULL, cache1h INTEGER NOT NULL, cache_read INTEGER NOT NULL,\n"
    "  source_path TEXT,\n"
    "  PRIMARY KEY (provider, msg_id, req_id)\n"
    ") WITHOUT ROWID;\n"
    "CREATE INDEX idx_events_ts ON events(ts);\n"
    "CREATE INDEX idx_events_project_ts ON events(project, ts);\n"
    "CREATE INDEX idx_events_provider_ts ON events(provider, ts);\n"
    "CREATE INDEX idx_events_source_path ON events(source_path);\n"
    "CREATE INDEX idx_events_source_tail ON events(substr(source_path, -24));\n"
    "CREATE TABLE daily (day TEXT PRIMARY KEY, cost REAL);\n"
    "INSERT INTO daily VALUES ('2025-01-01', 1.5);\n"
    "CREATE TABLE cursors (\n"
    "  path TEXT PRIMARY KEY, size INTEGER NOT NULL, mtime REAL NOT NULL, offset INTEGER NOT NULL\n"
    ") WITHOUT ROWID;\n";

/// An event of the old shape; `path` is an SQL expression.
[[nodiscard]] std::string legacyRow(std::string_view message, double when, std::string_view path);

/// While it lives, no write of this process goes beyond `bytes` in any file: what a full disk does to a file that
/// grows. The signal that comes with such a write is ignored.
class FileSizeLimit {
public:
    explicit FileSizeLimit(std::uint64_t bytes);
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit();

private:
    rlimit old_{};
    void (*oldHandler_)(int);
};

/// Prices that make costs easy to tell: "plain" costs 1 a token of input and 2 of output; "tiered" the same, and ten
/// times that above the threshold; "cached" has prices of its own for the cache; "tenth" costs 0.1, "free" nothing.
[[nodiscard]] CostCalculator testCalculator();

/// From here on every scan of the events fails at its first row, with the message "integer overflow".
void breakScans(const std::string& path);

/// A home of the test's own and the path of an index file in it, which is not there yet.
struct IndexFile {
    explicit IndexFile(const std::string& timeZone = "UTC") : home{timeZone}, path{home.path("usage.sqlite")} {}
    ScratchHome home;
    std::string path;
};

}  // namespace quorvane::testing
