// The reader and the indexer together.

#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/ingest/UsageIndexer.h"
#include "QuorvaneCore/providers/GrokProvider.h"
#include "tests/grok/GrokTestSupport.h"
#include "tests/ingest/IngestTestSupport.h"

namespace quorvane::testing {
namespace {

UsageIndexer::Stats refresh(const std::string& database) {
    return UsageIndexer{std::make_shared<UsageIndex>(database)}.refresh(GrokProvider{});
}

/// A session as it is: chunks of messages, tool output with escapes, and now and then a completed turn.
std::string session(unsigned seed) {
    std::mt19937 random{seed};
    std::string text;
    for (int turn = 0; turn < 6; ++turn) {
        for (unsigned chunk = random() % 4; chunk > 0; --chunk)
            text += R"({"method":"session/update","params":{"sessionId":"s","update":{"sessionUpdate":)"
                    R"("agent_message_chunk","content":{"type":"text","text":"\u001b[1mturn_completed?\u001b[0m é"}}}})"
                    "\n";
        std::string usage = grokUsage(random() % 5000, random() % 500, random() % 4000, random() % 100);
        if (random() % 2 == 0) {
            usage.pop_back();
            usage += R"(,"modelUsage":{"grok-4.5":)" + grokUsage(random() % 5000, 1 + random() % 500) +
                     R"(,"grok-build-0.1":)" + grokUsage(random() % 5000, random() % 2) + "}}";
        }
        text += turnLine("e" + std::to_string(turn), usage, 1789374000 + 60.0 * turn) + "\n";
        if (random() % 4 == 0) text += "\n";
    }
    return text;
}

/// Wherever the agent's writing is cut, the refreshes give what one read of the whole gives.
TEST(GrokIndexing, readingInStepsEqualsReadingAtOnce) {
    for (unsigned seed = 1; seed <= 4; ++seed) {
        SCOPED_TRACE(seed);
        const GrokScratchHome home;
        const std::string file = ".grok/sessions/%2Fsrv/s/updates.jsonl";
        const std::string text = session(seed);
        const std::string stepwise = home.path("stepwise.sqlite");
        std::mt19937 random{seed};
        home.write(file, "");
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t length = std::min<std::size_t>(1 + random() % 900, text.size() - at);
            home.append(file, text.substr(at, length));
            at += length;
            refresh(stepwise);
        }
        const std::string atOnce = home.path("at-once.sqlite");
        refresh(atOnce);
        EXPECT_FALSE(IndexedHome::allRows(atOnce).empty());
        EXPECT_EQ(IndexedHome::allRows(stepwise), IndexedHome::allRows(atOnce));
        EXPECT_EQ(IndexedHome::allRows(atOnce).size(), GrokProvider{}.loadEvents().size());
    }
}

TEST(GrokIndexing, anUnchangedSessionIsNotReadAgain) {
    const GrokScratchHome home;
    const std::string file = home.write(".grok/sessions/p/s/updates.jsonl", session(1));
    const std::string database = home.path("usage.sqlite");
    EXPECT_EQ(refresh(database).filesRead, 1);
    const OpenWatch watch{{file}};
    const UsageIndexer::Stats stats = refresh(database);
    EXPECT_EQ(stats.filesSkipped, 1);
    EXPECT_EQ(stats.filesRead, 0);
    EXPECT_FALSE(watch.hasSeenAnOpen());
}

/// A turn that two sessions tell of, since one was resumed from the other, is one call.
TEST(GrokIndexing, oneTurnInTwoSessionsIsOneRow) {
    const GrokScratchHome home;
    const std::string database = home.path("usage.sqlite");
    home.write(".grok/sessions/p/s/updates.jsonl", turnLine("e", grokUsage(1, 5)) + "\n");
    home.write(".grok/sessions/p/t/updates.jsonl", turnLine("e", grokUsage(1, 7)) + "\n");
    refresh(database);
    EXPECT_EQ(IndexedHome::allRows(database).size(), 1);
    EXPECT_EQ(GrokProvider{}.loadEvents().size(), 2);
}

}  // namespace
}  // namespace quorvane::testing
