// The reader and the indexer together.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/ingest/UsageIndexer.h"
#include "tests/copilot/CopilotTestSupport.h"
#include "tests/ingest/IngestTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::SizeIs;

UsageIndexer::Stats refresh(const TelemetryHome& home, const std::string& database) {
    return UsageIndexer{std::make_shared<UsageIndex>(database)}.refresh(home.provider);
}

TEST(CopilotIndexing, refreshesAfterEachLineGiveTheRowsOfOne) {
    const TelemetryHome home;
    const std::string stepwise = home.home.path("stepwise.sqlite");
    const std::vector<std::string> lines{
        agentSpan({.trace = "T", .span = "1", .output = 90}),
        turnLog({.trace = "T", .span = "2", .output = 40}),
        inferenceLog({.trace = "T", .span = "3", .response = "R", .output = 30}),
        chatSpan({.trace = "T", .span = "4", .output = 20, .more = R"("gen_ai.response.model":"gpt-5")"}),
        chatSpan({.trace = "T", .span = "5", .output = 10}),
        record(R"("traceId":"T")", R"("gen_ai.conversation.id":"late")"),
        turnLog({.trace = "U", .output = 5}),
    };
    for (std::size_t count = 0; count < lines.size(); ++count) {
        SCOPED_TRACE(count);
        home.append("otel.jsonl", lines[count]);
        EXPECT_EQ(refresh(home, stepwise).filesRead, 1);
        const std::string atOnce = home.home.path("at-once-" + std::to_string(count) + ".sqlite");
        refresh(home, atOnce);
        EXPECT_EQ(IndexedHome::allRows(stepwise), IndexedHome::allRows(atOnce));
    }
    EXPECT_THAT(IndexedHome::allRows(stepwise), SizeIs(home.provider.loadEvents().size()));
    EXPECT_THAT(IndexedHome::allRows(stepwise), SizeIs(3));
}

TEST(CopilotIndexing, anUnchangedFileIsNotReadAgain) {
    const TelemetryHome home;
    const std::string file = home.write("otel.jsonl", chatSpan({}));
    const std::string database = home.home.path("usage.sqlite");
    refresh(home, database);
    const OpenWatch watch{{file}};
    const UsageIndexer::Stats stats = refresh(home, database);
    EXPECT_EQ(stats.filesSkipped, 1);
    EXPECT_EQ(stats.filesRead, 0);
    EXPECT_FALSE(watch.hasSeenAnOpen());
}

}  // namespace
}  // namespace quorvane::testing
