#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/pricing/PricingTable.h"

namespace quorvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(PriceListFormat, everyKeyIsReadIntoItsField) {
    const std::optional<PricingTable> table = PricingTable::fromJSON(R"({"models": {"m": {
        "input_cost_per_token": 1e-6,
        "output_cost_per_token": 2e-6,
        "cache_creation_input_token_cost": 3e-6,
        "cache_creation_input_token_cost_above_1hr": 4e-6,
        "cache_read_input_token_cost": 5e-6,
        "input_cost_per_token_above_200k_tokens": 6e-6,
        "output_cost_per_token_above_200k_tokens": 7e-6,
        "cache_creation_input_token_cost_above_200k_tokens": 8e-6,
        "cache_creation_input_token_cost_above_1hr_above_200k_tokens": 9e-6,
        "cache_read_input_token_cost_above_200k_tokens": 10e-6}}})");
    ASSERT_TRUE(table);
    EXPECT_EQ(table->price("m"), (ModelPrice{.inputCostPerToken = 1e-6,
                                             .outputCostPerToken = 2e-6,
                                             .cacheCreationInputTokenCost = 3e-6,
                                             .cacheCreationInputTokenCostAbove1hr = 4e-6,
                                             .cacheReadInputTokenCost = 5e-6,
                                             .inputCostPerTokenAbove200k = 6e-6,
                                             .outputCostPerTokenAbove200k = 7e-6,
                                             .cacheCreationInputTokenCostAbove200k = 8e-6,
                                             .cacheCreationInputTokenCostAbove1hrAbove200k = 9e-6,
                                             .cacheReadInputTokenCostAbove200k = 10e-6}));
}

TEST(PriceListFormat, modelsAreKeptByTheirExactText) {
    const std::optional<PricingTable> table = PricingTable::fromJSON(
        R"({"models": {"a/B-\u00e9": {"input_cost_per_token": 1, "output_cost_per_token": 2},
                       "": {"input_cost_per_token": 3, "output_cost_per_token": 4}}})");
    ASSERT_TRUE(table);
    EXPECT_THAT(table->knownModels(), ElementsAre("", "a/B-é"));
}

TEST(PriceListFormat, anEmptyListIsAListWithoutModels) {
    const std::optional<PricingTable> table = PricingTable::fromJSON(R"({"models": {}})");
    ASSERT_TRUE(table);
    EXPECT_THAT(table->knownModels(), IsEmpty());
}

/// An entry for the model "m", and the price that it gives.
struct AcceptedCase {
    const char* name;
    const char* entry;
    ModelPrice expected;
};
class PriceListAccepted : public ::testing::TestWithParam<AcceptedCase> {};

TEST_P(PriceListAccepted, givesThePrice) {
    const AcceptedCase& row = GetParam();
    const std::optional<PricingTable> table =
        PricingTable::fromJSON(R"({"models": {"m": )" + std::string{row.entry} + "}}");
    ASSERT_TRUE(table);
    EXPECT_EQ(table->price("m"), row.expected);
}
INSTANTIATE_TEST_SUITE_P(
    ByEntry, PriceListAccepted,
    ::testing::Values(
        AcceptedCase{"requiredKeysAlone",
                     R"({"input_cost_per_token": 0.5, "output_cost_per_token": 0.25})",
                     {.inputCostPerToken = 0.5, .outputCostPerToken = 0.25}},
        AcceptedCase{"integers",
                     R"({"input_cost_per_token": 1, "output_cost_per_token": 0, "cache_read_input_token_cost": 2})",
                     {.inputCostPerToken = 1, .outputCostPerToken = 0, .cacheReadInputTokenCost = 2}},
        AcceptedCase{"nullOptionalKeys",
                     R"({"input_cost_per_token": 1, "output_cost_per_token": 2,
                         "cache_creation_input_token_cost": null, "cache_creation_input_token_cost_above_1hr": null,
                         "cache_read_input_token_cost": null, "input_cost_per_token_above_200k_tokens": null,
                         "output_cost_per_token_above_200k_tokens": null,
                         "cache_creation_input_token_cost_above_200k_tokens": null,
                         "cache_creation_input_token_cost_above_1hr_above_200k_tokens": null,
                         "cache_read_input_token_cost_above_200k_tokens": null})",
                     {.inputCostPerToken = 1, .outputCostPerToken = 2}},
        AcceptedCase{"unknownKeys",
                     R"({"input_cost_per_token": 1, "output_cost_per_token": 2, "max_tokens": "many", "mode": null,
                         "Input_cost_per_token": "no", "nested": {"input_cost_per_token": "no"}})",
                     {.inputCostPerToken = 1, .outputCostPerToken = 2}},
        AcceptedCase{"zeroIsThere",
                     R"({"input_cost_per_token": 1, "output_cost_per_token": 2, "cache_read_input_token_cost": 0})",
                     {.inputCostPerToken = 1, .outputCostPerToken = 2, .cacheReadInputTokenCost = 0}},
        AcceptedCase{"negativePrices",
                     R"({"input_cost_per_token": -1, "output_cost_per_token": -0.5})",
                     {.inputCostPerToken = -1, .outputCostPerToken = -0.5}},
        AcceptedCase{"integersBeyond64Bits",
                     R"({"input_cost_per_token": 36893488147419103232, "output_cost_per_token": 2})",
                     {.inputCostPerToken = 36893488147419103232.0, .outputCostPerToken = 2}}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(PriceListFormat, unknownKeysBesideTheModelsAreIgnored) {
    const std::optional<PricingTable> table = PricingTable::fromJSON(
        R"({"version": 3, "models": {"m": {"input_cost_per_token": 1, "output_cost_per_token": 2}}, "x": [1, null]})");
    ASSERT_TRUE(table);
    EXPECT_THAT(table->knownModels(), ElementsAre("m"));
}

