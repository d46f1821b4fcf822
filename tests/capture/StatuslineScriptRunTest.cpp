#include <algorithm>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/ratelimits/ClaudeRateLimitStore.h"
#include "QuorvaneCore/ratelimits/StatuslineCapture.h"
#include "tests/capture/StatuslineTestSupport.h"
#include "tests/support/ProgramRun.h"

namespace quorvane {
namespace {

using quorvane::testing::ProgramRun;
using quorvane::testing::StatuslineHome;

constexpr const char* script = R"sh(#!/bin/bash
input=$(cat)
printf '%s|' "${#input}" "$1"
echo "line of $(printf '%s' "$input" | wc -c)"
)sh";

const std::string limits = R"({"model": {"display_name": "M"}, "cwd": "C:\\new \"é\"", "rate_limits": {
  "seven_day": {"used_percentage": 41.5, "resets_at": 4102444800},
  "five_hour": {"used_percentage": 12, "resets_at": 4102441200},
  "seven_day_sonnet": {"used_percentage": 7, "resets_at": 4102444800},
  "seven_day_opus": {"used_percentage": 99}, "monthly": {"used_percentage": 1}}})";

/// What the agent sees of the script, run by bash with `input`.
ProgramRun run(const StatuslineHome& home, const std::string& input, const std::string& commandPath = "") {
    ProgramRun::Options options;
    options.input = input;
    if (!commandPath.empty()) options.environment["PATH"] = commandPath;
    return ProgramRun::of({"/bin/bash", home.inHome(StatuslineHome::scriptFile), "--compact"}, options);
}

struct RunCase {
    const char* name;
    std::string input;
    bool captures;
    std::function<void(StatuslineHome&)> prepare = [](StatuslineHome&) {};
    /// Searched for commands instead of the usual folders; relative to the home.
    std::string commandFolder = {};
    std::string text = script;
    /// What the script ends with once it has the block, which stands last in it.
    int status = 0;
};
class StatuslineScriptRun : public ::testing::TestWithParam<RunCase> {};

TEST_P(StatuslineScriptRun, saysWithTheBlockWhatItSaidWithout) {
    const RunCase& row = GetParam();
    StatuslineHome home;
    row.prepare(home);
    const std::string commandPath = row.commandFolder.empty() ? "" : home.inHome(row.commandFolder);
    home.useScript(row.text);
    const ProgramRun plain = run(home, row.input, commandPath);
    ASSERT_FALSE(home.exists(home.inHome(StatuslineHome::captureFile)));

    StatuslineCapture::install();
    const ProgramRun captured = run(home, row.input, commandPath);
    EXPECT_EQ(captured.output, plain.output);
    EXPECT_EQ(plain.status, 0);
    EXPECT_EQ(captured.status, row.status);
    const std::optional<RateLimitSnapshot> snapshot = ClaudeRateLimitStore::load(Clock::now());
    EXPECT_EQ(snapshot.has_value(), row.captures);

    StatuslineCapture::uninstall();
    EXPECT_EQ(home.script(), row.text);
}

void linkCommands(const StatuslineHome& home, std::initializer_list<const char*> names) {
    home.makeFolder(home.inHome("commands"));
    for (const std::string name : names)
        std::filesystem::create_symlink("/usr/bin/" + name, home.inHome("commands/" + name));
}

