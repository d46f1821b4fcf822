#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "QuorvaneCore/ingest/JSONLStreamReader.h"
#include "QuorvaneCore/platform/JSONValue.h"
#include "QuorvaneCore/providers/CodexRateLimitRecord.h"
#include "QuorvaneCore/ratelimits/RateLimit.h"

namespace quorvane {

/// The quotas in Codex's rollouts: the token counts of a session also report them.
/// Nothing here throws or reports; what cannot be read is absent. Any thread may call any operation.
class CodexRateLimits {
public:
    CodexRateLimits() = delete;

    /// So many bytes at the end of a rollout are looked at before the whole is.
    static constexpr std::uint64_t tailBytes = 1048576;
    /// A rollout that changed within so many seconds is being written to, and is read whatever is known of it.
    static constexpr double liveSeconds = 900;

    /// What one line reports of Codex's own quotas; absent for any other line, and for a report of another quota.
    [[nodiscard]] static std::optional<CodexRateLimitRecord> rateLimitSnapshot(std::string_view line);

    /// A report's windows as they stand there, shares and lengths untouched; absent if neither can be read.
    [[nodiscard]] static std::optional<RateLimitSnapshot> snapshot(JSONValue rateLimits);

    /// The same quotas in their right places: the first window of 300 minutes is the primary one and the first of 10080
    /// the secondary one, under whichever name they were reported; others are dropped. No window expires here.
    [[nodiscard]] static RateLimitSnapshot normalizedIgnoringExpiry(const RateLimitSnapshot& snapshot);

    /// Whether `newest` is no reading at all: nothing but a weekly window of 0 %, as the report before it, whose reset
    /// moves along with the clock (to within two seconds).
    [[nodiscard]] static bool isRollingZeroPlaceholder(const CodexRateLimitRecord& newest,
                                                       const std::optional<CodexRateLimitRecord>& previous);

    struct TailRateLimitResult {
        bool foundRecord = false;                   ///< the tail has a report
        std::optional<CodexRateLimitRecord> value;  ///< the last one; absent without one, and if it is a placeholder

        friend bool operator==(const TailRateLimitResult&, const TailRateLimitResult&) = default;
    };

    /// The last report among the lines of the last `maxBytes` bytes of a rollout.
    [[nodiscard]] static TailRateLimitResult latestRateLimitsFromTail(const std::string& file, std::uint64_t maxBytes);

    /// The last report of a rollout, which is read from its start; absent without one, and if it is a placeholder.
    [[nodiscard]] static std::optional<CodexRateLimitRecord> latestRateLimits(const std::string& file,
                                                                              const JSONLStreamReader& reader);

    /// The last report of a rollout, from its tail or else from the whole. A file whose size and modification time are
    /// those of the last look is not read again, unless it changed within `liveSeconds` before `Clock::now()`.
    [[nodiscard]] static std::optional<CodexRateLimitRecord> cachedRateLimitEntry(const std::string& file,
                                                                                  const JSONLStreamReader& reader);
};

}  // namespace quorvane
