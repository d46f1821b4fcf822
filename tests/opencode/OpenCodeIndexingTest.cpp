// Two readers of one file, and the indexer.

#include <algorithm>
#include <array>
#include <thread>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/index/SQLiteStatement.h"
#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/ingest/UsageIndexer.h"
#include "tests/ingest/IngestTestSupport.h"
#include "tests/opencode/OpenCodeTestSupport.h"

namespace quorvane::testing {
namespace {

using Stats = UsageIndexer::Stats;

/// Both readers of a home, and one index.
struct IndexedAgent : OpenCodeHome {
    std::string indexPath = home.path("usage.sqlite");
    std::shared_ptr<UsageIndex> index = std::make_shared<UsageIndex>(indexPath);

    Stats refreshOpenCode() const { return UsageIndexer{index}.refresh(opencode); }
    Stats refreshMuseSpark() const { return UsageIndexer{index}.refresh(museSpark); }
    void refreshAtOnce() const {
        std::thread other{[&] { refreshMuseSpark(); }};
        refreshOpenCode();
        other.join();
    }

    /// The rows of the index without their files.
    [[nodiscard]] Lines rows() const {
        Lines rows = IndexedHome::allRows(indexPath);
        for (std::string& row : rows)
            row.erase(row.rfind('|', row.size() - 2));
        return rows;
    }

    /// What the readers give without the index, in the form of its rows.
    [[nodiscard]] Lines loaded() const {
        Lines rows;
        const std::array<std::vector<UsageEvent>, 2> all{museSpark.loadEvents(), opencode.loadEvents()};
        for (const auto& events : all) {
            for (const UsageEvent& event : events) {
                const TokenUsage& usage = event.usage;
                const auto quoted = SQLiteDatabase::open(":memory:")->prepare("SELECT quote(?1);");
                quoted->bind(1, event.timestamp.secondsSince1970);
                quoted->run();
                rows.push_back(fmt::format("{}|{}|{}|{}|{}|{}|{}|{}|{}|{}|{}", rawName(event.provider), event.messageId,
                                           event.requestId, event.model, quoted->text(0).value_or("NULL"),
                                           event.project.value_or("NULL"), usage.input, usage.output,
                                           usage.cacheCreate5m, usage.cacheCreate1h, usage.cacheRead));
            }
        }
        std::ranges::sort(rows);
        return rows;
    }

    void expectAllRows(std::size_t count) const {
        Lines stored = rows();
        std::ranges::sort(stored);
        EXPECT_EQ(stored.size(), count);
        EXPECT_EQ(stored, loaded());
    }
};

const Agent& addCalls(const Agent& agent, int from, int count) {
    for (int number = from; number < from + count; ++number) {
        const std::string session = "s" + std::to_string(number);
        agent.add(Session{.id = session, .input = 100 + number, .output = 9, .created = firstMillis + number})
            .add(Message{.id = "m" + std::to_string(number),
                         .session = session,
                         .created = firstMillis + number * 1000,
                         .input = 10,
                         .output = number});
    }
    return agent;
}

/// In which order the two readers are refreshed: 'o', 'm', or 'b' for both at once.
struct OrderCase {
    const char* name;
    const char* order;
};

class TwoReadersOfOneDatabase : public ::testing::TestWithParam<OrderCase> {
protected:
    void refresh() const {
        for (const char* step = GetParam().order; *step != '\0'; ++step) {
            if (*step == 'o') agent.refreshOpenCode();
            if (*step == 'm') agent.refreshMuseSpark();
            if (*step == 'b') agent.refreshAtOnce();
        }
    }

