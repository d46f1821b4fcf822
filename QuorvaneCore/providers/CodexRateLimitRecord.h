#pragma once
#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/ratelimits/RateLimit.h"

namespace quorvane {

/// The quotas that one line of a rollout reports, with the date of that line.
struct CodexRateLimitRecord {
    Date date;                   ///< the distant past if the line tells none
    RateLimitSnapshot snapshot;  ///< without `capturedAt`

    friend bool operator==(const CodexRateLimitRecord&, const CodexRateLimitRecord&) = default;
};

}  // namespace quorvane
