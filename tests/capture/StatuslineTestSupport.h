#pragma once
#include <string>
#include <string_view>

#include "tests/support/ScratchHome.h"

namespace quorvane::testing {

/// A home directory in which the agent's settings name a status-line script.
class StatuslineHome : public ScratchHome {
public:
    static constexpr std::string_view scriptFile = ".claude/statusline.sh";
    static constexpr std::string_view captureFile = "Library/Application Support/Quorvane/claude-rate-limits.json";

    StatuslineHome() = default;

    /// From here on the home directory is a new folder of that name below the first one.
    void moveHomeTo(std::string_view folder);

    /// The home directory that counts now.
    [[nodiscard]] std::string home() const;
    [[nodiscard]] std::string inHome(std::string_view relative) const;

    /// Writes the settings with that command, and none other.
    void nameCommand(std::string_view command) const;
    /// Writes the script and the settings that name it. Returns the script's path.
    std::string useScript(std::string_view text) const;
    [[nodiscard]] std::string script() const { return read(inHome(scriptFile)); }
};

/// The lines of the block as users have them in their scripts, for the variable "input".
extern const std::string_view expectedBlock;
/// A block as it was before it carried revisions.
extern const std::string_view oldestBlock;
/// A block of the revision before this one.
extern const std::string_view olderBlock;

}  // namespace quorvane::testing
