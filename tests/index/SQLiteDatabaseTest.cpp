#include <chrono>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/index/SQLiteDatabase.h"
#include "tests/index/IndexTestSupport.h"

namespace quorvane {
namespace {

using testing::column;
using ::testing::ElementsAre;
using testing::IndexFile;
using ::testing::IsEmpty;
using testing::openDescriptors;
using ::testing::StartsWith;

/// The error that `work` throws; the test fails if it throws none.
SQLiteError errorOf(const std::function<void()>& work) {
    try {
        work();
    } catch (const SQLiteError& error) {
        return error;
    }
    ADD_FAILURE() << "nothing was thrown";
    return SQLiteError{SQLiteError::Kind::Open, ""};
}

TEST(SQLiteError, describesItselfByItsKindAndTheMessage) {
    EXPECT_STREQ((SQLiteError{SQLiteError::Kind::Open, "m"}.what()), "sqlite open: m");
    EXPECT_STREQ((SQLiteError{SQLiteError::Kind::Prepare, "m"}.what()), "sqlite prepare: m");
    EXPECT_STREQ((SQLiteError{SQLiteError::Kind::Step, "m"}.what()), "sqlite step: m");
    EXPECT_EQ((SQLiteError{SQLiteError::Kind::Step, "m"}.message()), "m");
    EXPECT_EQ((SQLiteError{SQLiteError::Kind::Step, "m"}.kind()), SQLiteError::Kind::Step);
}

TEST(SQLiteDatabase, openCreatesTheFileAndSetsTheConnectionUp) {
    const IndexFile file;
    const auto database = SQLiteDatabase::open(file.path);
    EXPECT_TRUE(file.home.exists("usage.sqlite"));
    EXPECT_THAT(column(*database, "PRAGMA journal_mode;"), ElementsAre("wal"));
    EXPECT_THAT(column(*database, "PRAGMA synchronous;"), ElementsAre("1"));
    EXPECT_THAT(column(*database, "PRAGMA busy_timeout;"), ElementsAre("5000"));
}

TEST(SQLiteDatabase, openInAFolderThatIsNotThereThrowsOpen) {
    const IndexFile file;
    const std::size_t before = openDescriptors();
    const SQLiteError error =
        errorOf([&] { static_cast<void>(SQLiteDatabase::open(file.home.path("missing/usage.sqlite"))); });
    EXPECT_EQ(error.kind(), SQLiteError::Kind::Open);
    EXPECT_THAT(error.what(), StartsWith("sqlite open: "));
    EXPECT_EQ(error.message(), "unable to open database file");
    EXPECT_FALSE(file.home.exists("missing"));
    EXPECT_EQ(openDescriptors(), before);
}

TEST(SQLiteDatabase, openOfAFileThatIsNoDatabaseThrowsStepAndLeavesItAlone) {
    const IndexFile file;
    const std::string text(5000, 'x');
    file.home.write("usage.sqlite", text);
    const std::size_t before = openDescriptors();
    const SQLiteError error = errorOf([&] { static_cast<void>(SQLiteDatabase::open(file.path)); });
    EXPECT_EQ(error.kind(), SQLiteError::Kind::Step);
    EXPECT_EQ(error.message(), "file is not a database");
    EXPECT_EQ(file.home.read("usage.sqlite"), text);
    EXPECT_EQ(openDescriptors(), before);
}

TEST(SQLiteDatabase, openReadOnlyOfAMissingFileThrowsOpenAndCreatesNothing) {
    const IndexFile file;
    const SQLiteError error = errorOf([&] { static_cast<void>(SQLiteDatabase::openReadOnly(file.path)); });
    EXPECT_EQ(error.kind(), SQLiteError::Kind::Open);
    EXPECT_THAT(error.what(), StartsWith("sqlite open: "));
    EXPECT_TRUE(std::filesystem::is_empty(file.home.path()));
}

TEST(SQLiteDatabase, openReadOnlyNeitherWritesNorChangesTheJournalMode) {
    const IndexFile file;
    testing::execute(file.path, "CREATE TABLE t (x); INSERT INTO t VALUES (1); PRAGMA journal_mode=DELETE;");
    const std::string bytes = file.home.read("usage.sqlite");
    {
        const auto database = SQLiteDatabase::openReadOnly(file.path);
        EXPECT_THAT(column(*database, "PRAGMA journal_mode;"), ElementsAre("delete"));
        EXPECT_THAT(column(*database, "PRAGMA busy_timeout;"), ElementsAre("5000"));
        EXPECT_THAT(column(*database, "SELECT x FROM t;"), ElementsAre("1"));
        const SQLiteError error = errorOf([&] { database->execute("INSERT INTO t VALUES (2);"); });
        EXPECT_EQ(error.kind(), SQLiteError::Kind::Step);
        EXPECT_EQ(error.message(), "attempt to write a readonly database");
    }
    EXPECT_EQ(file.home.read("usage.sqlite"), bytes);
}

TEST(SQLiteDatabase, executeRunsSeveralStatementsUpToTheFirstThatFails) {
    const IndexFile file;
    const auto database = SQLiteDatabase::open(file.path);
    database->execute("CREATE TABLE t (x);\nINSERT INTO t VALUES (1);\nINSERT INTO t VALUES (2);");
    EXPECT_THROW(database->execute("INSERT INTO t VALUES (3); INSERT INTO u VALUES (4); INSERT INTO t VALUES (5);"),
                 SQLiteError);
    EXPECT_THAT(column(*database, "SELECT x FROM t ORDER BY x;"), ElementsAre("1", "2", "3"));
}

TEST(SQLiteDatabase, aSyntaxErrorIsPrepareInPrepareAndStepInExecute) {
    const IndexFile file;
    const auto database = SQLiteDatabase::open(file.path);
    const SQLiteError prepared = errorOf([&] { static_cast<void>(database->prepare("SELEKT 1;")); });
    EXPECT_EQ(prepared.kind(), SQLiteError::Kind::Prepare);
    EXPECT_STREQ(prepared.what(), "sqlite prepare: near \"SELEKT\": syntax error");
    const SQLiteError executed = errorOf([&] { database->execute("SELEKT 1;"); });
    EXPECT_EQ(executed.kind(), SQLiteError::Kind::Step);
    EXPECT_STREQ(executed.what(), "sqlite step: near \"SELEKT\": syntax error");
}

class SQLiteTransaction : public ::testing::Test {
protected:
    SQLiteTransaction() { database->execute("CREATE TABLE t (x);"); }
    std::vector<std::string> rows() { return column(*database, "SELECT x FROM t ORDER BY x;"); }

