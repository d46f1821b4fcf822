#pragma once
#include <array>
#include <cstdio>
#include <stdexcept>
#include <string>

#include <sys/wait.h>

namespace quorvane::testing {

/// What a shell command writes to its standard output. Throws if it cannot be run or does not exit with 0.
inline std::string commandOutput(const std::string& command) {
    std::FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) throw std::runtime_error{"cannot run " + command};
    std::string output;
    std::array<char, 4096> chunk{};
    while (const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), pipe))
        output.append(chunk.data(), count);
    const int status = ::pclose(pipe);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw std::runtime_error{"failed: " + command};
    return output;
}

}  // namespace quorvane::testing
