#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/providers/OpenCodeProvider.h"
#include "tests/ingest/IngestTestSupport.h"
#include "tests/opencode/OpenCodeTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(OpenCodeProvider, hasItsOwnKindOfReading) {
    const OpenCodeHome home;
    EXPECT_EQ(home.opencode.id(), ProviderID::Opencode);
    EXPECT_EQ(home.opencode.parserRevision(), 1);
    EXPECT_EQ(home.opencode.resetPolicy(), ResetPolicy::RereadWhole);
    EXPECT_EQ(home.opencode.watermarkTimestamp(5), std::nullopt);
    EXPECT_EQ(home.opencode.storeKey(home.database), home.database);
    EXPECT_THAT(home.opencode.watchPaths(), ElementsAre(home.folder));
}

TEST(OpenCodeProvider, isNotThereWithoutData) {
    const OpenCodeHome home;
    EXPECT_FALSE(home.opencode.isAvailable());
    EXPECT_THAT(home.opencode.dataFiles(), IsEmpty());
    EXPECT_THAT(home.opencode.loadEvents(), IsEmpty());
    EXPECT_TRUE(home.opencode.canTailAppend());
}

TEST(OpenCodeProvider, takesTheDatabaseAloneWhereBothAre) {
    const OpenCodeHome home;
    home.home.write(home.log, agentLogLine("logged", "gpt-5", 1, 1) + agentLogLine("logged", "muse-spark", 1, 1));
    EXPECT_THAT(home.opencode.dataFiles(), ElementsAre(home.log));
    EXPECT_TRUE(home.opencode.canTailAppend());
    Agent{home.database}.add(Session{.input = 1}).add(Message{.input = 1});
    const OpenWatch watch{{home.log}};
    EXPECT_THAT(home.opencode.dataFiles(), ElementsAre(home.database));
    EXPECT_THAT(home.museSpark.dataFiles(), ElementsAre(home.database));
    EXPECT_FALSE(home.opencode.canTailAppend());
    EXPECT_TRUE(home.opencode.isAvailable());
    EXPECT_TRUE(home.museSpark.isAvailable());
    EXPECT_THAT(told(home.opencode.loadEvents()), IsEmpty());
    EXPECT_THAT(told(home.museSpark.loadEvents()), ElementsAre("m1 s1 muse-spark-1.1 1/0/0/0"));
    EXPECT_FALSE(watch.hasSeenAnOpen());
}

TEST(OpenCodeProvider, takesAFileAsItsRootLikeTheFolder) {
    const OpenCodeHome home;
    const std::string database = home.home.path("copy.db");
    Agent{database}.add(Session{.input = 1}).add(Message{.session = "s2", .input = 1});
    EXPECT_THAT(OpenCodeProvider{database}.dataFiles(), ElementsAre(database));
    EXPECT_EQ(OpenCodeProvider{database}.loadEvents().size(), 1);
    EXPECT_EQ(MuseSparkProvider{database}.loadEvents().size(), 1);
    const std::string log = home.home.write("copy.log", agentLogLine("s1", "gpt-5", 1, 1));
    EXPECT_THAT(OpenCodeProvider{log}.dataFiles(), ElementsAre(log));
    EXPECT_EQ(OpenCodeProvider{log}.loadEvents().size(), 1);
    EXPECT_TRUE(OpenCodeProvider{log}.canTailAppend());
    EXPECT_THAT(OpenCodeProvider{home.home.path("missing.db")}.dataFiles(), IsEmpty());
}

TEST(OpenCodeDatabase, givesOneEventASession) {
    const OpenCodeHome home;
    Agent{home.database}.add(
        Session{.input = 1, .output = 2, .reasoning = 4, .cacheRead = 8, .cacheWrite = 16, .created = 1789380000250});
    const auto events = OpenCodeProvider::decodeDatabase(home.database);
    ASSERT_EQ(events.size(), 1);
    EXPECT_EQ(events[0].messageId, "s1");
    EXPECT_EQ(events[0].requestId, "opencode-db");
    EXPECT_EQ(events[0].provider, ProviderID::Opencode);
    EXPECT_EQ(events[0].model, "claude-sonnet-5");
    EXPECT_EQ(events[0].timestamp.secondsSince1970, 1789380000.25);
    EXPECT_EQ(events[0].usage, (TokenUsage{.input = 1, .output = 6, .cacheCreate5m = 16, .cacheRead = 8}));
    EXPECT_EQ(events[0].project, "shop");
}

TEST(OpenCodeDatabase, passesOverSessionsWithoutAnIdentityOrWithoutTokens) {
    const OpenCodeHome home;
    Agent{home.database}
        .add(Session{.id = std::nullopt, .input = 1})
        .add(Session{})
        .add(Session{.id = "s2", .input = 1});
    EXPECT_THAT(told(home.opencode.loadEvents()), ElementsAre("s2 opencode-db claude-sonnet-5 1/0/0/0"));
}

