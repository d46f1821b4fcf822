#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <random>
#include <string>
#include <system_error>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "QuorvaneCore/platform/FileStatus.h"
#include "QuorvaneCore/ratelimits/MarkedBlock.h"
#include "QuorvaneCore/ratelimits/StatuslineCapture.h"
#include "tests/capture/StatuslineTestSupport.h"

namespace quorvane {
namespace {

using quorvane::testing::expectedBlock;
using quorvane::testing::olderBlock;
using quorvane::testing::oldestBlock;
using quorvane::testing::StatuslineHome;
using State = StatuslineCapture::State;
using Kind = StatuslineCapture::CaptureError::Kind;

constexpr const char* plainScript = "#!/bin/bash\ninput=$(cat)\necho hello\n";

std::string installedText(std::string_view script) {
    return std::string{script}.append("\n").append(expectedBlock).append("\n");
}

std::optional<Kind> kindOfFailedInstall() {
    try {
        StatuslineCapture::install();
    } catch (const StatuslineCapture::CaptureError& error) {
        return error.kind();
    }
    return std::nullopt;
}

/// The system's number of the failure of `operation`, 0 for none; the message names `path`.
int failureOf(void (*operation)(), const std::string& path) {
    try {
        operation();
    } catch (const std::system_error& error) {
        EXPECT_NE(std::string{error.what()}.find(path), std::string::npos) << error.what();
        return error.code().value();
    }
    return 0;
}

struct stat statusOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return status;
}

// The settings

struct CommandCase {
    const char* name;
    std::string settings;
    std::optional<std::string> expected;
};
class StatuslineCommand : public ::testing::TestWithParam<CommandCase> {};

TEST_P(StatuslineCommand, namesTheScript) {
    const StatuslineHome home;
    ::setenv("HOME", "/home/me", 1);
    EXPECT_EQ(StatuslineCapture::statuslineScriptPath(GetParam().settings), GetParam().expected);
}

CommandCase command(const char* name, const std::string& text, std::optional<std::string> expected) {
    return {name, R"({"statusLine": {"command": ")" + text + R"("}})", std::move(expected)};
}

INSTANTIATE_TEST_SUITE_P(
    BySettings, StatuslineCommand,
    ::testing::Values(command("scriptUnderTheHomeWithAFlag", "bash ~/.claude/statusline.sh --compact",
                              "/home/me/.claude/statusline.sh"),
                      command("lastOfSeveralScripts", "/a.sh /b.sh -c x", "/b.sh"),
                      command("withoutAScriptTheLastPiece", "env FOO=1 $HOME/bin/line", "/home/me/bin/line"),
                      command("tabsSeparateToo", "bash\\t/x/y.sh\\t-q", "/x/y.sh"),
                      command("quotesAreNotUnderstood", "bash '/my folder/x.sh'", "folder/x.sh'"),
                      command("endingIsCaseSensitive", "/a.sh /b.SH", "/a.sh"), command("onePiece", "line", "line"),
                      command("blanksOnly", "  \\t ", std::nullopt), command("emptyCommand", "", std::nullopt),
                      CommandCase{"commandIsNoString", R"({"statusLine": {"command": 1}})", std::nullopt},
                      CommandCase{"noCommand", R"({"statusLine": {}})", std::nullopt},
                      CommandCase{"statusLineIsNoObject", R"({"statusLine": "x.sh"})", std::nullopt},
                      CommandCase{"noStatusLine", R"({"command": "x.sh"})", std::nullopt},
                      CommandCase{"settingsAreNoObject", R"([{"statusLine": {"command": "x.sh"}}])", std::nullopt},
                      CommandCase{"settingsAreNoJSON", R"({"statusLine": {"command": "x.sh"})", std::nullopt},
                      CommandCase{"settingsAreEmpty", "", std::nullopt}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(StatuslineCapture, expandsTheHomeDirectoryOnlyWhereAShellWould) {
    const StatuslineHome home;
    EXPECT_EQ(StatuslineCapture::expandHome("~"), home.path());
    EXPECT_EQ(StatuslineCapture::expandHome("~/a"), home.path() + "/a");
    EXPECT_EQ(StatuslineCapture::expandHome("$HOME/a"), home.path() + "/a");
    for (const char* unchanged : {"~me/a", "$HOME", "${HOME}/a", "/~/a", "a/$HOME/b", ""})
        EXPECT_EQ(StatuslineCapture::expandHome(unchanged), unchanged);
}

// The variable

struct VariableCase {
    const char* name;
    const char* script;
    std::optional<std::string> expected;
};
class StatuslineVariable : public ::testing::TestWithParam<VariableCase> {};

TEST_P(StatuslineVariable, isTheOneThatTakesStandardInput) {
    EXPECT_EQ(StatuslineCapture::stdinVarName(GetParam().script), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    ByScript, StatuslineVariable,
    ::testing::Values(VariableCase{"plain", "input=$(cat)\n", "input"},
                      VariableCase{"withoutALineFeed", "a\nX_1=$(cat)", "X_1"},
                      VariableCase{"indentedAndFollowed", "\n\t  json=$(cat) # all of it\t\n", "json"},
                      VariableCase{"firstOfTwo", "a=$(cat)\nb=$(cat)\n", "a"},
                      VariableCase{"exported", "export input=$(cat)\n", std::nullopt},
                      VariableCase{"exportedAndThenPlain", "export a=$(cat)\nb=$(cat)\n", "b"},
                      VariableCase{"quoted", "input=\"$(cat)\"\n", std::nullopt},
                      VariableCase{"blankBehindTheName", "input =$(cat)\n", std::nullopt},
                      VariableCase{"blankAheadOfTheValue", "input= $(cat)\n", std::nullopt},
                      VariableCase{"commentedOut", "#input=$(cat)\n", std::nullopt},
                      VariableCase{"noName", "=$(cat)\n", std::nullopt},
                      VariableCase{"onlyTheFirstEqualsSignCounts", "a=b=$(cat)\n", std::nullopt},
                      VariableCase{"nameThatNoShellHas", "gr\xC3\xB6\xC3\x9F\x65=$(cat)\n", std::nullopt},
                      VariableCase{"fileIsRead", "input=$(cat file)\n", std::nullopt},
                      VariableCase{"carriageReturnAtTheEnd", "#!/bin/bash\r\ninput=$(cat)\r\n", "input"},
                      VariableCase{"empty", "", std::nullopt}),
    [](const auto& row) { return std::string{row.param.name}; });

// The block

TEST(StatuslineCapture, blockIsTheLinesThatUsersHave) {
    EXPECT_EQ(StatuslineCapture::captureBlock("input"), expectedBlock);
    std::string other{expectedBlock};
    for (std::size_t at = 0; (at = other.find("$input", at)) != std::string::npos;)
        other.replace(at, 6, "$json_2");
    EXPECT_EQ(StatuslineCapture::captureBlock("json_2"), other);
}

TEST(StatuslineCapture, blockOfAnotherRevisionNeedsMigration) {
    EXPECT_FALSE(StatuslineCapture::needsMigration(plainScript));
    EXPECT_FALSE(StatuslineCapture::needsMigration("# quorvane-capture-revision: 1\n"));
    EXPECT_FALSE(StatuslineCapture::needsMigration(installedText(plainScript)));
    EXPECT_TRUE(StatuslineCapture::needsMigration(olderBlock));
    EXPECT_TRUE(StatuslineCapture::needsMigration(oldestBlock));
}

TEST(StatuslineCapture, blockIsRecognisedByItsBeginMarker) {
    EXPECT_FALSE(StatuslineCapture::isInstalled(plainScript));
    EXPECT_FALSE(StatuslineCapture::isInstalled(StatuslineCapture::endMarker));
    EXPECT_TRUE(StatuslineCapture::isInstalled(oldestBlock));
}

TEST(StatuslineCapture, removingABlockWithoutItsEndMarkerChangesNothing) {
    const std::string script = installedText(plainScript);
    const std::string cut = script.substr(0, script.find(StatuslineCapture::endMarker));
    EXPECT_EQ(StatuslineCapture::removingBlock(cut), cut);
}

TEST(StatuslineCapture, removingABlockWithItsEndMarkerAheadChangesNothing) {
    const std::string script = std::string{plainScript}
                                   .append(StatuslineCapture::endMarker)
                                   .append("\necho kept\n")
                                   .append(StatuslineCapture::beginMarker)
                                   .append("\n");
    EXPECT_EQ(StatuslineCapture::removingBlock(script), script);
}

// The state

TEST(StatuslineCapture, stateIsUnavailableWithoutSettings) {
    const StatuslineHome home;
    EXPECT_EQ(StatuslineCapture::state(), State{StatuslineCapture::Unavailable{}});
}

TEST(StatuslineCapture, stateIsUnavailableWithoutAScriptInTheSettings) {
    const StatuslineHome home;
    home.nameCommand("  ");
    EXPECT_EQ(StatuslineCapture::state(), State{StatuslineCapture::Unavailable{}});
}

TEST(StatuslineCapture, stateIsUnavailableForAScriptThatCannotBeRead) {
    const StatuslineHome home;
    home.nameCommand("~/.claude/statusline.sh");
    EXPECT_EQ(StatuslineCapture::state(), State{StatuslineCapture::Unavailable{}}) << "missing";
    home.makeFolder(".claude/statusline.sh");
    EXPECT_EQ(StatuslineCapture::state(), State{StatuslineCapture::Unavailable{}}) << "a folder";
    home.remove(".claude/statusline.sh");
    home.useScript("input=$(cat)\necho \xFF\n");
    EXPECT_EQ(StatuslineCapture::state(), State{StatuslineCapture::Unavailable{}}) << "no UTF-8";
}

TEST(StatuslineCapture, stateIsUnavailableWithoutACaptureOfStandardInput) {
    const StatuslineHome home;
    home.useScript("echo hello\n");
    EXPECT_EQ(StatuslineCapture::state(), State{StatuslineCapture::Unavailable{}});
}

TEST(StatuslineCapture, stateIsInstallableWithTheScriptsPath) {
    const StatuslineHome home;
    const std::string script = home.useScript(plainScript);
    EXPECT_EQ(StatuslineCapture::state(), State{StatuslineCapture::Installable{script}});
}

TEST(StatuslineCapture, stateIsActiveWithABlockOfWhateverRevision) {
    const StatuslineHome home;
    home.useScript(installedText(plainScript));
    EXPECT_EQ(StatuslineCapture::state(), State{StatuslineCapture::Active{}});
    home.useScript(oldestBlock);
    EXPECT_EQ(StatuslineCapture::state(), State{StatuslineCapture::Active{}});
}

TEST(StatuslineCapture, stateFallsBackWhenTheUserDeletesTheBlock) {
    const StatuslineHome home;
    const std::string script = home.useScript(plainScript);
    StatuslineCapture::install();
    ASSERT_EQ(StatuslineCapture::state(), State{StatuslineCapture::Active{}});
    home.useScript(plainScript);
    EXPECT_EQ(StatuslineCapture::state(), State{StatuslineCapture::Installable{script}});
}

// Installing

TEST(StatuslineCapture, installAppendsTheBlockBehindABlankLine) {
    const StatuslineHome home;
    home.useScript(plainScript);
    StatuslineCapture::install();
    EXPECT_EQ(home.script(), installedText(plainScript));
    EXPECT_EQ(home.read(".claude/settings.json"),
              R"({"statusLine": {"type": "command", "command": "bash ~/.claude/statusline.sh --compact"}})");
}

TEST(StatuslineCapture, installAddsAMissingLastLineFeedAheadOfTheBlankLine) {
    const StatuslineHome home;
    home.useScript("input=$(cat)");
    StatuslineCapture::install();
    EXPECT_EQ(home.script(), installedText("input=$(cat)\n"));
}

TEST(StatuslineCapture, installWithTheCurrentBlockDoesNotTouchTheFile) {
    const StatuslineHome home;
    const std::string script = home.useScript(plainScript);
    StatuslineCapture::install();
    const std::string text = home.script();
    const struct stat before = statusOf(script);
    StatuslineCapture::install();
    StatuslineCapture::migrateIfNeeded();
    const struct stat after = statusOf(script);
    EXPECT_EQ(home.script(), text);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_EQ(after.st_ctim.tv_sec, before.st_ctim.tv_sec);
    EXPECT_EQ(after.st_ctim.tv_nsec, before.st_ctim.tv_nsec);
}

TEST(StatuslineCapture, installReplacesAnOlderBlock) {
    const StatuslineHome home;
    home.useScript(MarkedBlock::appended(plainScript, oldestBlock) + "echo behind\n");
    StatuslineCapture::install();
    EXPECT_EQ(home.script(), installedText(std::string{plainScript} + "echo behind\n"));
}

TEST(StatuslineCapture, installWithoutSettingsOrAScriptInThemTellsSo) {
    const StatuslineHome home;
    EXPECT_EQ(kindOfFailedInstall(), Kind::NoStatusline);
    home.nameCommand("");
    EXPECT_EQ(kindOfFailedInstall(), Kind::NoStatusline);
    home.write(".claude/settings.json", "{");
    EXPECT_EQ(kindOfFailedInstall(), Kind::NoStatusline);
}

TEST(StatuslineCapture, installNeverCreatesAScript) {
    const StatuslineHome home;
    home.nameCommand("~/.claude/statusline.sh");
    EXPECT_EQ(failureOf(StatuslineCapture::install, home.path(".claude/statusline.sh")), ENOENT);
    EXPECT_FALSE(home.exists(".claude/statusline.sh"));
}

TEST(StatuslineCapture, installOnAFolderPassesTheReadErrorOn) {
    const StatuslineHome home;
    home.nameCommand("~/.claude/statusline.sh");
    home.makeFolder(".claude/statusline.sh");
    EXPECT_EQ(failureOf(StatuslineCapture::install, home.path(".claude/statusline.sh")), EISDIR);
}

TEST(StatuslineCapture, installWithoutACaptureOfStandardInputTellsSoAndChangesNothing) {
    const StatuslineHome home;
    home.useScript("echo hello\n");
    EXPECT_EQ(kindOfFailedInstall(), Kind::NoStdinCapture);
    EXPECT_EQ(home.script(), "echo hello\n");
    const std::string withOlderBlock = MarkedBlock::appended("echo hello\n", olderBlock);
    home.useScript(withOlderBlock);
    EXPECT_EQ(kindOfFailedInstall(), Kind::NoStdinCapture);
    EXPECT_EQ(home.script(), withOlderBlock);
}

TEST(StatuslineCapture, errorsAreNamedInTheirMessages) {
    EXPECT_STREQ(StatuslineCapture::CaptureError{Kind::NoStatusline}.what(), "noStatusline");
    EXPECT_STREQ(StatuslineCapture::CaptureError{Kind::NoStdinCapture}.what(), "noStdinCapture");
}

TEST(StatuslineCapture, scriptThatIsNoUTF8IsAReadErrorAndLosesNothing) {
    const StatuslineHome home;
    const std::string text = "input=$(cat)\necho \xC3\x28\n" + std::string{olderBlock} + "\n";
    const std::string script = home.useScript(text);
    EXPECT_EQ(failureOf(StatuslineCapture::install, script), EILSEQ);
    EXPECT_EQ(failureOf(StatuslineCapture::uninstall, script), EILSEQ);
    StatuslineCapture::migrateIfNeeded();
    EXPECT_EQ(home.script(), text);
}

TEST(StatuslineCapture, failedWriteIsPassedOnAndLosesNothing) {
    const StatuslineHome home;
    // The name leaves no room for that of the temporary file.
    const std::string name = std::string(252, 'x') + ".sh";
    home.nameCommand("~/" + name);
    const std::string script = home.write(name, plainScript);
    EXPECT_EQ(failureOf(StatuslineCapture::install, script), ENAMETOOLONG);
    EXPECT_EQ(home.read(name), plainScript);
    const std::string withOlderBlock = MarkedBlock::appended(plainScript, olderBlock);
    home.write(name, withOlderBlock);
    EXPECT_EQ(failureOf(StatuslineCapture::uninstall, script), ENAMETOOLONG);
    StatuslineCapture::migrateIfNeeded();
    EXPECT_EQ(home.read(name), withOlderBlock);
}

TEST(StatuslineCapture, scriptKeepsItsModeAndItsOwner) {
    const StatuslineHome home;
    const std::string script = home.useScript(plainScript);
    if (::geteuid() == 0) {
        ASSERT_EQ(::chown(script.c_str(), 12345, 23456), 0);
    }
    ASSERT_EQ(::chmod(script.c_str(), 0751), 0);
    const struct stat before = statusOf(script);
    StatuslineCapture::install();
    const struct stat installed = statusOf(script);
    StatuslineCapture::uninstall();
    const struct stat after = statusOf(script);
    for (const struct stat& status : {installed, after}) {
        EXPECT_EQ(status.st_mode, before.st_mode);
        EXPECT_EQ(status.st_uid, before.st_uid);
        EXPECT_EQ(status.st_gid, before.st_gid);
    }
    EXPECT_NE(installed.st_ino, before.st_ino) << "replaced by a rename";
}

TEST(StatuslineCapture, linkToTheScriptIsFollowedAndStaysALink) {
    const StatuslineHome home;
    home.useScript("");
    home.remove(StatuslineHome::scriptFile);
    home.write("dotfiles/line.sh", plainScript);
    std::filesystem::create_symlink("../dotfiles/line.sh", home.path(StatuslineHome::scriptFile));
    StatuslineCapture::install();
    EXPECT_TRUE(std::filesystem::is_symlink(home.path(StatuslineHome::scriptFile)));
    EXPECT_EQ(home.read("dotfiles/line.sh"), installedText(plainScript));
    StatuslineCapture::uninstall();
    EXPECT_TRUE(std::filesystem::is_symlink(home.path(StatuslineHome::scriptFile)));
    EXPECT_EQ(home.read("dotfiles/line.sh"), plainScript);
}

TEST(StatuslineCapture, noTemporaryFileIsLeftBesideTheScript) {
    const StatuslineHome home;
    home.useScript(plainScript);
    StatuslineCapture::install();
    StatuslineCapture::uninstall();
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator{home.path(".claude")})
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"settings.json", "statusline.sh"}));
}

