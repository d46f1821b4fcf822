#pragma once
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "QuorvaneCore/model/ProviderID.h"
#include "QuorvaneCore/model/UsageEvent.h"
#include "QuorvaneCore/platform/Calendar.h"
#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/pricing/CostCalculator.h"

namespace quorvane {

/// What one model of one provider used on one local day. An unpriced call counts in all but the cost.
struct ModelDaySummary {
    ProviderID provider{};
    std::string model;  ///< as the log names it; empty where it names none
    Date day;           ///< the start of the local day
    std::int64_t eventCount = 0;
    std::int64_t inputTokens = 0;
    std::int64_t outputTokens = 0;
    std::int64_t cache5mTokens = 0;
    std::int64_t cache1hTokens = 0;
    std::int64_t cacheReadTokens = 0;
    double cost = 0;  ///< US dollars

    /// Adds up events of any date: one summary for each provider, model and day, the oldest day first, then by the
    /// provider's raw name and by the model, both compared byte by byte. Sums of counters are checked.
    [[nodiscard]] static std::vector<ModelDaySummary> bucketed(std::span<const UsageEvent> events,
                                                               const CostCalculator& calculator,
                                                               const Calendar& calendar);

    friend bool operator==(const ModelDaySummary&, const ModelDaySummary&) = default;
};

}  // namespace quorvane
