#include <set>
#include <string>

#include <gtest/gtest.h>

#include "QuorvaneCore/model/ProviderBasis.h"

namespace quorvane {
namespace {

TEST(ProviderBasis, onlyFiveProvidersAreNotReal) {
    const std::set<ProviderID> notional{ProviderID::Codex, ProviderID::Grok, ProviderID::MuseSpark};
    const std::set<ProviderID> estimated{ProviderID::Copilot, ProviderID::Cursor};
    for (const ProviderID provider : allProviderIDs()) {
        const ProviderBasis expected = notional.contains(provider)    ? ProviderBasis::Notional
                                       : estimated.contains(provider) ? ProviderBasis::Estimate
                                                                      : ProviderBasis::Real;
        EXPECT_EQ(providerBasisOf(provider), expected) << rawName(provider);
        EXPECT_EQ(providerBasisOfRawID(rawName(provider)), expected) << rawName(provider);
    }
}

TEST(ProviderBasis, aRawNameCountsAndNotTheNameInTheSource) {
    EXPECT_EQ(providerBasisOfRawID("muse_spark"), ProviderBasis::Notional);
    EXPECT_EQ(providerBasisOfRawID("museSpark"), ProviderBasis::Real);
}

TEST(ProviderBasis, aTextThatNamesNoProviderIsReal) {
    EXPECT_EQ(providerBasisOfRawID("nobody"), ProviderBasis::Real);
    EXPECT_EQ(providerBasisOfRawID(""), ProviderBasis::Real);
    EXPECT_EQ(providerBasisOfRawID("CODEX"), ProviderBasis::Real);
}

struct BasisCase {
    const char* name;
    ProviderBasis basis;
    const char* badge;
    bool isAggregable;
    bool showsTokens;
    bool isNotional;
};
class ProviderBasisProperties : public testing::TestWithParam<BasisCase> {};

TEST_P(ProviderBasisProperties, areThoseOfTheCase) {
    const BasisCase& row = GetParam();
    EXPECT_EQ(badge(row.basis), row.badge);
    EXPECT_EQ(isAggregable(row.basis), row.isAggregable);
    EXPECT_EQ(showsTokens(row.basis), row.showsTokens);
    EXPECT_EQ(isNotional(row.basis), row.isNotional);
}
INSTANTIATE_TEST_SUITE_P(ByCase, ProviderBasisProperties,
                         testing::Values(BasisCase{"real", ProviderBasis::Real, "real", true, false, false},
                                         BasisCase{"notional", ProviderBasis::Notional, "notional", true, false, true},
                                         BasisCase{"estimate", ProviderBasis::Estimate, "estimate", false, true, true}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(ProviderBasis, allCasesAreListedInOrder) {
    EXPECT_EQ(allProviderBases[0], ProviderBasis::Real);
    EXPECT_EQ(allProviderBases[1], ProviderBasis::Notional);
    EXPECT_EQ(allProviderBases[2], ProviderBasis::Estimate);
    EXPECT_EQ(allProviderBases.size(), 3U);
}

}  // namespace
}  // namespace quorvane