// Migrating

TEST(StatuslineCapture, migrationBringsABlockOfRevision1ToThisOne) {
    const StatuslineHome home;
    home.useScript(MarkedBlock::appended(plainScript, olderBlock));
    StatuslineCapture::migrateIfNeeded();
    EXPECT_EQ(home.script(), installedText(plainScript));
}

TEST(StatuslineCapture, migrationBringsABlockWithoutRevisionToThisOne) {
    const StatuslineHome home;
    home.useScript(MarkedBlock::appended(plainScript, oldestBlock));
    StatuslineCapture::migrateIfNeeded();
    EXPECT_EQ(home.script(), installedText(plainScript));
}

TEST(StatuslineCapture, migrationInstallsNothingOfItsOwnAccord) {
    const StatuslineHome home;
    StatuslineCapture::migrateIfNeeded();
    EXPECT_FALSE(home.exists(".claude"));
    home.useScript(plainScript);
    StatuslineCapture::migrateIfNeeded();
    EXPECT_EQ(home.script(), plainScript);
}

TEST(StatuslineCapture, migrationSwallowsAMissingCapture) {
    const StatuslineHome home;
    home.useScript(olderBlock);
    StatuslineCapture::migrateIfNeeded();
    EXPECT_EQ(home.script(), olderBlock);
}

