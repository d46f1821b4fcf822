#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/TextForms.h"

namespace quorvane {
namespace {

struct FormCase {
    const char* name;
    std::string_view text;
    std::string_view expected;
};
const auto formName = [](const auto& row) { return std::string{row.param.name}; };

class CapitalisingFirst : public ::testing::TestWithParam<FormCase> {};

TEST_P(CapitalisingFirst, changesTheFirstCharacterAlone) {
    EXPECT_EQ(capitalisingFirst(GetParam().text), GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(
    ByText, CapitalisingFirst,
    ::testing::Values(FormCase{"word", "claude", "Claude"}, FormCase{"letter", "a", "A"},
                      FormCase{"upperCaseStays", "ABc", "ABc"}, FormCase{"restStays", "aBC", "ABC"},
                      FormCase{"digit", "4o", "4o"}, FormCase{"empty", "", ""}, FormCase{"accent", "élan", "Élan"},
                      FormCase{"greek", "ωμ", "Ωμ"}, FormCase{"dotlessByNoLocale", "istanbul", "Istanbul"},
                      FormCase{"brokenBytes", "\xFFx", "\xEF\xBF\xBDx"}, FormCase{"letterThatBecomesTwo", "ßa", "SSa"}),
    formName);

class Trimmed : public ::testing::TestWithParam<FormCase> {};

TEST_P(Trimmed, takesWhiteSpaceFromBothEnds) {
    EXPECT_EQ(trimmed(GetParam().text), GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(ByText, Trimmed,
                         ::testing::Values(FormCase{"nothingToTake", "a b", "a b"}, FormCase{"blanks", "  a b ", "a b"},
                                           FormCase{"lineEnds", "\r\n\ta\v\f\n", "a"},
                                           FormCase{"blanksAlone", " \n ", ""}, FormCase{"empty", "", ""},
                                           FormCase{"unicodeSpaces", "\u00A0\u2003\u3000a\u2028\u0085", "a"},
                                           FormCase{"accents", " é ", "é"},
                                           FormCase{"brokenBytesStay", " \xFF\xC3 ", "\xFF\xC3"}),
                         formName);

}  // namespace
}  // namespace quorvane
