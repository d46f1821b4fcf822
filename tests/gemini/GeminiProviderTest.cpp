// The reader's files, and what they tell together.

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/gemini/GeminiTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

const std::string chat = geminiChat("s", {geminiMessageWith("i", R"({"input":1})")});

TEST(GeminiProvider, isWhatTheIndexerNeedsToKnow) {
    const ChatHome home;
    EXPECT_EQ(home.provider.id(), ProviderID::Gemini);
    EXPECT_FALSE(home.provider.canTailAppend());
    EXPECT_EQ(home.provider.parserRevision(), 1);
    EXPECT_EQ(home.provider.resetPolicy(), ResetPolicy::RereadWhole);
    EXPECT_EQ(home.provider.watermarkTimestamp(1), std::nullopt);
    EXPECT_EQ(home.provider.latestRateLimits(), std::nullopt);
    EXPECT_FALSE(home.provider.latestRateLimitAwaitingReset(Date{0}));
}

TEST(GeminiProvider, isAvailableOnceItsFolderExists) {
    const ChatHome home;
    EXPECT_FALSE(home.provider.isAvailable());
    EXPECT_THAT(home.provider.watchPaths(), ElementsAre(home.home.path(".gemini/tmp")));
    home.home.makeFolder(".gemini/tmp");
    EXPECT_TRUE(home.provider.isAvailable());
    EXPECT_THAT(home.provider.loadEvents(), IsEmpty());
}

TEST(GeminiProvider, readsTheFolderGiven) {
    const ScratchHome home;
    home.write("elsewhere/p/chats/session-1.json", chat);
    const GeminiProvider provider{home.path("elsewhere")};
    EXPECT_TRUE(provider.isAvailable());
    EXPECT_THAT(provider.watchPaths(), ElementsAre(home.path("elsewhere")));
    EXPECT_EQ(provider.loadEvents().size(), 1);
    EXPECT_THAT(GeminiProvider{}.loadEvents(), IsEmpty());
}

TEST(GeminiProvider, chatsAreTheSessionFilesInFoldersNamedChats) {
    const ChatHome home;
    const std::vector<std::string> chats{
        home.write("9c1e/chats/session-1.json", chat), home.write("9c1e/chats/session-.json", chat),
        home.write("chats/session-1.json", chat), home.write("a/b/c/chats/session-2.json", chat),
        home.write("9c1e/chats/session-1.tar.json", chat)};
    for (const char* other :
         {"session-1.json", "9c1e/session-1.json", "9c1e/chats/notes.json", "9c1e/chats/Session-1.json",
          "9c1e/chats/session-1.jsonl", "9c1e/chats/session-1.JSON", "9c1e/chats/session-1",
          "9c1e/chats/asession-1.json", "9c1e/Chats/session-1.json", "9c1e/chats.old/session-1.json",
          "9c1e/chats/old/session-1.json", "9c1e/chats/.session-1.json", "9c1e/.hidden/chats/session-1.json",
          "9c1e/.chats/session-1.json"})
        home.write(other, chat);
    EXPECT_THAT(home.provider.sessionFiles(), ::testing::UnorderedElementsAreArray(chats));
    EXPECT_EQ(home.provider.dataFiles(), home.provider.sessionFiles());
}

TEST(GeminiProvider, withoutItsFolderThereAreNoChats) {
    const ChatHome home;
    EXPECT_THAT(home.provider.sessionFiles(), IsEmpty());
    home.home.write(".gemini/tmp", "a file");
    EXPECT_THAT(home.provider.sessionFiles(), IsEmpty());
    EXPECT_THAT(home.provider.loadEvents(), IsEmpty());
}

TEST(GeminiProvider, aCopiedChatCountsOnce) {
    const ChatHome home;
    home.write("a/chats/session-1.json", chat);
    home.write("b/chats/session-1.json", chat);
    EXPECT_THAT(told(home.provider.loadEvents()), ElementsAre("gemini i s m 1772445641.000 1/0/0/0/0 (none)"));
}

TEST(GeminiProvider, theSameMessageOfAnotherSessionIsAnotherCall) {
    const ChatHome home;
    home.write("a/chats/session-1.json", chat);
    home.write("a/chats/session-2.json", geminiChat("t", {geminiMessageWith("i", R"({"input":2})")}));
    EXPECT_THAT(told(home.provider.loadEvents()), UnorderedElementsAre("gemini i s m 1772445641.000 1/0/0/0/0 (none)",
                                                                       "gemini i t m 1772445641.000 2/0/0/0/0 (none)"));
}

/// Files are visited in whatever order; the answer does not depend on it.
TEST(GeminiProvider, acrossFilesTheLargerOutputWinsAndThenTheLargerTotal) {
    const std::string little = geminiChat("s", {geminiMessageWith("i", R"({"input":50,"output":1})")});
    const std::string more = geminiChat("s", {geminiMessageWith("i", R"({"input":5,"output":2})")});
    const std::string most = geminiChat("s", {geminiMessageWith("i", R"({"input":6,"output":2})")});
    for (const auto& [first, second, expected] :
         std::vector<std::tuple<std::string, std::string, std::string>>{{little, more, "5/2/0/0/0"},
                                                                        {more, little, "5/2/0/0/0"},
                                                                        {more, most, "6/2/0/0/0"},
                                                                        {most, more, "6/2/0/0/0"}}) {
        const ChatHome home;
        home.write("a/chats/session-1.json", first);
        home.write("b/chats/session-1.json", second);
        EXPECT_THAT(told(home.provider.loadEvents()),
                    ElementsAre("gemini i s m 1772445641.000 " + expected + " (none)"));
    }
}

TEST(GeminiProvider, decodeReadsTheWholeFileWhateverTheOffset) {
    const ChatHome home;
    const std::string file = home.write("p/chats/session-1.json", chat);
    for (const std::int64_t offset : {std::int64_t{0}, std::int64_t{5}, std::int64_t{1000000}, std::int64_t{-1}}) {
        const DecodedFile decoded = home.provider.decodeFile(file, offset);
        EXPECT_EQ(told(decoded.events), told(GeminiProvider::parseUsage(file)));
        EXPECT_EQ(decoded.events.size(), 1);
        EXPECT_EQ(decoded.consumed, static_cast<std::int64_t>(chat.size()));
    }
}

TEST(GeminiProvider, decodeConsumesAFileThatIsNoChatAndNothingOfAMissingOne) {
    const ChatHome home;
    const DecodedFile odd = home.provider.decodeFile(home.write("p/chats/session-1.json", "{\"half"), 0);
    EXPECT_THAT(odd.events, IsEmpty());
    EXPECT_EQ(odd.consumed, 6);
    const DecodedFile missing = home.provider.decodeFile(home.path("p/chats/session-2.json"), 7);
    EXPECT_THAT(missing.events, IsEmpty());
    EXPECT_EQ(missing.consumed, 0);
}

}  // namespace
}  // namespace quorvane::testing
