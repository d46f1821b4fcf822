#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/ratelimits/StatuslineCapture.h"
#include "tests/host/ClaudeHome.h"

namespace quorvane::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

const std::string settings = ".claude/settings.json";
const std::string script = ".claude/statusline.sh";
const std::string usualScript = "#!/bin/bash\ninput=$(cat)\necho \"$(echo \"$input\" | jq -r .model.display_name)\"\n";

void writeSettings(const ScratchHome& home) {
    home.write(settings, R"({"statusLine": {"type": "command", "command": "bash ~/.claude/statusline.sh"}})");
}

void writeScript(const ScratchHome& home, const std::string& text) {
    writeSettings(home);
    home.write(script, text);
    fs::permissions(home.path(script), fs::perms{0750});
}

/// What a replacement or a write would change.
std::pair<ino_t, std::int64_t> identityOf(const ScratchHome& home) {
    struct stat status {};
    EXPECT_EQ(::stat(home.path(script).c_str(), &status), 0);
    return {status.st_ino, status.st_mtim.tv_sec * 1000000000 + status.st_mtim.tv_nsec};
}

/// Claude Code's line of the status, which has one line an agent.
std::string statusLine(const std::vector<std::string>& arguments = {"capture", "status"}) {
    const ProgramRun run = runHost(arguments);
    EXPECT_EQ(run.status, 0) << run.error;
    EXPECT_THAT(run.error, IsEmpty());
    const std::size_t begin = run.output.find("claude: ");
    if (begin == std::string::npos) return run.output;
    return run.output.substr(begin, run.output.find('\n', begin) + 1 - begin);
}

struct ScriptCase {
    const char* name;
    std::string text;
};

class CaptureCommandScript : public ::testing::TestWithParam<ScriptCase> {};

TEST_P(CaptureCommandScript, isGivenBackByteForByte) {
    const ScratchHome home;
    writeScript(home, GetParam().text);
    const std::string path = home.path(script);
    EXPECT_EQ(statusLine(), "claude: installable (" + path + ")\n");

    const ProgramRun installing = runHost({"capture", "install", "claude"});
    EXPECT_EQ(installing.status, 0) << installing.error;
    EXPECT_EQ(installing.output, "claude: active (" + path + ")\n");
    EXPECT_EQ(statusLine(), installing.output);
    EXPECT_THAT(home.read(script), AllOf(StartsWith(GetParam().text), HasSubstr(StatuslineCapture::beginMarker)));

    const ProgramRun uninstalling = runHost({"capture", "uninstall", "claude"});
    EXPECT_EQ(uninstalling.status, 0) << uninstalling.error;
    EXPECT_EQ(uninstalling.output, "claude: installable (" + path + ")\n");
    EXPECT_EQ(home.read(script), GetParam().text);
    EXPECT_EQ(fs::status(path).permissions(), fs::perms{0750});
    EXPECT_EQ(std::distance(fs::directory_iterator{home.path(".claude")}, {}), 2) << "no temporary file is left";
}

INSTANTIATE_TEST_SUITE_P(ByText, CaptureCommandScript,
                         ::testing::Values(ScriptCase{"usual", usualScript},
                                           ScriptCase{"withoutLinesBehindTheVariable", "in_1=$(cat)\n"},
                                           ScriptCase{"withOtherLineEnds", "#!/bin/sh\r\ninput=$(cat)\r\necho x\r\n"},
                                           ScriptCase{"withOtherLetters", "input=$(cat)\necho 'für 5 € — ok'\n"},
                                           ScriptCase{"withBlanksAtTheEnd", "input=$(cat)\necho x\n  \t\n"}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(CaptureCommand, installingTwiceTouchesNothing) {
    const ScratchHome home;
    writeScript(home, usualScript);
    ASSERT_EQ(runHost({"capture", "install", "claude"}).status, 0);
    const auto before = identityOf(home);
    const ProgramRun again = runHost({"capture", "install", "claude"});
    EXPECT_EQ(again.status, 0);
    EXPECT_THAT(again.output, StartsWith("claude: active"));
    EXPECT_EQ(identityOf(home), before);
}

TEST(CaptureCommand, uninstallingWhatIsNotThereTouchesNothing) {
    const ScratchHome home;
    EXPECT_EQ(runHost({"capture", "uninstall", "claude"}).status, 0) << "without any settings";
    writeScript(home, usualScript);
    const auto before = identityOf(home);
    const ProgramRun run = runHost({"capture", "uninstall", "claude"});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.output, StartsWith("claude: installable"));
    EXPECT_EQ(identityOf(home), before);
}

TEST(CaptureCommand, theStatusForScripts) {
    const ScratchHome home;
    writeScript(home, usualScript);
    const std::string text = runHost({"capture", "status", "--json"}).output;
    EXPECT_EQ(runHost({"capture", "--json"}).output, text) << "status is what it does by itself";
    EXPECT_EQ(statusLine({"capture"}), statusLine());
    JSONParser parser;
    const JSONValue installable = parser.parse(text)["agents"]["claude"];
    EXPECT_EQ(installable["state"].string(), "installable");
    EXPECT_EQ(installable["path"].string(), home.path(script));

    ASSERT_EQ(runHost({"capture", "install", "claude"}).status, 0);
    const ProgramRun installed = runHost({"capture", "status", "--json"});
    EXPECT_EQ(parser.parse(installed.output)["agents"]["claude"]["state"].string(), "active");

    home.remove(settings);
    const ProgramRun run = runHost({"capture", "status", "--json"});
    const JSONValue unavailable = parser.parse(run.output)["agents"]["claude"];
    EXPECT_EQ(unavailable["state"].string(), "unavailable");
    EXPECT_FALSE(unavailable["path"].isPresent());
}

struct UnavailableCase {
    const char* name;
    void (*prepare)(const ScratchHome&);
    const char* names;     ///< the file that the message of `install` names, below the home
    const char* explains;  ///< what `status` says
};

class CaptureCommandUnavailable : public ::testing::TestWithParam<UnavailableCase> {};

TEST_P(CaptureCommandUnavailable, isExplainedAndInstallsNothing) {
    const ScratchHome home;
    GetParam().prepare(home);
    const bool hasScript = fs::is_regular_file(home.path(script));
    const std::string before = hasScript ? home.read(script) : "";

    EXPECT_THAT(statusLine(), AllOf(StartsWith("claude: unavailable ("), HasSubstr(GetParam().explains)));
    const ProgramRun run = runHost({"capture", "install", "claude"});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.output, IsEmpty());
    EXPECT_THAT(run.error, AllOf(StartsWith("quorvane: "), HasSubstr(home.path(GetParam().names))));
    EXPECT_EQ(lineCount(run.error), 1) << run.error;
    if (hasScript) {
        EXPECT_EQ(home.read(script), before);
    }
}

