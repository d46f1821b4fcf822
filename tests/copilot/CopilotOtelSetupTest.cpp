#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <system_error>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/ratelimits/CopilotOtelSetup.h"
#include "tests/ingest/IngestTestSupport.h"
#include "tests/support/ScopedVariables.h"
#include "tests/support/ScratchHome.h"

namespace quorvane::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

/// A home directory, and the environment's SHELL.
struct ShellHome {
    explicit ShellHome(const std::string& shell = "/bin/zsh") { variables.set("SHELL", shell); }

    [[nodiscard]] bool hasExportFolder() const { return home.exists(".copilot/otel"); }

    ScratchHome home;
    ScopedVariables variables{"SHELL"};
};

std::string blockFor(const std::string& home) {
    return "# BEGIN QUORVANE-COPILOT-OTEL (added by Quorvane — safe to delete this block to remove)\n"
           "# Enables GitHub Copilot CLI's local OpenTelemetry export so Quorvane can audit token usage.\n"
           "# Only affects NEW shell sessions/Copilot CLI runs — never touches Copilot's own config.\n"
           "# Setting the file path (not just COPILOT_OTEL_ENABLED) is required: it both auto-enables OTel\n"
           "# AND selects the local file exporter backend instead of the default network otlp-http one.\n"
           "export COPILOT_OTEL_FILE_EXPORTER_PATH=\"" +
           home +
           "/.copilot/otel/otel.jsonl\"\n"
           "# END QUORVANE-COPILOT-OTEL";
}

CopilotOtelSetup::State installable(const std::string& path) {
    return CopilotOtelSetup::Installable{path};
}
const CopilotOtelSetup::State active = CopilotOtelSetup::Active{};
const CopilotOtelSetup::State unavailable = CopilotOtelSetup::Unavailable{};

// Which file it is.

struct ShellCase {
    const char* name;
    std::optional<std::string> shell;
    std::string expected;  ///< relative to the home; empty for none
    std::string existing = {};
};
class CopilotShellChoice : public ::testing::TestWithParam<ShellCase> {};

TEST_P(CopilotShellChoice, isTheStartUpFileOfTheShell) {
    const ScratchHome home;
    if (!GetParam().existing.empty()) home.write(GetParam().existing, "a\n");
    const std::optional<std::string> file = CopilotOtelSetup::shellRCURL(GetParam().shell);
    EXPECT_EQ(file, GetParam().expected.empty() ? std::nullopt : std::optional{home.path(GetParam().expected)});
}