    IndexedAgent agent;
};

TEST_P(TwoReadersOfOneDatabase, bothKeepTheirRowsWhileItGrows) {
    for (int round = 0; round < 4; ++round) {
        SCOPED_TRACE(round);
        addCalls(Agent{agent.database}, round * 3, 3);
        refresh();
        agent.expectAllRows(static_cast<std::size_t>(round + 1) * 6);
    }
}

TEST_P(TwoReadersOfOneDatabase, bothSkipItUnchanged) {
    addCalls(Agent{agent.database}, 0, 3);
    refresh();
    const OpenWatch watch{{agent.database}};
    for (int round = 0; round < 3; ++round) {
        const Stats opencode = agent.refreshOpenCode();
        const Stats museSpark = agent.refreshMuseSpark();
        EXPECT_EQ(opencode, (Stats{.filesSkipped = 1}));
        EXPECT_EQ(museSpark, (Stats{.filesSkipped = 1}));
    }
    EXPECT_FALSE(watch.hasSeenAnOpen());
    agent.expectAllRows(6);
}

TEST_P(TwoReadersOfOneDatabase, bothFollowOneThatTakesItsPlace) {
    addCalls(Agent{agent.database}, 0, 3);
    refresh();
    agent.home.remove(agent.database);
    addCalls(Agent{agent.database}, 2, 5).execute("VACUUM;");
    refresh();
    // OpenCode's are those of the new file. Of Muse Spark's, the ones before its watermark stay.
    EXPECT_EQ(told(agent.opencode.loadEvents()).size(), 5);
    const Lines rows = agent.rows();
    const Lines loaded = agent.loaded();
    EXPECT_EQ(rows.size(), 5U + 7U);
    for (const std::string& row : loaded)
        EXPECT_TRUE(std::ranges::find(rows, row) != rows.end()) << row;
}

TEST_P(TwoReadersOfOneDatabase, bothCursorsStandUnderTheirKeys) {
    addCalls(Agent{agent.database}, 0, 3);
    refresh();
    const auto opencode = agent.index->cursor(agent.database);
    const auto museSpark = agent.index->cursor(agent.museSpark.storeKey(agent.database));
    ASSERT_TRUE(opencode && museSpark);
    EXPECT_EQ(opencode->provider, "opencode");
    EXPECT_EQ(opencode->parserRevision, 1);
    EXPECT_EQ(opencode->offset, opencode->size);
    EXPECT_EQ(museSpark->provider, "muse_spark");
    EXPECT_EQ(museSpark->parserRevision, 2);
    EXPECT_EQ(museSpark->offset, firstMillis + 2000);
    EXPECT_EQ(museSpark->size, opencode->size);
    EXPECT_THAT(agent.index->cursorPaths(ProviderID::Opencode), ::testing::ElementsAre(agent.database));
    EXPECT_THAT(agent.index->cursorPaths(ProviderID::MuseSpark),
                ::testing::ElementsAre(agent.museSpark.storeKey(agent.database)));
}

TEST_P(TwoReadersOfOneDatabase, itsCursorsGoWithItAndItsRowsStay) {
    addCalls(Agent{agent.database}, 0, 3);
    refresh();
    const Lines before = agent.rows();
    agent.home.remove(agent.database);
    refresh();
    EXPECT_THAT(agent.index->cursorPaths(ProviderID::Opencode), ::testing::IsEmpty());
    EXPECT_THAT(agent.index->cursorPaths(ProviderID::MuseSpark), ::testing::IsEmpty());
    EXPECT_EQ(agent.rows(), before);
    addCalls(Agent{agent.database}, 0, 4);
    refresh();
    agent.expectAllRows(8);
}

TEST_P(TwoReadersOfOneDatabase, bothReadTheLogWhereThereIsNoDatabase) {
    for (int round = 1; round <= 3; ++round) {
        SCOPED_TRACE(round);
        const std::string session = "s" + std::to_string(round);
        agent.home.append(agent.log, agentLogLine(session, "gpt-5", round, 1) +
                                         agentLogLine(session, "muse-spark", round, 1, "run=r"));
        refresh();
        agent.expectAllRows(static_cast<std::size_t>(round) * 2);
    }
    EXPECT_EQ(agent.refreshOpenCode(), (Stats{.filesSkipped = 1}));
    EXPECT_EQ(agent.refreshMuseSpark(), (Stats{.filesSkipped = 1}));
}

INSTANTIATE_TEST_SUITE_P(InEveryOrder, TwoReadersOfOneDatabase,
                         ::testing::Values(OrderCase{"openCodeFirst", "om"}, OrderCase{"museSparkFirst", "mo"},
                                           OrderCase{"openCodeTwice", "omo"}, OrderCase{"museSparkTwice", "mom"},
                                           OrderCase{"atOnce", "b"}, OrderCase{"atOnceRepeatedly", "bbb"},
                                           OrderCase{"inTurnsAndAtOnce", "omombmob"}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(OpenCodeIndexing, museSparkReadsOnFromItsWatermark) {
    const IndexedAgent agent;
    addCalls(Agent{agent.database}, 0, 50);
    EXPECT_EQ(agent.refreshMuseSpark().eventsIngested, 50);
    addCalls(Agent{agent.database}, 50, 2);
    EXPECT_EQ(agent.refreshOpenCode().eventsIngested, 52);
    EXPECT_EQ(agent.refreshMuseSpark().eventsIngested, 3) << "two new ones, and the newest known one again";
    agent.expectAllRows(104);
}

TEST(OpenCodeIndexing, aChangedNewestMessageIsReplaced) {
    const IndexedAgent agent;
    const Agent writer{agent.database};
    addCalls(writer, 0, 2);
    agent.refreshAtOnce();
    writer.execute("UPDATE message SET data = json_set(data, '$.tokens.output', 0) WHERE id = 'm1';");
    agent.home.touch(agent.database, 5);
    agent.refreshAtOnce();
    agent.expectAllRows(4);
}

TEST(OpenCodeIndexing, sessionsGiveWayToMessagesOfANewVersion) {
    const IndexedAgent agent;
    Agent{agent.database}.add(Session{.model = "muse-spark", .input = 5}).execute("DROP TABLE message;");
    agent.refreshAtOnce();
    agent.expectAllRows(1);
    Agent{agent.database}.add(Message{.input = 5});
    agent.refreshAtOnce();
    agent.expectAllRows(1);
}

/// The log's rows stay when the database comes: its file is gone from the readers' list, not from the index.
TEST(OpenCodeIndexing, theDatabaseTakesOverFromTheLog) {
    const IndexedAgent agent;
    agent.home.write(agent.log, agentLogLine("logged", "gpt-5", 1, 1) + agentLogLine("logged", "muse-spark", 1, 1));
    agent.refreshAtOnce();
    agent.expectAllRows(2);
    addCalls(Agent{agent.database}, 0, 1);
    agent.refreshAtOnce();
    EXPECT_EQ(agent.rows().size(), 4);
    EXPECT_THAT(agent.index->cursorPaths(ProviderID::Opencode), ::testing::ElementsAre(agent.database));
    EXPECT_THAT(agent.index->cursorPaths(ProviderID::MuseSpark),
                ::testing::ElementsAre(agent.museSpark.storeKey(agent.database)));
}

}  // namespace
}  // namespace quorvane::testing
