// The hook as the agent runs it: its command, by the system's shell.

#include <algorithm>
#include <filesystem>
#include <set>
#include <thread>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/platform/FileStatus.h"
#include "QuorvaneCore/providers/CursorProvider.h"
#include "QuorvaneCore/ratelimits/CursorHookSetup.h"
#include "tests/cursor/CursorTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::Ge;
using ::testing::IsEmpty;
using ::testing::Le;
using ::testing::MatchesRegex;
using ::testing::SizeIs;

constexpr std::string_view capture = CursorScratchHome::captureFile;
constexpr std::size_t maxBytes = 2097152;
constexpr std::size_t keepLines = 5000;

void expectSilence(const ProgramRun& run) {
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.error, "");
}

TEST(CursorHookRun, appendsALineThatTheReaderReads) {
    const CursorScratchHome home;
    home.install();
    const Date before = Clock::now();
    expectSilence(runHook(hookInput("490b0f7e", R"("input_tokens":23756,"output_tokens":5,"cache_read_tokens":23617,)"
                                                R"("cache_write_tokens":47)")));
    const Date after = Clock::now();
    EXPECT_THAT(home.read(capture),
                MatchesRegex(R"(\{"captured_at":[0-9]+,"conversation_id_b64":"NjY4ZjJjMWUtY29udmVyc2F0aW9u",)"
                             R"("generation_id_b64":"NDkwYjBmN2U=","model_b64":"Y29tcG9zZXItMi41",)"
                             R"("input_tokens":23756,"output_tokens":5,"cache_read_tokens":23617,)"
                             R"("cache_write_tokens":47\})"
                             "\n"));
    const std::vector<UsageEvent> events = CursorProvider{}.loadEvents();
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_GE(events.front().timestamp, before - 1);
    EXPECT_LE(events.front().timestamp, after);
    EXPECT_EQ(events.front().messageId, "490b0f7e");
    EXPECT_EQ(events.front().model, "composer-2.5");
    EXPECT_EQ(events.front().usage, (TokenUsage{.input = 92, .output = 5, .cacheCreate5m = 47, .cacheRead = 23617}));
    EXPECT_THAT(home.filesInFolder(), ElementsAre("cursor-usage-capture.sh", "cursor-usage.jsonl"));
}

/// What is in the file after one run: identities and counts of each line.
struct InputCase {
    const char* name;
    std::string input;
    std::vector<std::string> expected;
};
class CursorHookInput : public ::testing::TestWithParam<InputCase> {};

std::string briefly(const UsageEvent& event) {
    return fmt::format("{} {} {} {}/{}/{}/{}", event.messageId, event.requestId, event.model, event.usage.input,
                       event.usage.output, event.usage.cacheCreate5m, event.usage.cacheRead);
}

TEST_P(CursorHookInput, isCapturedOrPassedOverInSilence) {
    const CursorScratchHome home;
    home.install();
    expectSilence(runHook(GetParam().input));
    std::vector<std::string> found;
    for (const UsageEvent& event : CursorProvider{}.loadEvents())
        found.push_back(briefly(event));
    EXPECT_EQ(found, GetParam().expected);
    EXPECT_THAT(home.captured(), SizeIs(GetParam().expected.size())) << "every line is one that can be read";
}

/// Of one count, with the rest good.
std::string counting(const std::string& count) {
    return hookInput("g", R"("input_tokens":9,"output_tokens":)" + count);
}
const std::vector<std::string> nothing;
std::vector<std::string> captured(const std::string& counts) {
    return {"g 668f2c1e-conversation composer-2.5 " + counts};
}

