// The block as the users' shells see it.

#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "QuorvaneCore/ratelimits/CopilotOtelSetup.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/ScopedVariables.h"
#include "tests/support/ScratchHome.h"

namespace quorvane::testing {
namespace {

struct ShellCase {
    const char* name;
    std::string shell;
    std::string file;
    std::string text;         ///< what the user has in it
    std::string folder = {};  ///< of the home, below the scratch folder
};
void PrintTo(const ShellCase& row, std::ostream* stream) {
    *stream << row.shell << " " << row.file;
}

class CopilotOtelShell : public ::testing::TestWithParam<ShellCase> {};

/// A new shell of the user, which reads its own start-up file; what it then says.
ProgramRun startShell(const ShellCase& shell, const std::string& home) {
    const std::string question =
        "printf '%s|' \"${COPILOT_OTEL_FILE_EXPORTER_PATH-}\" \"$mine\"; "
        "env | grep -c ^COPILOT_OTEL_FILE_EXPORTER_PATH=";
    // Of zsh's files only the user's own counts; bash reads one or the other by what it is started as.
    std::vector<std::string> command{shell.shell, "-i", "-c", question};
    if (shell.file == ".zshrc") command = {shell.shell, "-o", "noglobalrcs", "-i", "-c", question};
    if (shell.file == ".bash_profile") command = {shell.shell, "-l", "-c", question};
    ProgramRun::Options options;
    options.environment = {{"HOME", home}, {"ZDOTDIR", ""}, {"COPILOT_OTEL_FILE_EXPORTER_PATH", ""}};
    return ProgramRun::of(command, options);
}

TEST_P(CopilotOtelShell, exportsThePathAndGoesOnAsBefore) {
    const ShellCase& row = GetParam();
    const ScratchHome scratch;
    const ScopedVariables variables{"SHELL", "HOME"};
    const std::string home = row.folder.empty() ? scratch.path() : scratch.path(row.folder);
    scratch.write(home + "/" + row.file, row.text);
    variables.set("HOME", home);
    variables.set("SHELL", row.shell);

    EXPECT_EQ(startShell(row, home).output, "|yes|0\n");
    CopilotOtelSetup::install();
    const ProgramRun run = startShell(row, home);
    EXPECT_EQ(run.output, CopilotOtelSetup::otelFileExporterPath(home) + "|yes|1\n") << run.error;
    CopilotOtelSetup::uninstall();
    EXPECT_EQ(startShell(row, home).output, "|yes|0\n");
    EXPECT_EQ(scratch.read(home + "/" + row.file), row.text);
}

const std::string bash = "/usr/bin/bash";
const std::string zsh = "/usr/bin/zsh";

INSTANTIATE_TEST_SUITE_P(
    ByShell, CopilotOtelShell,
    ::testing::Values(ShellCase{"zsh", zsh, ".zshrc", "mine=yes\n"},
                      ShellCase{"zshWithBlanksInTheHome", zsh, ".zshrc", "mine=yes\n", "my own  home"},
                      ShellCase{"zshWithStrictOptions", zsh, ".zshrc", "set -eu\nmine=yes\n"},
                      ShellCase{"bashRC", bash, ".bashrc", "mine=yes\n"},
                      ShellCase{"bashProfile", bash, ".bash_profile", "mine=yes\n"},
                      ShellCase{"bashWithBlanksInTheHome", bash, ".bashrc", "mine=yes\n", "my own  home"},
                      ShellCase{"bashWithStrictOptions", bash, ".bash_profile", "set -u\nmine=yes\n"},
                      ShellCase{"bashBehindBlankLines", bash, ".bashrc", "mine=yes\n\n\n"}),
    [](const auto& row) { return std::string{row.param.name}; });

}  // namespace
}  // namespace quorvane::testing
