#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/providers/MuseSparkProvider.h"
#include "tests/opencode/OpenCodeTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(MuseSparkProvider, hasItsOwnKindOfReading) {
    const OpenCodeHome home;
    EXPECT_EQ(home.museSpark.id(), ProviderID::MuseSpark);
    EXPECT_EQ(home.museSpark.parserRevision(), 2);
    EXPECT_FALSE(home.museSpark.canTailAppend());
    EXPECT_EQ(home.museSpark.resetPolicy(), ResetPolicy::RereadWhole);
    EXPECT_THAT(home.museSpark.watchPaths(), ElementsAre(home.folder));
    EXPECT_NE(home.museSpark.storeKey(home.database), home.database);
    Agent{home.database};
    EXPECT_EQ(home.museSpark.resetPolicy(), ResetPolicy::Watermark);
    EXPECT_FALSE(home.museSpark.canTailAppend());
}

TEST(MuseSparkProvider, theWatermarkIsInMilliseconds) {
    const MuseSparkProvider provider{"/nowhere"};
    EXPECT_EQ(provider.watermarkTimestamp(0), std::nullopt);
    EXPECT_EQ(provider.watermarkTimestamp(-5), std::nullopt);
    EXPECT_EQ(provider.watermarkTimestamp(1), Date{0.001});
    EXPECT_EQ(provider.watermarkTimestamp(1789380000250), Date{1789380000.25});
}

TEST(MuseSparkProvider, isThereOnlyWhereItWasUsed) {
    const OpenCodeHome home;
    EXPECT_FALSE(home.museSpark.isAvailable());
    const Agent agent{home.database};
    agent.add(Session{.input = 1}).add(Message{.model = "gpt-5"}).add(Message{.model = "muse-spark", .role = "user"});
    EXPECT_FALSE(home.museSpark.isAvailable());
    agent.add(Session{.model = R"({"id":"META/MUSE-SPARK-2"})"});
    EXPECT_TRUE(home.museSpark.isAvailable());
    agent.execute("DELETE FROM session;").add(Message{.model = "Muse-Spark-2"});
    EXPECT_TRUE(home.museSpark.isAvailable());
    agent.execute("DROP TABLE message;").add(Session{.model = "muse-spark"});
    EXPECT_TRUE(home.museSpark.isAvailable()) << "by the sessions, where there are no messages";
}

struct RecognitionCase {
    const char* name;
    std::optional<std::string> id;
    std::optional<std::string> providerID;
    bool expected;
};

class MuseSparkRecognition : public ::testing::TestWithParam<RecognitionCase> {};