INSTANTIATE_TEST_SUITE_P(
    Counts, CursorHookInput,
    ::testing::Values(
        InputCase{"missingNullAndEmpty",
                  hookInput("g", R"("input_tokens":null,"output_tokens":7,"cache_read_tokens":"")"),
                  captured("0/7/0/0")},
        InputCase{"textsOfDigits",
                  hookInput("g", R"("input_tokens":"200","output_tokens":"08","cache_read_tokens":"010",)"
                                 R"("cache_write_tokens":"12")"),
                  captured("178/8/12/10")},
        InputCase{"fraction", counting("1.5"), nothing}, InputCase{"negative", counting("-1"), nothing},
        InputCase{"falseIsNotMissing", counting("false"), nothing}, InputCase{"array", counting("[]"), nothing},
        InputCase{"object", counting(R"({"n":1})"), nothing},
        InputCase{"textWithMuch", counting(R"j("1 + $(touch pwned)")j"), nothing},
        InputCase{"textOfTheShellsVariables", counting(R"("input_tokens")"), nothing},
        InputCase{"largestExactCount", counting("9007199254740991"), captured("9/9007199254740991/0/0")},
        InputCase{"beyondAnExactCount", counting("9007199254740993"), nothing},
        InputCase{"beyond64Bits", counting("99999999999999999999"), nothing},
        InputCase{"textBeyond64Bits", counting(R"("99999999999999999999")"), nothing},
        InputCase{"allZero",
                  hookInput("g", R"("input_tokens":0,"output_tokens":0,"cache_read_tokens":0,"cache_write_tokens":0)"),
                  nothing},
        InputCase{"noCounts", hookInput("g", R"("x":1)"), nothing}),
    [](const auto& row) { return std::string{row.param.name}; });

INSTANTIATE_TEST_SUITE_P(
    Shapes, CursorHookInput,
    ::testing::Values(InputCase{"noInput", "", nothing}, InputCase{"noJSON", "stop", nothing},
                      InputCase{"array", "[]", nothing},
                      InputCase{"arrayOfObjects", "[" + counting("1") + "]", nothing},
                      InputCase{"null", "null", nothing}, InputCase{"text", R"("generation_id")", nothing},
                      InputCase{"tornObject", counting("1").substr(0, 120), nothing},
                      InputCase{"twoObjects", counting("1") + counting("2"), nothing},
                      InputCase{"objectAndMore", counting("1") + " x", nothing},
                      InputCase{"lineEndsAround", "\n" + counting("1") + "\r\n\n", captured("9/1/0/0")},
                      InputCase{"noGeneration", R"({"conversation_id":"c","model":"m","output_tokens":1})", nothing},
                      InputCase{"nullGeneration", R"({"generation_id":null,"output_tokens":1})", nothing},
                      InputCase{"emptyGeneration", hookInput("", R"("output_tokens":1)"), nothing},
                      InputCase{"generationAlone",
                                R"({"generation_id":"g","output_tokens":1})",
                                {"g unknown-conversation cursor 0/1/0/0"}},
                      InputCase{"nullConversationAndModel",
                                R"({"generation_id":"g","conversation_id":null,"model":null,"output_tokens":1})",
                                {"g unknown-conversation cursor 0/1/0/0"}},
                      InputCase{"generationIsANumber",
                                R"({"generation_id":17,"output_tokens":1})",
                                {"17 unknown-conversation cursor 0/1/0/0"}}),
    [](const auto& row) { return std::string{row.param.name}; });

INSTANTIATE_TEST_SUITE_P(
    Texts, CursorHookInput,
    ::testing::Values(InputCase{"forTheShell",
                                R"({"generation_id":"a'b\"c`touch pwned`$(touch pwned)$HOME\\","output_tokens":1})",
                                {R"(a'b"c`touch pwned`$(touch pwned)$HOME\ unknown-conversation cursor 0/1/0/0)"}},
                      InputCase{"forPrintf",
                                R"({"generation_id":"%s%n%d\\n%","model":"-n","output_tokens":1})",
                                {R"(%s%n%d\n% unknown-conversation -n 0/1/0/0)"}},
                      InputCase{"withLineEnds",
                                R"({"generation_id":"a\nb\r\n","model":"\n","output_tokens":1})",
                                {"a\nb\r\n unknown-conversation \n 0/1/0/0"}},
                      InputCase{"beyondASCII",
                                R"({"generation_id":"é…😀","model":"\u00fc","output_tokens":1})",
                                {"é…😀 unknown-conversation ü 0/1/0/0"}},
                      InputCase{"leadingZeros",
                                R"({"generation_id":"007","output_tokens":1})",
                                {"007 unknown-conversation cursor 0/1/0/0"}},
                      InputCase{"longEnoughForSeveralLinesOfBase64",
                                R"({"generation_id":")" + std::string(500, 'g') + R"(","output_tokens":1})",
                                {std::string(500, 'g') + " unknown-conversation cursor 0/1/0/0"}}),
    [](const auto& row) { return std::string{row.param.name}; });

constexpr std::size_t muchText = 300000;

TEST(CursorHookRun, longInputIsNoHindrance) {
    const CursorScratchHome home;
    home.install();
    expectSilence(runHook(hookInput("g", R"("output_tokens":1,"text":")" + std::string(muchText, 'x') + "\"")));
    std::string roots = "\"/r\"";
    while (roots.size() < muchText)
        roots += R"(,"/home/ana/a 'quoted' $(folder)\n")";
    expectSilence(runHook(hookInput("h", R"("output_tokens":2,"roots":[)" + roots + "]")));
    EXPECT_THAT(CursorProvider{}.loadEvents(), SizeIs(2));
}

