#pragma once
#include <cstdint>
#include <string>

#include "QuorvaneCore/model/TokenUsage.h"
#include "QuorvaneCore/platform/Date.h"

namespace quorvane::benchmarks {

/// Writes Claude Code histories that have the shape of real ones: many small logs and a few of tens of megabytes, most
/// bytes in tool results and progress lines, some lines of megabytes, messages on several lines with a growing output,
/// copies of messages after a session was resumed, and two fifths of the calls in the logs of subagents.
/// The same parameters give the same bytes on every machine.
class ClaudeHistory {
public:
    ClaudeHistory() = delete;

    enum class Shape : std::uint8_t {
        Typical,       ///< sizes spread as in a history of a few months
        OneLargeFile,  ///< one log, with ten lines of a size that `longLine` tells
        EqualFiles,    ///< logs of one size
    };

    struct Parameters {
        Shape shape = Shape::Typical;
        std::int64_t bytes = 0;  ///< of all logs together; what is written differs by a percent or two
        std::int64_t files = 1;
        std::uint64_t seed = 1;
        std::int64_t longLine = 10'000'000;  ///< bytes of the ten long lines of `OneLargeFile`

        /// Names a folder: all that makes two histories different.
        [[nodiscard]] std::string name() const;
    };

    /// What a reader must find in a history.
    struct Totals {
        std::int64_t files = 0;
        std::int64_t bytes = 0;
        std::int64_t lines = 0;
        std::int64_t usageLines = 0;     ///< lines that tell of a call, repeated ones included
        std::int64_t calls = 0;          ///< different calls
        std::int64_t subagentCalls = 0;  ///< of these, in logs of subagents
        std::int64_t longestLine = 0;    ///< in bytes
        std::int64_t usageBytes = 0;     ///< of the usage objects
        TokenUsage tokens;               ///< of the different calls, each at its last line
    };

    /// No call of any history is later; the earliest ones are `days` days older.
    [[nodiscard]] static Date end() noexcept { return Date{1789387200}; }  // 2026-09-14T12:00:00Z
    static constexpr std::int64_t days = 30;

    /// Writes the logs below `folder`, which is created. Throws `std::system_error` if that fails.
    static Totals write(const std::string& folder, const Parameters& parameters);

    /// A log line, with its line feed, of a call that no generated history has. `number` tells such calls apart.
    [[nodiscard]] static std::string freshLine(std::int64_t number);
};

}  // namespace quorvane::benchmarks
