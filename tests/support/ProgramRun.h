#pragma once
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quorvane::testing {

/// One run of a program, to its end.
struct ProgramRun {
    int status = -1;  ///< the exit status; 128 and the signal's number for a program that a signal ended
    std::string output;
    std::string error;  ///< empty on a terminal, where both streams are one

    struct Options {
        std::map<std::string, std::string> environment;  ///< laid over this process's own; an empty value unsets
        std::string input;                               ///< standard input
        std::string folder;                              ///< working directory; empty for this process's own
        /// Runs on a terminal of so many columns, its standard input aside.
        std::optional<int> terminalColumns;
    };

    /// `command` is a path, or a name that is looked up in `PATH`, and its arguments. Throws if it cannot be started.
    [[nodiscard]] static ProgramRun of(const std::vector<std::string>& command, const Options& options);
    [[nodiscard]] static ProgramRun of(const std::vector<std::string>& command) { return of(command, Options{}); }
};

}  // namespace quorvane::testing
