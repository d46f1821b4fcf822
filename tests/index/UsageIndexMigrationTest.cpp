#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/index/IndexTestSupport.h"

namespace quorvane {
namespace {

using testing::column;
using ::testing::ElementsAre;
using testing::event;
using testing::IndexFile;
using testing::legacyRow;
using testing::legacySchema;
using testing::schema;
using testing::storedEvents;
using ::testing::UnorderedElementsAre;

const std::string indexNames = "SELECT name FROM sqlite_master WHERE type = 'index' AND sql IS NOT NULL ORDER BY name;";

/// A file of an old version with rows of three files and one of none.
struct LegacyFile : IndexFile {
    LegacyFile() {
        testing::execute(path, legacySchema + legacyRow("a", 10, "'/one'") + legacyRow("b", 20, "'/two'") +
                                   legacyRow("c", 30, "'/one'") + legacyRow("d", 40, "NULL") +
                                   legacyRow("e", 50, "'/three'"));
    }
};

const std::vector<std::string> migratedRows{
    "claude 'a' 'r' 'model' 10.0 NULL 1 2 3 4 5 '/one'", "claude 'b' 'r' 'model' 20.0 NULL 1 2 3 4 5 '/two'",
    "claude 'c' 'r' 'model' 30.0 NULL 1 2 3 4 5 '/one'", "claude 'd' 'r' 'model' 40.0 NULL 1 2 3 4 5 NULL",
    "claude 'e' 'r' 'model' 50.0 NULL 1 2 3 4 5 '/three'"};

TEST(UsageIndexMigration, theScanIndexReplacesItsPredecessor) {
    const LegacyFile file;
    UsageIndex index{file.path};
    EXPECT_TRUE(index.migrateScanIndexIfNeeded());
    EXPECT_THAT(column(file.path, indexNames),
                ElementsAre("idx_cursors_provider", "idx_events_scan", "idx_events_source_path",
                            "idx_events_source_tail", "idx_events_ts"));
    EXPECT_FALSE(index.migrateScanIndexIfNeeded());
    EXPECT_TRUE(index.hasLegacySourcePathColumn());
    EXPECT_TRUE(index.needsMigration());
    EXPECT_EQ(index.generation(), 0);
}

TEST(UsageIndexMigration, aPredecessorBesideTheScanIndexIsDropped) {
    const IndexFile file;
    UsageIndex index{file.path};
    EXPECT_FALSE(index.migrateScanIndexIfNeeded());
    testing::execute(file.path, "CREATE INDEX idx_events_provider_ts ON events(provider, ts);");
    EXPECT_TRUE(index.needsMigration());
    EXPECT_TRUE(index.migrateScanIndexIfNeeded());
    EXPECT_THAT(column(file.path, indexNames),
                ElementsAre("idx_cursors_provider", "idx_events_path_id", "idx_events_scan", "idx_events_ts"));
}

TEST(UsageIndexMigration, theSourcePathColumnBecomesReferencesToPaths) {
    const LegacyFile file;
    UsageIndex index{file.path};
    EXPECT_TRUE(index.migrateSourcePathIndexIfNeeded());
    EXPECT_FALSE(index.hasLegacySourcePathColumn());
    EXPECT_EQ(storedEvents(file.path), migratedRows);
    EXPECT_THAT(column(file.path, "SELECT path FROM paths;"), UnorderedElementsAre("/one", "/three", "/two"));
    EXPECT_THAT(column(file.path, indexNames),
                ElementsAre("idx_cursors_provider", "idx_events_path_id", "idx_events_provider_ts", "idx_events_ts"));
    EXPECT_EQ(testing::integrity(file.path), "ok");
    EXPECT_FALSE(index.migrateSourcePathIndexIfNeeded());
    EXPECT_EQ(index.generation(), 0);
}

TEST(UsageIndexMigration, bothTogetherGiveTheShapeOfANewFile) {
    const LegacyFile file;
    UsageIndex index{file.path};
    index.migrateScanIndexIfNeeded();
    index.migrateSourcePathIndexIfNeeded();
    EXPECT_FALSE(index.needsMigration());
    const IndexFile fresh;
    static_cast<void>(UsageIndex{fresh.path});
    const std::string names = "SELECT type || ' ' || name FROM sqlite_master ORDER BY name;";
    EXPECT_EQ(column(file.path, names), column(fresh.path, names));
    for (const char* table : {"events", "cursors", "paths"}) {
        const std::string columns =
            std::string{
                "SELECT name || type || \"notnull\" || quote(dflt_value) || pk FROM "
                "pragma_table_info('"} +
            table + "');";
        EXPECT_EQ(column(file.path, columns), column(fresh.path, columns));
    }
}

TEST(UsageIndexMigration, aReferenceThatIsThereAlreadyStays) {
    const LegacyFile file;
    UsageIndex index{file.path};
    const UsageEvent fresh = event({.message = "f", .usage = {.input = 1}});
    index.ingest({&fresh, 1}, "/one");
    EXPECT_TRUE(index.migrateSourcePathIndexIfNeeded());
    EXPECT_THAT(column(file.path,
                       "SELECT msg_id FROM events WHERE path_id = (SELECT id FROM paths WHERE path = "
                       "'/one') ORDER BY msg_id;"),
                ElementsAre("a", "c", "f"));
    EXPECT_EQ(testing::number(file.path, "SELECT count(*) FROM paths;"), 3);
}

TEST(UsageIndexMigration, givesTheSpaceOfTheColumnBack) {
    const IndexFile file;
    std::string rows = "BEGIN;\n";
    for (int row = 0; row < 2000; ++row) {
        rows += legacyRow(std::to_string(row), row, "'/a/rather/long/path/of/a/log/in/a/folder/of/an/agent.jsonl'");
    }
    testing::execute(file.path, legacySchema + rows + "COMMIT;");
    UsageIndex index{file.path};
    const std::int64_t before = testing::number(file.path, "PRAGMA page_count;");
    EXPECT_TRUE(index.migrateSourcePathIndexIfNeeded());
    EXPECT_LT(testing::number(file.path, "PRAGMA page_count;"), before / 2);
    EXPECT_EQ(testing::number(file.path, "PRAGMA freelist_count;"), 0);
    EXPECT_EQ(index.eventCount(std::nullopt), 2000);
}

TEST(UsageIndexMigration, waitsForAnotherProcessToRelease) {
    const LegacyFile file;
    UsageIndex index{file.path};
    const auto other = SQLiteDatabase::open(file.path);
    other->execute("BEGIN IMMEDIATE;");
    std::thread release{[&] {
        std::this_thread::sleep_for(std::chrono::milliseconds{100});
        other->execute("COMMIT;");
    }};
    EXPECT_TRUE(index.migrateScanIndexIfNeeded());
    release.join();
    EXPECT_TRUE(index.migrateSourcePathIndexIfNeeded());
    EXPECT_EQ(storedEvents(file.path), migratedRows);
}

TEST(UsageIndexMigration, aScanIndexThatCannotBeBuiltLeavesTheFileAsItWas) {
    const LegacyFile file;
    UsageIndex index{file.path};
    testing::execute(file.path, "CREATE TABLE idx_events_scan (x);");
    const std::vector<std::string> before = schema(file.path);
    EXPECT_THROW(index.migrateScanIndexIfNeeded(), SQLiteError);
    EXPECT_EQ(schema(file.path), before);
    EXPECT_TRUE(index.needsMigration());
    testing::execute(file.path, "DROP TABLE idx_events_scan;");
    EXPECT_TRUE(index.migrateScanIndexIfNeeded());
    EXPECT_EQ(index.eventCount(std::nullopt), 5);
}

/// What stands in the way of one of the migration's statements, and the statement that takes it away again.
struct Obstacle {
    const char* name;
    const char* put;
    const char* remove;
};
class UsageIndexMigrationFailure : public ::testing::TestWithParam<Obstacle> {};

TEST_P(UsageIndexMigrationFailure, leavesTheFileAsItWasAndCanBeTriedAgain) {
    const LegacyFile file;
    UsageIndex index{file.path};
    testing::execute(file.path, GetParam().put);
    const std::vector<std::string> schemaBefore = schema(file.path);
    const std::vector<std::string> rowsBefore = testing::storedLegacyEvents(file.path);
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_THROW(index.migrateSourcePathIndexIfNeeded(), SQLiteError);
        EXPECT_TRUE(index.hasLegacySourcePathColumn());
        EXPECT_EQ(schema(file.path), schemaBefore);
        EXPECT_EQ(testing::storedLegacyEvents(file.path), rowsBefore);
        EXPECT_EQ(testing::number(file.path, "SELECT count(*) FROM paths;"), 0);
    }
    // The process works on with the old shape.
    EXPECT_THAT(index.sourcePaths(ProviderID::Claude), ElementsAre("/one", "/three", "/two"));
    testing::execute(file.path, GetParam().remove);
    EXPECT_TRUE(index.migrateSourcePathIndexIfNeeded());
    EXPECT_FALSE(index.hasLegacySourcePathColumn());
    EXPECT_EQ(storedEvents(file.path), migratedRows);
}
INSTANTIATE_TEST_SUITE_P(
    ByStatement, UsageIndexMigrationFailure,
    ::testing::Values(
        Obstacle{"internPaths",
                 "CREATE TRIGGER obstacle BEFORE INSERT ON paths WHEN NEW.path = '/three' BEGIN SELECT "
                 "RAISE(ABORT, 'no'); END;",
                 "DROP TRIGGER obstacle;"},
        Obstacle{"setReferences",
                 "CREATE TRIGGER obstacle BEFORE UPDATE ON events WHEN NEW.msg_id = 'c' BEGIN SELECT "
                 "RAISE(ABORT, 'no'); END;",
                 "DROP TRIGGER obstacle;"},
        // The statement ends the transaction itself; the rollback that follows has nothing to do.
        Obstacle{"setReferencesEndingTheTransaction",
                 "CREATE TRIGGER obstacle BEFORE UPDATE ON events WHEN NEW.msg_id = 'c' BEGIN SELECT "
                 "RAISE(ROLLBACK, 'no'); END;",
                 "DROP TRIGGER obstacle;"},
        Obstacle{"dropColumn", "CREATE INDEX obstacle ON events(source_path, ts);", "DROP INDEX obstacle;"},
        Obstacle{"createIndex", "CREATE TABLE idx_events_path_id (x);", "DROP TABLE idx_events_path_id;"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(UsageIndexMigration, eachWriteThatFailsLeavesTheFileWholeUntilTheDiskHasRoom) {
    const IndexFile file;
    std::string rows = "BEGIN;\n";
    for (int row = 0; row < 60; ++row)
        rows += legacyRow(std::to_string(row), row, "'/log/" + std::to_string(row % 7) + "'");
    testing::execute(file.path, legacySchema + rows + "COMMIT;");
    UsageIndex index{file.path};
    const std::vector<std::string> schemaBefore = schema(file.path);
    const std::vector<std::string> rowsBefore = testing::storedLegacyEvents(file.path);
    int failures = 0;
    for (std::uint64_t room = 0;; room += 2048) {
        ASSERT_LT(room, std::uint64_t{4} << 20U);
        try {
            const testing::FileSizeLimit limit{room};
            index.migrateSourcePathIndexIfNeeded();
            break;
        } catch (const SQLiteError&) {
            ++failures;
            ASSERT_TRUE(index.hasLegacySourcePathColumn());
            ASSERT_EQ(schema(file.path), schemaBefore);
            ASSERT_EQ(testing::storedLegacyEvents(file.path), rowsBefore);
        }
    }
    EXPECT_GT(failures, 3);
    EXPECT_FALSE(index.hasLegacySourcePathColumn());
    EXPECT_EQ(testing::integrity(file.path), "ok");
    EXPECT_EQ(testing::number(file.path,
                              "SELECT count(*) FROM events JOIN paths ON paths.id = path_id WHERE path = "
                              "'/log/' || (msg_id % 7);"),
              60);
}

TEST(UsageIndexMigration, aReaderOfTheOldShapeSeesNoHalfMigratedFile) {
    const LegacyFile file;
    UsageIndex index{file.path};
    const auto reader = SQLiteDatabase::openReadOnly(file.path);
    reader->execute("BEGIN;");
    EXPECT_THAT(column(*reader, "SELECT count(source_path) FROM events;"), ElementsAre("4"));
    EXPECT_TRUE(index.migrateSourcePathIndexIfNeeded());
    EXPECT_THAT(column(*reader, "SELECT count(source_path) FROM events;"), ElementsAre("4"));
    reader->execute("COMMIT;");
    EXPECT_THAT(column(*reader, "SELECT count(path_id) FROM events;"), ElementsAre("4"));
}

}  // namespace
}  // namespace quorvane
