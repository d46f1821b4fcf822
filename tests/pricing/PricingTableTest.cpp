#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/pricing/PricingTable.h"

namespace quorvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

ModelPrice priceOf(double input) {
    return ModelPrice{.inputCostPerToken = input, .outputCostPerToken = 0};
}

/// An identifier as an agent writes it, and what it is looked up as; absent where it is looked up as it stands.
struct NormalizationCase {
    const char* model;
    std::optional<std::string> expected;
};
class PricingTableNormalization : public ::testing::TestWithParam<NormalizationCase> {};

TEST_P(PricingTableNormalization, givesTheIdentifierToLookUp) {
    const NormalizationCase& row = GetParam();
    EXPECT_EQ(PricingTable::normalizedModelID(row.model), row.expected) << row.model;
}

INSTANTIATE_TEST_SUITE_P(
    Endings, PricingTableNormalization,
    ::testing::Values(NormalizationCase{"claude-opus-4-8[1m]", "claude-opus-4-8"},
                      NormalizationCase{"claude-opus-4-8-20260101", "claude-opus-4-8"},
                      NormalizationCase{"claude-opus-4-8-2026-01-01", "claude-opus-4-8"},
                      NormalizationCase{"claude-opus-4-8-20260101[1m]", "claude-opus-4-8"},
                      NormalizationCase{"claude-opus-4-8-2026-01-01[1m]", "claude-opus-4-8"},
                      NormalizationCase{"gpt-5.6-20260101", "gpt-5.6-sol"},
                      NormalizationCase{"gpt-5.6[1m]", "gpt-5.6-sol"},
                      // The mark goes first, so one in front of a date stays, and the date goes alone.
                      NormalizationCase{"claude-opus-4-8[1m]-20260101", "claude-opus-4-8[1m]"},
                      NormalizationCase{"claude-opus-4-8[1m][1m]", "claude-opus-4-8[1m]"},
                      NormalizationCase{"claude-opus-4-8-20260101-20260102", "claude-opus-4-8-20260101"},
                      NormalizationCase{"-20260101", ""}, NormalizationCase{"[1m]", ""}));

INSTANTIATE_TEST_SUITE_P(Unchanged, PricingTableNormalization,
                         ::testing::Values(NormalizationCase{"grok-4.6", std::nullopt},
                                           NormalizationCase{"claude-opus-4-8", std::nullopt},
                                           NormalizationCase{"", std::nullopt},
                                           NormalizationCase{"claude-opus-4-8-2026010", std::nullopt},
                                           NormalizationCase{"claude-opus-4-8-202601012", std::nullopt},
                                           NormalizationCase{"claude-opus-4-8-2026-01-1", std::nullopt},
                                           NormalizationCase{"claude-opus-4-8-20260101 ", std::nullopt},
                                           NormalizationCase{"claude-opus-4-8-20260101\n", std::nullopt},
                                           NormalizationCase{"20260101", std::nullopt},
                                           NormalizationCase{"claude-opus-4-8[1M]", std::nullopt},
                                           NormalizationCase{"claude-opus-4-8[1m] ", std::nullopt},
                                           NormalizationCase{"GPT-5.6", std::nullopt},
                                           NormalizationCase{"anthropic/claude-opus-4-8", std::nullopt},
                                           NormalizationCase{"grok-4.20-0309-reasoning", std::nullopt}));

// Every alias there is.
INSTANTIATE_TEST_SUITE_P(
    Aliases, PricingTableNormalization,
    ::testing::Values(NormalizationCase{"gpt-5.6", "gpt-5.6-sol"}, NormalizationCase{"grok-4.6-latest", "grok-4.6"},
                      NormalizationCase{"grok-4.6-build", "grok-4.6"}, NormalizationCase{"grok-4.5-latest", "grok-4.5"},
                      NormalizationCase{"grok-4.5-build", "grok-4.5"},
                      NormalizationCase{"grok-build-latest", "grok-4.5"}, NormalizationCase{"grok-build", "grok-4.5"},
                      NormalizationCase{"grok-4.3-latest", "grok-4.3"}, NormalizationCase{"grok-latest", "grok-4.3"},
                      NormalizationCase{"grok-code-fast-1", "grok-build-0.1"},
                      NormalizationCase{"grok-code-fast", "grok-build-0.1"},
                      NormalizationCase{"grok-code-fast-1-0825", "grok-build-0.1"},
                      NormalizationCase{"grok-4.20", "grok-4.20-0309-reasoning"},
                      NormalizationCase{"grok-4.20-reasoning", "grok-4.20-0309-reasoning"},
                      NormalizationCase{"grok-4.20-reasoning-latest", "grok-4.20-0309-reasoning"},
                      NormalizationCase{"grok-4.20-0309", "grok-4.20-0309-reasoning"},
                      NormalizationCase{"grok-4.20-beta", "grok-4.20-0309-reasoning"},
                      NormalizationCase{"grok-4.20-beta-latest", "grok-4.20-0309-reasoning"},
                      NormalizationCase{"grok-4.20-beta-reasoning", "grok-4.20-0309-reasoning"},
                      NormalizationCase{"grok-4.20-beta-latest-reasoning", "grok-4.20-0309-reasoning"},
                      NormalizationCase{"grok-4.20-beta-0309", "grok-4.20-0309-reasoning"},
                      NormalizationCase{"grok-4.20-beta-0309-reasoning", "grok-4.20-0309-reasoning"},
                      NormalizationCase{"grok-4.20-non-reasoning", "grok-4.20-0309-non-reasoning"},
                      NormalizationCase{"grok-4.20-non-reasoning-latest", "grok-4.20-0309-non-reasoning"},
                      NormalizationCase{"meta/muse-spark-1.1", "muse-spark-1.1"},
                      NormalizationCase{"meta-muse-spark-1.1", "muse-spark-1.1"},
                      NormalizationCase{"muse-spark", "muse-spark-1.1"},
                      NormalizationCase{"composer-2.5-fast", "grok-composer-2.5-fast"},
                      NormalizationCase{"cursor-composer-2.5-fast", "grok-composer-2.5-fast"},
                      NormalizationCase{"composer-2.5", "grok-composer-2.5"},
                      NormalizationCase{"cursor-composer-2.5", "grok-composer-2.5"}));

