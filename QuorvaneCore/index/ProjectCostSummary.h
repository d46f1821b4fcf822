#pragma once
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/model/UsageEvent.h"
#include "QuorvaneCore/pricing/CostCalculator.h"

namespace quorvane {

/// What one project used. An unpriced call counts in all but the cost.
struct ProjectCostSummary {
    /// Stands for the project of all calls that belong to none.
    static constexpr std::string_view unattributed = "(unattributed)";

    std::string project;
    std::int64_t eventCount = 0;
    std::int64_t inputTokens = 0;
    std::int64_t outputTokens = 0;
    std::int64_t cache5mTokens = 0;
    std::int64_t cache1hTokens = 0;
    std::int64_t cacheReadTokens = 0;
    double cost = 0;  ///< US dollars

    /// The sum of all five kinds of token, checked.
    [[nodiscard]] std::int64_t totalTokens() const noexcept;

    /// Adds up events of any date: one summary for each project, the most expensive first, of equal cost the one with
    /// more tokens, then by name, compared byte by byte. Sums of counters are checked.
    [[nodiscard]] static std::vector<ProjectCostSummary> bucketed(std::span<const UsageEvent> events,
                                                                  const CostCalculator& calculator);

    friend bool operator==(const ProjectCostSummary&, const ProjectCostSummary&) = default;
};

}  // namespace quorvane
