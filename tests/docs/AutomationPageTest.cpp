// The page for script writers: its examples are the program's own output, and its tables have every key.
// With the environment variable QUORVANE_UPDATE_EXPECTED=1 the outputs on the page are written anew.

#include <algorithm>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/snapshots/LocalAutomationSnapshotEncoder.h"
#include "tests/automation/SampleAutomationSnapshot.h"
#include "tests/docs/Page.h"
#include "tests/docs/SampleMachine.h"

namespace quorvane::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

bool isOutput(const Page::Block& block) {
    return block.language == "text" || block.language == "json";
}

/// Runs every block of shell lines, those without an output behind them ahead of all that follow.
TEST(AutomationPage, everyExampleSaysWhatThePageSays) {
    const SampleMachine machine{SampleMachine::Content::Sample};
    Page page{"automation.md"};
    std::string prelude;
    std::size_t compared = 0;
    for (std::size_t at = 0; at < page.blocks().size(); ++at) {
        const Page::Block block = page.blocks()[at];
        if (block.language != "sh") continue;
        const bool hasOutput = at + 1 < page.blocks().size() && isOutput(page.blocks()[at + 1]);
        if (!hasOutput) {
            prelude += block.text;
            continue;
        }
        const ProgramRun run = machine.run(prelude + block.text);
        EXPECT_EQ(run.status, 0) << block.text << run.error;
        EXPECT_THAT(run.error, IsEmpty()) << block.text;
        const std::string output = run.output.ends_with('\n') ? run.output : run.output + "\n";
        if (updatesExpected()) page.replace(at + 1, output);
        EXPECT_EQ(page.blocks()[at + 1].text, output) << "of " << block.text;
        ++compared;
    }
    EXPECT_GE(compared, 8U) << "the examples are gone from the page";
}

void collectKeys(JSONValue value, std::set<std::string>& keys) {
    value.forEachMember([&](std::string_view key, JSONValue member) {
        if (key != "claude") keys.emplace(key);
        collectKeys(member, keys);
    });
    value.forEachElement([&](JSONValue element) { collectKeys(element, keys); });
}

TEST(AutomationPage, everyKeyHasARow) {
    JSONParser parser;
    std::set<std::string> keys;
    const std::string record = LocalAutomationSnapshotEncoder::encode(sampleAutomationSnapshot());
    collectKeys(parser.parse(record), keys);
    ASSERT_EQ(keys.size(), 32U);
    const Page page{"automation.md"};
    for (const std::string& key : keys)
        EXPECT_THAT(page.text(), HasSubstr("\n| `" + key + "` | "));
}

TEST(AutomationPage, everyWordIsExplained) {
    const Page page{"automation.md"};
    for (const char* word :
         {"real_spend", "notional_list_price", "token_estimate", "official", "likely_exhausted", "unknown"})
        EXPECT_THAT(page.text(), HasSubstr("\n| `" + std::string{word} + "` | "));
    for (const char* word : {"real_and_notional_list_price", "ok", "no_sources", "dollars", "tokens"})
        EXPECT_THAT(page.text(), HasSubstr("`" + std::string{word} + "`"));
}

}  // namespace
}  // namespace quorvane::testing
