#pragma once
#include <cstdint>
#include <string>

#include "QuorvaneCore/model/TokenUsage.h"

namespace quorvane::benchmarks {

/// Writes telemetry of Copilot CLI that has the shape of real exports: turns of one to eight calls, each call a chat
/// span and now and then also a log record, tool spans in between, and at the end the agent's span. With content
/// capture off, as it is by default, a record has 400 to 900 bytes.
/// The same size gives the same bytes on every machine.
class CopilotHistory {
public:
    CopilotHistory() = delete;

    /// What a reader must find in a file.
    struct Totals {
        std::int64_t bytes = 0;
        std::int64_t lines = 0;
        std::int64_t calls = 0;  ///< one chat span each
        TokenUsage tokens;       ///< of the calls
        std::int64_t aiuNano = 0;
    };

    /// Writes a file of at least `bytes`; up to one turn more. Throws `std::system_error`.
    static Totals write(const std::string& file, std::int64_t bytes, std::uint64_t seed);

    /// `folder` is what the Copilot reader takes as its root; it holds one file.
    struct OnDisk {
        std::string folder;
        std::string file;
        Totals totals;
    };

    /// One file of 200 MB, shrunk by the scale. It is generated once a run.
    [[nodiscard]] static const OnDisk& typical();
};

}  // namespace quorvane::benchmarks
