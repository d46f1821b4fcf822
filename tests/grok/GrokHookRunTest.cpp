// The installed hook, run by the agent: with this machine's own bash and python3.

#include <filesystem>
#include <functional>
#include <ostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/ratelimits/GrokRateLimitCapture.h"
#include "QuorvaneCore/ratelimits/GrokRateLimitStore.h"
#include "tests/grok/GrokTestSupport.h"

namespace quorvane::testing {
namespace {

/// Installs the capture, without figures so far, and gives the command of its hook.
std::string installedCommand(const GrokScratchHome& home) {
    home.makeAgent();
    GrokRateLimitCapture::install();
    EXPECT_FALSE(GrokRateLimitStore::isActive(testNow));
    const std::vector<HookCommand> commands = hookCommands(home.read(home.inHome(GrokScratchHome::hookFile)));
    return commands.empty() ? "" : commands.front().command;
}

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator{folder})
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

class GrokHook : public ::testing::TestWithParam<const char*> {};

/// Homes of whatever name.
TEST_P(GrokHook, capturesWhatTheStoreReads) {
    const GrokScratchHome home;
    home.moveHomeTo(GetParam());
    const std::string command = installedCommand(home);
    home.write(home.inHome(GrokScratchHome::logFile), billingLine(10) + "\n" + billingLine(41.5) + "\n");

    const ProgramRun run = runCommand(command);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.error, "");
    const std::optional<RateLimitSnapshot> snapshot = GrokRateLimitStore::load(testNow);
    ASSERT_TRUE(snapshot);
    EXPECT_EQ(*snapshot, (RateLimitSnapshot{.primary = std::nullopt,
                                            .secondary = RateLimitWindow{41.5, 10080, testNow + 5 * 24 * hour},
                                            .planType = "SuperGrok Heavy",
                                            .capturedAt = testNow - 60,
                                            .modelWindows = {}}));
    EXPECT_EQ(namesIn(home.inHome("Library/Application Support/Quorvane")),
              (std::vector<std::string>{"grok-rate-limit-capture.sh", "grok-rate-limits.json"}))
        << "no temporary file is left";
}

INSTANTIATE_TEST_SUITE_P(ByHome, GrokHook,
                         ::testing::Values("plain", "my own  home", "it's \"mine\"", "käse/日本", "$HOME `id` \\n",
                                           "line\nend\ttab"));

TEST(GrokHookRun, eachEventRunsTheSameScript) {
    const GrokScratchHome home;
    const std::string command = installedCommand(home);
    EXPECT_EQ(hookCommands(home.read(GrokScratchHome::hookFile)),
              (std::vector<HookCommand>{
                  {"SessionStart", command, 15}, {"UserPromptSubmit", command, 15}, {"Stop", command, 15}}));
}

TEST(GrokHookRun, logOfTheAgentsOwnHomeIsTheOneRead) {
    const GrokScratchHome home;
    const std::string command = installedCommand(home);
    home.write(GrokScratchHome::logFile, billingLine(10) + "\n");
    home.write("it's \"my\" agent/logs/unified.jsonl", billingLine(70) + "\n");
    home.setGrokHome(home.path("it's \"my\" agent"));
    EXPECT_EQ(runCommand(command).status, 0);
    const std::optional<RateLimitSnapshot> snapshot = GrokRateLimitStore::load(testNow);
    ASSERT_TRUE(snapshot && snapshot->secondary);
    EXPECT_EQ(snapshot->secondary->usedPercent, 70);
}

struct FailOpenCase {
    const char* name;
    std::function<void(const GrokScratchHome&)> prepare;
};
void PrintTo(const FailOpenCase& row, std::ostream* stream) {
    *stream << row.name;
}
class GrokHookFailOpen : public ::testing::TestWithParam<FailOpenCase> {};

TEST_P(GrokHookFailOpen, neverTroublesTheAgent) {
    const GrokScratchHome home;
    const std::string command = installedCommand(home);
    // The script is run from elsewhere, since some of these take its own folder away.
    const std::string script = home.write("script.sh", home.read(GrokScratchHome::scriptFile));
    GetParam().prepare(home);
    const ProgramRun run = runCommand("bash '" + script + "'");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.error, "");
    EXPECT_FALSE(GrokRateLimitStore::isActive(testNow));
}

INSTANTIATE_TEST_SUITE_P(
    ByCircumstance, GrokHookFailOpen,
    ::testing::Values(FailOpenCase{"noLog", [](const GrokScratchHome&) {}},
                      FailOpenCase{"logIsAFolder",
                                   [](const GrokScratchHome& home) { home.makeFolder(GrokScratchHome::logFile); }},
                      FailOpenCase{"logWithoutFigures",
                                   [](const GrokScratchHome& home) {
                                       home.write(GrokScratchHome::logFile, logLine("{}", "ready") + "\n" +
                                                                                logLine(R"({"config":{}})") + "\n" +
                                                                                billingLine(5).substr(0, 200));
                                   }},
                      FailOpenCase{"folderCannotBeMade",
                                   [](const GrokScratchHome& home) {
                                       home.write(GrokScratchHome::logFile, billingLine(5) + "\n");
                                       home.remove("Library");
                                       home.write("Library", "a file");
                                   }},
                      FailOpenCase{"fileCannotBeReplaced",
                                   [](const GrokScratchHome& home) {
                                       home.write(GrokScratchHome::logFile, billingLine(5) + "\n");
                                       home.makeFolder(std::string{GrokScratchHome::captureFile} + "/in-use");
                                   }}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(GrokHookRun, failedReplacementLeavesNoTemporaryFile) {
    const GrokScratchHome home;
    const std::string command = installedCommand(home);
    home.write(GrokScratchHome::logFile, billingLine(5) + "\n");
    home.makeFolder(std::string{GrokScratchHome::captureFile} + "/in-use");
    EXPECT_EQ(runCommand(command).status, 0);
    EXPECT_EQ(namesIn(home.path("Library/Application Support/Quorvane")),
              (std::vector<std::string>{"grok-rate-limit-capture.sh", "grok-rate-limits.json"}));
}

}  // namespace
}  // namespace quorvane::testing
