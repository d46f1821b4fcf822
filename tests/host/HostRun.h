#pragma once
#include <string>
#include <vector>

#include "tests/support/ProgramRun.h"
#include "tests/support/ScratchHome.h"

namespace quorvane::testing {

/// Runs the program with the test's scratch home, in plain English, unless `options` says otherwise.
inline ProgramRun runHost(std::vector<std::string> arguments, ProgramRun::Options options = {}) {
    arguments.insert(arguments.begin(), QUORVANE_PROGRAM);
    options.environment.try_emplace("LC_ALL", "C");
    options.environment.try_emplace("NO_COLOR", "");
    options.environment.try_emplace("COLUMNS", "80");
    return ProgramRun::of(arguments, options);
}

/// A line of a Claude Code log that tells of one call.
inline std::string claudeCall(const std::string& message, const std::string& model, const std::string& time, int input,
                              int output, int cacheRead = 0) {
    return R"({"type":"assistant","requestId":"req_)" + message + R"(","timestamp":")" + time +
           R"(","cwd":"/home/ana/shop","message":{"id":"msg_)" + message + R"(","model":")" + model +
           R"(","usage":{"input_tokens":)" + std::to_string(input) + R"(,"output_tokens":)" + std::to_string(output) +
           R"(,"cache_read_input_tokens":)" + std::to_string(cacheRead) + "}}}\n";
}

}  // namespace quorvane::testing
