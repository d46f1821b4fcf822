#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/platform/JSONValue.h"

namespace quorvane {

/// One rolling quota as an agent last reported it. A window never rolls on by itself: once its reset time has passed,
/// nothing is known of the new period until the agent reports again.
/// Everything in this header is a plain value and total; nothing throws, and any thread may call any operation.
struct RateLimitWindow {
    double usedPercent = 0;          ///< share of the quota used, 0 to 100; stored as given
    std::int64_t windowMinutes = 0;  ///< length: 300 is the five-hour window, 10080 the weekly one
    std::optional<Date> resetsAt;    ///< absent: the window never expires

    /// From an object with "used_percentage" and, if known, "resets_at" in seconds since 1970-01-01 UTC. The share is
    /// held between 0 and 100, not-a-number counts as 0. Absent for anything but an object, and without a number in
    /// "used_percentage".
    [[nodiscard]] static std::optional<RateLimitWindow> fromJSON(JSONValue json, std::int64_t windowMinutes);

    /// The window itself as long as its reset lies strictly later than `at`, else absent.
    [[nodiscard]] std::optional<RateLimitWindow> current(Date at) const;

    /// Whether the reset lies at most `grace` seconds before `at`, both ends included.
    [[nodiscard]] bool recentlyReset(Date at, double grace) const noexcept;

    friend bool operator==(const RateLimitWindow&, const RateLimitWindow&) = default;
};

/// A quota that counts for one model, or one kind of use, alone.
struct ModelScopedRateLimitWindow {
    std::string key;  ///< the provider's own, for example "seven_day_sonnet"
    RateLimitWindow window;

    /// The identity in lists of a user interface.
    [[nodiscard]] const std::string& id() const noexcept { return key; }

    /// The name to show: from a fixed table, else the key's words without a leading "seven_day_", each with an
    /// upper-case first letter, else (for a key without words) the key itself.
    [[nodiscard]] std::string label() const;

    /// As `RateLimitWindow::current`; the key stays.
    [[nodiscard]] std::optional<ModelScopedRateLimitWindow> current(Date at) const;

    friend bool operator==(const ModelScopedRateLimitWindow&, const ModelScopedRateLimitWindow&) = default;
};

/// All quotas of one provider, as of one report.
struct RateLimitSnapshot {
    /// For so many seconds after a reset, silence is told as "awaiting fresh data": the grace that every caller passes.
    static constexpr double resetHintGrace = 21600.0;

    std::optional<RateLimitWindow> primary;                ///< the short window
    std::optional<RateLimitWindow> secondary;              ///< the long window
    std::optional<std::string> planType;                   ///< the plan as the provider names it
    std::optional<Date> capturedAt;                        ///< absent where the reader has the date beside the snapshot
    std::vector<ModelScopedRateLimitWindow> modelWindows;  ///< in the source's order

    /// What is still current at `at`; absent when neither `primary` nor `secondary` is, whatever the model windows say.
    [[nodiscard]] std::optional<RateLimitSnapshot> current(Date at) const;

    /// Whether the last reading of `primary` was `highThreshold` percent or more and is more than `maxFreshMinutes`
    /// old, which is what a locked-out agent looks like. The reset time plays no part; without `capturedAt` never.
    [[nodiscard]] bool likelyAtLimit(Date now, double highThreshold, double maxFreshMinutes) const noexcept;

    /// Whether nothing is current and `primary` or `secondary` was reset within the last `grace` seconds.
    [[nodiscard]] bool awaitingFreshDataAfterReset(Date at, double grace) const;

    friend bool operator==(const RateLimitSnapshot&, const RateLimitSnapshot&) = default;
};

}  // namespace quorvane
