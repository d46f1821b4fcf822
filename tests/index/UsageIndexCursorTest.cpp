#include <limits>
#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/index/IndexTestSupport.h"

namespace quorvane {
namespace {

using ::testing::ElementsAre;
using testing::event;
using testing::IndexFile;
using ::testing::IsEmpty;

class UsageIndexCursor : public ::testing::Test {
protected:
    void set(const std::string& path, std::optional<ProviderID> provider, std::int64_t size = 1) {
        index.setCursor(path, size, 2, 3, "f", 4, provider, 5);
    }

    IndexFile file;
    UsageIndex index{file.path};
};

TEST_F(UsageIndexCursor, comesBackExactlyAsItWasSet) {
    const FileState state{.size = std::numeric_limits<std::int64_t>::max(),
                          .mtime = 1767225600.1234567,
                          .offset = 9007199254740993,
                          .fingerprint = "0123abcd",
                          .ctime = 1767225601.7654321,
                          .provider = "grok",
                          .parserRevision = 7};
    index.setCursor("/größe/log", state.size, state.mtime, state.offset, state.fingerprint, state.ctime,
                    ProviderID::Grok, state.parserRevision);
    EXPECT_EQ(index.cursor("/größe/log"), state);
    EXPECT_EQ(UsageIndex{file.path}.cursor("/größe/log"), state);
}

TEST_F(UsageIndexCursor, ofAnUnknownPathIsAbsent) {
    EXPECT_EQ(index.cursor("/unknown"), std::nullopt);
    set("/log", ProviderID::Claude);
    EXPECT_EQ(index.cursor("/lo"), std::nullopt);
    EXPECT_EQ(index.cursor("/LOG"), std::nullopt);
    EXPECT_TRUE(index.cursor("/log"));
}

TEST_F(UsageIndexCursor, isReplacedWhole) {
    set("/log", ProviderID::Claude);
    index.setCursor("/log", 10, 20, 30, "g", 40, ProviderID::Codex, 50);
    const FileState expected{.size = 10,
                             .mtime = 20,
                             .offset = 30,
                             .fingerprint = "g",
                             .ctime = 40,
                             .provider = "codex",
                             .parserRevision = 50};
    EXPECT_EQ(index.cursor("/log"), expected);
    EXPECT_EQ(testing::number(file.path, "SELECT count(*) FROM cursors;"), 1);
}

TEST_F(UsageIndexCursor, anAbsentProviderNeverWipesAKnownOne) {
    set("/log", ProviderID::Claude, 1);
    set("/log", std::nullopt, 2);
    ASSERT_TRUE(index.cursor("/log"));
    EXPECT_EQ(index.cursor("/log")->provider, "claude");
    EXPECT_EQ(index.cursor("/log")->size, 2);
}

TEST_F(UsageIndexCursor, withoutAProviderBelongsToNone) {
    set("/log", std::nullopt);
    ASSERT_TRUE(index.cursor("/log"));
    EXPECT_EQ(index.cursor("/log")->provider, "");
    for (const ProviderID provider : allProviderIDs())
        EXPECT_THAT(index.cursorPaths(provider), IsEmpty());
}

TEST_F(UsageIndexCursor, setCursorProviderFillsInAMissingProviderOnly) {
    set("/old", std::nullopt);
    set("/codex", ProviderID::Codex);
    index.setCursorProvider("/old", ProviderID::Claude);
    index.setCursorProvider("/codex", ProviderID::Claude);
    index.setCursorProvider("/unknown", ProviderID::Claude);
    EXPECT_EQ(index.cursor("/old")->provider, "claude");
    EXPECT_EQ(index.cursor("/codex")->provider, "codex");
    EXPECT_EQ(index.cursor("/unknown"), std::nullopt);
}

TEST_F(UsageIndexCursor, pathsAreListedByProvider) {
    set("/b", ProviderID::Claude);
    set("/a", ProviderID::Claude);
    set("/c", ProviderID::Codex);
    EXPECT_THAT(index.cursorPaths(ProviderID::Claude), ElementsAre("/a", "/b"));
    EXPECT_THAT(index.cursorPaths(ProviderID::Codex), ElementsAre("/c"));
    EXPECT_THAT(index.cursorPaths(ProviderID::Grok), IsEmpty());
}

TEST_F(UsageIndexCursor, deleteCursorForgetsItAndKeepsTheEvents) {
    const UsageEvent stored = event({});
    index.ingest({&stored, 1}, "/log");
    set("/log", ProviderID::Claude);
    index.deleteCursor("/log");
    EXPECT_EQ(index.cursor("/log"), std::nullopt);
    EXPECT_EQ(index.eventCount(ProviderID::Claude), 1);
    EXPECT_THAT(index.sourcePaths(ProviderID::Claude), ElementsAre("/log"));
}

TEST_F(UsageIndexCursor, deleteCursorOfAnUnknownPathSucceeds) {
    set("/log", ProviderID::Claude);
    index.deleteCursor("/unknown");
    EXPECT_TRUE(index.cursor("/log"));
}

TEST_F(UsageIndexCursor, noCursorWriteRaisesTheGeneration) {
    set("/log", ProviderID::Claude);
    index.setCursorProvider("/log", ProviderID::Codex);
    index.deleteCursor("/log");
    EXPECT_EQ(index.generation(), 0);
}

TEST_F(UsageIndexCursor, thatCannotBeReadCountsAsMissingAndIsReadAgainLater) {
    set("/log", ProviderID::Claude);
    ASSERT_TRUE(index.cursor("/log"));
    testing::execute(file.path, "ALTER TABLE cursors RENAME TO hidden;");
    EXPECT_EQ(index.cursor("/log"), std::nullopt);
    testing::execute(file.path, "ALTER TABLE hidden RENAME TO cursors;");
    EXPECT_TRUE(index.cursor("/log"));
}

TEST_F(UsageIndexCursor, whoseLookupCannotBePreparedIsTriedAgain) {
    set("/log", ProviderID::Claude);
    testing::execute(file.path, "ALTER TABLE cursors RENAME TO hidden;");
    EXPECT_EQ(index.cursor("/log"), std::nullopt);
    testing::execute(file.path, "ALTER TABLE hidden RENAME TO cursors;");
    EXPECT_TRUE(index.cursor("/log"));
}

// The file format allows no NULL there; a table that another hand made may.
TEST_F(UsageIndexCursor, nullTextsReadAsEmpty) {
    testing::execute(file.path,
                     "DROP TABLE cursors; CREATE TABLE cursors (path, size, mtime, offset, fingerprint, ctime, "
                     "provider, parser_revision); INSERT INTO cursors (path, size) VALUES ('/log', 9);");
    EXPECT_EQ(
        index.cursor("/log"),
        (FileState{
            .size = 9, .mtime = 0, .offset = 0, .fingerprint = "", .ctime = 0, .provider = "", .parserRevision = 0}));
}

TEST_F(UsageIndexCursor, nullPathsAreNotListed) {
    testing::execute(file.path,
                     "DROP TABLE cursors; CREATE TABLE cursors (path, provider); INSERT INTO cursors VALUES (NULL, "
                     "'claude'), ('/log', 'claude');");
    EXPECT_THAT(index.cursorPaths(ProviderID::Claude), ElementsAre("/log"));
}

}  // namespace
}  // namespace quorvane
