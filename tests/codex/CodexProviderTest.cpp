#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/providers/CodexProvider.h"
#include "tests/codex/CodexTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

TEST(CodexProvider, isTheReaderOfCodex) {
    const ScratchHome home;
    const CodexProvider provider;
    EXPECT_EQ(provider.id(), ProviderID::Codex);
    EXPECT_FALSE(provider.canTailAppend());
    EXPECT_EQ(provider.parserRevision(), 2);
    EXPECT_EQ(provider.resetPolicy(), ResetPolicy::RereadWhole);
    EXPECT_EQ(provider.watermarkTimestamp(5), std::nullopt);
}

TEST(CodexProvider, looksBelowTheHomeFolder) {
    const ScratchHome home;
    EXPECT_THAT(CodexProvider{}.watchPaths(), ElementsAre(home.path(".codex/sessions")));
    EXPECT_THAT(CodexProvider{"/elsewhere"}.watchPaths(), ElementsAre("/elsewhere"));
}

TEST(CodexProvider, isAvailableWhereTheFolderIs) {
    const ScratchHome home;
    const CodexProvider provider;
    EXPECT_FALSE(provider.isAvailable());
    EXPECT_THAT(provider.rolloutFiles(), IsEmpty());
    EXPECT_THAT(provider.loadEvents(), IsEmpty());
    home.makeFolder(".codex/sessions");
    EXPECT_TRUE(provider.isAvailable());
}

TEST(CodexProvider, findsRolloutsAndNothingElse) {
    const RolloutHome home;
    const std::string deep = home.write("2026/09/14/rollout-a.jsonl", "");
    const std::string flat = home.write("rollout-.jsonl", "");
    home.write("2026/09/14/session-a.jsonl", "");
    home.write("2026/09/14/Rollout-a.jsonl", "");
    home.write("2026/09/14/my-rollout-a.jsonl", "");
    home.write("2026/09/14/rollout-a.JSONL", "");
    home.write("2026/09/14/rollout-a.jsonl.gz", "");
    home.write("2026/09/14/rollout-a.json", "");
    home.write(".hidden/rollout-a.jsonl", "");
    home.write("2026/.rollout-a.jsonl", "");
    EXPECT_THAT(home.provider.rolloutFiles(), UnorderedElementsAre(deep, flat));
    EXPECT_EQ(home.provider.dataFiles(), home.provider.rolloutFiles());
}

struct IdentityCase {
    const char* name;
    const char* file;
    const char* expected;
};

class CodexRolloutIdentity : public ::testing::TestWithParam<IdentityCase> {};

TEST_P(CodexRolloutIdentity, isTheUUIDOfTheNameOrTheName) {
    EXPECT_EQ(CodexProvider::fileUUID(GetParam().file), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Names, CodexRolloutIdentity,
    ::testing::Values(
        IdentityCase{"uuid", "/s/rollout-2026-09-14T08-20-59-0199a1b2-c3d4-7e5f-8a9b-0c1d2e3f4a5b.jsonl",
                     "0199a1b2-c3d4-7e5f-8a9b-0c1d2e3f4a5b"},
        IdentityCase{"upperCase", "rollout-0199A1B2-C3D4-7E5F-8A9B-0C1D2E3F4A5B.jsonl",
                     "0199A1B2-C3D4-7E5F-8A9B-0C1D2E3F4A5B"},
        IdentityCase{"theFirstOfTwo",
                     "rollout-00000000-0000-0000-0000-000000000001-00000000-0000-0000-0000-000000000002.jsonl",
                     "00000000-0000-0000-0000-000000000001"},
        IdentityCase{"longerRunsOfDigits", "rollout-99900000000-0000-0000-0000-000000000001999.jsonl",
                     "00000000-0000-0000-0000-000000000001"},
        IdentityCase{"inAFolderOnly", "/0199a1b2-c3d4-7e5f-8a9b-0c1d2e3f4a5b/rollout-x.jsonl", "rollout-x"},
        IdentityCase{"noUUID", "/s/rollout-2026-09-14.jsonl", "rollout-2026-09-14"},
        IdentityCase{"onlyTheLastExtensionGoes", "/s/rollout-a.b.jsonl", "rollout-a.b"},
        IdentityCase{"noExtension", "/s/rollout-a", "rollout-a"},
        IdentityCase{"oneDigitShort", "rollout-0199a1b2-c3d4-7e5f-8a9b-0c1d2e3f4a5.jsonl",
                     "rollout-0199a1b2-c3d4-7e5f-8a9b-0c1d2e3f4a5"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(CodexProvider, loadsTheEventsOfAllRolloutsInTheirOrder) {
    const RolloutHome home;
    home.write("a/rollout-1.jsonl", tokenCount({.output = 1}) + tokenCount({.output = 3}));
    home.write("b/rollout-2.jsonl", tokenCount({.output = 4}));
    std::vector<std::string> expected;
    for (const std::string& file : home.provider.rolloutFiles()) {
        for (const UsageEvent& event : CodexProvider::parseUsage(file, {}))
            expected.push_back(event.id());
    }
    std::vector<std::string> ids;
    for (const UsageEvent& event : home.provider.loadEvents())
        ids.push_back(event.id());
    EXPECT_EQ(ids, expected);
    EXPECT_THAT(ids, UnorderedElementsAre("rollout-1:0", "rollout-1:1", "rollout-2:0"));
}

TEST(CodexProvider, aForkedSessionCountsFromZero) {
    const RolloutHome home;
    home.write("rollout-parent.jsonl", tokenCount({.output = 100}));
    home.write("rollout-fork.jsonl", tokenCount({.output = 100}) + tokenCount({.output = 130}));
    std::int64_t output = 0;
    for (const UsageEvent& event : home.provider.loadEvents())
        output += event.usage.output;
    EXPECT_EQ(output, 230);
}

TEST(CodexProvider, decodesTheWholeFileWhateverTheOffset) {
    const RolloutHome home;
    const std::string lines = tokenCount({.output = 1}) + tokenCount({.output = 3});
    const std::string file = home.write("rollout-a.jsonl", lines);
    for (const std::int64_t offset : {std::int64_t{0}, std::int64_t{40}, std::int64_t{-7}, std::int64_t{1} << 40}) {
        const DecodedFile decoded = home.provider.decodeFile(file, offset);
        EXPECT_THAT(told(decoded.events), ElementsAre("0 0/0/1", "1 0/0/2"));
        EXPECT_EQ(decoded.consumed, static_cast<std::int64_t>(lines.size()));
    }
}

TEST(CodexProvider, consumesTheHalfWrittenLineToo) {
    const RolloutHome home;
    const std::string lines = tokenCount({.output = 1}) + R"({"type":"event_)";
    const DecodedFile decoded = home.provider.decodeFile(home.write("rollout-a.jsonl", lines), 0);
    EXPECT_THAT(told(decoded.events), ElementsAre("0 0/0/1"));
    EXPECT_EQ(decoded.consumed, static_cast<std::int64_t>(lines.size()));
}

TEST(CodexProvider, aMissingFileHasNoEventsAndIsConsumedToZero) {
    const RolloutHome home;
    const DecodedFile decoded = home.provider.decodeFile(home.path("rollout-a.jsonl"), 99);
    EXPECT_THAT(decoded.events, IsEmpty());
    EXPECT_EQ(decoded.consumed, 0);
}

}  // namespace
}  // namespace quorvane::testing
