#pragma once
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "QuorvaneCore/model/TokenUsage.h"
#include "QuorvaneCore/model/UsageEvent.h"

namespace quorvane {

/// A running sum of priced calls. Counters are checked: overflow ends the process. One thread at a time.
struct CostBucket {
    double cost = 0;  ///< US dollars, of the priced calls alone
    TokenUsage usage;
    std::int64_t eventCount = 0;
    /// The models of the calls that had no price; while this is empty, `cost` is the whole cost.
    std::set<std::string, std::less<>> unpricedModels;

    /// Adds one call. An absent cost marks the model as unpriced; a cost of 0 is a price.
    void add(const UsageEvent& event, std::optional<double> eventCost);

    /// Adds `count` calls of one model that are summed already.
    void addGrouped(std::string_view model, const TokenUsage& groupUsage, std::optional<double> groupCost,
                    std::int64_t count);

    friend bool operator==(const CostBucket&, const CostBucket&) = default;
};

}  // namespace quorvane