TEST(StatuslineCapture, blockWithoutItsEndMarkerGetsASecondOneBehindItAndTakesItAlone) {
    const StatuslineHome home;
    const std::string cut = std::string{plainScript} + "\n# BEGIN QUORVANE-RATE-LIMIT-CAPTURE\necho mine\n";
    home.useScript(cut);
    StatuslineCapture::install();
    EXPECT_EQ(home.script(), installedText(cut));
    StatuslineCapture::uninstall();
    EXPECT_EQ(home.script(), cut);
}

// Taking out

TEST(StatuslineCapture, uninstallGivesBackTheScript) {
    const StatuslineHome home;
    for (const std::string script : {"#!/bin/bash\ninput=$(cat)\necho hello\n", "input=$(cat)\n\n\n\n",
                                     "\n\ninput=$(cat)\n", "#!/bin/bash\r\ninput=$(cat)\r\necho hello\r\n",
                                     "input=$(cat)\r\n\r\n", "\xEF\xBB\xBFinput=$(cat)\nX=$(cat)\n"}) {
        home.useScript(script);
        StatuslineCapture::install();
        ASSERT_NE(home.script(), script);
        StatuslineCapture::uninstall();
        EXPECT_EQ(home.script(), script);
    }
}

TEST(StatuslineCapture, uninstallLeavesALineFeedThatInstallHadToAdd) {
    const StatuslineHome home;
    home.useScript("input=$(cat)\necho hello");
    StatuslineCapture::install();
    StatuslineCapture::uninstall();
    EXPECT_EQ(home.script(), "input=$(cat)\necho hello\n");
}

