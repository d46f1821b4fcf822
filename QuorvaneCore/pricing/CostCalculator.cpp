#include "QuorvaneCore/pricing/CostCalculator.h"

#include <algorithm>

#include "QuorvaneCore/platform/CheckedArithmetic.h"

namespace quorvane {
namespace {

double derivedFiveMinuteWrite(double input) noexcept {
    return input * 1.25;
}
double derivedOneHourWrite(double input) noexcept {
    return input + input;
}
double derivedRead(double input) noexcept {
    return input * 0.1;
}

ModelRates baseRates(const ModelPrice& price) noexcept {
    const double input = price.inputCostPerToken;
    return ModelRates{
        .input = input,
        .output = price.outputCostPerToken,
        .cacheCreate5m = price.cacheCreationInputTokenCost.value_or(derivedFiveMinuteWrite(input)),
        .cacheCreate1h = price.cacheCreationInputTokenCostAbove1hr.value_or(derivedOneHourWrite(input)),
        .cacheRead = price.cacheReadInputTokenCost.value_or(derivedRead(input)),
    };
}

/// A cache price that is listed for short calls alone is taken as it stands; a derived one grows with the input rate.
ModelRates tierRates(const ModelPrice& price, double input) noexcept {
    const auto firstOf = [](std::optional<double> tier, std::optional<double> base, double derived) {
        return tier ? *tier : base.value_or(derived);
    };
    return ModelRates{
        .input = input,
        .output = price.outputCostPerTokenAbove200k.value_or(price.outputCostPerToken),
        .cacheCreate5m = firstOf(price.cacheCreationInputTokenCostAbove200k, price.cacheCreationInputTokenCost,
                                 derivedFiveMinuteWrite(input)),
        .cacheCreate1h = firstOf(price.cacheCreationInputTokenCostAbove1hrAbove200k,
                                 price.cacheCreationInputTokenCostAbove1hr, derivedOneHourWrite(input)),
        .cacheRead = firstOf(price.cacheReadInputTokenCostAbove200k, price.cacheReadInputTokenCost, derivedRead(input)),
    };
}

}  // namespace

double ModelRates::cost(const TokenUsage& usage) const noexcept {
    // The order of the sum is fixed, so that the same call always costs the same float.
    double sum = input * static_cast<double>(usage.input);
    sum += output * static_cast<double>(usage.output);
    sum += cacheCreate5m * static_cast<double>(usage.cacheCreate5m);
    sum += cacheCreate1h * static_cast<double>(usage.cacheCreate1h);
    sum += cacheRead * static_cast<double>(usage.cacheRead);
    return sum;
}

bool CostCalculator::exceedsContextTier(const TokenUsage& usage) noexcept {
    std::int64_t context = checkedAdd(usage.input, usage.cacheRead);
    context = checkedAdd(context, usage.cacheCreate5m);
    return checkedAdd(context, usage.cacheCreate1h) > contextTierTokens;
}

std::optional<double> CostCalculator::cost(std::string_view model, const TokenUsage& usage) const {
    return cost(model, usage, exceedsContextTier(usage));
}

std::optional<double> CostCalculator::cost(std::string_view model, const TokenUsage& usage, bool forceTier) const {
    const std::optional<ModelRates> charged = rates(model, forceTier);
    return charged ? std::optional{charged->cost(usage)} : std::nullopt;
}

std::optional<ModelRates> CostCalculator::rates(std::string_view model, bool tier) const {
    const std::optional<ModelPrice> price = pricing_.price(model);
    if (!price) return std::nullopt;
    const bool isTiered = tier && price->inputCostPerTokenAbove200k;
    return isTiered ? tierRates(*price, *price->inputCostPerTokenAbove200k) : baseRates(*price);
}

std::optional<double> CostCalculator::cacheReadSavings(std::string_view model, const TokenUsage& usage) const {
    if (usage.cacheRead < 1) return std::nullopt;
    const std::optional<ModelPrice> price = pricing_.price(model);
    if (!price) return std::nullopt;
    const double perToken = price->inputCostPerToken - baseRates(*price).cacheRead;
    return std::max(perToken * static_cast<double>(usage.cacheRead), 0.0);
}

}  // namespace quorvane
