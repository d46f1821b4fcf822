#pragma once
#include <cstdint>
#include <string>

namespace quorvane::benchmarks {

/// The least that tells which of a folder's files changed: list all folders and query each file once, keeping nothing.
class WalkFloor {
public:
    WalkFloor() = delete;

    /// Returns the number of files.
    static std::int64_t run(const std::string& root);
};

}  // namespace quorvane::benchmarks
