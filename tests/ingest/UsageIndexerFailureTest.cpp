#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ingest/IngestTestSupport.h"

namespace quorvane {
namespace {

using ::testing::ElementsAre;
using testing::FakeProvider;
using testing::IndexedHome;
using ::testing::IsEmpty;
using testing::logLine;
using Stats = UsageIndexer::Stats;

/// Statements that fail: triggers in the index file refuse a write of one kind.
class UsageIndexerFailure : public ::testing::Test, protected IndexedHome {
protected:
    UsageIndexerFailure() {
        provider.files = {home.write("1", logLine("a", 1)), home.write("2", logLine("b", 2)),
                          home.write("3", logLine("c", 3))};
    }

    /// `writes` as in "INSERT ON events WHEN new.msg_id = 'b'".
    void refuse(const std::string& writes) const {
        execute("CREATE TRIGGER refusal BEFORE " + writes + " BEGIN SELECT RAISE(ABORT, 'refused'); END;");
    }
    void refuseNothing() const { execute("DROP TRIGGER refusal;"); }

    void expectRefusal() const {
        try {
            static_cast<void>(refresh());
            FAIL() << "nothing was thrown";
        } catch (const SQLiteError& error) {
            EXPECT_EQ(error.kind(), SQLiteError::Kind::Step);
            EXPECT_EQ(error.message(), "refused");
        }
    }

