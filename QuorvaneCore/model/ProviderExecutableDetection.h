#pragma once
#include <span>
#include <string>
#include <vector>

namespace quorvane {

/// Whether an agent's command is installed. Nothing is started. Any thread may call any operation.
class ProviderExecutableDetection {
public:
    ProviderExecutableDetection() = delete;

    /// Whether one of `searchDirectories` holds an executable file of one of `names`. Links are followed; a directory
    /// is no executable file. No directories or no names: false.
    [[nodiscard]] static bool containsExecutable(std::span<const std::string> names,
                                                 std::span<const std::string> searchDirectories);

    /// The usual folders of commands, two of them under `home`, then those of the environment's `PATH` in its order
    /// without the empty ones. Duplicates are kept.
    [[nodiscard]] static std::vector<std::string> defaultSearchDirectories(const std::string& home);
};

}  // namespace quorvane
