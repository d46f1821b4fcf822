#pragma once
#include <optional>

namespace quorvane {

/// One model's prices, in US dollars per single token. An absent field is derived as `CostCalculator::cost` tells.
struct ModelPrice {
    double inputCostPerToken = 0;
    double outputCostPerToken = 0;
    std::optional<double> cacheCreationInputTokenCost;          ///< five-minute cache write
    std::optional<double> cacheCreationInputTokenCostAbove1hr;  ///< one-hour cache write
    std::optional<double> cacheReadInputTokenCost;
    std::optional<double> inputCostPerTokenAbove200k;  ///< without it, no other above-200k field counts
    std::optional<double> outputCostPerTokenAbove200k;
    std::optional<double> cacheCreationInputTokenCostAbove200k;
    std::optional<double> cacheCreationInputTokenCostAbove1hrAbove200k;
    std::optional<double> cacheReadInputTokenCostAbove200k;

    friend bool operator==(const ModelPrice&, const ModelPrice&) = default;
};

}  // namespace quorvane