/// More than a program's argument may hold.
TEST(CursorHookRun, anIdentityThatIsTooLongIsPassedOver) {
    const CursorScratchHome home;
    home.install();
    const ProgramRun run = runHook(hookInput(std::string(muchText, 'g'), R"("output_tokens":1)"));
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(home.captured(), IsEmpty());
    expectSilence(runHook(hookInput("next", R"("output_tokens":1)")));
    EXPECT_THAT(home.captured(), SizeIs(1));
}

TEST(CursorHookRun, needsNothingOfTheEnvironment) {
    const CursorScratchHome home;
    home.install();
    ProgramRun::Options options;
    options.input = hookInput("g", R"("output_tokens":1)");
    expectSilence(ProgramRun::of({"/usr/bin/env", "-i", "/bin/sh", "-c", CursorHookSetup::hookCommand()}, options));
    EXPECT_THAT(home.captured(), SizeIs(1));
}

TEST(CursorHookRun, aQuoteInTheFoldersNameIsNoHindrance) {
    const CursorScratchHome home;
    const std::string folder = home.path("it's \"$mine\" `x` {out}");
    CursorHookSetup::install(std::nullopt, folder, true);
    expectSilence(runHook(CursorHookSetup::hookCommand(folder), hookInput("g", R"("output_tokens":1)")));
    EXPECT_THAT(CursorProvider{CursorHookSetup::captureURL(folder)}.loadEvents(), SizeIs(1));
}

TEST(CursorHookRun, makesTheFolderPrivate) {
    const CursorScratchHome home;
    home.install();
    const std::string script = home.write("script.sh", home.read(CursorScratchHome::scriptFile));
    home.remove(CursorScratchHome::folder);
    const std::string input = hookInput("g", R"("output_tokens":1)");
    expectSilence(runHook("/bin/sh " + script, input));
    const std::string folder = home.path(CursorScratchHome::folder);
    EXPECT_EQ(FileStatus::of(folder).value().mode & 07777U, 0700U);
    std::filesystem::permissions(folder, std::filesystem::perms{0755});
    expectSilence(runHook("/bin/sh " + script, input));
    EXPECT_EQ(FileStatus::of(folder).value().mode & 07777U, 0700U);
    EXPECT_THAT(home.captured(), SizeIs(2));
}

TEST(CursorHookRun, endsWellWhereNothingCanBeWritten) {
    const CursorScratchHome home;
    home.install();
    const std::string script = home.write("script.sh", home.read(CursorScratchHome::scriptFile));
    const std::string input = hookInput("g", R"("output_tokens":1)");
    home.makeFolder(capture);
    EXPECT_EQ(runHook("/bin/sh " + script, input).status, 0);
    EXPECT_THAT(home.filesInFolder(), ElementsAre("cursor-usage-capture.sh", "cursor-usage.jsonl"));
    home.remove("Library");
    home.write("Library", "");
    expectSilence(runHook("/bin/sh " + script, input));
}

/// On a machine without the program that reads the input.
TEST(CursorHookRun, doesNothingWithoutItsReader) {
    const CursorScratchHome home;
    home.install();
    std::string script = home.read(CursorScratchHome::scriptFile);
    const std::string_view reader = CursorHookSetup::fieldReader;
    const std::size_t at = script.find(reader);
    ASSERT_NE(at, std::string::npos);
    script.replace(at, reader.size(), "/nowhere/reader");
    ASSERT_EQ(script.find(reader), std::string::npos);
    home.write(CursorScratchHome::scriptFile, script);
    expectSilence(runHook(hookInput("g", R"("output_tokens":1)")));
    EXPECT_FALSE(home.exists(capture));
}