TEST(StatuslineCapture, uninstallKeepsWhatTheUserWroteAroundTheBlock) {
    const StatuslineHome home;
    home.useScript(plainScript);
    StatuslineCapture::install();
    home.append(StatuslineHome::scriptFile, "echo behind\n");
    home.write(StatuslineHome::scriptFile, "# ahead\n" + home.script());
    StatuslineCapture::uninstall();
    EXPECT_EQ(home.script(), "# ahead\n" + std::string{plainScript} + "echo behind\n");
}

TEST(StatuslineCapture, uninstallWithoutABlockWritesNothing) {
    const StatuslineHome home;
    const std::string script = home.useScript(plainScript);
    const struct stat before = statusOf(script);
    StatuslineCapture::uninstall();
    EXPECT_EQ(statusOf(script).st_ino, before.st_ino);
    EXPECT_EQ(home.script(), plainScript);
}

TEST(StatuslineCapture, uninstallWithoutSettingsOrAScriptInThemHasNothingToDo) {
    const StatuslineHome home;
    EXPECT_NO_THROW(StatuslineCapture::uninstall());
    home.nameCommand("");
    EXPECT_NO_THROW(StatuslineCapture::uninstall());
}

TEST(StatuslineCapture, uninstallPassesAReadErrorOn) {
    const StatuslineHome home;
    home.nameCommand("~/.claude/statusline.sh");
    EXPECT_EQ(failureOf(StatuslineCapture::uninstall, home.path(".claude/statusline.sh")), ENOENT);
}

TEST(StatuslineCapture, installThenUninstallGivesBackAnyScript) {
    const StatuslineHome home;
    const std::vector<std::string> pieces{
        "\n", "\n",           "\r\n", "echo a\n", "  ", "# é 日本\n", "# END QUORVANE-RATE-LIMIT-CAPTURE\n",
        "fi", "x=$(cat)\r\n", "\t"};
    std::mt19937 random{4711};
    for (int round = 0; round < 60; ++round) {
        std::string script;
        for (std::size_t count = random() % 8; count > 0; --count)
            script += pieces[random() % pieces.size()];
        script += "\ninput=$(cat)\n";
        for (std::size_t count = random() % 8; count > 0; --count)
            script += pieces[random() % pieces.size()];
        home.useScript(script);
        StatuslineCapture::install();
        ASSERT_EQ(StatuslineCapture::state(), State{StatuslineCapture::Active{}});
        StatuslineCapture::uninstall();
        if (script.back() != '\n') script += '\n';
        ASSERT_EQ(home.script(), script);
    }
}

}  // namespace
}  // namespace quorvane
