#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/model/UsageEvent.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/ScratchHome.h"

namespace quorvane::testing {

/// A home directory with names for the files of the agent and of the capture.
class CursorScratchHome : public ScratchHome {
public:
    static constexpr std::string_view hooksFile = ".cursor/hooks.json";
    static constexpr std::string_view folder = "Library/Application Support/Quorvane";
    static constexpr std::string_view scriptFile = "Library/Application Support/Quorvane/cursor-usage-capture.sh";
    static constexpr std::string_view captureFile = "Library/Application Support/Quorvane/cursor-usage.jsonl";

    CursorScratchHome() = default;

    /// Installs the hook, as if the agent were there.
    void install() const;

    /// The lines of the capture file; none if there is no such file.
    [[nodiscard]] std::vector<std::string> captured() const;
    /// The names of all files in the folder of the capture file.
    [[nodiscard]] std::vector<std::string> filesInFolder() const;
    /// Makes `file` a link to a new file with this content, which can be read but not replaced. Returns its path.
    std::string writeIrreplaceable(std::string_view file, std::string_view content) const;
};

/// Runs the hook as the agent does: its command, by the system's shell, with `input` on standard input.
[[nodiscard]] ProgramRun runHook(const std::string& command, const std::string& input);
/// The same with the command of this home.
[[nodiscard]] ProgramRun runHook(const std::string& input);

/// What the agent tells a hook of a generation: all members that it sends. `counters` is JSON without braces.
[[nodiscard]] std::string hookInput(std::string_view generation, std::string_view counters);

/// A line of the capture file for a generation, with the time and so many tokens of output. No line feed.
[[nodiscard]] std::string captureLine(std::string_view generation, int output, double when = 1789374066);

/// All of each event in one text.
[[nodiscard]] std::string told(const UsageEvent& event);
[[nodiscard]] std::vector<std::string> told(const std::vector<UsageEvent>& events);

}  // namespace quorvane::testing