/// A text that is not as the format says.
struct RejectedCase {
    const char* name;
    const char* text;
};
class PriceListRejected : public ::testing::TestWithParam<RejectedCase> {};

TEST_P(PriceListRejected, givesNoTable) {
    EXPECT_EQ(PricingTable::fromJSON(GetParam().text), std::nullopt);
}
INSTANTIATE_TEST_SUITE_P(
    ByText, PriceListRejected,
    ::testing::Values(
        RejectedCase{"emptyText", ""}, RejectedCase{"notJSON", "models"},
        RejectedCase{"cutShort", R"({"models": {"m": {"input_cost_per_token": 1, "output_cost)"},
        RejectedCase{"textBehind", R"({"models": {}} {"models": {}})"}, RejectedCase{"array", R"([{"models": {}}])"},
        RejectedCase{"modelsMissing", R"({"Models": {}})"}, RejectedCase{"modelsNull", R"({"models": null})"},
        RejectedCase{"modelsAnArray", R"({"models": []})"}, RejectedCase{"modelsAText", R"({"models": "m"})"},
        RejectedCase{"entryNull", R"({"models": {"m": null}})"},
        RejectedCase{"entryANumber", R"({"models": {"m": 1}})"},
        RejectedCase{"entryAnArray", R"({"models": {"m": [1, 2]}})"},
        RejectedCase{"inputMissing", R"({"models": {"m": {"output_cost_per_token": 2}}})"},
        RejectedCase{"outputMissing", R"({"models": {"m": {"input_cost_per_token": 1}}})"},
        RejectedCase{"inputNull", R"({"models": {"m": {"input_cost_per_token": null, "output_cost_per_token": 2}}})"},
        RejectedCase{"outputNull", R"({"models": {"m": {"input_cost_per_token": 1, "output_cost_per_token": null}}})"},
        RejectedCase{"inputAText", R"({"models": {"m": {"input_cost_per_token": "1", "output_cost_per_token": 2}}})"},
        RejectedCase{"outputABoolean",
                     R"({"models": {"m": {"input_cost_per_token": 1, "output_cost_per_token": true}}})"},
        RejectedCase{"optionalAText",
                     R"({"models": {"m": {"input_cost_per_token": 1, "output_cost_per_token": 2,
                         "cache_read_input_token_cost": "0.1"}}})"},
        RejectedCase{"optionalAnObject",
                     R"({"models": {"m": {"input_cost_per_token": 1, "output_cost_per_token": 2,
                         "input_cost_per_token_above_200k_tokens": {}}}})"},
        RejectedCase{"oneBadEntryAmongGoodOnes",
                     R"({"models": {"a": {"input_cost_per_token": 1, "output_cost_per_token": 2},
                         "b": {"input_cost_per_token": 1}, "c": {"input_cost_per_token": 1,
                         "output_cost_per_token": 2}}})"}),
    [](const auto& row) { return std::string{row.param.name}; });

class PriceListOptionalKey : public ::testing::TestWithParam<const char*> {};

TEST_P(PriceListOptionalKey, mustBeANumberWhereItIsThere) {
    const std::string key = GetParam();
    const auto list = [&](const std::string& value) {
        return R"({"models": {"m": {"input_cost_per_token": 1, "output_cost_per_token": 2, ")" + key + "\": " + value +
               "}}}";
    };
    EXPECT_TRUE(PricingTable::fromJSON(list("0.5")));
    EXPECT_TRUE(PricingTable::fromJSON(list("null")));
    for (const char* value : {"\"0.5\"", "true", "[]", "{}"})
        EXPECT_FALSE(PricingTable::fromJSON(list(value))) << value;
}
INSTANTIATE_TEST_SUITE_P(ByKey, PriceListOptionalKey,
                         ::testing::Values("cache_creation_input_token_cost",
                                           "cache_creation_input_token_cost_above_1hr", "cache_read_input_token_cost",
                                           "input_cost_per_token_above_200k_tokens",
                                           "output_cost_per_token_above_200k_tokens",
                                           "cache_creation_input_token_cost_above_200k_tokens",
                                           "cache_creation_input_token_cost_above_1hr_above_200k_tokens",
                                           "cache_read_input_token_cost_above_200k_tokens"),
                         [](const auto& row) { return std::string{row.param}; });

}  // namespace
}  // namespace quorvane
