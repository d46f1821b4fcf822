// The reader and the indexer together.

#include <array>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/ingest/UsageIndexer.h"
#include "tests/gemini/GeminiTestSupport.h"
#include "tests/ingest/IngestTestSupport.h"

namespace quorvane::testing {
namespace {

UsageIndexer::Stats refresh(const ChatHome& home, const std::string& database) {
    return UsageIndexer{std::make_shared<UsageIndex>(database)}.refresh(home.provider);
}

/// The agent writes the document anew with each message.
TEST(GeminiIndexing, refreshesAfterEachMessageGiveTheRowsOfOne) {
    const ChatHome home;
    const std::string stepwise = home.home.path("stepwise.sqlite");
    std::vector<std::string> messages;
    for (int count = 0; count < 5; ++count) {
        SCOPED_TRACE(count);
        messages.push_back(geminiMessage("m" + std::to_string(count), {.input = 100 + count, .output = 10}));
        messages.push_back(R"({"id":"u","type":"user","content":"More"})");
        home.write("p/chats/session-1.json", geminiChat("s", messages));
        EXPECT_EQ(refresh(home, stepwise).filesRead, 1);
        const std::string atOnce = home.home.path("at-once-" + std::to_string(count) + ".sqlite");
        refresh(home, atOnce);
        EXPECT_EQ(IndexedHome::allRows(stepwise), IndexedHome::allRows(atOnce));
        EXPECT_EQ(IndexedHome::allRows(stepwise).size(), home.provider.loadEvents().size());
    }
}

TEST(GeminiIndexing, anUnchangedChatIsNotReadAgain) {
    const ChatHome home;
    const std::string file = home.write("p/chats/session-1.json", geminiChat("s", {geminiMessage("m", {.input = 1})}));
    const std::string database = home.home.path("usage.sqlite");
    refresh(home, database);
    const OpenWatch watch{{file}};
    const UsageIndexer::Stats stats = refresh(home, database);
    EXPECT_EQ(stats.filesSkipped, 1);
    EXPECT_EQ(stats.filesRead, 0);
    EXPECT_FALSE(watch.hasSeenAnOpen());
}

TEST(GeminiIndexing, aMessageThatLeavesTheChatLeavesTheIndex) {
    const ChatHome home;
    const std::string database = home.home.path("usage.sqlite");
    const std::string first = geminiMessage("m1", {.input = 1});
    home.write("p/chats/session-1.json", geminiChat("s", {first, geminiMessage("m2", {.input = 2})}));
    refresh(home, database);
    EXPECT_EQ(IndexedHome::allRows(database).size(), 2);
    home.write("p/chats/session-1.json", geminiChat("s", {first}));
    refresh(home, database);
    EXPECT_EQ(IndexedHome::allRows(database).size(), 1);
}

TEST(GeminiIndexing, aCallWithoutATimeIsStoredAndLiesInNoWindow) {
    const ChatHome home;
    const std::string database = home.home.path("usage.sqlite");
    home.write("p/chats/session-1.json", geminiChat("s", {R"({"id":"i","type":"gemini","tokens":{"input":5}})"}));
    refresh(home, database);
    EXPECT_EQ(IndexedHome::allRows(database).size(), 1);
    const std::array providers{ProviderID::Gemini};
    constexpr std::int64_t days = 3650;
    const UsageWindowSummaries window =
        UsageIndex{database}.windowSummaries(providers, days, CostCalculator{}, Date{1789387200}, Calendar{"UTC"});
    EXPECT_EQ(window.aggregate.rollup.last7d.eventCount, 0);
    home.write("p/chats/session-2.json", geminiChat("s", {geminiMessage("dated", {.input = 1})}));
    refresh(home, database);
    EXPECT_EQ(UsageIndex{database}
                  .windowSummaries(providers, days, CostCalculator{}, Date{1789387200}, Calendar{"UTC"})
                  .aggregate.rollup.last7d.eventCount,
              1);
}

}  // namespace
}  // namespace quorvane::testing
