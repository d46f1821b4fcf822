// A database that another process uses, or left in any state: it is read as far as it can be, and never changed.

#include <array>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "QuorvaneCore/providers/detail/OpenCodeStore.h"
#include "tests/ingest/IngestTestSupport.h"
#include "tests/opencode/OpenCodeTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Key;
namespace fs = std::filesystem;
using Journal = Agent::Journal;

constexpr const char* theSession = "s1 opencode-db claude-sonnet-5 90/0/0/0";
constexpr const char* theMessage = "m1 s1 muse-spark-1.1 10/0/0/0";

const Agent& fill(const Agent& agent) {
    return agent.add(Session{.input = 100}).add(Message{.input = 10});
}

void expectBothRead(const OpenCodeHome& home) {
    EXPECT_TRUE(home.museSpark.isAvailable());
    EXPECT_THAT(told(home.opencode.loadEvents()), ElementsAre(theSession));
    EXPECT_THAT(told(home.museSpark.loadEvents()), ElementsAre(theMessage));
}

void expectNothingRead(const OpenCodeHome& home) {
    EXPECT_FALSE(home.museSpark.isAvailable());
    EXPECT_THAT(home.opencode.loadEvents(), IsEmpty());
    EXPECT_THAT(home.opencode.decodeFile(home.database, 0).events, IsEmpty());
    EXPECT_THAT(home.museSpark.loadEvents(), IsEmpty());
    EXPECT_THAT(home.museSpark.decodeFile(home.database, 77).events, IsEmpty());
    EXPECT_EQ(home.museSpark.decodeFile(home.database, 77).consumed, 77);
}

TEST(ForeignDatabase, atRestKeepsItsBytesAndItsFolder) {
    for (const Journal journal : {Journal::Rollback, Journal::WriteAhead}) {
        const OpenCodeHome home;
        fill(Agent{home.database, journal});
        const auto before = filesOf(home.folder);
        ASSERT_THAT(before, ElementsAre(Key("opencode.db")));
        expectBothRead(home);
        EXPECT_EQ(filesOf(home.folder), before);
    }
}

TEST(ForeignDatabase, withItsLogOpenIsReadWithWhatIsOnlyInTheLog) {
    const OpenCodeHome home;
    const Agent agent{home.database, Journal::WriteAhead};
    fill(agent);
    auto before = filesOf(home.folder);
    ASSERT_THAT(before, ElementsAre(Key("opencode.db"), Key("opencode.db-shm"), Key("opencode.db-wal")));
    ASSERT_FALSE(before["opencode.db-wal"].empty());
    expectBothRead(home);
    auto after = filesOf(home.folder);
    // The shared memory is for the marks of readers.
    before.erase("opencode.db-shm");
    after.erase("opencode.db-shm");
    EXPECT_EQ(after, before);
}

TEST(ForeignDatabase, withAnUnfinishedTransactionIsReadWithoutIt) {
    const OpenCodeHome home;
    const Agent agent{home.database, Journal::WriteAhead};
    fill(agent);
    agent.execute("BEGIN IMMEDIATE;").add(Session{.id = "s2", .input = 1}).add(Message{.id = "m2", .input = 1});
    expectBothRead(home);
    agent.execute("ROLLBACK;");
}

TEST(ForeignDatabase, withAnEmptyLogLeftBehindGetsNoSharedMemory) {
    const OpenCodeHome home;
    fill(Agent{home.database, Journal::WriteAhead});
    home.home.write(home.database + "-wal", "");
    const auto before = filesOf(home.folder);
    expectBothRead(home);
    EXPECT_EQ(filesOf(home.folder), before);
}

TEST(ForeignDatabase, withSharedMemoryLeftBehindGetsNoLog) {
    const OpenCodeHome home;
    fill(Agent{home.database, Journal::WriteAhead});
    home.home.write(home.database + "-shm", std::string(32768, '\0'));
    const auto before = filesOf(home.folder);
    expectBothRead(home);
    EXPECT_EQ(filesOf(home.folder), before);
}

