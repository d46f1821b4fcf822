#pragma once
#include <cstdint>
#include <string>

#include "QuorvaneCore/model/TokenUsage.h"
#include "QuorvaneCore/platform/Date.h"

namespace quorvane::benchmarks {

/// Writes Codex rollouts that have the shape of real ones: half of the lines below 670 bytes, a tenth above 4.9 KB, a
/// hundredth above 46 KB and a few of megabytes; 15 % token counts, many of them with the total of the one before; most
/// bytes in tool output full of terminal escapes and in compacted history, and some in encrypted reasoning.
/// The same parameters give the same bytes on every machine.
class CodexHistory {
public:
    CodexHistory() = delete;

    struct Parameters {
        std::int64_t bytes = 0;  ///< of all rollouts together, at least; up to a fifth more, since no line is cut
        std::int64_t files = 1;  ///< a few of them are much larger than the others, if there are many
        bool areEqual = false;   ///< all of one size, instead
        std::uint64_t seed = 1;

        /// Names a folder: all that makes two histories different.
        [[nodiscard]] std::string name() const;
    };

    /// What a reader must find in a history.
    struct Totals {
        std::int64_t files = 0;
        std::int64_t bytes = 0;
        std::int64_t lines = 0;
        std::int64_t tokenCounts = 0;
        std::int64_t otherLines = 0;   ///< further lines that matter: they name a folder or a model
        std::int64_t calls = 0;        ///< token counts whose total is higher than the one before
        std::int64_t longestLine = 0;  ///< in bytes
        std::int64_t medianLine = 0;   ///< in bytes, as the next two
        std::int64_t line90 = 0;
        std::int64_t line99 = 0;
        TokenUsage tokens;
    };

    /// No call of any history is later; the earliest ones are `days` days older. Rollouts were last changed an hour or
    /// more before this moment, and all their quotas are reset later.
    [[nodiscard]] static Date end() noexcept { return Date{1789387200}; }  // 2026-09-14T12:00:00Z
    static constexpr std::int64_t days = 30;

    /// A history below the benchmarks' folder of data: `sessions` is what the Codex reader takes as its root.
    struct OnDisk {
        std::string sessions;
        Totals totals;
    };

    /// The history of these parameters, generated if it is not there. Throws `std::system_error`.
    [[nodiscard]] static OnDisk get(const Parameters& parameters);

    /// One gigabyte in 440 rollouts, shrunk by the scale.
    [[nodiscard]] static const OnDisk& typical();

    /// 2000 rollouts of 16 KB, shrunk by the scale.
    [[nodiscard]] static const OnDisk& manyFiles();

    /// One rollout of two gigabytes, shrunk by the scale.
    [[nodiscard]] static const OnDisk& largeFile();

    /// A token count, with its line feed, whose total is below that of any generated rollout: one more series of calls.
    [[nodiscard]] static std::string freshLine();
};

}  // namespace quorvane::benchmarks
