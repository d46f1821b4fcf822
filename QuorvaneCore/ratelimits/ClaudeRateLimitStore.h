#pragma once
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/platform/JSONValue.h"
#include "QuorvaneCore/ratelimits/RateLimit.h"

namespace quorvane {

/// Reads the file into which the block of `StatuslineCapture` copies Claude's rate limits: one JSON object with
/// "capturedAt" in seconds since 1970-01-01 UTC, "five_hour", "seven_day" and any number of "seven_day_…" windows. The
/// block replaces it by a rename, so every read sees a whole file.
/// `url` is the file's path; absent means `defaultURL()`. Nothing here throws: trouble with the file is no data.
/// Any thread may call any operation.
class ClaudeRateLimitStore {
public:
    ClaudeRateLimitStore() = delete;

    /// A file that was captured longer ago, in seconds, tells nothing.
    static constexpr double maxAgeSeconds = 43200.0;

    /// `claude-rate-limits.json` in the folder "Quorvane" of the user's application support; nothing is created. Absent
    /// if that folder cannot be determined.
    [[nodiscard]] static std::optional<std::string> defaultURL();

    /// What the file tells that is current at `now`.
    [[nodiscard]] static std::optional<RateLimitSnapshot> load(Date now, const std::optional<std::string>& url = {});

    /// As `decodeRaw`, without the windows whose reset has passed.
    [[nodiscard]] static std::optional<RateLimitSnapshot> decode(std::string_view bytes, Date now);

    /// What the bytes tell, resets that have passed included. Absent for no JSON object, for a capture that is too old
    /// at `now`, and without a five-hour and a weekly window. Without a number in "capturedAt" there is no check of the
    /// age. The plan is never known here.
    [[nodiscard]] static std::optional<RateLimitSnapshot> decodeRaw(std::string_view bytes, Date now);

    /// The windows whose key begins with "seven_day_", in ascending order of their keys; those that are no window are
    /// left out.
    [[nodiscard]] static std::vector<ModelScopedRateLimitWindow> modelScopedWindows(JSONValue object);

    /// Whether a limit was reset within the last six hours and nothing has been captured since.
    [[nodiscard]] static bool awaitingResetHint(Date now, const std::optional<std::string>& url = {});

    /// Whether `load` gives anything.
    [[nodiscard]] static bool isActive(Date now, const std::optional<std::string>& url = {});

    /// Removes the file. False if there is none, or it cannot be removed.
    static bool clear(const std::optional<std::string>& url = {});
};

}  // namespace quorvane