/// The exception that the header names: SQLite cannot read such a log without making its shared memory.
TEST(ForeignDatabase, copiedWithItsLogIsReadWithItAndKeepsBoth) {
    const OpenCodeHome home;
    const std::string source = home.home.path("source.db");
    {
        const Agent agent{source, Journal::WriteAhead};
        fill(agent);
        fs::copy_file(source, home.database);
        fs::copy_file(source + "-wal", home.database + "-wal");
    }
    const auto before = filesOf(home.folder);
    expectBothRead(home);
    auto after = filesOf(home.folder);
    after.erase("opencode.db-shm");
    EXPECT_EQ(after, before);
}

TEST(ForeignDatabase, ofAStrangePathIsFound) {
    const ScratchHome home;
    for (const char* name : {"a ?b#c%41.db", "é&mode=rwc.db", "//twice//.//x.db"}) {
        const std::string path = home.path() + "/" + name;
        fs::create_directories(fs::path{path}.parent_path());
        fill(Agent{path, Journal::WriteAhead});
        EXPECT_EQ(OpenCodeProvider{path}.loadEvents().size(), 1) << name;
        const std::string twice = "/" + path;
        EXPECT_EQ(OpenCodeProvider{twice}.loadEvents().size(), 1) << twice;
        EXPECT_FALSE(home.exists(path + "-shm")) << name;
    }
}

TEST(ForeignDatabase, thatIsLockedForAMomentIsWaitedFor) {
    const OpenCodeHome home;
    const Agent agent{home.database};
    fill(agent).execute("BEGIN EXCLUSIVE;");
    auto opencode = std::async(std::launch::async, [&] { return told(home.opencode.loadEvents()); });
    auto museSpark = std::async(std::launch::async, [&] { return told(home.museSpark.loadEvents()); });
    std::this_thread::sleep_for(std::chrono::milliseconds{50});
    agent.execute("COMMIT;");
    EXPECT_THAT(opencode.get(), ElementsAre(theSession));
    EXPECT_THAT(museSpark.get(), ElementsAre(theMessage));
}

/// The readers give up after five seconds; they wait side by side here.
TEST(ForeignDatabase, thatStaysLockedGivesNothing) {
    const OpenCodeHome home;
    const Agent agent{home.database};
    fill(agent).execute("BEGIN EXCLUSIVE;");
    const auto before = filesOf(home.folder);
    auto opencode = std::async(std::launch::async, [&] { return told(home.opencode.loadEvents()); });
    auto available = std::async(std::launch::async, [&] { return home.museSpark.isAvailable(); });
    const DecodedFile decoded = home.museSpark.decodeFile(home.database, 0);
    EXPECT_THAT(decoded.events, IsEmpty());
    EXPECT_EQ(decoded.consumed, 0);
    EXPECT_THAT(opencode.get(), IsEmpty());
    EXPECT_FALSE(available.get());
    EXPECT_EQ(filesOf(home.folder), before);
    agent.execute("COMMIT;");
    expectBothRead(home);
}

/// Its writer died while it moved pages into the file. Only a writer may put that right.
TEST(ForeignDatabase, thatIsHalfWrittenGivesNothingAndStays) {
    const OpenCodeHome home;
    const std::string source = home.home.path("source.db");
    {
        const Agent agent{source};
        fill(agent);
        for (int row = 0; row < 200; ++row)
            agent.add(Session{.id = "old" + std::to_string(row), .model = std::string(500, 'x'), .input = 1});
        agent.execute(
            "PRAGMA synchronous=FULL; PRAGMA cache_size=1; BEGIN; UPDATE session SET tokens_input = 5, model = 'y';");
        fs::copy_file(source, home.database);
        fs::copy_file(source + "-journal", home.database + "-journal");
        agent.execute("ROLLBACK;");
    }
    const auto before = filesOf(home.folder);
    ASSERT_FALSE(before.at("opencode.db-journal").empty());
    expectNothingRead(home);
    EXPECT_EQ(filesOf(home.folder), before);
    // The agent puts it right when it comes back.
    Agent{home.database};
    EXPECT_EQ(home.opencode.loadEvents().size(), 201);
}

struct ContentCase {
    const char* name;
    std::string content;
};

class ForeignDatabaseContent : public ::testing::TestWithParam<ContentCase> {};

