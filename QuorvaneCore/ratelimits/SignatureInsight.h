#pragma once
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>

#include "QuorvaneCore/platform/Date.h"

namespace quorvane {

/// The one most telling remark about a provider's recent usage. Its wording is the host's. Pure; any thread.
struct SignatureInsight {
    enum class BurnVerdict : std::uint8_t { RunningHot, OnPace, WellUnderPace };

    /// The user has most likely hit the limit.
    struct LimitFrozen {
        double usedPct = 0;

        friend bool operator==(const LimitFrozen&, const LimitFrozen&) = default;
    };
    /// How the use of the five-hour window compares with the time that has gone by in it.
    struct BurnPace {
        double usedPct = 0;
        double windowElapsedFraction = 0;  ///< 0 to 1
        BurnVerdict verdict = BurnVerdict::OnPace;

        friend bool operator==(const BurnPace&, const BurnPace&) = default;
    };
    /// One model costs far more than its share of the turns.
    struct CostConcentration {
        std::string model;
        double turnShare = 0;  ///< of the week's events, 0 to 1
        double billShare = 0;  ///< of the week's cost, 0 to 1

        friend bool operator==(const CostConcentration&, const CostConcentration&) = default;
    };

    /// One model's usage in the week.
    struct ModelSpend {
        std::string model;
        std::optional<double> cost;  ///< absent for a model without a price
        std::int64_t eventCount = 0;

        friend bool operator==(const ModelSpend&, const ModelSpend&) = default;
    };

    std::variant<LimitFrozen, BurnPace, CostConcentration> remark;

    /// The first remark that applies, in the order of the cases above; absent if none does.
    /// `usedPct`, `resetsAt5h` and `windowMinutes5h` are those of the five-hour window; `week` is the week's cost and
    /// `weekEvents` its number of events, unpriced ones included.
    [[nodiscard]] static std::optional<SignatureInsight> compute(bool limitLikelyHit, std::optional<double> usedPct,
                                                                 std::optional<Date> resetsAt5h,
                                                                 std::optional<std::int64_t> windowMinutes5h,
                                                                 double week, std::int64_t weekEvents,
                                                                 std::span<const ModelSpend> models, Date now);

    /// Whether the remark rests on a quota reading rather than on what was counted here.
    [[nodiscard]] bool isEstimate() const noexcept;

    friend bool operator==(const SignatureInsight&, const SignatureInsight&) = default;
};

}  // namespace quorvane