INSTANTIATE_TEST_SUITE_P(
    ByReason, CaptureCommandUnavailable,
    ::testing::Values(
        UnavailableCase{"noAgent", [](const ScratchHome&) {}, ".claude/settings.json", "no status-line script is set"},
        UnavailableCase{"noStatusLine", [](const ScratchHome& home) { home.write(settings, R"({"theme": "dark"})"); },
                        ".claude/settings.json", "no status-line script is set"},
        UnavailableCase{"brokenSettings", [](const ScratchHome& home) { home.write(settings, "{"); },
                        ".claude/settings.json", "no status-line script is set"},
        UnavailableCase{"noScript", writeSettings, ".claude/statusline.sh", "statusline.sh cannot be read"},
        UnavailableCase{"aFolderInTheScriptsPlace",
                        [](const ScratchHome& home) {
                            writeSettings(home);
                            home.makeFolder(script);
                        },
                        ".claude/statusline.sh", "statusline.sh cannot be read"},
        UnavailableCase{"noVariable", [](const ScratchHome& home) { writeScript(home, "#!/bin/sh\njq -r .model\n"); },
                        ".claude/statusline.sh", "input=$(cat)"}),
    [](const auto& row) { return std::string{row.param.name}; });

/// The road from the agent to the table: what the agent hands its status line is what `limits` then tells.
TEST(CaptureCommand, whatTheScriptIsToldReachesTheLimits) {
    const ScratchHome home;
    home.makeFolder(".claude/projects");
    writeScript(home, usualScript);
    const ProgramRun before =
        ProgramRun::of({"bash", home.path(script)}, {.input = R"({"model":{"display_name":"O"}})"});
    ASSERT_EQ(runHost({"capture", "install", "claude"}).status, 0);
    const std::string told = R"({"model":{"display_name":"O"},"rate_limits":{"five_hour":{"used_percentage":23.5,)"
                             R"("resets_at":32503680000},"seven_day":{"used_percentage":41,"resets_at":32503680000},)"
                             R"("seven_day_opus":{"used_percentage":7,"resets_at":32503680000}}})";
    const ProgramRun line = ProgramRun::of({"bash", home.path(script)}, {.input = told});
    EXPECT_EQ(line.status, 0);
    EXPECT_EQ(line.output, before.output) << "the status line itself stays as it was";
    EXPECT_THAT(line.error, IsEmpty());

    JSONParser parser;
    const ProgramRun limits = runHost({"limits", "--json"});
    const JSONValue claude = parser.parse(limits.output)["providers"]["claude"];
    EXPECT_EQ(claude["primary"]["used_percent"].number(), JSONNumberValue{23.5});
    EXPECT_EQ(claude["primary"]["resets_at"].string(), "3000-01-01T00:00:00Z");
    EXPECT_EQ(claude["secondary"]["used_percent"].integer(), 41);
    claude["model_windows"].forEachElement([](JSONValue window) { EXPECT_EQ(window["label"].string(), "Fable"); });
    EXPECT_FALSE(claude["model_windows"].isEmpty());
}

}  // namespace
}  // namespace quorvane::testing