TEST(PricingTable, anExactEntryBeatsEveryAlias) {
    const PricingTable table{{{"gpt-5.6", priceOf(1)},
                              {"gpt-5.6-sol", priceOf(2)},
                              {"claude-opus-4-8", priceOf(3)},
                              {"claude-opus-4-8-20260101", priceOf(4)}}};
    EXPECT_EQ(table.price("gpt-5.6"), priceOf(1));
    EXPECT_EQ(table.price("claude-opus-4-8-20260101"), priceOf(4));
    EXPECT_EQ(table.price("claude-opus-4-8-20260102"), priceOf(3));
    // Only the identifier as it came in is looked up before the aliases.
    EXPECT_EQ(table.price("gpt-5.6-20260101"), priceOf(2));
}

TEST(PricingTable, marksAndDatesAreLookedThrough) {
    const PricingTable table{{{"claude-opus-4-8", priceOf(3)}}};
    for (const char* model : {"claude-opus-4-8", "claude-opus-4-8[1m]", "claude-opus-4-8-20260101",
                              "claude-opus-4-8-2026-01-01", "claude-opus-4-8-20260101[1m]"}) {
        EXPECT_EQ(table.price(model), priceOf(3)) << model;
    }
}

TEST(PricingTable, thereIsNoOtherRoadToAPrice) {
    const PricingTable table{{{"claude-opus-4-8", priceOf(3)}, {"grok-4.6-latest", priceOf(9)}}};
    for (const char* model : {"anthropic/claude-opus-4-8", "Claude-Opus-4-8", "claude-opus-4", "claude-opus-4-8-fast",
                              "claude-opus-4-8-1", " claude-opus-4-8", "", "grok-4.6"}) {
        EXPECT_EQ(table.price(model), std::nullopt) << model;
    }
    const PricingTable withVendor{{{"anthropic/claude-opus-4-8", priceOf(5)}}};
    EXPECT_EQ(withVendor.price("anthropic/claude-opus-4-8"), priceOf(5));
}

TEST(PricingTable, aliasesAreAppliedOnce) {
    EXPECT_EQ(PricingTable::normalizedModelID("grok-4.20-beta"), "grok-4.20-0309-reasoning");
    EXPECT_EQ(PricingTable::normalizedModelID("grok-4.20-0309-reasoning"), std::nullopt);
    const PricingTable table{{{"grok-4.20", priceOf(1)}}};
    EXPECT_EQ(table.price("grok-4.20-beta"), std::nullopt);
}

TEST(PricingTable, knownModelsAreTheKeys) {
    EXPECT_THAT((PricingTable{{{"b", priceOf(1)}, {"a", priceOf(2)}}}.knownModels()), ElementsAre("a", "b"));
    EXPECT_THAT(PricingTable{}.knownModels(), IsEmpty());
}

TEST(PricingTable, mergingReplacesAPriceAsAWhole) {
    const PricingTable first{{{"a", ModelPrice{.inputCostPerToken = 1,
                                               .outputCostPerToken = 2,
                                               .cacheReadInputTokenCost = 0.5,
                                               .inputCostPerTokenAbove200k = 9}},
                              {"b", priceOf(3)}}};
    const PricingTable second{
        {{"a", ModelPrice{.inputCostPerToken = 10, .outputCostPerToken = 20}}, {"c", priceOf(4)}}};
    const PricingTable merged = first.merging(second);
    EXPECT_THAT(merged.knownModels(), ElementsAre("a", "b", "c"));
    EXPECT_EQ(merged.price("a"), (ModelPrice{.inputCostPerToken = 10, .outputCostPerToken = 20}));
    EXPECT_EQ(merged.price("b"), priceOf(3));
    EXPECT_EQ(merged.price("c"), priceOf(4));
    // Neither of the two is changed.
    EXPECT_EQ(first.price("a")->cacheReadInputTokenCost, 0.5);
    EXPECT_EQ(second.price("b"), std::nullopt);
}

TEST(PricingTable, mergingWithAnEmptyTableGivesTheOther) {
    const PricingTable table{{{"a", priceOf(1)}, {"b", priceOf(2)}}};
    EXPECT_EQ(table.merging(PricingTable{}), table);
    EXPECT_EQ(PricingTable{}.merging(table), table);
    EXPECT_EQ(table.merging(table), table);
}

}  // namespace
}  // namespace quorvane
