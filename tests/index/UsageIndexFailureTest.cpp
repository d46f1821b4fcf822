#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/index/IndexTestSupport.h"

namespace quorvane {
namespace {

using testing::event;
using ::testing::HasSubstr;
using testing::IndexFile;
using ::testing::IsEmpty;
using testing::storedEvents;

using Events = std::vector<UsageEvent>;

constexpr int eventCount = 12;

/// Events of which every second one is stored already, in a worse version.
Events offeredEvents() {
    Events events;
    for (int number = 0; number < eventCount; ++number)
        events.push_back(event({.message = "m" + std::to_string(100 + number), .usage = {.output = 9}}));
    return events;
}
Events storedBefore() {
    Events events;
    for (int number = 0; number < eventCount; number += 2)
        events.push_back(event({.message = "m" + std::to_string(100 + number), .usage = {.output = 1}}));
    return events;
}

SQLiteError errorOf(const std::function<void()>& work) {
    try {
        work();
    } catch (const SQLiteError& error) {
        return error;
    }
    ADD_FAILURE() << "nothing was thrown";
    return SQLiteError{SQLiteError::Kind::Open, ""};
}

/// The kinds of failure of a statement: one that is undone alone, and one that ends the transaction with it, so that
/// the rollback that follows fails in its turn.
class UsageIndexNthWrite : public ::testing::TestWithParam<const char*> {};

TEST_P(UsageIndexNthWrite, ofAnIngestThatFailsLeavesTheStoreAsItWas) {
    const IndexFile file;
    UsageIndex index{file.path};
    index.ingest(storedBefore(), "/old");
    const std::vector<std::string> before = storedEvents(file.path);
    const Events offered = offeredEvents();
    for (int nth = 0; nth <= eventCount; ++nth) {
        const std::string message = "NEW.msg_id = 'm" + std::to_string(100 + nth) + "'";
        const std::string body = " BEGIN SELECT RAISE(" + std::string{GetParam()} + ", 'refused'); END;";
        testing::execute(file.path, "CREATE TRIGGER onInsert BEFORE INSERT ON events WHEN " + message + body +
                                        "CREATE TRIGGER onUpdate BEFORE UPDATE ON events WHEN " + message + body);
        if (nth < eventCount) {
            const SQLiteError error = errorOf([&] { index.ingest(offered, "/new"); });
            EXPECT_EQ(error.kind(), SQLiteError::Kind::Step);
            EXPECT_EQ(error.message(), "refused");
            EXPECT_EQ(storedEvents(file.path), before);
            EXPECT_EQ(index.generation(), 1);
            EXPECT_THAT(testing::column(file.path, "SELECT path FROM paths WHERE path = '/new';"), IsEmpty());
        } else {
            index.ingest(offered, "/new");
        }
        testing::execute(file.path, "DROP TRIGGER onInsert; DROP TRIGGER onUpdate;");
    }
    EXPECT_EQ(index.generation(), 2);
    EXPECT_EQ(testing::number(file.path, "SELECT count(*) FROM events WHERE output = 9;"), eventCount);
}
INSTANTIATE_TEST_SUITE_P(ByResolution, UsageIndexNthWrite, ::testing::Values("ABORT", "FAIL", "ROLLBACK"),
                         [](const auto& row) { return std::string{row.param}; });

TEST(UsageIndexFailure, aPathThatCannotBeInternedFailsTheIngest) {
    const IndexFile file;
    UsageIndex index{file.path};
    testing::execute(file.path, "CREATE TRIGGER onPath BEFORE INSERT ON paths BEGIN SELECT RAISE(ABORT, 'no'); END;");
    EXPECT_EQ(errorOf([&] { index.ingest(offeredEvents(), "/new"); }).message(), "no");
    EXPECT_EQ(index.eventCount(std::nullopt), 0);
    index.ingest(offeredEvents(), std::nullopt);
    EXPECT_EQ(index.eventCount(std::nullopt), eventCount);
    EXPECT_EQ(index.generation(), 1);
}

TEST(UsageIndexFailure, aStatementThatCannotBePreparedThrowsPrepare) {
    const IndexFile file;
    UsageIndex index{file.path};
    testing::execute(file.path, "DROP TABLE events; DROP TABLE cursors;");
    // The connection learns of the change of the schema with the first statement that it steps.
    EXPECT_EQ(index.eventCount(std::nullopt), 0);
    const std::vector<std::function<void()>> operations{
        [&] { index.ingest(offeredEvents(), "/new"); },
        [&] { index.deleteEvents("/new", std::nullopt); },
        [&] { static_cast<void>(index.sourcePaths(ProviderID::Claude)); },
        [&] { index.setCursor("/new", 1, 2, 3, "f", 4, ProviderID::Claude, 1); },
        [&] { index.setCursorProvider("/new", ProviderID::Claude); },
        [&] { static_cast<void>(index.cursorPaths(ProviderID::Claude)); },
        [&] { index.deleteCursor("/new"); }};
    for (const std::function<void()>& operation : operations) {
        const SQLiteError error = errorOf(operation);
        EXPECT_EQ(error.kind(), SQLiteError::Kind::Prepare);
        EXPECT_THAT(error.message(), HasSubstr("no such table"));
    }
    EXPECT_EQ(index.generation(), 0);
    EXPECT_THAT(testing::column(file.path, "SELECT path FROM paths;"), IsEmpty());
}

TEST(UsageIndexFailure, aDeletionThatFailsDeletesNothingAndKeepsTheGeneration) {
    const IndexFile file;
    UsageIndex index{file.path};
    index.ingest(offeredEvents(), "/log");
    testing::execute(file.path,
                     "CREATE TRIGGER onDelete BEFORE DELETE ON events WHEN OLD.msg_id = 'm105' BEGIN SELECT "
                     "RAISE(ABORT, 'refused'); END;");
    const SQLiteError error = errorOf([&] { index.deleteEvents("/log", std::nullopt); });
    EXPECT_EQ(error.kind(), SQLiteError::Kind::Step);
    EXPECT_EQ(error.message(), "refused");
    EXPECT_EQ(index.eventCount(std::nullopt), eventCount);
    EXPECT_EQ(index.generation(), 1);
}

TEST(UsageIndexFailure, aCursorWriteThatFailsThrowsStepAndKeepsTheOldCursor) {
    const IndexFile file;
    UsageIndex index{file.path};
    index.setCursor("/log", 1, 2, 3, "f", 4, std::nullopt, 1);
    testing::execute(file.path,
                     "CREATE TRIGGER onInsert BEFORE INSERT ON cursors BEGIN SELECT RAISE(ABORT, 'no'); END;"
                     "CREATE TRIGGER onUpdate BEFORE UPDATE ON cursors BEGIN SELECT RAISE(ABORT, 'no'); END;"
                     "CREATE TRIGGER onDelete BEFORE DELETE ON cursors BEGIN SELECT RAISE(ABORT, 'no'); END;");
    const std::optional<FileState> before = index.cursor("/log");
    for (const std::function<void()>& operation : std::vector<std::function<void()>>{
             [&] { index.setCursor("/log", 10, 20, 30, "g", 40, ProviderID::Claude, 2); },
             [&] { index.setCursorProvider("/log", ProviderID::Claude); }, [&] { index.deleteCursor("/log"); }}) {
        EXPECT_EQ(errorOf(operation).kind(), SQLiteError::Kind::Step);
        EXPECT_EQ(index.cursor("/log"), before);
    }
}

/// Runs `work` with ever more room on the disk, until it does not fail. After each failure, `check`.
/// Returns how often it failed.
int runUntilTheDiskHasRoom(const std::function<void()>& work, const std::function<void()>& check) {
    for (int failures = 0;; ++failures) {
        try {
            const testing::FileSizeLimit limit{static_cast<std::uint64_t>(failures) * 2048};
            work();
            return failures;
        } catch (const SQLiteError&) {
            check();
        }
        if (failures == 2000) {
            ADD_FAILURE() << "there is never enough room";
            return failures;
        }
    }
}

TEST(UsageIndexFailure, anIngestOnAFullDiskLeavesTheStoreAsItWas) {
    const IndexFile file;
    UsageIndex index{file.path};
    index.ingest(storedBefore(), "/old");
    const std::vector<std::string> before = storedEvents(file.path);
    const int failures = runUntilTheDiskHasRoom([&] { index.ingest(offeredEvents(), "/new"); },
                                                [&] {
                                                    ASSERT_EQ(storedEvents(file.path), before);
                                                    ASSERT_EQ(index.generation(), 1);
                                                });
    EXPECT_GT(failures, 3);
    EXPECT_EQ(index.generation(), 2);
    EXPECT_EQ(testing::number(file.path, "SELECT count(*) FROM events WHERE output = 9;"), eventCount);
    EXPECT_EQ(testing::integrity(file.path), "ok");
}

TEST(UsageIndexFailure, aDeletionOnAFullDiskLeavesTheStoreAsItWas) {
    const IndexFile file;
    UsageIndex index{file.path};
    index.ingest(offeredEvents(), "/log");
    const std::vector<std::string> before = storedEvents(file.path);
    const int failures = runUntilTheDiskHasRoom([&] { index.deleteEvents("/log", std::nullopt); },
                                                [&] { ASSERT_EQ(storedEvents(file.path), before); });
    EXPECT_GT(failures, 3);
    EXPECT_EQ(index.generation(), 2);
    EXPECT_EQ(index.eventCount(std::nullopt), 0);
}

TEST(UsageIndexFailure, aConstructionOnAFullDiskThrowsAndTheNextOneSucceeds) {
    const IndexFile file;
    const std::size_t descriptors = testing::openDescriptors();
    const int failures = runUntilTheDiskHasRoom([&] { static_cast<void>(UsageIndex{file.path}); },
                                                [&] { ASSERT_EQ(testing::openDescriptors(), descriptors); });
    EXPECT_GT(failures, 3);
    UsageIndex index{file.path};
    EXPECT_FALSE(index.needsMigration());
    index.ingest(offeredEvents(), "/log");
    EXPECT_EQ(index.eventCount(std::nullopt), eventCount);
    EXPECT_EQ(testing::integrity(file.path), "ok");
}

}  // namespace
}  // namespace quorvane