// The limit of the file's size

/// Lines of the file's own form, of `bytes` bytes in all. `lines` is their number.
std::string filling(std::size_t bytes, std::size_t lines) {
    std::string content;
    content.reserve(bytes);
    for (std::size_t line = 0; line < lines; ++line) {
        const std::string head =
            fmt::format(R"({{"captured_at":1,"generation_id":"old{}","output_tokens":1,"pad":")", line);
        const std::size_t goal = bytes * (line + 1) / lines;
        content += head;
        content.append(goal - content.size() - 3, 'x').append("\"}\n");
    }
    return content;
}

TEST(CursorHookTrim, aFileOfExactlyTheLimitStaysAndOneByteMoreIsCut) {
    const CursorScratchHome home;
    home.install();
    const std::string input = hookInput("g", R"("output_tokens":1)");
    expectSilence(runHook(input));
    const std::size_t lineBytes = home.read(capture).size();
    constexpr std::size_t lines = 6000;

    home.write(capture, filling(maxBytes - lineBytes, lines));
    expectSilence(runHook(input));
    EXPECT_EQ(home.read(capture).size(), maxBytes);

    home.write(capture, filling(maxBytes - lineBytes + 1, lines));
    expectSilence(runHook(input));
    const std::vector<std::string> kept = home.captured();
    ASSERT_THAT(kept, SizeIs(keepLines));
    EXPECT_THAT(kept.front(), ::testing::HasSubstr("\"old1001\"")) << "the last lines stay, each of them whole";
    EXPECT_THAT(kept.back(), ::testing::HasSubstr("\"Zw==\""));
    EXPECT_THAT(home.filesInFolder(), ElementsAre("cursor-usage-capture.sh", "cursor-usage.jsonl"));
    EXPECT_THAT(CursorProvider{}.loadEvents(), SizeIs(keepLines));
}

TEST(CursorHookTrim, aLargeFileOfFewLinesKeepsThemAll) {
    const CursorScratchHome home;
    home.install();
    home.write(capture, filling(maxBytes + 1000, 10));
    expectSilence(runHook(hookInput("g", R"("output_tokens":1)")));
    EXPECT_THAT(home.captured(), SizeIs(11));
    EXPECT_THAT(home.filesInFolder(), ElementsAre("cursor-usage-capture.sh", "cursor-usage.jsonl"));
}

// Several at once

constexpr std::size_t atOnce = 20;

void runHooksAtOnce() {
    std::vector<std::thread> sessions;
    for (std::size_t session = 0; session < atOnce; ++session) {
        sessions.emplace_back([session] {
            expectSilence(runHook(hookInput("session" + std::to_string(session), R"("output_tokens":1)")));
        });
    }
    for (std::thread& session : sessions)
        session.join();
}

TEST(CursorHooksAtOnce, appendOneWholeLineEach) {
    const CursorScratchHome home;
    home.install();
    runHooksAtOnce();
    std::set<std::string> generations;
    for (const UsageEvent& event : CursorProvider{}.loadEvents())
        generations.insert(event.messageId);
    EXPECT_THAT(generations, SizeIs(atOnce));
    EXPECT_THAT(home.captured(), SizeIs(atOnce));
}

/// A line that is appended while another session cuts the file may go with the old one; nothing may be torn.
TEST(CursorHooksAtOnce, leaveWholeLinesWhenTheFileIsCut) {
    const CursorScratchHome home;
    home.install();
    home.write(capture, filling(maxBytes - 500, 6000));
    runHooksAtOnce();
    const std::vector<std::string> lines = home.captured();
    EXPECT_THAT(lines, SizeIs(AllOf(Ge(keepLines), Le(keepLines + atOnce))));
    EXPECT_THAT(CursorProvider{}.loadEvents(), SizeIs(lines.size())) << "each line can be read";
    EXPECT_THAT(home.filesInFolder(), ElementsAre("cursor-usage-capture.sh", "cursor-usage.jsonl"));
}

}  // namespace
}  // namespace quorvane::testing
