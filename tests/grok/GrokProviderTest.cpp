// The reader's files, and what they tell together.

#include <ostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/providers/GrokProvider.h"
#include "tests/grok/GrokTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(GrokProvider, isWhatTheIndexerNeedsToKnow) {
    const GrokScratchHome home;
    const GrokProvider provider;
    EXPECT_EQ(provider.id(), ProviderID::Grok);
    EXPECT_TRUE(provider.canTailAppend());
    EXPECT_EQ(provider.parserRevision(), 2);
    EXPECT_EQ(provider.resetPolicy(), ResetPolicy::RereadWhole);
    EXPECT_EQ(provider.watermarkTimestamp(1), std::nullopt);
}

TEST(GrokProvider, isAvailableOnceThereIsASessionLog) {
    const GrokScratchHome home;
    home.makeAgent();
    home.write(".grok/sessions/p/s/chat.jsonl", "");
    const GrokProvider provider;
    EXPECT_FALSE(provider.isAvailable());
    EXPECT_THAT(provider.loadEvents(), IsEmpty());
    home.write(".grok/sessions/p/s/updates.jsonl", "");
    EXPECT_TRUE(provider.isAvailable());
    EXPECT_THAT(provider.updatesFiles(), ElementsAre(home.path(".grok/sessions/p/s/updates.jsonl")));
    EXPECT_EQ(provider.dataFiles(), provider.updatesFiles());
}

struct ProjectCase {
    const char* name;
    std::string file;
    std::optional<std::string> expected;
};
void PrintTo(const ProjectCase& row, std::ostream* stream) {
    *stream << row.name;
}
class GrokProject : public ::testing::TestWithParam<ProjectCase> {};

TEST_P(GrokProject, isTheFolderAboveTheSessions) {
    EXPECT_EQ(GrokProvider::projectName(GetParam().file), GetParam().expected);
}

std::string inFolder(std::string_view folder) {
    return "/home/ana/.grok/sessions/" + std::string{folder} + "/019a/updates.jsonl";
}