    [[nodiscard]] std::vector<std::string> decoded() const {
        std::vector<std::string> names;
        for (const FakeProvider::Decode& decode : provider.decodes)
            names.push_back(decode.file.substr(decode.file.rfind('/') + 1));
        return names;
    }
};

TEST_F(UsageIndexerFailure, aRefusedEventEndsTheRefreshAndTheFilesBeforeKeepTheirWork) {
    refuse("INSERT ON events WHEN new.msg_id = 'b'");
    expectRefusal();
    EXPECT_THAT(decoded(), ElementsAre("1", "2"));
    EXPECT_THAT(rows(), ElementsAre("a 1 1"));
    EXPECT_THAT(index->cursorPaths(ProviderID::Claude), ElementsAre(home.path("1")));

    refuseNothing();
    EXPECT_EQ(refresh(), (Stats{.filesRead = 2, .filesSkipped = 1, .eventsIngested = 2, .fingerprintReads = 2}));
    EXPECT_THAT(rows(), ElementsAre("a 1 1", "b 2 2", "c 3 3"));
}

TEST_F(UsageIndexerFailure, aRefusedCursorEndsTheRefreshAndTheNextOneDoesTheFileAgain) {
    refuse("INSERT ON cursors WHEN new.path LIKE '%/2'");
    expectRefusal();
    EXPECT_THAT(decoded(), ElementsAre("1", "2"));
    EXPECT_THAT(rows(), ElementsAre("a 1 1", "b 2 2"));
    refuseNothing();
    EXPECT_EQ(refresh(), (Stats{.filesRead = 2, .filesSkipped = 1, .eventsIngested = 2, .fingerprintReads = 2}));
    EXPECT_THAT(rows(), ElementsAre("a 1 1", "b 2 2", "c 3 3"));
}

TEST_F(UsageIndexerFailure, aRefusedDeletionEndsTheRefreshBeforeAnythingIsStored) {
    static_cast<void>(refresh());
    provider.decodes.clear();
    home.write("2", logLine("d", 4));
    home.touch("2", 1);
    refuse("DELETE ON events");
    expectRefusal();
    EXPECT_THAT(decoded(), ElementsAre("2"));
    EXPECT_THAT(rows(), ElementsAre("a 1 1", "b 2 2", "c 3 3"));
}

// The file counts as seen before it is read, so that one process does not read a file that cannot be stored over and
// over again; another process, or a further change of the file, reads it.
TEST_F(UsageIndexerFailure, aFileWithAnOlderCursorIsNotTriedAgainByThisProcessUntilItChanges) {
    static_cast<void>(refresh());
    home.append("2", logLine("d", 4));
    refuse("INSERT ON events WHEN new.msg_id = 'd'");
    expectRefusal();
    refuseNothing();
    EXPECT_EQ(refresh(), (Stats{.filesRead = 0, .filesSkipped = 3, .eventsIngested = 0, .fingerprintReads = 0}));
    EXPECT_THAT(rows(), ElementsAre("a 1 1", "b 2 2", "c 3 3"));
    home.append("2", logLine("e", 5));
    EXPECT_EQ(refresh(), (Stats{.filesRead = 1, .filesSkipped = 2, .eventsIngested = 2, .fingerprintReads = 1}));
    EXPECT_THAT(rows(), ElementsAre("a 1 1", "b 2 2", "c 3 3", "d 4 2", "e 5 2"));
}

TEST_F(UsageIndexerFailure, aRaisedRevisionIsTriedAgainEvenByThisProcess) {
    static_cast<void>(refresh());
    provider.revision = 2;
    refuse("INSERT ON events WHEN new.msg_id = 'b'");
    expectRefusal();
    refuseNothing();
    EXPECT_EQ(refresh(), (Stats{.filesRead = 2, .filesSkipped = 1, .eventsIngested = 2, .fingerprintReads = 2}));
}

TEST_F(UsageIndexerFailure, aRefusedRefreshOfAnUnchangedCursorIsDropped) {
    for (const std::string& file : provider.files)
        setCursor(file, [](FileState& state) { state.ctime = 0; });
    refuse("UPDATE ON cursors");
    EXPECT_EQ(refresh(), (Stats{.filesRead = 0, .filesSkipped = 3, .eventsIngested = 0, .fingerprintReads = 3}));
    EXPECT_EQ(cursor(provider.files[0]).ctime, 0);
    // What this process has seen answers for the file, though the stored cursor does not.
    EXPECT_EQ(refresh(), (Stats{.filesRead = 0, .filesSkipped = 3, .eventsIngested = 0, .fingerprintReads = 0}));
    EXPECT_THAT(provider.decodes, IsEmpty());
}

TEST_F(UsageIndexerFailure, aProviderNameThatCannotBeFilledInEndsTheRefresh) {
    setCursor(provider.files[0], [](FileState& state) { state.provider = ""; });
    refuse("UPDATE ON cursors");
    expectRefusal();
    EXPECT_THAT(provider.decodes, IsEmpty());
}

TEST_F(UsageIndexerFailure, aCursorThatCannotBeForgottenEndsTheRefreshAndThoseBeforeStayForgotten) {
    static_cast<void>(refresh());
    provider.files.clear();
    refuse("DELETE ON cursors WHEN old.path LIKE '%/2'");
    expectRefusal();
    EXPECT_THAT(index->cursorPaths(ProviderID::Claude), ElementsAre(home.path("2"), home.path("3")));
}

TEST_F(UsageIndexerFailure, cursorsThatCannotBeListedEndTheRefreshBeforeAnyFile) {
    execute("DROP TABLE cursors;");
    EXPECT_THROW(static_cast<void>(refresh()), SQLiteError);
    EXPECT_THAT(provider.decodes, IsEmpty());
}

TEST_F(UsageIndexerFailure, cursorsAreListedEvenIfThereAreNoFiles) {
    provider.files.clear();
    execute("DROP TABLE cursors;");
    EXPECT_THROW(static_cast<void>(refresh()), SQLiteError);
}

TEST_F(UsageIndexerFailure, aCursorThatCannotBeReadCountsAsMissing) {
    provider.files.resize(1);
    static_cast<void>(refresh());
    home.append("1", logLine("d", 4));
    provider.decodes.clear();
    execute("ALTER TABLE cursors RENAME COLUMN ctime TO renamed;");
    // The cursor cannot be written either; before that the file was read, and from its start.
    EXPECT_THROW(static_cast<void>(refresh()), SQLiteError);
    EXPECT_THAT(provider.decodes, ElementsAre(FakeProvider::Decode{home.path("1"), 0}));
    EXPECT_THAT(rows(), ElementsAre("a 1 1", "d 4 1"));
}

}  // namespace
}  // namespace quorvane
