#include <limits>
#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/pricing/CostCalculator.h"

namespace quorvane {
namespace {

CostCalculator calculatorOf(const ModelPrice& price) {
    return CostCalculator{PricingTable{{{"m", price}}}};
}

/// A call and whether it is above the threshold.
struct TierCase {
    const char* name;
    TokenUsage usage;
    bool isAbove;
};
class CostCalculatorTier : public ::testing::TestWithParam<TierCase> {};

TEST_P(CostCalculatorTier, isToldByTheInputOfAllKinds) {
    EXPECT_EQ(CostCalculator::exceedsContextTier(GetParam().usage), GetParam().isAbove);
    const CostCalculator calculator =
        calculatorOf({.inputCostPerToken = 1, .outputCostPerToken = 1, .inputCostPerTokenAbove200k = 3});
    EXPECT_EQ(calculator.cost("m", GetParam().usage), calculator.cost("m", GetParam().usage, GetParam().isAbove));
}
INSTANTIATE_TEST_SUITE_P(
    ByUsage, CostCalculatorTier,
    ::testing::Values(
        TierCase{"nothing", {}, false}, TierCase{"inputAtTheThreshold", {.input = 200000}, false},
        TierCase{"inputAboveIt", {.input = 200001}, true}, TierCase{"readAtTheThreshold", {.cacheRead = 200000}, false},
        TierCase{"readAboveIt", {.cacheRead = 200001}, true},
        TierCase{"fiveMinuteWriteAboveIt", {.cacheCreate5m = 200001}, true},
        TierCase{"oneHourWriteAboveIt", {.cacheCreate1h = 200001}, true},
        TierCase{"outputDoesNotCount", {.input = 200000, .output = 1000000}, false},
        TierCase{"sumAtTheThreshold",
                 {.input = 50000, .output = 7, .cacheCreate5m = 50000, .cacheCreate1h = 50000, .cacheRead = 50000},
                 false},
        TierCase{
            "sumAboveIt", {.input = 50000, .cacheCreate5m = 50000, .cacheCreate1h = 50001, .cacheRead = 50000}, true}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(CostCalculator, theWholeCallChangesItsRatesWithOneTokenMore) {
    const CostCalculator calculator = calculatorOf({.inputCostPerToken = 1,
                                                    .outputCostPerToken = 2,
                                                    .cacheReadInputTokenCost = 0.5,
                                                    .inputCostPerTokenAbove200k = 10,
                                                    .outputCostPerTokenAbove200k = 20,
                                                    .cacheReadInputTokenCostAbove200k = 5});
    EXPECT_EQ(calculator.cost("m", {.input = 150000, .output = 5000, .cacheRead = 50000}),
              150000 + 2 * 5000 + 0.5 * 50000);
    EXPECT_EQ(calculator.cost("m", {.input = 150001, .output = 5000, .cacheRead = 50000}),
              10 * 150001.0 + 20 * 5000 + 5 * 50000);
}

/// A price, the rates of its five kinds of token below the threshold, and those above it.
struct RatesCase {
    const char* name;
    ModelPrice price;
    TokenUsage base;  ///< in hundredths
    TokenUsage tier;  ///< in hundredths
};
class CostCalculatorRates : public ::testing::TestWithParam<RatesCase> {};

TEST_P(CostCalculatorRates, ofEachKindOfToken) {
    const RatesCase& row = GetParam();
    const CostCalculator calculator = calculatorOf(row.price);
    const auto cost = [&](const TokenUsage& hundredTokens, bool isTier) {
        return calculator.cost("m", hundredTokens, isTier).value();
    };
    for (const bool isTier : {false, true}) {
        const TokenUsage& rates = isTier ? row.tier : row.base;
        EXPECT_DOUBLE_EQ(cost({.input = 100}, isTier), static_cast<double>(rates.input));
        EXPECT_DOUBLE_EQ(cost({.output = 100}, isTier), static_cast<double>(rates.output));
        EXPECT_DOUBLE_EQ(cost({.cacheCreate5m = 100}, isTier), static_cast<double>(rates.cacheCreate5m));
        EXPECT_DOUBLE_EQ(cost({.cacheCreate1h = 100}, isTier), static_cast<double>(rates.cacheCreate1h));
        EXPECT_DOUBLE_EQ(cost({.cacheRead = 100}, isTier), static_cast<double>(rates.cacheRead));
    }
}
INSTANTIATE_TEST_SUITE_P(
    ByPrice, CostCalculatorRates,
    ::testing::Values(
        RatesCase{"requiredPricesAlone",
                  {.inputCostPerToken = 4, .outputCostPerToken = 9},
                  {.input = 400, .output = 900, .cacheCreate5m = 500, .cacheCreate1h = 800, .cacheRead = 40},
                  {.input = 400, .output = 900, .cacheCreate5m = 500, .cacheCreate1h = 800, .cacheRead = 40}},
        RatesCase{"tierInputAlone",
                  {.inputCostPerToken = 4, .outputCostPerToken = 9, .inputCostPerTokenAbove200k = 8},
                  {.input = 400, .output = 900, .cacheCreate5m = 500, .cacheCreate1h = 800, .cacheRead = 40},
                  {.input = 800, .output = 900, .cacheCreate5m = 1000, .cacheCreate1h = 1600, .cacheRead = 80}},
        RatesCase{"listedBasePricesOfTheCacheStayAboveTheThreshold",
                  {.inputCostPerToken = 4,
                   .outputCostPerToken = 9,
                   .cacheCreationInputTokenCost = 6,
                   .cacheCreationInputTokenCostAbove1hr = 7,
                   .cacheReadInputTokenCost = 3,
                   .inputCostPerTokenAbove200k = 8},
                  {.input = 400, .output = 900, .cacheCreate5m = 600, .cacheCreate1h = 700, .cacheRead = 300},
                  {.input = 800, .output = 900, .cacheCreate5m = 600, .cacheCreate1h = 700, .cacheRead = 300}},
        RatesCase{"everyPrice",
                  {.inputCostPerToken = 4,
                   .outputCostPerToken = 9,
                   .cacheCreationInputTokenCost = 6,
                   .cacheCreationInputTokenCostAbove1hr = 7,
                   .cacheReadInputTokenCost = 3,
                   .inputCostPerTokenAbove200k = 8,
                   .outputCostPerTokenAbove200k = 18,
                   .cacheCreationInputTokenCostAbove200k = 12,
                   .cacheCreationInputTokenCostAbove1hrAbove200k = 14,
                   .cacheReadInputTokenCostAbove200k = 5},
                  {.input = 400, .output = 900, .cacheCreate5m = 600, .cacheCreate1h = 700, .cacheRead = 300},
                  {.input = 800, .output = 1800, .cacheCreate5m = 1200, .cacheCreate1h = 1400, .cacheRead = 500}},
        RatesCase{"tierPricesWithoutTheInputPriceDoNotCount",
                  {.inputCostPerToken = 4,
                   .outputCostPerToken = 9,
                   .outputCostPerTokenAbove200k = 18,
                   .cacheCreationInputTokenCostAbove200k = 12,
                   .cacheCreationInputTokenCostAbove1hrAbove200k = 14,
                   .cacheReadInputTokenCostAbove200k = 5},
                  {.input = 400, .output = 900, .cacheCreate5m = 500, .cacheCreate1h = 800, .cacheRead = 40},
                  {.input = 400, .output = 900, .cacheCreate5m = 500, .cacheCreate1h = 800, .cacheRead = 40}},
        RatesCase{"tierPricesOfTheCacheWithoutBasePrices",
                  {.inputCostPerToken = 4,
                   .outputCostPerToken = 9,
                   .inputCostPerTokenAbove200k = 8,
                   .cacheCreationInputTokenCostAbove200k = 11,
                   .cacheCreationInputTokenCostAbove1hrAbove200k = 13,
                   .cacheReadInputTokenCostAbove200k = 2},
                  {.input = 400, .output = 900, .cacheCreate5m = 500, .cacheCreate1h = 800, .cacheRead = 40},
                  {.input = 800, .output = 900, .cacheCreate5m = 1100, .cacheCreate1h = 1300, .cacheRead = 200}},
        RatesCase{"aPriceOfZeroIsAPrice",
                  {.inputCostPerToken = 4,
                   .outputCostPerToken = 9,
                   .cacheCreationInputTokenCost = 0,
                   .cacheCreationInputTokenCostAbove1hr = 0,
                   .cacheReadInputTokenCost = 0,
                   .inputCostPerTokenAbove200k = 0,
                   .outputCostPerTokenAbove200k = 0},
                  {.input = 400, .output = 900},
                  {}}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(CostCalculator, aCallIsAbsentlyPricedExactlyWhereItsModelIs) {
    const CostCalculator calculator = calculatorOf({.inputCostPerToken = 1, .outputCostPerToken = 2});
    EXPECT_EQ(calculator.cost("m", {}), 0.0);
    EXPECT_EQ(calculator.cost("m-20260101[1m]", {.input = 3}), 3.0);
    EXPECT_EQ(calculator.cost("n", {}), std::nullopt);
    EXPECT_EQ(calculator.cost("n", {.input = 3}), std::nullopt);
    EXPECT_EQ(calculator.cost("n", {.input = 3}, true), std::nullopt);
    EXPECT_EQ(calculator.cost("", {}), std::nullopt);
}

// Floats do not add up to the same in every order; this one is kept.
TEST(CostCalculator, theSumIsMadeInAFixedOrder) {
    const ModelPrice price{.inputCostPerToken = 0.1,
                           .outputCostPerToken = 0.7,
                           .cacheCreationInputTokenCost = 0.3,
                           .cacheCreationInputTokenCostAbove1hr = 1e17,
                           .cacheReadInputTokenCost = -1e17};
    const TokenUsage usage{.input = 3, .output = 7, .cacheCreate5m = 11, .cacheCreate1h = 1, .cacheRead = 1};
    const double expected = (((0.1 * 3.0 + 0.7 * 7.0) + 0.3 * 11.0) + 1e17 * 1.0) + -1e17 * 1.0;
    EXPECT_EQ(calculatorOf(price).cost("m", usage), expected);
    EXPECT_NE(expected, 0.1 * 3.0 + 0.7 * 7.0 + 0.3 * 11.0);
}

TEST(CostCalculator, groupsOfOneTierCostWhatTheirCallsCost) {
    const CostCalculator calculator;
    const TokenUsage below{.input = 1000, .output = 500, .cacheCreate5m = 20, .cacheCreate1h = 30, .cacheRead = 150000};
    const TokenUsage above{.input = 1000, .output = 500, .cacheCreate5m = 20, .cacheCreate1h = 30, .cacheRead = 250000};
    for (const char* model : {"claude-sonnet-4-5", "gemini-2.5-pro", "grok-4.6", "gpt-5.5"}) {
        EXPECT_NEAR(calculator.cost(model, below + below, false).value(), 2 * calculator.cost(model, below).value(),
                    1e-12)
            << model;
        EXPECT_NEAR(calculator.cost(model, above + above, true).value(), 2 * calculator.cost(model, above).value(),
                    1e-12)
            << model;
    }
}

TEST(CostCalculatorDeathTest, aTierSumBeyond64BitsEndsTheProcess) {
    const std::int64_t most = std::numeric_limits<std::int64_t>::max();
    EXPECT_DEATH(static_cast<void>(CostCalculator::exceedsContextTier({.input = most, .cacheRead = 1})), "overflowed");
    EXPECT_DEATH(static_cast<void>(CostCalculator::exceedsContextTier({.cacheCreate1h = 1, .cacheRead = most})),
                 "overflowed");
    const CostCalculator calculator = calculatorOf({.inputCostPerToken = 1, .outputCostPerToken = 2});
    EXPECT_DEATH(static_cast<void>(calculator.cost("m", {.input = most, .cacheCreate5m = 1})), "overflowed");
    // Output does not count towards it.
    EXPECT_TRUE(CostCalculator::exceedsContextTier({.input = most, .output = most}));
    EXPECT_TRUE(calculator.cost("m", {.input = most, .cacheCreate5m = 1}, true));
}

/// A price, a call, and what its cache reads saved.
struct SavingsCase {
    const char* name;
    ModelPrice price;
    TokenUsage usage;
    std::optional<double> expected;
};
class CostCalculatorSavings : public ::testing::TestWithParam<SavingsCase> {};

TEST_P(CostCalculatorSavings, areThoseOfTheCacheReads) {
    const SavingsCase& row = GetParam();
    EXPECT_EQ(calculatorOf(row.price).cacheReadSavings("m", row.usage), row.expected);
    EXPECT_EQ(calculatorOf(row.price).cacheReadSavings("n", row.usage), std::nullopt);
}
INSTANTIATE_TEST_SUITE_P(
    ByPrice, CostCalculatorSavings,
    ::testing::Values(
        SavingsCase{"listedReadPrice",
                    {.inputCostPerToken = 4, .outputCostPerToken = 9, .cacheReadInputTokenCost = 1},
                    {.input = 50, .output = 60, .cacheRead = 10},
                    30.0},
        SavingsCase{"derivedReadPrice", {.inputCostPerToken = 10, .outputCostPerToken = 9}, {.cacheRead = 10}, 90.0},
        SavingsCase{"baseRatesAboveTheThreshold",
                    {.inputCostPerToken = 4,
                     .outputCostPerToken = 9,
                     .cacheReadInputTokenCost = 1,
                     .inputCostPerTokenAbove200k = 400,
                     .cacheReadInputTokenCostAbove200k = 2},
                    {.cacheRead = 300000},
                    900000.0},
        SavingsCase{"aReadDearerThanInputSavesNothing",
                    {.inputCostPerToken = 4, .outputCostPerToken = 9, .cacheReadInputTokenCost = 5},
                    {.cacheRead = 10},
                    0.0},
        SavingsCase{"noReads", {.inputCostPerToken = 4, .outputCostPerToken = 9}, {.input = 100}, std::nullopt},
        SavingsCase{
            "lessThanNoReads", {.inputCostPerToken = 4, .outputCostPerToken = 9}, {.cacheRead = -1}, std::nullopt},
        SavingsCase{"oneRead",
                    {.inputCostPerToken = 4, .outputCostPerToken = 9, .cacheReadInputTokenCost = 1},
                    {.cacheRead = 1},
                    3.0}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(CostCalculator, costOfACallIsThatOfItsRatesToTheLastBit) {
    const CostCalculator calculator;
    for (const std::string& model : calculator.pricing().knownModels()) {
        for (const std::int64_t input : {7, 123456, 200000, 200001, 999983}) {
            const TokenUsage usage{
                .input = input, .output = 333, .cacheCreate5m = 17, .cacheCreate1h = 101, .cacheRead = 70001};
            for (const bool tier : {false, true})
                EXPECT_EQ(calculator.rates(model, tier)->cost(usage), calculator.cost(model, usage, tier)) << model;
        }
    }
    EXPECT_EQ(calculator.rates("who-knows", false), std::nullopt);
    EXPECT_EQ(calculator.rates("who-knows", true), std::nullopt);
}

}  // namespace
}  // namespace quorvane