INSTANTIATE_TEST_SUITE_P(
    ByPath, GrokProject,
    ::testing::Values(ProjectCase{"encodedPath", inFolder("%2Fhome%2Fana%2Fshop"), "/home/ana/shop"},
                      ProjectCase{"smallDigits", inFolder("%2fhome"), "/home"},
                      ProjectCase{"plainName", inFolder("shop"), "shop"},
                      ProjectCase{"encodedLetters", inFolder("caf%C3%A9%20%E2%82%AC"), "café €"},
                      ProjectCase{"lettersOfTheirOwn", inFolder("café%20x"), "café x"},
                      ProjectCase{"plusIsAPlus", inFolder("a+b%2Bc"), "a+b+c"},
                      ProjectCase{"encodedPercent", inFolder("100%25%32%35"), "100%25"},
                      ProjectCase{"percentWithoutDigits", inFolder("%2Fa%zz"), "%2Fa%zz"},
                      ProjectCase{"percentWithOneDigit", inFolder("%2Fa%2"), "%2Fa%2"},
                      ProjectCase{"percentAtTheEnd", inFolder("%2Fa%"), "%2Fa%"},
                      ProjectCase{"percentAndASign", inFolder("a%+1b"), "a%+1b"},
                      ProjectCase{"bytesThatAreNoText", inFolder("%2Fa%FF"), "%2Fa%FF"},
                      ProjectCase{"halfALetter", inFolder("%2Fa%C3"), "%2Fa%C3"},
                      ProjectCase{"encodedNameOfTheRoot", inFolder("%73essions"), "sessions"},
                      ProjectCase{"sessionDirectlyInTheRoot", "/home/ana/.grok/sessions/019a/updates.jsonl",
                                  std::nullopt},
                      ProjectCase{"logDirectlyInTheRoot", "/home/ana/.grok/sessions/updates.jsonl", ".grok"},
                      ProjectCase{"deeperLog", "/home/ana/.grok/sessions/p/s/sub/updates.jsonl", "s"},
                      ProjectCase{"logInTheFileSystemsRoot", "/updates.jsonl", std::nullopt},
                      ProjectCase{"logOneBelowTheFileSystemsRoot", "/s/updates.jsonl", std::nullopt}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(GrokProvider, eventsCarryTheProjectOfTheirFile) {
    const GrokScratchHome home;
    const std::string line = turnLine("e", grokUsage(1, 0)) + "\n";
    home.write(".grok/sessions/%2Fhome%2Fana/s/updates.jsonl", line);
    home.write(".grok/sessions/t/updates.jsonl", line);
    EXPECT_THAT(told(GrokProvider{}.loadEvents()), ElementsAre("grok e p-e grok 1789374066.480 1/0/0/0/0 (none)",
                                                               "grok e p-e grok 1789374066.480 1/0/0/0/0 /home/ana"));
}

TEST(GrokProvider, loadGoesFileByFileInTheOrderOfThePaths) {
    const GrokScratchHome home;
    home.write(".grok/sessions/b/s/updates.jsonl",
               turnLine("b1", grokUsage(1, 0)) + "\n" + turnLine("b2", grokUsage(1, 0)));
    home.write(".grok/sessions/a/s/updates.jsonl",
               turnLine("a1", grokUsage(1, 0)) + "\n\n{\"half\n" + turnLine("a2", grokUsage(1, 0)) + "\n");
    home.makeFolder(".grok/sessions/a/t/updates.jsonl");
    std::vector<std::string> order;
    for (const UsageEvent& event : GrokProvider{}.loadEvents())
        order.push_back(event.messageId);
    EXPECT_THAT(order, ElementsAre("a1", "a2", "b1", "b2"));
}

TEST(GrokProvider, decodeGoesOnFromTheOffset) {
    const GrokScratchHome home;
    const std::string first = turnLine("a", grokUsage(1, 0)) + "\n";
    const std::string second = turnLine("b", grokUsage(2, 0)) + "\n";
    const std::string file = home.write(".grok/sessions/p/s/updates.jsonl", first + second);
    const GrokProvider provider;
    EXPECT_EQ(provider.decodeFile(file, 0).events.size(), 2);
    const DecodedFile rest = provider.decodeFile(file, static_cast<std::int64_t>(first.size()));
    EXPECT_THAT(told(rest.events), ElementsAre("grok b p-b grok 1789374066.480 2/0/0/0/0 p"));
    EXPECT_EQ(rest.consumed, static_cast<std::int64_t>(first.size() + second.size()));
}

TEST(GrokProvider, unfinishedLastLineIsLeftForTheNextRead) {
    const GrokScratchHome home;
    const std::string first = turnLine("a", grokUsage(1, 0)) + "\n";
    const std::string second = turnLine("b", grokUsage(2, 0));
    const std::string file = home.write(".grok/sessions/p/s/updates.jsonl", first + second.substr(0, 40));
    const GrokProvider provider;
    const DecodedFile torn = provider.decodeFile(file, 0);
    EXPECT_EQ(torn.events.size(), 1);
    EXPECT_EQ(torn.consumed, static_cast<std::int64_t>(first.size()));
    home.append(file, second.substr(40));
    const DecodedFile whole = provider.decodeFile(file, torn.consumed);
    EXPECT_EQ(whole.events.size(), 1);
    EXPECT_EQ(whole.consumed, static_cast<std::int64_t>(first.size() + second.size())) << "it needs no line feed";
}

TEST(GrokProvider, missingFileGivesNoEventsAndItsOffset) {
    const GrokScratchHome home;
    const DecodedFile missing = GrokProvider{}.decodeFile(home.path("none.jsonl"), 7);
    EXPECT_THAT(missing.events, IsEmpty());
    EXPECT_EQ(missing.consumed, 7);
}

}  // namespace
}  // namespace quorvane::testing
