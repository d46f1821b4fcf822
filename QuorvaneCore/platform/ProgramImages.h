#pragma once
#include <string>
#include <vector>

namespace quorvane {

/// Where the running program and its libraries lie, for finding resources beside them. Any thread.
class ProgramImages {
public:
    ProgramImages() = delete;

    /// The path of the running executable; empty if the system does not tell.
    [[nodiscard]] static std::string executable();

    /// The paths of the shared libraries loaded now, in the loader's order.
    [[nodiscard]] static std::vector<std::string> libraries();

    /// The command line the program was started with, its name first.
    [[nodiscard]] static std::vector<std::string> arguments();
};

}  // namespace quorvane
