#pragma once
#include <cstdint>
#include <string>

#include "benchmarks/support/Comparison.h"

namespace quorvane::benchmarks {

/// What a refresh in a process of its own took and did.
struct RefreshProcess {
    Timing timing;  ///< of the refresh alone, without the start of the process and the opening of the index
    std::int64_t peakKibibytes = 0;
    std::int64_t filesRead = 0;
    std::int64_t filesSkipped = 0;
    std::int64_t events = 0;

    /// Refreshes the index `database` from the logs below `root`: of Claude Code, or of the agent that is named.
    /// Throws `std::runtime_error`.
    [[nodiscard]] static RefreshProcess run(const std::string& root, const std::string& database,
                                            const std::string& agent = "claude");
};

}  // namespace quorvane::benchmarks
