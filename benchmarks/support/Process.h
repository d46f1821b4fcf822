#pragma once
#include <string>
#include <vector>

namespace quorvane::benchmarks {

/// What a finished program left.
struct ProcessResult {
    bool isSuccess = false;  ///< it could be started and ended with status 0
    std::string output;      ///< its standard output
    double seconds = 0;      ///< from the start to the end
    double cpuSeconds = 0;   ///< in and out of the kernel
};

/// Runs a program to its end; its standard error is the caller's. `environment` adds variables, or replaces them
/// ("NAME=value"). Throws nothing.
[[nodiscard]] ProcessResult runProcess(const std::vector<std::string>& arguments,
                                       const std::vector<std::string>& environment = {});

}  // namespace quorvane::benchmarks
