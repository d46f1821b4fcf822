#pragma once
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "QuorvaneCore/ratelimits/ProviderHeadroom.h"
#include "QuorvaneCore/ratelimits/RateLimit.h"
#include "QuorvaneHost/Readers.h"

namespace quorvane::host {

/// The newest rate limits of the agents on this machine.
struct LimitsReport {
    struct Row {
        ProviderID id{};
        std::optional<RateLimitSnapshot> limits;  ///< absent where the agent has told nothing that is still current
        ProviderHeadroom headroom;
        bool isAwaitingReset = false;  ///< a limit has passed its reset and nothing was heard since

        /// Whether the limits are older than the grace within which silence after a reset is normal.
        [[nodiscard]] bool isStale(Date moment) const;
    };

    Date now;
    std::vector<Row> rows;  ///< one a reader that is available, in the readers' order

    [[nodiscard]] static LimitsReport collect(const std::vector<Reader>& readers, Date now);

    /// The limits alone, of those that have some.
    [[nodiscard]] std::map<ProviderID, RateLimitSnapshot> byProvider() const;
};

/// "in 2h 10m", "in 3d 4h", "now": the time until `date`.
[[nodiscard]] std::string timeUntil(Date date, Date now);

/// The length of a window as it is called: "5h", "week", "3d", "90m".
[[nodiscard]] std::string windowName(std::int64_t minutes);

}  // namespace quorvane::host
