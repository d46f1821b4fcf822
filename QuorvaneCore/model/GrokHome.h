#pragma once
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

/// The home directory of the agent Grok Build, and what tells that the agent is there. Environment and disk are looked
/// at anew at each call. Nothing here throws; any thread may call any operation.
class GrokHome {
public:
    GrokHome() = delete;

    /// `given` as it stands; without it the environment's `GROK_HOME` if that is set and not empty, else ".grok" under
    /// the user's home directory. The folder need not exist.
    [[nodiscard]] static std::string path(const std::optional<std::string>& given = std::nullopt);

    /// The folder of session logs in the agent's home `home`.
    [[nodiscard]] static std::string sessions(const std::string& home);

    /// The files "updates.jsonl" at any depth below the folder of session logs, in ascending order of their paths'
    /// bytes.
    [[nodiscard]] static std::vector<std::string> updatesFiles(const std::string& home);

    /// Whether there is at least one of them; the first one found ends the search.
    [[nodiscard]] static bool hasSessionLogs(const std::string& home);

    /// Whether the agent is on this machine: its program lies in the agent's home (`given` as in `path`), or else, only
    /// without `given`, in one of the usual folders of programs, or else that home has session logs.
    [[nodiscard]] static bool isDetected(const std::optional<std::string>& given = std::nullopt);
};

}  // namespace quorvane
