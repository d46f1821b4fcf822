// Files that stand in the store under another key than their path.

#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/ingest/UsageIndexer.h"
#include "tests/ingest/IngestTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;
using Stats = UsageIndexer::Stats;

/// A second reader of the same log, with a key, a revision and an identity of its own.
class UsageIndexerKey : public ::testing::Test, protected IndexedHome {
protected:
    UsageIndexerKey() {
        other.provider = ProviderID::Codex;
        other.files = {log};
        other.revision = 7;
        other.tailAppends = false;
        other.keyPrefix = "other:";
    }

    Stats refreshOther() const { return UsageIndexer{index}.refresh(other); }
    [[nodiscard]] std::string key() const { return other.storeKey(log); }

    FakeProvider other;
};

TEST_F(UsageIndexerKey, isThePathUnlessTheReaderSaysOtherwise) {
    EXPECT_EQ(provider.IndexableProvider::storeKey(log), log);
    home.write(log, logLine("a", 1));
    static_cast<void>(refresh());
    EXPECT_THAT(index->cursorPaths(ProviderID::Claude), ElementsAre(log));
    EXPECT_THAT(index->sourcePaths(ProviderID::Claude), ElementsAre(log));
}

TEST_F(UsageIndexerKey, isTheNameOfTheCursorAndOfTheRowsFile) {
    home.write(log, logLine("a", 1));
    EXPECT_EQ(refreshOther(), (Stats{.filesRead = 1, .eventsIngested = 1, .fingerprintReads = 1}));
    EXPECT_THAT(index->cursorPaths(ProviderID::Codex), ElementsAre(key()));
    EXPECT_THAT(index->sourcePaths(ProviderID::Codex), ElementsAre(key()));
    EXPECT_FALSE(index->cursor(log));
}

TEST_F(UsageIndexerKey, leavesTheReaderItsPath) {
    home.write(log, logLine("a", 1));
    refreshOther();
    EXPECT_THAT(other.decodes, ElementsAre(FakeProvider::Decode{log, 0}));
}

TEST_F(UsageIndexerKey, letsTwoReadersSkipOneUnchangedFile) {
    home.write(log, logLine("a", 1));
    static_cast<void>(refresh());
    refreshOther();
    const OpenWatch watch{{log}};
    EXPECT_EQ(refresh(), (Stats{.filesSkipped = 1}));
    EXPECT_EQ(refreshOther(), (Stats{.filesSkipped = 1}));
    EXPECT_EQ(refresh(), (Stats{.filesSkipped = 1}));
    EXPECT_FALSE(watch.hasSeenAnOpen());
}

TEST_F(UsageIndexerKey, keepsDeletionsToItsOwnRows) {
    home.write(log, logLine("a", 1) + logLine("b", 2));
    static_cast<void>(refresh());
    refreshOther();
    home.write(log, logLine("c", 3));
    refreshOther();
    EXPECT_THAT(rows(), UnorderedElementsAre("a 1 log.jsonl", "b 2 log.jsonl", "c 3 log.jsonl"));
    static_cast<void>(refresh());
    EXPECT_THAT(rows(), UnorderedElementsAre("c 3 log.jsonl", "c 3 log.jsonl"));
}

TEST_F(UsageIndexerKey, keepsWatermarksApart) {
    other.policy = ResetPolicy::Watermark;
    other.watermark = Date{1500};
    home.write(log, logLine("a", 1, 1000) + logLine("b", 2, 2000));
    static_cast<void>(refresh());
    refreshOther();
    const std::int64_t watermark = index->cursor(key())->offset;
    home.append(log, logLine("c", 3, 3000));
    static_cast<void>(refresh());
    refreshOther();
    EXPECT_THAT(other.watermarksAsked, ElementsAre(watermark));
    EXPECT_THAT(other.decodes.back(), (FakeProvider::Decode{log, watermark}));
    // Its own row at or after the watermark went, the other reader's of the same time stayed.
    EXPECT_THAT(rows(), UnorderedElementsAre("a 1 log.jsonl", "a 1 log.jsonl", "b 2 log.jsonl", "c 3 log.jsonl",
                                             "c 3 log.jsonl"));
}

TEST_F(UsageIndexerKey, forgetsOnlyItsOwnCursorOfAFileThatIsGone) {
    home.write(log, logLine("a", 1));
    static_cast<void>(refresh());
    refreshOther();
    other.files = {};
    refreshOther();
    EXPECT_THAT(index->cursorPaths(ProviderID::Codex), IsEmpty());
    EXPECT_THAT(index->cursorPaths(ProviderID::Claude), ElementsAre(log));
    // What this process remembered of it went too: the file is read when it comes back.
    other.files = {log};
    EXPECT_EQ(refreshOther().filesRead, 1);
    EXPECT_EQ(refresh(), (Stats{.filesSkipped = 1}));
}

TEST_F(UsageIndexerKey, changesOfModeAreNotedForEachReader) {
    home.write(log, logLine("a", 1));
    static_cast<void>(refresh());
    refreshOther();
    changeMode(log);
    const Stats looked{.filesSkipped = 1, .fingerprintReads = 1};
    EXPECT_EQ(refresh(), looked);
    EXPECT_EQ(refreshOther(), looked);
    EXPECT_EQ(refresh(), (Stats{.filesSkipped = 1}));
    EXPECT_EQ(refreshOther(), (Stats{.filesSkipped = 1}));
}

TEST_F(UsageIndexerKey, letsTwoReadersRunSideBySide) {
    for (int round = 1; round <= 10; ++round) {
        home.append(log, logLine("m" + std::to_string(round), round));
        std::thread beside{[&] { refreshOther(); }};
        static_cast<void>(refresh());
        beside.join();
        EXPECT_EQ(rows().size(), static_cast<std::size_t>(round) * 2);
    }
}

}  // namespace
}  // namespace quorvane::testing
