#pragma once
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "QuorvaneCore/model/TokenUsage.h"
#include "QuorvaneCore/pricing/PricingTable.h"

namespace quorvane {

/// What a model charges for one token of each kind, in US dollars: a price with all that the list leaves out derived.
struct ModelRates {
    double input = 0;
    double output = 0;
    double cacheCreate5m = 0;
    double cacheCreate1h = 0;
    double cacheRead = 0;

    [[nodiscard]] double cost(const TokenUsage& usage) const noexcept;

    friend bool operator==(const ModelRates&, const ModelRates&) = default;
};

/// Turns tokens into money: every cost of the system comes out of here. US dollars, never rounded.
/// A value; any thread may read a shared one.
class CostCalculator {
public:
    /// With the prices that ship with the library.
    CostCalculator() : pricing_{PricingTable::bundledDefault()} {}
    explicit CostCalculator(PricingTable pricing) : pricing_{std::move(pricing)} {}

    [[nodiscard]] const PricingTable& pricing() const noexcept { return pricing_; }

    /// What one model call cost; absent exactly when the model has no price. A call whose input of all kinds is above
    /// 200000 tokens is charged the model's long-context rates, if it has any, for all its tokens.
    [[nodiscard]] std::optional<double> cost(std::string_view model, const TokenUsage& usage) const;

    /// The same for a sum of calls that are all above that threshold (`forceTier`) or all below it.
    [[nodiscard]] std::optional<double> cost(std::string_view model, const TokenUsage& usage, bool forceTier) const;

    /// The rates of a model above the long-context threshold (`tier`) or below it; absent when the model has no price.
    /// For those who price many calls of few models: `cost` of a call is `cost` of its rates, to the last bit.
    [[nodiscard]] std::optional<ModelRates> rates(std::string_view model, bool tier) const;

    /// Whether the call's input of all kinds, output aside, is more than 200000 tokens.
    [[nodiscard]] static bool exceedsContextTier(const TokenUsage& usage) noexcept;

    /// The most input tokens of a call that is charged base rates.
    static constexpr std::int64_t contextTierTokens = 200000;

    /// What reading from the cache saved against plain input, at base rates also for a long call. Never negative;
    /// absent without cache reads, and when the model has no price.
    [[nodiscard]] std::optional<double> cacheReadSavings(std::string_view model, const TokenUsage& usage) const;

private:
    PricingTable pricing_;
};

}  // namespace quorvane