    IndexFile file;
    std::shared_ptr<SQLiteDatabase> database{SQLiteDatabase::open(file.path)};
};

TEST_F(SQLiteTransaction, commitsWhatTheBodyWrote) {
    database->transaction([&] { database->execute("INSERT INTO t VALUES (1);"); });
    EXPECT_THAT(column(file.path, "SELECT x FROM t;"), ElementsAre("1"));
}

TEST_F(SQLiteTransaction, aBodyThatThrowsLeavesNoTraceAndItsErrorGoesOn) {
    try {
        database->transaction([&] {
            database->execute("INSERT INTO t VALUES (1);");
            throw std::runtime_error{"the body's own"};
        });
        FAIL() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "the body's own");
    }
    EXPECT_THAT(rows(), IsEmpty());
    database->transaction([&] { database->execute("INSERT INTO t VALUES (2);"); });
    EXPECT_THAT(rows(), ElementsAre("2"));
}

TEST_F(SQLiteTransaction, aCommitThatFailsRollsBack) {
    database->execute(
        "PRAGMA foreign_keys=ON; CREATE TABLE parent (id INTEGER PRIMARY KEY);"
        "CREATE TABLE child (id REFERENCES parent(id) DEFERRABLE INITIALLY DEFERRED);");
    const SQLiteError error =
        errorOf([&] { database->transaction([&] { database->execute("INSERT INTO child VALUES (7);"); }); });
    EXPECT_EQ(error.message(), "FOREIGN KEY constraint failed");
    EXPECT_THAT(column(*database, "SELECT id FROM child;"), IsEmpty());
    database->transaction([&] { database->execute("INSERT INTO t VALUES (1);"); });
    EXPECT_THAT(rows(), ElementsAre("1"));
}

TEST_F(SQLiteTransaction, aBeginThatFailsDoesNotRunTheBody) {
    database->execute("BEGIN;");
    bool hasRun = false;
    const SQLiteError error = errorOf([&] { database->transaction([&] { hasRun = true; }); });
    EXPECT_EQ(error.message(), "cannot start a transaction within a transaction");
    EXPECT_FALSE(hasRun);
    database->execute("INSERT INTO t VALUES (1); COMMIT;");
    EXPECT_THAT(rows(), ElementsAre("1"));
}

TEST_F(SQLiteTransaction, aRollbackThatFailsDoesNotHideTheFirstError) {
    try {
        database->transaction([&] {
            database->execute("ROLLBACK;");
            throw std::runtime_error{"the first"};
        });
        FAIL() << "nothing was thrown";
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "the first");
    }
}

TEST_F(SQLiteTransaction, waitsForAnotherConnectionToRelease) {
    const auto other = SQLiteDatabase::open(file.path);
    other->execute("BEGIN IMMEDIATE; INSERT INTO t VALUES (1);");
    std::thread release{[&] {
        std::this_thread::sleep_for(std::chrono::milliseconds{150});
        other->execute("COMMIT;");
    }};
    database->transaction([&] { database->execute("INSERT INTO t VALUES (2);"); });
    release.join();
    EXPECT_THAT(rows(), ElementsAre("1", "2"));
}

/// A new file is not in the write-ahead mode yet, and a program that has begun to write keeps others from setting it.
TEST(SQLiteDatabase, openWaitsForAnotherProgramThatFillsTheNewFile) {
    const IndexFile file;
    const auto other = SQLiteDatabase::open(file.path);
    other->execute("PRAGMA journal_mode=DELETE; CREATE TABLE t (x); BEGIN IMMEDIATE; INSERT INTO t VALUES (1);");
    std::thread release{[&] {
        std::this_thread::sleep_for(std::chrono::milliseconds{150});
        other->execute("COMMIT;");
    }};
    std::shared_ptr<SQLiteDatabase> database;
    EXPECT_NO_THROW(database = SQLiteDatabase::open(file.path));
    release.join();
    ASSERT_TRUE(database);
    EXPECT_THAT(column(*database, "PRAGMA journal_mode;"), ElementsAre("wal"));
    EXPECT_THAT(column(*database, "SELECT x FROM t;"), ElementsAre("1"));
}

TEST(SQLiteDatabase, theLastReferenceClosesTheConnection) {
    const IndexFile file;
    const std::size_t before = openDescriptors();
    {
        const auto database = SQLiteDatabase::open(file.path);
        database->execute("CREATE TABLE t (x);");
        EXPECT_GT(openDescriptors(), before);
    }
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_FALSE(file.home.exists("usage.sqlite-wal"));
}

}  // namespace
}  // namespace quorvane
