#include <filesystem>
#include <string>
#include <system_error>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/index/IndexTestSupport.h"

namespace quorvane {
namespace {

using testing::column;
using ::testing::ElementsAre;
using testing::event;
using testing::IndexFile;
using ::testing::IsEmpty;
using testing::legacyRow;
using testing::legacySchema;
using testing::schema;

// The file format, as SQLite keeps it: without "IF NOT EXISTS" and without the semicolon.
constexpr const char* cursorsTable =
    "CREATE TABLE cursors (\n"
    "  path TEXT PRIMARY KEY, size INTEGER NOT NULL, mtime REAL NOT NULL, offset INTEGER NOT NULL,\n"
    "  fingerprint TEXT NOT NULL DEFAULT '', ctime REAL NOT NULL DEFAULT 0,\n"
    "  provider TEXT NOT NULL DEFAULT '', parser_revision INTEGER NOT NULL DEFAULT 1\n"
    ") WITHOUT ROWID";
constexpr const char* eventsTable =
    "CREATE TABLE events (\n"
    "  provider TEXT NOT NULL, msg_id TEXT NOT NULL, req_id TEXT NOT NULL,\n"
    "  model TEXT NOT NULL, ts REAL NOT NULL, project TEXT,\n"
    "  input INTEGER NOT NULL, output INTEGER NOT NULL,\n"
    "  cache5m INTEGER NOT NULL, cache1h INTEGER NOT NULL, cache_read INTEGER NOT NULL,\n"
    "  path_id INTEGER,\n"
    "  PRIMARY KEY (provider, msg_id, req_id)\n"
    ") WITHOUT ROWID";
constexpr const char* pathsTable = "CREATE TABLE paths (id INTEGER PRIMARY KEY, path TEXT NOT NULL UNIQUE)";
constexpr const char* cursorsProviderIndex = "CREATE INDEX idx_cursors_provider ON cursors(provider)";
constexpr const char* pathIndex = "CREATE INDEX idx_events_path_id ON events(path_id)";
constexpr const char* scanIndex =
    "CREATE INDEX idx_events_scan\n"
    "  ON events(provider, ts, model, input, output, cache5m, cache1h, cache_read)";
constexpr const char* timeIndex = "CREATE INDEX idx_events_ts ON events(ts)";

const std::string indexNames = "SELECT name FROM sqlite_master WHERE type = 'index' AND sql IS NOT NULL ORDER BY name;";
const std::string cursorColumns = "SELECT name FROM pragma_table_info('cursors') ORDER BY cid;";
const std::string eventColumns = "SELECT name FROM pragma_table_info('events') ORDER BY cid;";

TEST(UsageIndexSchema, aNewFileHasExactlyTheTablesAndIndexesOfTheFormat) {
    const IndexFile file;
    const UsageIndex index{file.path};
    EXPECT_THAT(schema(file.path), ElementsAre(cursorsTable, eventsTable, cursorsProviderIndex, pathIndex, scanIndex,
                                               timeIndex, pathsTable));
    EXPECT_FALSE(index.hasLegacySourcePathColumn());
    EXPECT_FALSE(index.needsMigration());
    EXPECT_EQ(index.generation(), 0);
    EXPECT_EQ(index.path(), file.path);
    EXPECT_THAT(column(file.path, "PRAGMA journal_mode;"), ElementsAre("wal"));
}

TEST(UsageIndexSchema, aSecondConstructionChangesNothing) {
    const IndexFile file;
    const auto fill = [&] {
        UsageIndex index{file.path};
        const UsageEvent stored = event({.usage = {.input = 1}});
        index.ingest({&stored, 1}, "/log");
        index.setCursor("/log", 1, 2, 3, "f", 4, ProviderID::Claude, 1);
    };
    fill();
    const std::string bytes = file.home.read("usage.sqlite");
    static_cast<void>(UsageIndex{file.path});
    EXPECT_EQ(file.home.read("usage.sqlite"), bytes);
    static_cast<void>(UsageIndex{file.path});
    EXPECT_EQ(file.home.read("usage.sqlite"), bytes);
}

TEST(UsageIndexSchema, aSecondConstructionOfAnEmptyFileChangesNothing) {
    const IndexFile file;
    static_cast<void>(UsageIndex{file.path});
    const std::string bytes = file.home.read("usage.sqlite");
    static_cast<void>(UsageIndex{file.path});
    EXPECT_EQ(file.home.read("usage.sqlite"), bytes);
}

TEST(UsageIndexSchema, anOldFileWithRowsKeepsRowsColumnAndIndexesAtConstruction) {
    const IndexFile file;
    testing::execute(file.path, legacySchema + legacyRow("a", 10, "'/one'") + legacyRow("b", 20, "NULL"));
    const std::vector<std::string> before =
        column(file.path,
               "SELECT msg_id || ' ' || ts || ' ' || input || ' ' || quote(source_path) FROM events ORDER BY msg_id;");
    const UsageIndex index{file.path};
    EXPECT_TRUE(index.hasLegacySourcePathColumn());
    EXPECT_TRUE(index.needsMigration());
    EXPECT_EQ(column(file.path,
                     "SELECT msg_id || ' ' || ts || ' ' || input || ' ' || quote(source_path) FROM events ORDER BY "
                     "msg_id;"),
              before);
    EXPECT_THAT(column(file.path, "SELECT quote(path_id) FROM events;"), ElementsAre("NULL", "NULL"));
    EXPECT_THAT(column(file.path, indexNames),
                ElementsAre("idx_cursors_provider", "idx_events_provider_ts", "idx_events_source_path",
                            "idx_events_source_tail", "idx_events_ts"));
    EXPECT_THAT(column(file.path, "SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name;"),
                ElementsAre("cursors", "events", "paths"));
    EXPECT_THAT(column(file.path, "SELECT path FROM paths;"), IsEmpty());
}

TEST(UsageIndexSchema, anOldEmptyFileGetsTheFinalShapeAtConstruction) {
    const IndexFile file;
    testing::execute(file.path, legacySchema);
    const UsageIndex index{file.path};
    EXPECT_FALSE(index.hasLegacySourcePathColumn());
    EXPECT_THAT(column(file.path, eventColumns),
                ElementsAre("provider", "msg_id", "req_id", "model", "ts", "project", "input", "output", "cache5m",
                            "cache1h", "cache_read", "path_id"));
    EXPECT_THAT(column(file.path, "SELECT name FROM sqlite_master WHERE name LIKE 'idx_events_source%';"), IsEmpty());
    EXPECT_THAT(column(file.path,
                       "SELECT sql FROM sqlite_master WHERE name IN ('idx_events_scan', "
                       "'idx_events_path_id') ORDER BY name;"),
                ElementsAre(pathIndex, scanIndex));
}

// An index that the scan index replaces stands in the way of nothing; the migration drops it.
TEST(UsageIndexSchema, anOldEmptyFileStillHasItsProviderIndexUntilTheMigration) {
    const IndexFile file;
    testing::execute(file.path, legacySchema);
    UsageIndex index{file.path};
    EXPECT_TRUE(index.needsMigration());
    EXPECT_TRUE(index.migrateScanIndexIfNeeded());
    EXPECT_FALSE(index.needsMigration());
    EXPECT_THAT(column(file.path, indexNames),
                ElementsAre("idx_cursors_provider", "idx_events_path_id", "idx_events_scan", "idx_events_ts"));
}

TEST(UsageIndexSchema, oldCursorsGetTheMissingColumnsWithTheirDefaults) {
    const IndexFile file;
    testing::execute(file.path, std::string{legacySchema} + "INSERT INTO cursors VALUES ('/log', 100, 12.5, 90);");
    const UsageIndex index{file.path};
    EXPECT_THAT(column(file.path, cursorColumns),
                ElementsAre("path", "size", "mtime", "offset", "fingerprint", "ctime", "provider", "parser_revision"));
    const FileState expected{
        .size = 100, .mtime = 12.5, .offset = 90, .fingerprint = "", .ctime = 0, .provider = "", .parserRevision = 1};
    EXPECT_EQ(index.cursor("/log"), expected);
    EXPECT_THAT(index.cursorPaths(ProviderID::Claude), IsEmpty());
}

class UsageIndexOldCursors : public ::testing::TestWithParam<const char*> {};

// A version between the first and this one had some of the columns.
TEST_P(UsageIndexOldCursors, getTheColumnsThatAreMissing) {
    const IndexFile file;
    testing::execute(file.path, std::string{"CREATE TABLE cursors (path TEXT PRIMARY KEY, size INTEGER NOT NULL, mtime "
                                            "REAL NOT NULL, offset INTEGER NOT NULL"} +
                                    GetParam() + ") WITHOUT ROWID;");
    UsageIndex index{file.path};
    index.setCursor("/log", 1, 2, 3, "f", 4, ProviderID::Codex, 5);
    const FileState expected{
        .size = 1, .mtime = 2, .offset = 3, .fingerprint = "f", .ctime = 4, .provider = "codex", .parserRevision = 5};
    EXPECT_EQ(index.cursor("/log"), expected);
    EXPECT_EQ(column(file.path, cursorColumns).size(), 8U);
}
INSTANTIATE_TEST_SUITE_P(
    ByVersion, UsageIndexOldCursors,
    ::testing::Values("", ", fingerprint TEXT NOT NULL DEFAULT ''",
                      ", fingerprint TEXT NOT NULL DEFAULT '', ctime REAL NOT NULL DEFAULT 0",
                      ", fingerprint TEXT NOT NULL DEFAULT '', ctime REAL NOT NULL DEFAULT 0, provider TEXT NOT NULL "
                      "DEFAULT ''"),
    [](const auto& row) { return "with" + std::to_string(row.index) + "OfTheFour"; });

TEST(UsageIndexSchema, aFailureOfConstructionIsThrownAndNothingStaysOpen) {
    const IndexFile file;
    // A table of the name of an index: the schema cannot be completed.
    testing::execute(file.path, "CREATE TABLE idx_cursors_provider (x);");
    const std::size_t before = testing::openDescriptors();
    EXPECT_THROW(static_cast<void>(UsageIndex{file.path}), SQLiteError);
    EXPECT_THROW(static_cast<void>(UsageIndex{file.home.path("missing/usage.sqlite")}), SQLiteError);
    EXPECT_EQ(testing::openDescriptors(), before);
}

TEST(UsageIndexSchema, theDefaultFileLiesInTheSystemsFolderWhichIsCreated) {
    const testing::ScratchHome home;
    EXPECT_EQ(UsageIndex::defaultURL(), home.path("Library/Application Support/Quorvane/usage.sqlite"));
    EXPECT_TRUE(home.exists("Library/Application Support/Quorvane"));
    EXPECT_FALSE(home.exists("Library/Application Support/Quorvane/usage.sqlite"));
    const std::filesystem::perms mode =
        std::filesystem::status(home.path("Library/Application Support/Quorvane")).permissions();
    EXPECT_EQ(mode, std::filesystem::perms::owner_all);
    EXPECT_EQ(UsageIndex::defaultURL(), home.path("Library/Application Support/Quorvane/usage.sqlite"));
}

TEST(UsageIndexSchema, aFileWhereAFolderShouldBeFailsTheDefaultFile) {
    const testing::ScratchHome inTheWay;
    inTheWay.write("Library", "a file");
    EXPECT_THROW(static_cast<void>(UsageIndex::defaultURL()), std::system_error);
    const testing::ScratchHome deeper;
    deeper.write("Library/Application Support/Quorvane", "a file");
    EXPECT_THROW(static_cast<void>(UsageIndex::defaultURL()), std::system_error);
}

}  // namespace
}  // namespace quorvane