INSTANTIATE_TEST_SUITE_P(
    ByCircumstance, StatuslineScriptRun,
    ::testing::Values(
        RunCase{"normalInput", limits, true}, RunCase{"noRateLimits", R"({"model": {"display_name": "M"}})", false},
        RunCase{"noFiveHourPercentage", R"({"rate_limits": {"five_hour": {"used_percentage": null}}})", false},
        RunCase{"noFiveHourWindow", R"({"rate_limits": {"seven_day": {"used_percentage": 3}}})", false},
        RunCase{"brokenJSON", R"({"rate_limits": {"five_hour": {"used_percentage": 3})", false},
        RunCase{"noObject", R"([1, 2])", false}, RunCase{"noInput", "", false},
        RunCase{.name = "jqIsMissing",
                .input = limits,
                .captures = false,
                .prepare =
                    [](StatuslineHome& home) {
                        linkCommands(home, {"cat", "wc", "mkdir", "mv"});
                    },
                .commandFolder = "commands"},
        RunCase{.name = "jqIsTheOneInThePath",
                .input = limits,
                .captures = true,
                .prepare =
                    [](StatuslineHome& home) {
                        linkCommands(home, {"cat", "wc", "mkdir", "mv", "jq"});
                    },
                .commandFolder = "commands"},
        RunCase{.name = "noFolderForTheFile",
                .input = limits,
                .captures = false,
                .prepare = [](StatuslineHome& home) { home.write("Library/Application Support/Quorvane", ""); },
                .status = 1},
        RunCase{.name = "noFolderForApplicationSupport",
                .input = limits,
                .captures = false,
                .prepare = [](StatuslineHome& home) { home.write("Library", ""); },
                .status = 1},
        RunCase{.name = "blanksInTheHome",
                .input = limits,
                .captures = true,
                .prepare = [](StatuslineHome& home) { home.moveHomeTo("my own  home"); }},
        RunCase{.name = "quotesInTheHome",
                .input = limits,
                .captures = true,
                .prepare = [](StatuslineHome& home) { home.moveHomeTo("it's \"$mine\""); }},
        RunCase{.name = "strictShell",
                .input = limits,
                .captures = true,
                .text = "set -euo pipefail\ninput=$(cat)\necho \"${#input}\"\n"},
        RunCase{.name = "strictShellWithoutRateLimits",
                .input = "{}",
                .captures = false,
                .text = "set -euo pipefail\ninput=$(cat)\necho \"${#input}\"\n"},
        RunCase{.name = "carriageReturns",
                .input = limits,
                .captures = true,
                .text = "#!/bin/bash\r\ninput=$(cat)\r\necho hello\r\n"},
        RunCase{.name = "lineThatGoesOnAtTheEnd",
                .input = limits,
                .captures = true,
                .text = "json_2=$(cat)\necho hello \\\n"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(StatuslineScript, capturesWhatTheStoreReads) {
    const StatuslineHome home;
    home.useScript(script);
    StatuslineCapture::install();
    const Date before = Clock::now();
    EXPECT_EQ(run(home, limits).error, "");
    const Date after = Clock::now();

    const std::optional<RateLimitSnapshot> snapshot = ClaudeRateLimitStore::load(after);
    ASSERT_TRUE(snapshot && snapshot->capturedAt);
    EXPECT_EQ(snapshot->primary, (RateLimitWindow{12, 300, Date{4102441200}}));
    EXPECT_EQ(snapshot->secondary, (RateLimitWindow{41.5, 10080, Date{4102444800}}));
    EXPECT_EQ(snapshot->modelWindows,
              (std::vector<ModelScopedRateLimitWindow>{{"seven_day_opus", {99, 10080, std::nullopt}},
                                                       {"seven_day_sonnet", {7, 10080, Date{4102444800}}}}));
    EXPECT_EQ(snapshot->planType, std::nullopt);
    EXPECT_GE(*snapshot->capturedAt, before - 1);
    EXPECT_LE(*snapshot->capturedAt, after);
    const std::string file = home.read(StatuslineHome::captureFile);
    EXPECT_EQ(std::count(file.begin(), file.end(), '\n'), 1);
    EXPECT_FALSE(home.exists(std::string{StatuslineHome::captureFile} + ".tmp"));
}

TEST(StatuslineScript, laterCaptureReplacesTheEarlier) {
    const StatuslineHome home;
    home.useScript(script);
    StatuslineCapture::install();
    (void)run(home, limits);
    (void)run(home, R"({"rate_limits": {"five_hour": {"used_percentage": 80}}})");
    const std::optional<RateLimitSnapshot> snapshot = ClaudeRateLimitStore::load(Clock::now());
    ASSERT_TRUE(snapshot);
    EXPECT_EQ(snapshot->primary, (RateLimitWindow{80, 300, std::nullopt}));
    EXPECT_EQ(snapshot->secondary, std::nullopt);
    EXPECT_TRUE(snapshot->modelWindows.empty());
}

TEST(StatuslineScript, failedCaptureLeavesTheEarlierOne) {
    const StatuslineHome home;
    home.useScript(script);
    StatuslineCapture::install();
    (void)run(home, limits);
    const std::string captured = home.read(StatuslineHome::captureFile);

    // Of the two runs the second one fails, half-way through.
    linkCommands(home, {"cat", "wc", "mkdir", "mv"});
    const std::string jq = home.write("commands/jq", "#!/bin/bash\n[ \"$1\" = -e ] && exit 0\necho '{\"cap'\nexit 5\n");
    std::filesystem::permissions(jq, std::filesystem::perms::owner_all);
    const ProgramRun failed = run(home, limits, home.path("commands"));
    EXPECT_EQ(failed.error, "");
    EXPECT_EQ(home.read(std::string{StatuslineHome::captureFile} + ".tmp"), "{\"cap\n") << "the second run came about";
    EXPECT_EQ(home.read(StatuslineHome::captureFile), captured);
}

TEST(StatuslineScript, uninstallLeavesTheCapturedFile) {
    const StatuslineHome home;
    home.useScript(script);
    StatuslineCapture::install();
    (void)run(home, limits);
    StatuslineCapture::uninstall();
    EXPECT_TRUE(ClaudeRateLimitStore::isActive(Clock::now()));
    EXPECT_TRUE(ClaudeRateLimitStore::clear());
    EXPECT_FALSE(ClaudeRateLimitStore::isActive(Clock::now()));
}

}  // namespace
}  // namespace quorvane
