// Hook and script: whether they are in place, putting them there and taking them away.

#include <cerrno>
#include <filesystem>
#include <functional>
#include <system_error>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/platform/FileStatus.h"
#include "QuorvaneCore/ratelimits/GrokRateLimitCapture.h"
#include "QuorvaneCore/ratelimits/GrokRateLimitStore.h"
#include "tests/grok/GrokTestSupport.h"

namespace quorvane::testing {
namespace {

namespace fs = std::filesystem;
using State = GrokRateLimitCapture::State;
using Kind = GrokRateLimitCapture::CaptureError::Kind;

std::optional<Kind> kindOfFailedInstall(const std::optional<std::string>& grokHome = std::nullopt) {
    try {
        GrokRateLimitCapture::install(grokHome);
    } catch (const GrokRateLimitCapture::CaptureError& error) {
        return error.kind();
    }
    return std::nullopt;
}

/// The system's number of the failure of an install, 0 for none; the message names `path`.
int failureOfInstall(const std::string& path) {
    try {
        GrokRateLimitCapture::install();
    } catch (const std::system_error& error) {
        EXPECT_NE(std::string{error.what()}.find(path), std::string::npos) << error.what();
        return error.code().value();
    }
    return 0;
}

std::uint32_t modeOf(const std::string& path) {
    const std::optional<FileStatus> status = FileStatus::of(path);
    return status ? status->mode & 07777U : 0;
}

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator{folder})
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

class GrokCapture : public ::testing::Test {
protected:
    GrokCapture() { Clock::pin(testNow); }
    ~GrokCapture() override { Clock::unpin(); }

    [[nodiscard]] std::string script() const { return home_.read(GrokScratchHome::scriptFile); }
    [[nodiscard]] std::string hook() const { return home_.read(GrokScratchHome::hookFile); }
    [[nodiscard]] std::string scriptPath() const { return home_.path(GrokScratchHome::scriptFile); }

