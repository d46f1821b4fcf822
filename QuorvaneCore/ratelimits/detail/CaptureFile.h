#pragma once
#include <optional>
#include <string>
#include <string_view>

#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/ratelimits/RateLimit.h"

namespace quorvane::detail {

/// The file into which one agent's limits are captured. What its bytes mean is its store's business; trouble with the
/// file is no data.
class CaptureFile {
public:
    /// What the bytes tell as of `now`, resets that have passed included.
    using DecodeRaw = std::optional<RateLimitSnapshot> (*)(std::string_view bytes, Date now);

    /// Without a path there is no data.
    CaptureFile(std::optional<std::string> path, DecodeRaw decodeRaw) noexcept;

    /// What the file tells that is current at `now`.
    [[nodiscard]] std::optional<RateLimitSnapshot> load(Date now) const;

    /// Whether a limit was reset within the grace and nothing has been captured since.
    [[nodiscard]] bool awaitingResetHint(Date now) const;

    /// Removes the file. False if there is none, or it cannot be removed.
    [[nodiscard]] bool clear() const;

    /// What of a snapshot is current at `now`; absent for none.
    [[nodiscard]] static std::optional<RateLimitSnapshot> current(const std::optional<RateLimitSnapshot>& snapshot,
                                                                  Date now);

private:
    [[nodiscard]] std::optional<RateLimitSnapshot> loadRaw(Date now) const;

    std::optional<std::string> path_;
    DecodeRaw decodeRaw_;
};

}  // namespace quorvane::detail