/// A log and a journal beside it must survive too: SQLite removes those of an empty file when it opens it.
TEST_P(ForeignDatabaseContent, thatIsNoneGivesNothingAndStays) {
    const OpenCodeHome home;
    home.home.write(home.database, GetParam().content);
    home.home.write(home.database + "-wal", "log");
    home.home.write(home.database + "-journal", "journal");
    const auto before = filesOf(home.folder);
    expectNothingRead(home);
    EXPECT_EQ(filesOf(home.folder), before);
}

INSTANTIATE_TEST_SUITE_P(ByContent, ForeignDatabaseContent,
                         ::testing::Values(ContentCase{"empty", ""}, ContentCase{"short", "SQLite format 3"},
                                           ContentCase{"text", std::string(5000, 'x')},
                                           ContentCase{"zeros", std::string(5000, '\0')}),
                         [](const auto& row) { return std::string{row.param.name}; });

void setByte(const std::string& path, std::streamoff place, char value) {
    std::fstream file{path, std::ios::binary | std::ios::in | std::ios::out};
    file.seekp(place).put(value);
}

TEST(ForeignDatabase, ofAnUnknownVersionGivesNothing) {
    const OpenCodeHome home;
    fill(Agent{home.database});
    setByte(home.database, 18, 9);
    setByte(home.database, 19, 9);
    const auto before = filesOf(home.folder);
    expectNothingRead(home);
    EXPECT_EQ(filesOf(home.folder), before);
}

TEST(ForeignDatabase, withoutItsTablesOrTheirColumnsGivesNothing) {
    const OpenCodeHome home;
    const Agent agent{home.database};
    fill(agent).execute("DROP TABLE message; DROP TABLE session;");
    expectNothingRead(home);
    agent.execute("CREATE TABLE session (id TEXT); CREATE TABLE message (id TEXT);");
    expectNothingRead(home);
}

TEST(ForeignDatabase, withoutMessagesCountsItsSessionsWhole) {
    const OpenCodeHome home;
    fill(Agent{home.database}).execute("DROP TABLE message;");
    EXPECT_THAT(told(home.opencode.loadEvents()), ElementsAre("s1 opencode-db claude-sonnet-5 100/0/0/0"));
}

/// Cut short at every page and with each page spoilt in turn: whatever is read, nothing is thrown and nothing changed.
TEST(ForeignDatabase, thatIsCorruptGivesNoMoreThanThereWas) {
    for (const Journal journal : {Journal::Rollback, Journal::WriteAhead}) {
        const OpenCodeHome home;
        {
            const Agent agent{home.database, journal};
            agent.execute("BEGIN;");
            for (int row = 0; row < 100; ++row) {
                const std::string number = std::to_string(row);
                agent.add(Session{.id = number, .model = std::string(100, 'x'), .input = 100});
                agent.add(Message{.id = number, .session = number, .input = 10});
            }
            agent.execute("COMMIT;");
        }
        const std::string whole = home.home.read(home.database);
        constexpr std::size_t page = 4096;
        ASSERT_GT(whole.size(), 5 * page);
        for (std::size_t at = page; at < whole.size(); at += page) {
            for (const bool isCut : {true, false}) {
                std::string content = isCut ? whole.substr(0, at) : whole;
                if (!isCut) content.replace(at, page, page, '\xa5');
                home.home.write(home.database, content);
                EXPECT_LE(home.opencode.loadEvents().size(), 100);
                EXPECT_LE(home.museSpark.loadEvents().size(), 100);
                EXPECT_EQ(filesOf(home.folder), (std::map<std::string, std::string>{{"opencode.db", content}}));
            }
        }
    }
}

TEST(ForeignDatabase, thatIsAFolderOrAPipeGivesNothing) {
    const OpenCodeHome home;
    home.home.makeFolder(home.database);
    expectNothingRead(home);
    home.home.remove(home.database);
    ASSERT_EQ(::mkfifo(home.database.c_str(), 0600), 0);
    expectNothingRead(home);
}

