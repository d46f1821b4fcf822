#include <gtest/gtest.h>

#include "QuorvaneCore/providers/MuseSparkScope.h"
#include "tests/support/ScratchHome.h"

namespace quorvane::testing {
namespace {

const std::string remark = "Meta API key is configured but OpenCode logged only ";
const std::string behindTheCount = " here — usage from other clients won't appear. ";
const std::string base =
    "Counts OpenCode sessions on this Mac. Meta account totals can be higher when Muse Spark runs outside OpenCode.";

TEST(MuseSparkScope, theNoteCountsTheTurnsOfAWeekWithFew) {
    const ScratchHome home;
    home.write("auth.json", R"({"meta":{"type":"api","key":"secret"}})");
    EXPECT_EQ(MuseSparkScope::detailNote(0, home.path()), remark + "0 turns" + behindTheCount + base);
    EXPECT_EQ(MuseSparkScope::detailNote(1, home.path()), remark + "1 turn" + behindTheCount + base);
    EXPECT_EQ(MuseSparkScope::detailNote(4, home.path()), remark + "4 turns" + behindTheCount + base);
    EXPECT_EQ(MuseSparkScope::detailNote(5, home.path()), base);
}

TEST(MuseSparkScope, theNoteIsPlainWithoutAKey) {
    const ScratchHome home;
    EXPECT_EQ(MuseSparkScope::detailNote(0, home.path()), base);
    EXPECT_EQ(MuseSparkScope::baseNote, base);
}

struct KeyCase {
    const char* name;
    const char* content;
    bool expected;
};

class MuseSparkScopeKey : public ::testing::TestWithParam<KeyCase> {};

TEST_P(MuseSparkScopeKey, isATextOfTheVendor) {
    const ScratchHome home;
    home.write("auth.json", GetParam().content);
    EXPECT_EQ(MuseSparkScope::hasMetaAPIKeyConfigured(home.path()), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(ByContent, MuseSparkScopeKey,
                         ::testing::Values(KeyCase{"underKey", R"({"meta":{"key":"k"}})", true},
                                           KeyCase{"underApiKey", R"({"meta":{"apiKey":"k"}})", true},
                                           KeyCase{"emptyKeyAndFilledApiKey", R"({"meta":{"key":"","apiKey":"k"}})",
                                                   true},
                                           KeyCase{"empty", R"({"meta":{"key":""}})", false},
                                           KeyCase{"aNumber", R"({"meta":{"key":5}})", false},
                                           KeyCase{"anotherVendor", R"({"openai":{"key":"k"}})", false},
                                           KeyCase{"noObject", R"({"meta":"k"})", false},
                                           KeyCase{"anArray", R"([])", false}, KeyCase{"noJSON", R"({"meta)", false}),
                         [](const auto& row) { return std::string{row.param.name}; });

}  // namespace
}  // namespace quorvane::testing
