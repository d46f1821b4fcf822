#include <sstream>
#include <string_view>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneHost/LabelText.h"
#include "tests/host/ClaudeHome.h"

namespace quorvane::testing {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

/// What a bar that understands Pango markup shows; nothing for markup that it would refuse or take for a tag.
std::optional<std::string> shownByPango(std::string_view markup) {
    std::string shown;
    while (!markup.empty()) {
        if (markup.front() == '<' || markup.front() == '>') return std::nullopt;
        if (markup.front() != '&') {
            shown += markup.front();
            markup.remove_prefix(1);
            continue;
        }
        bool isEntity = false;
        for (const auto& [entity, character] : {std::pair<std::string_view, char>{"&amp;", '&'},
                                                {"&lt;", '<'},
                                                {"&gt;", '>'},
                                                {"&quot;", '"'},
                                                {"&apos;", '\''}}) {
            if (!markup.starts_with(entity)) continue;
            shown += character;
            markup.remove_prefix(entity.size());
            isEntity = true;
            break;
        }
        if (!isEntity) return std::nullopt;
    }
    return shown;
}

struct Module {
    std::string text;
    std::string tooltip;
    std::vector<std::string> classes;
    std::optional<std::int64_t> percentage;
};

/// The one line of JSON, as a bar takes it.
Module moduleOf(const std::string& line) {
    EXPECT_EQ(lineCount(line), 1) << line;
    JSONParser parser;
    const JSONValue json = parser.parse(line);
    Module module{.text = std::string{json["text"].string().value_or("missing")},
                  .tooltip = std::string{json["tooltip"].string().value_or("missing")},
                  .percentage = json["percentage"].integer()};
    json["class"].forEachElement([&](JSONValue name) { module.classes.emplace_back(name.string().value_or("?")); });
    std::size_t members = 0;
    json.forEachMember([&](std::string_view, JSONValue) { ++members; });
    EXPECT_EQ(members, 4U) << line;
    return module;
}

Module waybar(std::int64_t secondsLater = 0, const ProgramRun::Options& options = {}) {
    const ProgramRun run = runLater(secondsLater, {"label", "--style", "waybar"}, options);
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.error, IsEmpty());
    return moduleOf(run.output);
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream{text};
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

struct FormatCase {
    const char* name;
    std::vector<std::string> arguments;
    const char* title;
};

class LabelCommandFormat : public ::testing::TestWithParam<FormatCase> {};

TEST_P(LabelCommandFormat, choosesWhatTheLineShows) {
    const ScratchHome home;
    home.write(claudeLog, claudeCall("a", "claude-opus-4-8", "2026-03-01T08:00:00.000Z", 2468000, 0));
    writeLimits(home, minute, limitWindow("62.5", hour), limitWindow("41", 50 * hour));
    std::vector<std::string> arguments = GetParam().arguments;
    arguments.insert(arguments.begin(), "label");
    const ProgramRun run = runNow(arguments);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, std::string{GetParam().title} + "\n");
    EXPECT_THAT(run.error, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    ByFormat, LabelCommandFormat,
    ::testing::Values(FormatCase{"byItself", {}, "$12.34"}, FormatCase{"total", {"--format", "total"}, "$12.34"},
                      FormatCase{"fiveHours", {"--format", "limit:claude:fiveHour"}, "Claude 63% (5hr)"},
                      FormatCase{"week", {"--format", "limit:claude:weekly"}, "Claude 41% (W)"},
                      FormatCase{"both", {"--format", "totalAndLimit:claude:weekly"}, "$12 · Claude 41% (W)"},
                      FormatCase{"aLimitThatIsNotKnown", {"--format", "limit:codex:weekly"}, "$12.34"},
                      FormatCase{"noFormat", {"--format", "limit:claude:lunch"}, "$12.34"},
                      FormatCase{
                          "plain", {"--style", "plain", "--format", "limit:claude:fiveHour"}, "Claude 63% (5hr)"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(LabelCommand, limitsTakeTurnsEveryQuarterOfAMinute) {
    const ScratchHome home;
    writeCalls(home);
    writeLimits(home, minute, limitWindow("62", hour), limitWindow("41", 50 * hour));
    std::vector<std::string> turns;
    for (const std::int64_t second : {0, 14, 15, 29, 30})
        turns.push_back(runLater(second, {"label", "--format", "limit"}).output);
    EXPECT_EQ(turns[0], turns[1]);
    EXPECT_NE(turns[1], turns[2]);
    EXPECT_EQ(turns[2], turns[3]);
    EXPECT_EQ(turns[4], turns[0]);
    EXPECT_THAT((std::vector{turns[0], turns[2]}),
                ::testing::UnorderedElementsAre("Claude 62% (5hr)\n", "Claude 41% (W)\n"));
}

TEST(LabelCommand, theLineForWaybar) {
    const ScratchHome home;
    writeCalls(home);
    home.append(claudeLog, claudeCall("e", "claude-opus-4-8", "2026-02-26T08:00:00.000Z", 0, 50000));
    writeLimits(home, minute, limitWindow("62.5", hour), limitWindow("41", 50 * hour));
    EXPECT_EQ(runNow({"label", "--style", "waybar"}).output,
              "{\"class\":[\"normal\"],\"percentage\":63,\"text\":\"$5.00\","
              "\"tooltip\":\"Today: $5.00\\nLast 7 days: $6.25\\nBasis: real spend\\n\\n"
              "Rate limits:\\nClaude: 5h 63% used · weekly 41% used (official)\"}\n");
}

TEST(LabelCommand, theTextIsTheTitleOfThePlainStyle) {
    const ScratchHome home;
    writeCalls(home);
    writeLimits(home, minute, limitWindow("62.5", hour), limitWindow("41", 50 * hour));
    for (const char* format : {"total", "limit:claude:fiveHour", "totalAndLimit:claude:weekly"}) {
        const ProgramRun plain = runNow({"label", "--format", format});
        const ProgramRun module = runNow({"label", "--format", format, "--style", "waybar"});
        EXPECT_EQ(moduleOf(module.output).text + "\n", plain.output) << format;
    }
}

struct AttentionCase {
    const char* name;
    const char* fiveHour;
    const char* sevenDay;
    const char* attention;
    int percentage;
};

class LabelCommandAttention : public ::testing::TestWithParam<AttentionCase> {};

TEST_P(LabelCommandAttention, isOfTheFullestLimit) {
    const ScratchHome home;
    writeCalls(home);
    writeLimits(home, minute, limitWindow(GetParam().fiveHour, hour), limitWindow(GetParam().sevenDay, 50 * hour));
    const Module module = waybar();
    EXPECT_THAT(module.classes, ElementsAre(GetParam().attention));
    EXPECT_EQ(module.percentage, GetParam().percentage);
}

INSTANTIATE_TEST_SUITE_P(ByUse, LabelCommandAttention,
                         ::testing::Values(AttentionCase{"unused", "0", "0", "normal", 0},
                                           AttentionCase{"belowTheWarning", "79.4", "12", "normal", 79},
                                           AttentionCase{"warning", "80", "12", "warning", 80},
                                           AttentionCase{"warningOfTheWeek", "12", "94.4", "warning", 94},
                                           AttentionCase{"critical", "95", "80", "critical", 95},
                                           AttentionCase{"used", "100", "100", "critical", 100}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(LabelCommand, limitsOlderThanTheirGraceAreStale) {
    const ScratchHome home;
    writeCalls(home);
    writeLimits(home, 0, limitWindow("81", 20 * hour), limitWindow("41", 50 * hour));
    EXPECT_THAT(waybar(6 * hour).classes, ElementsAre("warning"));
    EXPECT_THAT(waybar(6 * hour + 1).classes, ElementsAre("warning", "stale"));
    EXPECT_THAT(waybar(12 * hour + 1).classes, ElementsAre("normal")) << "too old to be limits at all";
}

TEST(LabelCommand, withoutAgentsThereIsALabelAllTheSame) {
    const ScratchHome home;
    EXPECT_EQ(runNow({"label"}).output, "—\n");
    EXPECT_EQ(runNow({"label", "--format", "limit"}).output, "—\n");
    const Module module = waybar();
    EXPECT_EQ(module.text, "—");
    EXPECT_EQ(module.tooltip, "No provider data available");
    EXPECT_THAT(module.classes, ElementsAre("normal"));
    EXPECT_EQ(module.percentage, 0);
}

TEST(LabelCommand, anAgentThatWasNotUsedTodayCostsNothing) {
    const ScratchHome home;
    home.makeFolder(".claude/projects");
    EXPECT_EQ(runNow({"label"}).output, "$0.00\n");
    EXPECT_THAT(waybar().tooltip, StartsWith("Today: $0.00\nLast 7 days: $0.00\n"));
}

TEST(LabelCommand, aFailureIsToldOnTheBarToo) {
    const ScratchHome home;
    home.makeFolder("a<b>&'\"c/" + indexFile);
    const std::string hostile = home.path("a<b>&'\"c");
    const Module module = waybar(0, {.environment = {{"HOME", hostile}}});
    EXPECT_EQ(module.text, "—");
    EXPECT_THAT(module.classes, ElementsAre("error"));
    EXPECT_EQ(module.percentage, 0);
    EXPECT_THAT(shownByPango(module.tooltip).value_or("refused"), StartsWith(hostile + "/" + indexFile + ": "));

    const ProgramRun plain = runNow({"label"}, {.environment = {{"HOME", hostile}}});
    EXPECT_EQ(plain.status, 1);
    EXPECT_THAT(plain.output, IsEmpty());
    EXPECT_THAT(plain.error, StartsWith("quorvane: " + hostile));
    EXPECT_EQ(lineCount(plain.error), 1);
}

TEST(LabelCommand, hostileNamesInLogsLeaveTheMarkupWhole) {
    const ScratchHome home;
    writeCalls(home);
    int number = 0;
    for (const char* model :
         {R"(<b>bold)", R"(a&b)", R"(\"quoted\")", R"(</span><span size='1'>)", R"(\u0007\u001b[2J)"}) {
        home.append(claudeLog, claudeCall("x" + std::to_string(++number), model, "2026-03-01T08:00:00.000Z", 10, 10));
    }
    writeLimits(home, minute, limitWindow("10", hour), limitWindow("41", 50 * hour),
                R"(,"seven_day_<i>&":)" + limitWindow("11", 50 * hour));
    const Module module = waybar();
    EXPECT_EQ(shownByPango(module.text), "$5.00");
    EXPECT_THAT(shownByPango(module.tooltip).value_or("refused"), StartsWith("Today: $5.00\n"));
}

TEST(LabelText, everyNameIsShownAsItIs) {
    for (const char* name : {"<b>bold</b>", "a & b", "&amp;", "\"it's\"", "]]>", "zephyr — ok"}) {
        host::LabelText label;
        label.title = name;
        label.tooltip = std::string{"Rate limits:\n"} + name;
        label.fullestPercent = 79.5;
        const Module module = moduleOf(label.waybar() + "\n");
        EXPECT_EQ(shownByPango(module.text), label.title);
        EXPECT_EQ(shownByPango(module.tooltip), label.tooltip);
        EXPECT_EQ(module.percentage, 80);
    }
}

TEST(LabelText, escapingLosesNoCharacter) {
    std::string all;
    for (char character = 1; character < 127; ++character)
        all += character;
    EXPECT_EQ(shownByPango(host::escapedForPango(all)), all);
    EXPECT_EQ(host::escapedForPango(""), "");
}

/// Bars start all their modules at once, one a monitor, and again after every suspend.
TEST(LabelCommand, manyAtOnceSayTheSame) {
    const ScratchHome home;
    constexpr int files = 40;
    for (int file = 0; file < files; ++file) {
        std::string calls;
        for (int call = 0; call < 20; ++call) {
            const std::string message = std::to_string(file) + "_" + std::to_string(call);
            calls += claudeCall(message, "claude-opus-4-8", "2026-03-01T08:00:00.000Z", 1000, 0);
        }
        home.write(".claude/projects/-home-ana-shop/" + std::to_string(file) + ".jsonl", calls);
    }
    const std::string program =
        "for i in $(seq 16); do (\"$0\" --now 2026-03-01T09:30:00Z label; echo \"ended $?\") & done; wait";
    const std::vector<std::string> ended(16, "ended 0");
    std::vector<std::string> expected(16, "$4.00");
    expected.insert(expected.end(), ended.begin(), ended.end());
    for (const char* moment : {"no index", "no index again", "an index that is up to date"}) {
        if (std::string_view{moment} == "no index again") home.remove("Library");
        const ProgramRun run =
            ProgramRun::of({"bash", "-c", program, QUORVANE_PROGRAM}, {.environment = {{"LC_ALL", "C"}}});
        EXPECT_THAT(linesOf(run.output), ::testing::UnorderedElementsAreArray(expected)) << moment;
        EXPECT_THAT(run.error, IsEmpty()) << moment;
    }
}

}  // namespace
}  // namespace quorvane::testing
