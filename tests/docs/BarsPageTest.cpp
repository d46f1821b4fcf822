// The page about status bars: what it tells the reader to put into files is put there and run.

#include <filesystem>
#include <regex>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/JSONParser.h"
#include "tests/docs/Page.h"
#include "tests/docs/SampleMachine.h"

namespace quorvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

const std::string shown = "$12 · Claude 63% (5hr)";

/// A machine on which today cost $12.34, and Claude Code has used 63 and 41 percent of its limits.
class BarsPage : public ::testing::Test {
protected:
    BarsPage() {
        machine.home().write(
            ".claude/projects/-home-ana-shop/s.jsonl",
            R"({"type":"assistant","requestId":"r","timestamp":"2026-09-14T08:00:00.000Z","message":{"id":"m",)"
            R"("model":"claude-opus-4-8","usage":{"input_tokens":2468000,"output_tokens":0}}})"
            "\n");
        machine.home().write("Library/Application Support/Quorvane/claude-rate-limits.json",
                             R"({"capturedAt":1789403500,"five_hour":{"used_percentage":62.5,"resets_at":1789408700},)"
                             R"("seven_day":{"used_percentage":41,"resets_at":1789703550}})");
    }

    [[nodiscard]] std::string outputOf(const std::string& lines, const std::string& input = "") const {
        const ProgramRun run = machine.run(lines, input);
        EXPECT_EQ(run.status, 0) << lines;
        EXPECT_THAT(run.error, IsEmpty()) << lines;
        return run.output;
    }

    const SampleMachine machine{SampleMachine::Content::Nothing};
    const Page page{"bars.md"};
};

/// The first part of `text` that the pattern's group catches; the test fails if it is not there.
std::string caught(const std::string& text, const std::string& pattern) {
    std::smatch match;
    if (!std::regex_search(text, match, std::regex{pattern})) {
        ADD_FAILURE() << pattern << " is not in " << text;
        return {};
    }
    return match[1];
}

TEST_F(BarsPage, theTableShowsWhatTheProgramPrints) {
    const std::regex row{R"(\n\| `([^`]+)`[^|]*\|[^|]*\| (?:`([^`]+)` )?\|)"};
    std::size_t compared = 0;
    for (std::sregex_iterator at{page.text().begin(), page.text().end(), row}; at != std::sregex_iterator{}; ++at) {
        std::string format = (*at)[1];
        if (const std::size_t agent = format.find("AGENT"); agent != std::string::npos)
            format.replace(agent, 5, "claude");
        const std::string output = outputOf("quorvane label --format " + format);
        EXPECT_THAT(output, Not(IsEmpty())) << format;
        if ((*at)[2].length() == 0 || format.ends_with("estimate")) continue;
        EXPECT_EQ(output, std::string{(*at)[2]} + "\n") << format;
        ++compared;
    }
    EXPECT_EQ(compared, 4U);
}

TEST_F(BarsPage, waybar) {
    JSONParser configuration;
    const std::string block = page.block("json", "custom/quorvane");
    const JSONValue module = configuration.parse(block)["custom/quorvane"];
    EXPECT_EQ(module["return-type"].string(), "json");
    JSONParser parser;
    const std::string line = outputOf(std::string{module["exec"].string().value_or("false")});
    const JSONValue answer = parser.parse(line);
    EXPECT_EQ(answer["text"].string(), shown);
    EXPECT_THAT(std::string{answer["tooltip"].string().value_or("")}, StartsWith("Today: $12.34\nLast 7 days: "));
    EXPECT_EQ(answer["percentage"].integer(), 63);
    std::vector<std::string> classes;
    answer["class"].forEachElement([&](JSONValue name) { classes.emplace_back(name.string().value_or("")); });
    EXPECT_THAT(classes, ElementsAre("normal"));
    for (const char* name : {"warning", "critical", "stale", "error"})
        EXPECT_THAT(page.block("css", "#custom-quorvane"), HasSubstr("#custom-quorvane." + std::string{name} + " {"));
}

TEST_F(BarsPage, polybar) {
    const std::string module = page.block("ini", "[module/quorvane]");
    EXPECT_THAT(module, HasSubstr("type = custom/script\n"));
    EXPECT_EQ(outputOf(caught(module, "exec = (.*)")), shown + "\n");
}

TEST_F(BarsPage, tmux) {
    const std::string lines = page.block("tmux", "status-right ");
    EXPECT_EQ(outputOf(caught(lines, R"(#\(([^)]*)\))")), shown + "\n");
    EXPECT_GT(std::stoul(caught(lines, "status-right-length ([0-9]+)")), shown.size() + 10);
}

TEST_F(BarsPage, i3status) {
    machine.addProgram("i3status", "#!/bin/sh\nprintf '%s\\n' 'load 1.00' 'load  2.00 \\'\n");
    machine.addProgram("with-quorvane", page.block("sh", "i3status"));
    EXPECT_EQ(outputOf("with-quorvane"), shown + " | load 1.00\n" + shown + " | load  2.00 \\\n");
}

/// A bar that goes away must not leave the script behind.
TEST_F(BarsPage, i3statusEndsWithItsBar) {
    machine.addProgram("i3status", "#!/bin/sh\nwhile echo 'load 1.00'; do sleep 0.01; done\n");
    machine.addProgram("with-quorvane", page.block("sh", "i3status"));
    const ProgramRun run = machine.run("set +o pipefail; timeout 20 with-quorvane 2>/dev/null | head -n 2");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, shown + " | load 1.00\n" + shown + " | load 1.00\n");
}

TEST_F(BarsPage, claudeCode) {
    const std::string script = page.block("bash", "input=$(cat)");
    machine.home().write(".claude/statusline.sh", script);
    machine.home().write(".claude/settings.json", page.block("json", "statusLine"));
    JSONParser parser;
    const std::string settings = machine.home().read(".claude/settings.json");
    const std::string command{parser.parse(settings)["statusLine"]["command"].string().value_or("false")};
    const std::string told = R"({"model":{"display_name":"Opus"},"rate_limits":{"five_hour":{"used_percentage":12,)"
                             R"("resets_at":1789408700}}})";
    EXPECT_EQ(outputOf(command, told), "Opus  " + shown + "\n");
    EXPECT_EQ(outputOf(command, "{}"), "Claude  " + shown + "\n") << "before the first answer";

    EXPECT_THAT(outputOf("quorvane capture install claude"), StartsWith("claude: active"));
    EXPECT_EQ(outputOf(command, told), "Opus  " + shown + "\n") << "the block prints nothing";
    EXPECT_THAT(machine.home().read("Library/Application Support/Quorvane/claude-rate-limits.json"),
                HasSubstr(R"("used_percentage":12)"));
    EXPECT_THAT(outputOf("quorvane capture uninstall claude"), StartsWith("claude: installable"));
    EXPECT_EQ(machine.home().read(".claude/statusline.sh"), script);
}

}  // namespace
}  // namespace quorvane::testing
