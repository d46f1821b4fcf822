// The reader and the indexer together.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/ingest/UsageIndexer.h"
#include "QuorvaneCore/providers/CursorProvider.h"
#include "tests/cursor/CursorTestSupport.h"
#include "tests/ingest/IngestTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::SizeIs;

UsageIndexer::Stats refresh(const std::string& database) {
    return UsageIndexer{std::make_shared<UsageIndex>(database)}.refresh(CursorProvider{});
}

TEST(CursorIndexing, refreshesAfterEachLineGiveTheRowsOfOne) {
    const CursorScratchHome home;
    const std::string stepwise = home.path("stepwise.sqlite");
    EXPECT_EQ(refresh(stepwise), UsageIndexer::Stats{});
    for (int count = 0; count < 6; ++count) {
        SCOPED_TRACE(count);
        // Every other time the writer is in the middle of its next line.
        if (count % 2 == 1) {
            home.append(CursorScratchHome::captureFile, captureLine("g" + std::to_string(count), 5).substr(0, 40));
            refresh(stepwise);
            home.append(CursorScratchHome::captureFile, captureLine("g" + std::to_string(count), 5).substr(40) + "\n");
        } else {
            home.append(CursorScratchHome::captureFile, captureLine("g" + std::to_string(count), 5) + "\n");
        }
        EXPECT_EQ(refresh(stepwise).eventsIngested, 1);
        const std::string atOnce = home.path("at-once-" + std::to_string(count) + ".sqlite");
        refresh(atOnce);
        EXPECT_EQ(IndexedHome::allRows(stepwise), IndexedHome::allRows(atOnce));
        EXPECT_THAT(IndexedHome::allRows(stepwise), SizeIs(count + 1));
    }
    EXPECT_EQ(refresh(stepwise).filesSkipped, 1);
}

TEST(CursorIndexing, aGenerationThatStandsThereTwiceIsOneRow) {
    const CursorScratchHome home;
    const std::string database = home.path("usage.sqlite");
    home.write(CursorScratchHome::captureFile, captureLine("g", 5) + "\n" + captureLine("g", 5) + "\n");
    EXPECT_EQ(refresh(database).eventsIngested, 2);
    EXPECT_THAT(IndexedHome::allRows(database), SizeIs(1));
}

/// What the hook cuts off its file, and what goes with the file, stays in the index.
TEST(CursorIndexing, whatLeavesTheFileStaysInTheIndex) {
    const CursorScratchHome home;
    const std::string database = home.path("usage.sqlite");
    std::string content;
    for (int count = 0; count < 10; ++count)
        content += captureLine("g" + std::to_string(count), 5) + "\n";
    home.write(CursorScratchHome::captureFile, content);
    refresh(database);
    const std::vector<std::string> rows = IndexedHome::allRows(database);
    ASSERT_THAT(rows, SizeIs(10));

    home.write(CursorScratchHome::captureFile, content.substr(content.size() / 2));
    refresh(database);
    EXPECT_EQ(IndexedHome::allRows(database), rows);
    home.append(CursorScratchHome::captureFile, captureLine("new", 5) + "\n");
    refresh(database);
    EXPECT_THAT(IndexedHome::allRows(database), SizeIs(11));
    home.remove(CursorScratchHome::captureFile);
    refresh(database);
    EXPECT_THAT(IndexedHome::allRows(database), SizeIs(11));
}

}  // namespace
}  // namespace quorvane::testing
