// The price list that ships with the library.

#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/model/QuorvaneResourceBundle.h"
#include "QuorvaneCore/pricing/CostCalculator.h"

namespace quorvane {
namespace {

TEST(BundledPrices, holdThisManyModels) {
    EXPECT_EQ(PricingTable::bundledDefault().knownModels().size(), 73U);
}

TEST(BundledPrices, areTheFileOfTheBundle) {
    const std::optional<std::string> path = QuorvaneResourceBundle::url("pricing-default", "json", "QuorvaneCore");
    ASSERT_TRUE(path);
    std::ifstream stream{*path, std::ios::binary};
    const std::string text{std::istreambuf_iterator<char>{stream}, {}};
    EXPECT_EQ(PricingTable::fromJSON(text), PricingTable::bundledDefault());
}

TEST(BundledPrices, areWhatACalculatorUsesUnlessItIsGivenOthers) {
    EXPECT_EQ(CostCalculator{}.pricing(), PricingTable::bundledDefault());
    EXPECT_TRUE(CostCalculator{}.cost("claude-opus-4-8", {}));
    EXPECT_FALSE(CostCalculator{PricingTable{}}.cost("claude-opus-4-8", {}));
}

TEST(BundledPrices, arePositiveAndBelowATenthOfACent) {
    const PricingTable table = PricingTable::bundledDefault();
    for (const auto& [model, price] : table.models()) {
        constexpr double aTenthOfACent = 0.001;
        for (const std::optional<double> rate :
             {std::optional{price.inputCostPerToken}, std::optional{price.outputCostPerToken},
              price.cacheCreationInputTokenCost, price.cacheCreationInputTokenCostAbove1hr,
              price.cacheReadInputTokenCost, price.inputCostPerTokenAbove200k, price.outputCostPerTokenAbove200k,
              price.cacheCreationInputTokenCostAbove200k, price.cacheCreationInputTokenCostAbove1hrAbove200k,
              price.cacheReadInputTokenCostAbove200k}) {
            if (!rate) continue;
            EXPECT_GT(*rate, 0) << model;
            EXPECT_LT(*rate, aTenthOfACent) << model;
        }
    }
}

TEST(BundledPrices, growWithTheTierAndAreNeverDearerFromTheCache) {
    const PricingTable table = PricingTable::bundledDefault();
    for (const auto& [model, price] : table.models()) {
        EXPECT_GE(price.inputCostPerTokenAbove200k.value_or(price.inputCostPerToken), price.inputCostPerToken) << model;
        EXPECT_LT(price.cacheReadInputTokenCost.value_or(0), price.inputCostPerToken) << model;
        // A price above the threshold counts only beside an input price above it.
        if (price.outputCostPerTokenAbove200k || price.cacheReadInputTokenCostAbove200k ||
            price.cacheCreationInputTokenCostAbove200k || price.cacheCreationInputTokenCostAbove1hrAbove200k) {
            EXPECT_TRUE(price.inputCostPerTokenAbove200k) << model;
        }
    }
}

// Two models carry the price of another as an assumption, see docs/pricing.md.
TEST(BundledPrices, assumedPricesAreThoseOfTheirModels) {
    const PricingTable table = PricingTable::bundledDefault();
    ASSERT_TRUE(table.price("gpt-5.3-codex"));
    EXPECT_EQ(table.price("gpt-5.3-codex-spark"), table.price("gpt-5.3-codex"));
    ASSERT_TRUE(table.price("gemini-3-pro-preview"));
    EXPECT_EQ(table.price("gemini-3"), table.price("gemini-3-pro-preview"));
}

class BundledPricesCoverage : public ::testing::TestWithParam<const char*> {};

TEST_P(BundledPricesCoverage, isPriced) {
    EXPECT_TRUE(PricingTable::bundledDefault().price(GetParam())) << GetParam();
}
// The models that have an effort level.
INSTANTIATE_TEST_SUITE_P(KnownModels, BundledPricesCoverage,
                         ::testing::Values("claude-opus-5", "claude-opus-4-8", "claude-opus-4-7", "claude-opus-4-6",
                                           "claude-opus-4-5", "claude-fable-5", "claude-mythos-5", "claude-sonnet-5",
                                           "claude-sonnet-4-6", "claude-sonnet-4-5", "claude-haiku-4-5", "gpt-5.6-sol",
                                           "gpt-5.6-luna", "gpt-5.6-terra", "gpt-5.5", "gpt-5.4", "gpt-5.4-mini",
                                           "gpt-5.3-codex", "gpt-5.3-codex-spark", "gpt-5.2", "gpt-5.2-codex",
                                           "gpt-5.1-codex-max", "gpt-5.1-codex", "gpt-5.1-codex-mini", "gpt-5-codex",
                                           "gemini-3-pro-preview", "gemini-3", "gemini-3-flash-preview",
                                           "gemini-2.5-pro", "gemini-2.5-flash", "gemini-2.5-flash-lite", "grok-4.6",
                                           "grok-4.5", "grok-4.3", "grok-4.20-0309-reasoning",
                                           "grok-4.20-0309-non-reasoning", "grok-4.20-multi-agent-0309",
                                           "grok-build-0.1", "grok-composer-2.5-fast", "grok-composer-2.5",
                                           "muse-spark-1.1", "muse-spark", "meta-muse-spark-1.1"));
// The identifiers that the aliases lead to are among them; one alias of each.
INSTANTIATE_TEST_SUITE_P(Aliases, BundledPricesCoverage,
                         ::testing::Values("gpt-5.6", "grok-4.6-latest", "grok-build", "grok-latest", "grok-code-fast",
                                           "grok-4.20", "grok-4.20-non-reasoning", "meta/muse-spark-1.1",
                                           "cursor-composer-2.5-fast", "composer-2.5"));

}  // namespace
}  // namespace quorvane
