#pragma once
#include <cstdint>
#include <optional>
#include <string_view>
#include <variant>

#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/ratelimits/RateLimit.h"

namespace quorvane {

/// How much of a provider's quota is left, in one verdict. Pure; any thread.
struct ProviderHeadroom {
    /// The provider's own figure, of its tightest window.
    struct Official {
        double remainingPercent = 0;  ///< 0 to 100
        std::int64_t windowMinutes = 0;
        std::optional<Date> resetsAt;

        friend bool operator==(const Official&, const Official&) = default;
    };
    /// The last reading was high and nothing has been heard since.
    struct LikelyExhausted {
        friend bool operator==(const LikelyExhausted&, const LikelyExhausted&) = default;
    };
    struct Unknown {
        friend bool operator==(const Unknown&, const Unknown&) = default;
    };

    std::variant<Official, LikelyExhausted, Unknown> verdict = Unknown{};

    /// The verdict on `snapshot` at `now`. Silence after a high reading is looked at first, on the snapshot as it is;
    /// then the fullest of the windows that are still current counts, the primary one on a tie. Model-scoped windows
    /// have no part in it.
    [[nodiscard]] static ProviderHeadroom resolve(const std::optional<RateLimitSnapshot>& snapshot, Date now);

    /// "official", "likely_exhausted" or "unknown": the verdict's word in files. The view lives for ever.
    [[nodiscard]] std::string_view stateToken() const noexcept;

    /// Absent but for `Official`.
    [[nodiscard]] std::optional<double> remainingPercent() const noexcept;

    friend bool operator==(const ProviderHeadroom&, const ProviderHeadroom&) = default;
};

}  // namespace quorvane