TEST(OpenCodeDatabase, takesOutWhatMuseSparkUsed) {
    const OpenCodeHome home;
    Agent{home.database}
        .add(Session{.input = 100, .output = 50, .reasoning = 10, .cacheRead = 30, .cacheWrite = 20})
        .add(Message{.input = 30, .output = 5, .reasoning = 2, .cacheRead = 4, .cacheWrite = 3})
        .add(Message{.id = "m2", .model = "MUSE-SPARK", .input = 10})
        .add(Message{.id = "m3", .model = "claude-sonnet-5", .input = 40})
        .add(Message{.id = "m4", .input = 40, .role = "user"})
        .add(Message{.id = "m5", .session = "s2", .input = 9});
    EXPECT_THAT(told(home.opencode.loadEvents()), ElementsAre("s1 opencode-db claude-sonnet-5 60/53/17/26"));
}

TEST(OpenCodeDatabase, neverGoesBelowZero) {
    const OpenCodeHome home;
    Agent{home.database}
        .add(Session{.input = 100, .output = 7})
        .add(Message{.input = 150})
        .add(Session{.id = "s2", .input = 5})
        .add(Message{.id = "m2", .session = "s2", .input = 5});
    EXPECT_THAT(told(home.opencode.loadEvents()), ElementsAre("s1 opencode-db claude-sonnet-5 0/7/0/0"));
}

struct ModelCase {
    const char* name;
    std::optional<std::string> column;
    std::optional<std::string> expected;  ///< absent where the session is not OpenCode's
};

class OpenCodeDatabaseModel : public ::testing::TestWithParam<ModelCase> {};

TEST_P(OpenCodeDatabaseModel, isThatOfTheSession) {
    const OpenCodeHome home;
    Agent{home.database}.add(Session{.model = GetParam().column, .input = 1});
    const auto events = home.opencode.loadEvents();
    ASSERT_EQ(events.size(), GetParam().expected ? 1 : 0);
    if (!GetParam().expected) return;
    EXPECT_EQ(events[0].model, *GetParam().expected);
    EXPECT_EQ(OpenCodeProvider::modelID(GetParam().column), *GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    ByColumn, OpenCodeDatabaseModel,
    ::testing::Values(ModelCase{"null", std::nullopt, "opencode"}, ModelCase{"empty", "", "opencode"},
                      ModelCase{"text", "anthropic/claude-opus-5", "claude-opus-5"},
                      ModelCase{"object", R"({"id":"openai/gpt-5","providerID":"openai"})", "gpt-5"},
                      ModelCase{"objectWithoutId", R"({"name":"x"})", R"({"name":"x"})"},
                      ModelCase{"objectWithEmptyId", R"({"id":""})", R"({"id":""})"},
                      ModelCase{"array", R"(["a"])", R"(["a"])"}, ModelCase{"tornObject", R"({"id":"x)", R"({"id":"x)"},
                      ModelCase{"sparkObject", R"({"id":"meta/muse-spark-1.1","providerID":"meta"})", std::nullopt},
                      ModelCase{"sparkText", "Meta/Muse-Spark-1.1", std::nullopt},
                      ModelCase{"sparkEscaped", R"({"id":"muse\u002dspark"})", std::nullopt},
                      ModelCase{"sparkElsewhereInTheObject", R"({"id":"x","via":"muse-spark"})", std::nullopt}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(OpenCodeDatabase, isDecodedWholeWhateverTheOffset) {
    const OpenCodeHome home;
    Agent{home.database}.add(Session{.input = 1});
    const DecodedFile decoded = home.opencode.decodeFile(home.database, 4096);
    EXPECT_EQ(decoded.events.size(), 1);
    EXPECT_EQ(decoded.consumed, static_cast<std::int64_t>(home.home.read(home.database).size()));
    EXPECT_EQ(home.opencode.decodeFile(home.home.path("missing.db"), 5).consumed, 0);
}

/// The rows of one session in the order of the table; only `loadEvents` makes one of them.
TEST(OpenCodeDatabase, aDoubledSessionIsOneCall) {
    const OpenCodeHome home;
    Agent{home.database}.add(Session{.output = 1}).add(Session{.output = 2});
    EXPECT_EQ(OpenCodeProvider::decodeDatabase(home.database).size(), 2);
    EXPECT_THAT(told(home.opencode.loadEvents()), ElementsAre("s1 opencode-db claude-sonnet-5 0/2/0/0"));
}

}  // namespace
}  // namespace quorvane::testing