    GrokScratchHome home_;
};

// The state

TEST_F(GrokCapture, stateFollowsTheAgentAndTheFiles) {
    const std::string agent = home_.path("agent");
    EXPECT_EQ(GrokRateLimitCapture::state(agent), State::Unavailable);
    home_.makeProgram("agent/bin/grok");
    EXPECT_EQ(GrokRateLimitCapture::state(agent), State::Installable);
    GrokRateLimitCapture::install(agent);
    EXPECT_EQ(GrokRateLimitCapture::state(agent), State::Active);
    home_.remove("agent/bin");
    EXPECT_EQ(GrokRateLimitCapture::state(agent), State::Unavailable) << "installed, but without the agent";
}

TEST_F(GrokCapture, stateTakesTheCallersWordForTheAgent) {
    EXPECT_EQ(GrokRateLimitCapture::state(home_.path("agent"), true), State::Installable);
    home_.makeAgent();
    EXPECT_EQ(GrokRateLimitCapture::state(std::nullopt, false), State::Unavailable);
    GrokRateLimitCapture::install();
    EXPECT_EQ(GrokRateLimitCapture::state(std::nullopt, false), State::Unavailable);
    EXPECT_EQ(GrokRateLimitCapture::state(std::nullopt, true), State::Active);
    EXPECT_EQ(GrokRateLimitCapture::state(), State::Active);
}

TEST_F(GrokCapture, toggleIsOnWhenActiveOnly) {
    EXPECT_TRUE(GrokRateLimitCapture::toggleIsOn(State::Active));
    EXPECT_FALSE(GrokRateLimitCapture::toggleIsOn(State::Installable));
    EXPECT_FALSE(GrokRateLimitCapture::toggleIsOn(State::Unavailable));
}

TEST_F(GrokCapture, filesLieWhereTheScriptWrites) {
    EXPECT_EQ(GrokRateLimitCapture::appSupportDirectory(), home_.path("Library/Application Support/Quorvane"));
    EXPECT_EQ(GrokRateLimitCapture::scriptURL(), scriptPath());
    EXPECT_FALSE(home_.exists("Library")) << "nothing is created";
}

struct InstalledCase {
    const char* name;
    std::function<void(const GrokScratchHome&)> change;
    bool expected = false;
};
class GrokCaptureInstalled : public ::testing::TestWithParam<InstalledCase> {};

TEST_P(GrokCaptureInstalled, needsTheHookAndTheScript) {
    const GrokScratchHome home;
    home.makeAgent();
    GrokRateLimitCapture::install();
    ASSERT_TRUE(GrokRateLimitCapture::isInstalled());
    GetParam().change(home);
    EXPECT_EQ(GrokRateLimitCapture::isInstalled(), GetParam().expected);
}

void writeHook(const GrokScratchHome& home, std::string_view text) {
    home.write(GrokScratchHome::hookFile, text);
}
void writeScript(const GrokScratchHome& home, std::string_view text) {
    home.write(GrokScratchHome::scriptFile, text);
}

INSTANTIATE_TEST_SUITE_P(
    ByFiles, GrokCaptureInstalled,
    ::testing::Values(
        InstalledCase{"untouched", [](const GrokScratchHome&) {}, true},
        InstalledCase{"hookIsGone", [](const GrokScratchHome& home) { home.remove(GrokScratchHome::hookFile); }},
        InstalledCase{"scriptIsGone", [](const GrokScratchHome& home) { home.remove(GrokScratchHome::scriptFile); }},
        InstalledCase{"scriptLostItsMarker", [](const GrokScratchHome& home) { writeScript(home, "exit 0\n"); }},
        InstalledCase{"scriptOfAnotherRevision",
                      [](const GrokScratchHome& home) {
                          writeScript(home, "# BEGIN QUORVANE-GROK-RATE-LIMIT-CAPTURE (older)\n");
                      },
                      true},
        InstalledCase{
            "scriptIsNoText",
            [](const GrokScratchHome& home) { writeScript(home, GrokRateLimitCapture::captureScript() + "\xff"); }},
        InstalledCase{"hookNamesTheScriptUnderAnotherHome",
                      [](const GrokScratchHome& home) {
                          writeHook(home, R"({"command": "bash '/home/eve/grok-rate-limit-capture.sh'"})");
                      },
                      true},
        InstalledCase{"hookNamesItself",
                      [](const GrokScratchHome& home) { writeHook(home, "quorvane-rate-limit-capture"); }, true},
        InstalledCase{"hookNamesNeither", [](const GrokScratchHome& home) { writeHook(home, R"({"hooks": {}})"); }},
        InstalledCase{"hookIsEmpty", [](const GrokScratchHome& home) { writeHook(home, ""); }},
        InstalledCase{"hookIsNoText",
                      [](const GrokScratchHome& home) { writeHook(home, "grok-rate-limit-capture.sh\xff"); }},
        InstalledCase{"hookIsOfAnotherAgentsHome",
                      [](const GrokScratchHome& home) { home.setGrokHome(home.path("other")); }}),
    [](const auto& row) { return std::string{row.param.name}; });

// Installing

TEST_F(GrokCapture, installWritesScriptAndHook) {
    home_.makeAgent();
    GrokRateLimitCapture::install();
    EXPECT_EQ(script(), GrokRateLimitCapture::captureScript());
    EXPECT_EQ(hook(), GrokRateLimitCapture::hookJSON(scriptPath()));
    EXPECT_EQ(modeOf(scriptPath()), 0755);
    EXPECT_EQ(modeOf(home_.path("Library/Application Support/Quorvane")), 0700);
    EXPECT_EQ(namesIn(home_.path("Library/Application Support/Quorvane")),
              std::vector<std::string>{"grok-rate-limit-capture.sh"});
    EXPECT_EQ(namesIn(home_.path(".grok/hooks")), std::vector<std::string>{"quorvane-rate-limit-capture.json"});
}

TEST_F(GrokCapture, installGoesIntoTheHomeGiven) {
    home_.makeProgram("agent/bin/grok");
    GrokRateLimitCapture::install(home_.path("agent"));
    EXPECT_EQ(home_.read("agent/hooks/quorvane-rate-limit-capture.json"), GrokRateLimitCapture::hookJSON(scriptPath()));
    EXPECT_FALSE(home_.exists(".grok"));
    EXPECT_TRUE(GrokRateLimitCapture::isInstalled(home_.path("agent")));
    EXPECT_FALSE(GrokRateLimitCapture::isInstalled());
}

TEST_F(GrokCapture, installAgainBringsBothFilesToTheirPresentText) {
    home_.makeAgent();
    home_.write(GrokScratchHome::scriptFile, "# an older script\n");
    home_.write(GrokScratchHome::hookFile, "{\"changed\": true}");
    ASSERT_EQ(::chmod(scriptPath().c_str(), 0600), 0);
    for (int time = 0; time < 2; ++time) {
        GrokRateLimitCapture::install();
        EXPECT_EQ(script(), GrokRateLimitCapture::captureScript());
        EXPECT_EQ(hook(), GrokRateLimitCapture::hookJSON(scriptPath()));
        EXPECT_EQ(modeOf(scriptPath()), 0755);
    }
}

TEST_F(GrokCapture, installLeavesTheAgentsOtherHooksAlone) {
    home_.makeAgent();
    home_.write(".grok/hooks/mine.json", "{}");
    GrokRateLimitCapture::install();
    EXPECT_EQ(home_.read(".grok/hooks/mine.json"), "{}");
    GrokRateLimitCapture::uninstall();
    EXPECT_EQ(namesIn(home_.path(".grok/hooks")), std::vector<std::string>{"mine.json"});
}

TEST_F(GrokCapture, installBringsTheFiguresThatAreAlreadyInTheLog) {
    home_.makeAgent();
    home_.write(GrokScratchHome::logFile, billingLine(41.5) + "\n");
    GrokRateLimitCapture::install();
    const std::optional<RateLimitSnapshot> snapshot = GrokRateLimitStore::load(testNow);
    ASSERT_TRUE(snapshot);
    EXPECT_EQ(snapshot->secondary, (RateLimitWindow{41.5, 10080, testNow + 5 * 24 * hour}));
}

TEST_F(GrokCapture, installWithoutTheAgentTellsSoAndWritesNothing) {
    EXPECT_EQ(kindOfFailedInstall(home_.path("agent")), Kind::GrokNotDetected);
    EXPECT_FALSE(home_.exists("agent"));
    EXPECT_FALSE(home_.exists("Library"));
}

TEST_F(GrokCapture, errorsAreNamedInTheirMessages) {
    EXPECT_STREQ(GrokRateLimitCapture::CaptureError{Kind::GrokNotDetected}.what(), "grokNotDetected");
    EXPECT_STREQ(GrokRateLimitCapture::CaptureError{Kind::NoAppSupport}.what(), "noAppSupport");
}

TEST_F(GrokCapture, installPassesOnThatItsFolderCannotBeMade) {
    home_.makeAgent();
    home_.write("Library/Application Support/Quorvane", "a file");
    EXPECT_NE(failureOfInstall(home_.path("Library/Application Support/Quorvane")), 0);
    EXPECT_FALSE(home_.exists(GrokScratchHome::hookFile));
}

TEST_F(GrokCapture, installPassesOnThatTheScriptCannotBeWritten) {
    home_.makeAgent();
    home_.makeFolder(std::string{GrokScratchHome::scriptFile} + "/in-use");
    EXPECT_EQ(failureOfInstall(scriptPath()), EISDIR);
    EXPECT_FALSE(home_.exists(GrokScratchHome::hookFile));
}

TEST_F(GrokCapture, installThatStoppedHalfwayIsCompletedByTheNext) {
    home_.makeAgent();
    home_.write(".grok/hooks", "a file");
    EXPECT_NE(failureOfInstall(home_.path(".grok/hooks")), 0);
    EXPECT_EQ(script(), GrokRateLimitCapture::captureScript()) << "what was done stays";
    EXPECT_FALSE(GrokRateLimitCapture::isInstalled());
    home_.remove(".grok/hooks");
    home_.makeFolder(GrokScratchHome::hookFile);
    EXPECT_EQ(failureOfInstall(home_.path(GrokScratchHome::hookFile)), EISDIR);
    home_.remove(GrokScratchHome::hookFile);
    GrokRateLimitCapture::install();
    EXPECT_TRUE(GrokRateLimitCapture::isInstalled());
}

// Uninstalling

TEST_F(GrokCapture, uninstallTakesAwayWhatInstallBrought) {
    home_.makeAgent();
    home_.makeFolder(".grok/hooks");
    home_.makeFolder("Library/Application Support/Quorvane");
    home_.write(GrokScratchHome::logFile, billingLine(10) + "\n");
    GrokRateLimitCapture::install();
    GrokRateLimitCapture::uninstall();
    EXPECT_TRUE(namesIn(home_.path(".grok/hooks")).empty());
    EXPECT_EQ(GrokRateLimitCapture::state(), State::Installable);
    EXPECT_EQ(namesIn(home_.path("Library/Application Support/Quorvane")),
              std::vector<std::string>{"grok-rate-limits.json"})
        << "the captured file stays";
    EXPECT_TRUE(GrokRateLimitStore::clear());
}

TEST_F(GrokCapture, uninstallOfNothingIsNothing) {
    GrokRateLimitCapture::uninstall();
    GrokRateLimitCapture::uninstall(home_.path("agent"));
    EXPECT_TRUE(namesIn(home_.path()).empty());
}

TEST_F(GrokCapture, uninstallRemovesWhatTheUserChanged) {
    home_.makeAgent();
    GrokRateLimitCapture::install();
    home_.write(GrokScratchHome::hookFile, "{}");
    home_.write(GrokScratchHome::scriptFile, "exit 0\n");
    GrokRateLimitCapture::uninstall();
    EXPECT_FALSE(home_.exists(GrokScratchHome::hookFile));
    EXPECT_FALSE(home_.exists(GrokScratchHome::scriptFile));
}

TEST_F(GrokCapture, uninstallGoesOnBehindWhatCannotBeRemoved) {
    home_.makeAgent();
    GrokRateLimitCapture::install();
    home_.remove(GrokScratchHome::hookFile);
    home_.makeFolder(std::string{GrokScratchHome::hookFile} + "/in-use");
    GrokRateLimitCapture::uninstall();
    EXPECT_TRUE(home_.exists(GrokScratchHome::hookFile));
    EXPECT_FALSE(home_.exists(GrokScratchHome::scriptFile));

    home_.remove(GrokScratchHome::hookFile);
    GrokRateLimitCapture::install();
    home_.remove(GrokScratchHome::scriptFile);
    home_.makeFolder(std::string{GrokScratchHome::scriptFile} + "/in-use");
    GrokRateLimitCapture::uninstall();
    EXPECT_FALSE(home_.exists(GrokScratchHome::hookFile));
    EXPECT_TRUE(home_.exists(GrokScratchHome::scriptFile));
}

}  // namespace
}  // namespace quorvane::testing