INSTANTIATE_TEST_SUITE_P(
    ByShell, CopilotShellChoice,
    ::testing::Values(
        ShellCase{"zsh", "/bin/zsh", ".zshrc"}, ShellCase{"zshElsewhere", "/opt/my shells/zsh", ".zshrc"},
        ShellCase{"bash", "/bin/bash", ".bashrc"}, ShellCase{"bashWithRC", "/bin/bash", ".bashrc", ".bashrc"},
        ShellCase{"bashWithProfile", "/usr/bin/bash", ".bash_profile", ".bash_profile"},
        ShellCase{"zshWithBashProfile", "/bin/zsh", ".zshrc", ".bash_profile"}, ShellCase{"fish", "/usr/bin/fish", ""},
        ShellCase{"sh", "/bin/sh", ""}, ShellCase{"rbash", "/bin/rbash", ""}, ShellCase{"nameWithoutFolder", "zsh", ""},
        ShellCase{"trailingBlank", "/bin/zsh ", ""}, ShellCase{"empty", "", ""}, ShellCase{"none", std::nullopt, ""}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(CopilotOtelSetup, choosesTheFileByTheEnvironment) {
    const ShellHome shell;
    EXPECT_EQ(CopilotOtelSetup::state(), installable(shell.home.path(".zshrc")));
    shell.variables.set("SHELL", "/bin/bash");
    EXPECT_EQ(CopilotOtelSetup::state(), installable(shell.home.path(".bashrc")));
    shell.home.write(".bash_profile", "");
    EXPECT_EQ(CopilotOtelSetup::state(), installable(shell.home.path(".bash_profile")));
}

// States.

TEST(CopilotOtelSetup, isActiveWithTheBeginMarkerAlone) {
    const ShellHome shell;
    shell.home.write(".zshrc", "a\n# BEGIN QUORVANE-COPILOT-OTEL");
    EXPECT_EQ(CopilotOtelSetup::state(), active);
}

TEST(CopilotOtelSetup, isActiveWithABlockForAnotherHome) {
    const ShellHome shell;
    shell.home.write(".zshrc", blockFor("/home/other") + "\n");
    EXPECT_EQ(CopilotOtelSetup::state(), active);
    EXPECT_FALSE(CopilotOtelSetup::isCurrent(shell.home.read(".zshrc")));
}

TEST(CopilotOtelSetup, isInstallableWithAFileThatCannotBeRead) {
    const ShellHome shell;
    shell.home.write(".zshrc", "\xff # BEGIN QUORVANE-COPILOT-OTEL\n");
    EXPECT_EQ(CopilotOtelSetup::state(), installable(shell.home.path(".zshrc")));
    shell.home.remove(".zshrc");
    shell.home.makeFolder(".zshrc");
    EXPECT_EQ(CopilotOtelSetup::state(), installable(shell.home.path(".zshrc")));
}

class CopilotUnservedShell : public ::testing::TestWithParam<const char*> {};

TEST_P(CopilotUnservedShell, isUnavailableAndChangesNothing) {
    const ShellHome shell{"/bin/bash"};
    if (GetParam() == nullptr) {
        ::unsetenv("SHELL");
    } else {
        shell.variables.set("SHELL", GetParam());
    }
    const std::string text = "a\n" + blockFor("/home/other") + "\n";
    shell.home.write(".bashrc", text);
    EXPECT_EQ(CopilotOtelSetup::state(), unavailable);
    try {
        CopilotOtelSetup::install();
        FAIL() << "nothing was thrown";
    } catch (const CopilotOtelSetup::SetupError& failure) {
        EXPECT_EQ(failure.kind(), CopilotOtelSetup::SetupError::Kind::NoShellRC);
        EXPECT_STREQ(failure.what(), "noShellRC");
    }
    EXPECT_NO_THROW(CopilotOtelSetup::uninstall());
    EXPECT_EQ(shell.home.read(".bashrc"), text);
    EXPECT_FALSE(shell.home.exists(".copilot"));
}

INSTANTIATE_TEST_SUITE_P(ByValue, CopilotUnservedShell, ::testing::Values("/usr/bin/fish", "", nullptr),
                         [](const auto& row) {
                             if (row.param == nullptr) return "missing";
                             return *row.param == '\0' ? "empty" : "fish";
                         });

// Installing.

TEST(CopilotOtelInstall, createsTheStartUpFileWithTheBlockAlone) {
    const ShellHome shell;
    CopilotOtelSetup::install();
    EXPECT_EQ(shell.home.read(".zshrc"), blockFor(shell.home.path()) + "\n");
    EXPECT_TRUE(shell.hasExportFolder());
    EXPECT_EQ(CopilotOtelSetup::state(), active);
    EXPECT_TRUE(CopilotOtelSetup::isCurrent(shell.home.read(".zshrc")));
    CopilotOtelSetup::uninstall();
    EXPECT_EQ(shell.home.read(".zshrc"), "");
    EXPECT_TRUE(shell.hasExportFolder()) << "what was recorded stays";
}

TEST(CopilotOtelInstall, beginsAnEmptyFileAtItsFirstLine) {
    const ShellHome shell;
    shell.home.write(".zshrc", "");
    CopilotOtelSetup::install();
    EXPECT_EQ(shell.home.read(".zshrc"), blockFor(shell.home.path()) + "\n");
}

TEST(CopilotOtelInstall, standsBehindOneBlankLine) {
    const ShellHome shell;
    shell.home.write(".zshrc", "alias a=b\n");
    CopilotOtelSetup::install();
    EXPECT_EQ(shell.home.read(".zshrc"), "alias a=b\n\n" + blockFor(shell.home.path()) + "\n");
}

TEST(CopilotOtelInstall, endsALastLineWithoutLineFeed) {
    const ShellHome shell;
    shell.home.write(".zshrc", "alias a=b");
    CopilotOtelSetup::install();
    EXPECT_EQ(shell.home.read(".zshrc"), "alias a=b\n\n" + blockFor(shell.home.path()) + "\n");
    CopilotOtelSetup::uninstall();
    EXPECT_EQ(shell.home.read(".zshrc"), "alias a=b\n");
}

TEST(CopilotOtelInstall, leavesTheRCOfABashWithAProfileAlone) {
    const ShellHome shell{"/bin/bash"};
    shell.home.write(".bash_profile", "p\n");
    shell.home.write(".bashrc", "r\n");
    CopilotOtelSetup::install();
    EXPECT_EQ(shell.home.read(".bashrc"), "r\n");
    EXPECT_EQ(shell.home.read(".bash_profile"), "p\n\n" + blockFor(shell.home.path()) + "\n");
    CopilotOtelSetup::uninstall();
    EXPECT_EQ(shell.home.read(".bashrc"), "r\n");
    EXPECT_EQ(shell.home.read(".bash_profile"), "p\n");
}

TEST(CopilotOtelInstall, doesNothingAtAllWithTheCurrentBlock) {
    const ShellHome shell;
    const std::string file = shell.home.write(".zshrc", "a\n" + blockFor(shell.home.path()) + "\nb");
    const auto before = fs::last_write_time(file);
    CopilotOtelSetup::install();
    EXPECT_EQ(shell.home.read(".zshrc"), "a\n" + blockFor(shell.home.path()) + "\nb");
    EXPECT_EQ(fs::last_write_time(file), before);
    EXPECT_FALSE(shell.hasExportFolder());
}

TEST(CopilotOtelInstall, replacesTheBlockForAnotherHome) {
    const ShellHome shell;
    shell.home.write(".zshrc", "a\n\n" + blockFor("/home/other") + "\nb\n");
    CopilotOtelSetup::install();
    EXPECT_EQ(shell.home.read(".zshrc"), "a\nb\n\n" + blockFor(shell.home.path()) + "\n");
    EXPECT_TRUE(shell.hasExportFolder());
    CopilotOtelSetup::uninstall();
    EXPECT_EQ(shell.home.read(".zshrc"), "a\nb\n");
}

TEST(CopilotOtelInstall, appendsASecondBlockBehindABeginMarkerWithoutEnd) {
    const ShellHome shell;
    const std::string text = "# BEGIN QUORVANE-COPILOT-OTEL\nexport A=b\n";
    shell.home.write(".zshrc", text);
    CopilotOtelSetup::uninstall();
    EXPECT_EQ(shell.home.read(".zshrc"), text) << "cannot be taken out";
    CopilotOtelSetup::install();
    EXPECT_EQ(shell.home.read(".zshrc"), text + "\n" + blockFor(shell.home.path()) + "\n");
    CopilotOtelSetup::uninstall();
    EXPECT_EQ(shell.home.read(".zshrc"), text) << "the user's lines between the two begin markers stay";
}

TEST(CopilotOtelInstall, keepsModeAndLinks) {
    const ShellHome shell;
    const std::string target = shell.home.write("dotfiles/zshrc", "a\n");
    fs::permissions(target, fs::perms{0640});
    fs::create_symlink("dotfiles/zshrc", shell.home.path(".zshrc"));
    CopilotOtelSetup::install();
    EXPECT_TRUE(fs::is_symlink(shell.home.path(".zshrc")));
    EXPECT_EQ(shell.home.read("dotfiles/zshrc"), "a\n\n" + blockFor(shell.home.path()) + "\n");
    EXPECT_EQ(fs::status(target).permissions(), fs::perms{0640});
    CopilotOtelSetup::uninstall();
    EXPECT_TRUE(fs::is_symlink(shell.home.path(".zshrc")));
    EXPECT_EQ(shell.home.read("dotfiles/zshrc"), "a\n");
    EXPECT_EQ(fs::status(target).permissions(), fs::perms{0640});
}

TEST(CopilotOtelInstall, createsTheFileThatALinkLeadsTo) {
    const ShellHome shell;
    shell.home.makeFolder("dotfiles");
    fs::create_symlink(shell.home.path("dotfiles/zshrc"), shell.home.path(".zshrc"));
    CopilotOtelSetup::install();
    EXPECT_TRUE(fs::is_symlink(shell.home.path(".zshrc")));
    EXPECT_EQ(shell.home.read("dotfiles/zshrc"), blockFor(shell.home.path()) + "\n");
}

/// What `action` throws as a system error: its code and its words.
template <typename Action>
std::pair<std::error_code, std::string> failureOf(Action&& action) {
    try {
        action();
    } catch (const std::system_error& failure) {
        return {failure.code(), failure.what()};
    }
    return {{}, "nothing was thrown"};
}

TEST(CopilotOtelInstall, neverOverwritesAFileThatIsNoUTF8) {
    const ShellHome shell;
    const std::string text = "alias gr\xfc\xdf='echo'\n";
    shell.home.write(".zshrc", text);
    const auto [code, words] = failureOf([] { CopilotOtelSetup::install(); });
    EXPECT_EQ(code, std::errc::illegal_byte_sequence);
    EXPECT_THAT(words, HasSubstr(shell.home.path(".zshrc")));
    EXPECT_EQ(shell.home.read(".zshrc"), text);
    EXPECT_FALSE(shell.hasExportFolder());
    EXPECT_NO_THROW(CopilotOtelSetup::uninstall());
    EXPECT_EQ(shell.home.read(".zshrc"), text);
}

TEST(CopilotOtelInstall, failsWithAFolderInPlaceOfTheFile) {
    const ShellHome shell;
    shell.home.makeFolder(".zshrc");
    const auto [code, words] = failureOf([] { CopilotOtelSetup::install(); });
    EXPECT_EQ(code, std::errc::is_a_directory);
    EXPECT_THAT(words, HasSubstr(shell.home.path(".zshrc")));
    EXPECT_NO_THROW(CopilotOtelSetup::uninstall());
}

TEST(CopilotOtelInstall, failsWhereTheFileCannotBeWritten) {
    const ShellHome shell;
    fs::create_symlink(shell.home.path("missing/zshrc"), shell.home.path(".zshrc"));
    const auto [code, words] = failureOf([] { CopilotOtelSetup::install(); });
    EXPECT_EQ(code, std::errc::no_such_file_or_directory);
    EXPECT_THAT(words, HasSubstr("zshrc"));
    EXPECT_FALSE(shell.hasExportFolder());
}

TEST(CopilotOtelInstall, keepsTheBlockWhereTheFolderCannotBeMade) {
    const ShellHome shell;
    shell.home.write(".copilot", "a file");
    const auto [code, words] = failureOf([] { CopilotOtelSetup::install(); });
    EXPECT_TRUE(code);
    EXPECT_THAT(words, HasSubstr(shell.home.path(".copilot/otel")));
    EXPECT_EQ(shell.home.read(".zshrc"), blockFor(shell.home.path()) + "\n");
}

TEST(CopilotOtelUninstall, doesNothingWithoutABlock) {
    const ShellHome shell;
    EXPECT_NO_THROW(CopilotOtelSetup::uninstall());
    EXPECT_FALSE(shell.home.exists(".zshrc"));
    const std::string file = shell.home.write(".zshrc", "a\n");
    const auto before = fs::last_write_time(file);
    CopilotOtelSetup::uninstall();
    EXPECT_EQ(shell.home.read(".zshrc"), "a\n");
    EXPECT_EQ(fs::last_write_time(file), before);
}

TEST(CopilotOtelUninstall, takesABlockForAnotherHomeToo) {
    const ShellHome shell;
    shell.home.write(".zshrc", "a\n\n" + blockFor("/home/other") + "\n");
    CopilotOtelSetup::uninstall();
    EXPECT_EQ(shell.home.read(".zshrc"), "a\n");
}

TEST(CopilotOtelUninstall, leavesNoDescriptorAndNoTemporaryFile) {
    const ShellHome shell;
    const std::size_t before = openDescriptors();
    CopilotOtelSetup::install();
    CopilotOtelSetup::uninstall();
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(std::distance(fs::directory_iterator{shell.home.path()}, fs::directory_iterator{}), 2)
        << "the start-up file and the agent's folder";
}

/// Of a text that ends in a line feed, all bytes come back; of any other, one line feed more.
TEST(CopilotOtelUninstall, givesBackTheUsersBytesWhateverTheyWere) {
    const ShellHome shell;
    std::mt19937 random{20260720};
    const std::vector<std::string> pieces{"\n",     "\n\n", "alias a=b\n", "#",       " ",    "x",
                                          "é",      "\r\n", "\t",          "# END\n", "\n  ", "export PATH=\"$PATH\"\n",
                                          "# BEGIN"};
    for (int round = 0; round < 40; ++round) {
        std::string text;
        for (std::size_t count = random() % 8; count > 0; --count)
            text += pieces[random() % pieces.size()];
        shell.home.write(".zshrc", text);
        CopilotOtelSetup::install();
        CopilotOtelSetup::install();
        CopilotOtelSetup::uninstall();
        if (!text.empty() && text.back() != '\n') text += '\n';
        ASSERT_EQ(shell.home.read(".zshrc"), text);
    }
}

TEST(CopilotOtelUninstall, joinsNoLinesOfTheUserAndTakesNoneOfTheirLineFeeds) {
    const ShellHome shell;
    const std::string block = blockFor(shell.home.path());
    EXPECT_EQ(CopilotOtelSetup::removingBlock("a\n" + block + "\nb\n"), "a\nb\n");
    EXPECT_EQ(CopilotOtelSetup::removingBlock("a\n\n\n\n" + block + "\n\nb\n"), "a\n\n\n\nb\n");
    EXPECT_EQ(CopilotOtelSetup::removingBlock("a\n\n" + block), "a\n");
    EXPECT_EQ(CopilotOtelSetup::removingBlock("a; " + block + "\nb\n"), "a; \nb\n");
    EXPECT_EQ(CopilotOtelSetup::removingBlock(block + " b\n"), " b\n");
    EXPECT_EQ(CopilotOtelSetup::removingBlock("a\n\n# END QUORVANE-COPILOT-OTEL\n# BEGIN QUORVANE-COPILOT-OTEL\n"),
              "a\n\n# END QUORVANE-COPILOT-OTEL\n# BEGIN QUORVANE-COPILOT-OTEL\n");
    EXPECT_EQ(CopilotOtelSetup::removingBlock("a\n"), "a\n");
}

// Texts and the agent's command.

TEST(CopilotOtelSetup, blockNamesTheExportedFile) {
    const ScratchHome home;
    EXPECT_EQ(CopilotOtelSetup::enablementBlock(), blockFor(home.path()));
    EXPECT_EQ(CopilotOtelSetup::otelFileExporterPath("/home/ana"), "/home/ana/.copilot/otel/otel.jsonl");
    EXPECT_TRUE(CopilotOtelSetup::isInstalled(CopilotOtelSetup::enablementBlock()));
    EXPECT_TRUE(CopilotOtelSetup::isCurrent(CopilotOtelSetup::enablementBlock()));
    EXPECT_FALSE(CopilotOtelSetup::isInstalled("# END QUORVANE-COPILOT-OTEL"));
    EXPECT_FALSE(CopilotOtelSetup::isCurrent(blockFor("/home/other")));
}

TEST(CopilotOtelSetup, findsTheCommandInTheFoldersOfCommands) {
    const ScratchHome home;
    const ScopedVariables variables{"PATH"};
    variables.set("PATH", home.path("bin") + ":/nowhere");
    const std::vector<std::string> folders = CopilotOtelSetup::defaultCopilotSearchDirectories();
    EXPECT_THAT(folders, ::testing::Contains(home.path("bin")));
    const std::vector<std::string> own{home.path("empty"), home.path("bin")};
    EXPECT_FALSE(CopilotOtelSetup::isCopilotCLIDetected(own));
    const std::string command = home.write("bin/copilot", "#!/bin/sh\n");
    EXPECT_FALSE(CopilotOtelSetup::isCopilotCLIDetected(own)) << "not executable";
    fs::permissions(command, fs::perms{0755});
    EXPECT_TRUE(CopilotOtelSetup::isCopilotCLIDetected(own));
    EXPECT_FALSE(CopilotOtelSetup::isCopilotCLIDetected({}));
}

}  // namespace
}  // namespace quorvane::testing
