// The reader and the indexer together.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/ingest/UsageIndexer.h"
#include "tests/codex/CodexTestSupport.h"
#include "tests/ingest/IngestTestSupport.h"

namespace quorvane::testing {
namespace {

UsageIndexer::Stats refresh(const RolloutHome& home, const std::string& database) {
    return UsageIndexer{std::make_shared<UsageIndex>(database)}.refresh(home.provider);
}

TEST(CodexIndexing, refreshesAfterEachLineGiveTheRowsOfOne) {
    const RolloutHome home;
    const std::string stepwise = home.home.path("stepwise.sqlite");
    const std::vector<std::string> lines{
        tokenCount({.output = 50}),
        tokenCount({.output = 60}),
        line("turn_context", R"({"cwd":"/home/ana/shop","model":"gpt-5.6-sol"})"),
        tokenCount({.output = 45}),
        tokenCount({.input = 10, .output = 45}),
        tokenCount({.output = 20}),
        tokenCount({.output = 25}),
    };
    for (std::size_t count = 0; count < lines.size(); ++count) {
        SCOPED_TRACE(count);
        home.append("rollout-a.jsonl", lines[count]);
        const UsageIndexer::Stats stats = refresh(home, stepwise);
        EXPECT_EQ(stats.filesRead, 1);
        const std::string atOnce = home.home.path("at-once-" + std::to_string(count) + ".sqlite");
        refresh(home, atOnce);
        EXPECT_EQ(IndexedHome::allRows(stepwise), IndexedHome::allRows(atOnce));
    }
    EXPECT_EQ(IndexedHome::allRows(stepwise).size(), home.provider.loadEvents().size());
}

TEST(CodexIndexing, anUnchangedRolloutIsNotReadAgain) {
    const RolloutHome home;
    const std::string file = home.write("rollout-a.jsonl", tokenCount({.output = 50}));
    const std::string database = home.home.path("usage.sqlite");
    refresh(home, database);
    const OpenCount opens{{file}};
    const UsageIndexer::Stats stats = refresh(home, database);
    EXPECT_EQ(stats.filesSkipped, 1);
    EXPECT_EQ(stats.filesRead, 0);
    EXPECT_EQ(opens.take(), 0);
}

/// A call that a later total takes back leaves the index too.
TEST(CodexIndexing, aCorrectionTakesTheRowAway) {
    const RolloutHome home;
    const std::string database = home.home.path("usage.sqlite");
    home.write("rollout-a.jsonl", tokenCount({.output = 50}) + tokenCount({.output = 60}));
    refresh(home, database);
    EXPECT_EQ(IndexedHome::allRows(database).size(), 2);
    home.append("rollout-a.jsonl", tokenCount({.output = 50}));
    refresh(home, database);
    EXPECT_EQ(IndexedHome::allRows(database).size(), 1);
}

}  // namespace
}  // namespace quorvane::testing
