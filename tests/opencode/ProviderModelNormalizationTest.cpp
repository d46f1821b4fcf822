#include <gtest/gtest.h>

#include "QuorvaneCore/providers/detail/ProviderModelNormalization.h"

namespace quorvane {
namespace {

struct PrefixCase {
    const char* name;
    std::optional<std::string_view> value;
    const char* expected;
};

class ProviderModelNormalizationPrefix : public ::testing::TestWithParam<PrefixCase> {};

TEST_P(ProviderModelNormalizationPrefix, goesWithItsVendor) {
    EXPECT_EQ(ProviderModelNormalization::strippingVendorPrefix(GetParam().value, "fallback"), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(ByValue, ProviderModelNormalizationPrefix,
                         ::testing::Values(PrefixCase{"oneVendor", "meta/muse-spark-1.1", "muse-spark-1.1"},
                                           PrefixCase{"onlyTheLastSlashCounts", "a/b/c", "c"},
                                           PrefixCase{"aSlashAtTheEndStays", "meta/", "meta/"},
                                           PrefixCase{"noVendor", "gpt-5", "gpt-5"},
                                           PrefixCase{"aSlashInFront", "/x", "x"}, PrefixCase{"empty", "", "fallback"},
                                           PrefixCase{"absent", std::nullopt, "fallback"}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(ProviderModelNormalization, searchesWithoutRegardToTheCaseOfLettersAToZ) {
    EXPECT_TRUE(ProviderModelNormalization::containsIgnoringCase("META/Muse-SPARK-1", "muse-spark"));
    EXPECT_FALSE(ProviderModelNormalization::containsIgnoringCase("muse_spark", "muse-spark"));
    EXPECT_FALSE(ProviderModelNormalization::containsIgnoringCase("muse-spar", "muse-spark"));
    EXPECT_FALSE(ProviderModelNormalization::containsIgnoringCase("", "muse-spark"));
}

}  // namespace
}  // namespace quorvane