TEST(ForeignDatabase, leavesNoFileOpen) {
    const OpenCodeHome home;
    fill(Agent{home.database, Journal::WriteAhead}).add(Session{.id = "s2"});
    const std::size_t before = openDescriptors();
    expectBothRead(home);
    home.home.write(home.database, "no database");
    expectNothingRead(home);
    EXPECT_EQ(openDescriptors(), before);
}

/// Each session of 10 goes with a message of Muse Spark that used 4 of them, in one transaction: whatever the moment,
/// what is read fits together.
TEST(ForeignDatabase, isReadAtOneMomentWhileItIsWritten) {
    constexpr int calls = 40;
    for (const Journal journal : {Journal::Rollback, Journal::WriteAhead}) {
        const OpenCodeHome home;
        Agent{home.database, journal};
        std::atomic<bool> isDone = false;
        std::thread writer{[&] {
            for (int row = 0; row < calls; ++row) {
                // Comes and goes, so that the files beside the database do too.
                const Agent agent{home.database, journal};
                const std::string number = std::to_string(row);
                agent.execute("BEGIN IMMEDIATE;")
                    .add(Session{.id = number, .input = 10})
                    .add(Message{.id = number, .session = number, .input = 4})
                    .execute("COMMIT;");
            }
            isDone = true;
        }};
        std::size_t reads = 0;
        while (!isDone) {
            for (const UsageEvent& event : home.opencode.loadEvents())
                EXPECT_EQ(event.usage.input, 6);
            for (const UsageEvent& event : home.museSpark.loadEvents())
                EXPECT_EQ(event.usage.input, 4);
            ++reads;
        }
        writer.join();
        EXPECT_GT(reads, 0U);
        EXPECT_EQ(home.opencode.loadEvents().size(), calls);
        EXPECT_EQ(home.museSpark.loadEvents().size(), calls);
    }
}

TEST(OpenCodeStore, startsOverIfTheFileChangesWhileItIsReadWithoutALock) {
    const OpenCodeHome home;
    fill(Agent{home.database, Journal::WriteAhead});
    std::vector<std::size_t> counts;
    OpenCodeStore::read(home.database, [&](OpenCodeStore& store) {
        // The agent comes and goes, between the opening and the statement.
        if (counts.empty()) Agent{home.database, Journal::WriteAhead}.add(Session{.id = "s2"});
        std::size_t count = 0;
        store.forEachSession([&](const OpenCodeSessionRow& /*session*/) { ++count; });
        counts.push_back(count);
    });
    ASSERT_EQ(counts.size(), 2);
    EXPECT_EQ(counts.back(), 2);
}

TEST(OpenCodeStore, passesOnWhatItsUserThrows) {
    const OpenCodeHome home;
    EXPECT_THROW(OpenCodeStore::read(home.database, [](OpenCodeStore&) { FAIL(); }), SQLiteError);
    Agent{home.database}.execute("DROP TABLE session;");
    EXPECT_THROW(
        OpenCodeStore::read(home.database,
                            [](OpenCodeStore& store) { store.forEachSession([](const OpenCodeSessionRow&) {}); }),
        SQLiteError);
}

TEST(OpenCodeStore, answersItsQuestionsByTheRows) {
    const OpenCodeHome home;
    Agent{home.database}
        .add(Session{.model = "muse-spark", .project = "shop"})
        .add(Session{.id = "s2", .project = std::nullopt})
        .add(Message{.input = 1, .output = 2, .reasoning = 4, .cacheRead = 8, .cacheWrite = 16})
        .add(Message{.id = "m2", .input = 100});
    OpenCodeStore::read(home.database, [](OpenCodeStore& store) {
        EXPECT_TRUE(store.containsSparkMessage());
        EXPECT_TRUE(store.containsSparkSession());
        const auto projects = store.projectIDsBySession();
        EXPECT_EQ(projects.at("s1"), "shop");
        EXPECT_EQ(projects.at("s2"), std::nullopt);
        const auto totals = store.museSparkMessageTotals();
        ASSERT_EQ(totals.size(), 1);
        EXPECT_EQ(totals.at("s1"), (TokenUsage{.input = 101, .output = 6, .cacheCreate5m = 16, .cacheRead = 8}));
    });
}

}  // namespace
}  // namespace quorvane::testing