TEST_P(MuseSparkRecognition, goesByNameAndVendor) {
    const RecognitionCase& row = GetParam();
    EXPECT_EQ(MuseSparkProvider::isSparkModelObject(row.id, row.providerID), row.expected);
    const OpenCodeHome home;
    Agent{home.database}.add(Message{.model = row.id, .provider = row.providerID, .input = 1});
    EXPECT_EQ(MuseSparkProvider::decodeDatabase(home.database).size(), row.expected ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(ByModel, MuseSparkRecognition,
                         ::testing::Values(RecognitionCase{"name", "muse-spark-1.1", std::nullopt, true},
                                           RecognitionCase{"nameInCapitals", "META/Muse-Spark-1.1", "anything", true},
                                           RecognitionCase{"sparkOfTheVendor", "spark-large", "meta", true},
                                           RecognitionCase{"sparkOfTheVendorInCapitals", "Spark-Large", "META", true},
                                           RecognitionCase{"sparkOfAnotherVendor", "spark-large", "openai", false},
                                           RecognitionCase{"sparkOfALongerVendor", "spark-large", "metal", false},
                                           RecognitionCase{"sparkOfNoVendor", "spark-large", std::nullopt, false},
                                           RecognitionCase{"anotherOfTheVendor", "llama-5", "meta", false},
                                           RecognitionCase{"vendorAlone", std::nullopt, "meta", false},
                                           RecognitionCase{"nothing", std::nullopt, std::nullopt, false}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(MuseSparkProvider, namesTheModelWithoutItsVendor) {
    EXPECT_EQ(MuseSparkProvider::normalizedModelID("META/Muse-Spark-1.1"), "Muse-Spark-1.1");
    EXPECT_EQ(MuseSparkProvider::normalizedModelID(std::nullopt), "muse-spark-1.1");
    EXPECT_FALSE(MuseSparkProvider::isSparkModelID(std::nullopt));
    EXPECT_FALSE(MuseSparkProvider::isSparkModelID(""));
    EXPECT_TRUE(MuseSparkProvider::isSparkModelID("x/MUSE-SPARK"));
}

TEST(MuseSparkProvider, readsAModelColumnAsAnObjectOrAsItself) {
    using Model = MuseSparkProvider::Model;
    EXPECT_EQ(MuseSparkProvider::parseModelColumn(R"({"id":"a","providerID":"b"})"), (Model{"a", "b"}));
    EXPECT_EQ(MuseSparkProvider::parseModelColumn(R"({"id":1,"providerID":null})"), (Model{}));
    EXPECT_EQ(MuseSparkProvider::parseModelColumn("a"), (Model{"a", std::nullopt}));
    EXPECT_EQ(MuseSparkProvider::parseModelColumn(R"([{"id":"a"}])"), (Model{R"([{"id":"a"}])", std::nullopt}));
    EXPECT_EQ(MuseSparkProvider::parseModelColumn(std::nullopt), (Model{}));
}

TEST(MuseSparkDatabase, givesOneEventAMessage) {
    const OpenCodeHome home;
    Agent{home.database}
        .add(Session{.id = "s7", .project = "shop"})
        .add(Message{.session = "s7",
                     .created = 1789380000250,
                     .input = 1,
                     .output = 2,
                     .reasoning = 4,
                     .cacheRead = 8,
                     .cacheWrite = 16})
        .add(Message{.id = "m2", .session = "unknown", .input = 1})
        .add(Message{.id = std::nullopt, .input = 1})
        .add(Message{.id = "m4", .session = std::nullopt, .input = 1})
        .add(Message{.id = "m5"})
        .add(Message{.id = "m6", .input = 1, .role = "user"});
    const auto events = MuseSparkProvider::decodeDatabase(home.database);
    ASSERT_EQ(events.size(), 2);
    EXPECT_EQ(events[0].messageId, "m1");
    EXPECT_EQ(events[0].requestId, "s7");
    EXPECT_EQ(events[0].provider, ProviderID::MuseSpark);
    EXPECT_EQ(events[0].model, "muse-spark-1.1");
    EXPECT_EQ(events[0].timestamp.secondsSince1970, 1789380000.25);
    EXPECT_EQ(events[0].usage, (TokenUsage{.input = 1, .output = 6, .cacheCreate5m = 16, .cacheRead = 8}));
    EXPECT_EQ(events[0].project, "shop");
    EXPECT_EQ(events[1].project, std::nullopt);
}

TEST(MuseSparkDatabase, everyMessageAdvancesTheWatermark) {
    const OpenCodeHome home;
    Agent{home.database}
        .add(Message{.created = 2000, .input = 1})
        .add(Message{.id = "m2", .model = "gpt-5", .provider = "openai", .created = 5000, .input = 1})
        .add(Message{.id = "m3", .created = 0, .input = 1})
        .add(Message{.id = "m4", .created = 9000, .input = 1, .role = "user"})
        .add(Message{.id = "m5", .created = 1000, .input = 1});
    const DecodedFile decoded = home.museSpark.decodeFile(home.database, 0);
    EXPECT_THAT(told(decoded.events), ElementsAre("m1 s1 muse-spark-1.1 1/0/0/0", "m5 s1 muse-spark-1.1 1/0/0/0"));
    EXPECT_EQ(decoded.consumed, 5000);
}

TEST(MuseSparkDatabase, isReadOnFromTheWatermarkWithTheNewestMessageAgain) {
    const OpenCodeHome home;
    const Agent agent{home.database};
    agent.add(Message{.created = 1000, .input = 1}).add(Message{.id = "m2", .created = 2000, .input = 2});
    EXPECT_EQ(home.museSpark.decodeFile(home.database, 0).consumed, 2000);
    agent.add(Message{.id = "m3", .created = 3000, .input = 3});
    const DecodedFile decoded = home.museSpark.decodeFile(home.database, 2000);
    EXPECT_THAT(told(decoded.events), ElementsAre("m2 s1 muse-spark-1.1 2/0/0/0", "m3 s1 muse-spark-1.1 3/0/0/0"));
    EXPECT_EQ(decoded.consumed, 3000);
    EXPECT_EQ(MuseSparkProvider::decodeDatabase(home.database, 4000).consumed, 4000);
}

TEST(MuseSparkDatabase, asksTheSessionsOnlyWhereTheMessagesTellNothing) {
    const OpenCodeHome home;
    const Agent agent{home.database};
    agent.add(Session{.id = "old", .model = R"({"id":"spark-large","providerID":"meta"})", .input = 7})
        .add(Session{.id = "other", .model = "gpt-5", .input = 7})
        .add(Session{.id = "unused", .model = "muse-spark"})
        .add(Message{.model = "gpt-5", .provider = "openai", .created = 5000, .input = 1});
    const DecodedFile sessions = home.museSpark.decodeFile(home.database, 0);
    EXPECT_THAT(told(sessions.events), ElementsAre("old opencode-db spark-large 7/0/0/0"));
    EXPECT_EQ(sessions.events[0].project, "shop");
    EXPECT_EQ(sessions.events[0].timestamp.secondsSince1970, 1789380000);
    EXPECT_EQ(sessions.consumed, 5000);
    EXPECT_THAT(home.museSpark.decodeFile(home.database, 5000).events, IsEmpty()) << "reading on";
    agent.add(Message{.id = "m2", .created = 6000, .input = 1});
    EXPECT_THAT(told(home.museSpark.loadEvents()), ElementsAre("m2 s1 muse-spark-1.1 1/0/0/0"));
}

TEST(MuseSparkDatabase, withoutATableOfMessagesGivesItsSessions) {
    const OpenCodeHome home;
    Agent{home.database}.add(Session{.model = "muse-spark", .input = 7}).execute("DROP TABLE message;");
    const DecodedFile decoded = home.museSpark.decodeFile(home.database, 0);
    EXPECT_THAT(told(decoded.events), ElementsAre("s1 opencode-db muse-spark 7/0/0/0"));
    EXPECT_EQ(decoded.consumed, 0);
    EXPECT_THAT(home.museSpark.decodeFile(home.database, 1).events, IsEmpty());
}

TEST(MuseSparkDatabase, withoutATableOfSessionsGivesItsMessages) {
    const OpenCodeHome home;
    Agent{home.database}.add(Message{.input = 1}).execute("DROP TABLE session;");
    EXPECT_THAT(told(home.museSpark.loadEvents()), ElementsAre("m1 s1 muse-spark-1.1 1/0/0/0"));
}

/// Such a message stops SQLite's own parser. The sessions take over, and OpenCode counts those that are not Muse
/// Spark's whole, so nothing counts twice.
TEST(MuseSparkDatabase, messagesThatCannotBeReadGiveWayToTheSessions) {
    const OpenCodeHome home;
    const Agent agent{home.database};
    agent.add(Session{.id = "spark", .model = "muse-spark", .input = 7})
        .add(Session{.id = "mixed", .model = "gpt-5", .input = 10})
        .add(Message{.session = "mixed", .created = 1000, .input = 3})
        .addMessageData("m2", R"({"role":"assist)");
    const DecodedFile decoded = home.museSpark.decodeFile(home.database, 0);
    EXPECT_THAT(told(decoded.events), ElementsAre("spark opencode-db muse-spark 7/0/0/0"));
    EXPECT_EQ(decoded.consumed, 1000);
    EXPECT_THAT(told(home.opencode.loadEvents()), ElementsAre("mixed opencode-db gpt-5 10/0/0/0"));
    EXPECT_THAT(home.museSpark.decodeFile(home.database, 500).events, IsEmpty());
}

}  // namespace
}  // namespace quorvane::testing
