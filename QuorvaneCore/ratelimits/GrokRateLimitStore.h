#pragma once
#include <optional>
#include <string>
#include <string_view>

#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/ratelimits/RateLimit.h"

namespace quorvane {

/// Reads the file into which the capture of `GrokRateLimitCapture` copies Grok's credit usage: one JSON object with
/// "capturedAt" in seconds since 1970-01-01 UTC, "weekly", and perhaps "plan_type" and "period_type". Its writers
/// replace it by a rename, so every read sees a whole file.
/// `url` is the file's path; absent means `defaultURL()`. Nothing here throws: trouble with the file is no data.
/// Any thread may call any operation.
class GrokRateLimitStore {
public:
    GrokRateLimitStore() = delete;

    /// A file that was captured longer ago, in seconds, tells nothing.
    static constexpr double maxAgeSeconds = 43200.0;

    /// `grok-rate-limits.json` in the folder "Quorvane" of the user's application support; nothing is created. Absent
    /// if that folder cannot be determined.
    [[nodiscard]] static std::optional<std::string> defaultURL();

    /// What the file tells that is current at `now`.
    [[nodiscard]] static std::optional<RateLimitSnapshot> load(Date now, const std::optional<std::string>& url = {});

    /// As `decodeRaw`, absent once the window's reset has passed.
    [[nodiscard]] static std::optional<RateLimitSnapshot> decode(std::string_view bytes, Date now);

    /// What the bytes tell, a reset that has passed included: the week alone, as the secondary window. Absent for no
    /// JSON object, for a capture that is too old at `now`, and without a weekly window. Without a number in
    /// "capturedAt" there is no check of the age. A plan without a name is "SuperGrok", since only that one gets here.
    [[nodiscard]] static std::optional<RateLimitSnapshot> decodeRaw(std::string_view bytes, Date now);

    /// Whether the limit was reset within the last six hours and nothing has been captured since.
    [[nodiscard]] static bool awaitingResetHint(Date now, const std::optional<std::string>& url = {});

    /// Whether `load` gives anything.
    [[nodiscard]] static bool isActive(Date now, const std::optional<std::string>& url = {});

    /// Removes the file. False if there is none, or it cannot be removed.
    static bool clear(const std::optional<std::string>& url = {});
};

}  // namespace quorvane
