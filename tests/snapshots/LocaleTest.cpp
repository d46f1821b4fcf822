#include <string>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/Locale.h"
#include "tests/support/ScopedVariables.h"

namespace quorvane {
namespace {

struct NameCase {
    const char* test;
    const char* name;
    const char* identifier;
};
class LocaleName : public ::testing::TestWithParam<NameCase> {};

TEST_P(LocaleName, givesTheIdentifier) {
    EXPECT_EQ(Locale{GetParam().name}.identifier(), GetParam().identifier);
}
INSTANTIATE_TEST_SUITE_P(
    ByName, LocaleName,
    ::testing::Values(NameCase{"plain", "de_DE", "de_DE"}, NameCase{"characterSetIsLeftOut", "de_DE.UTF-8", "de_DE"},
                      NameCase{"modifierIsLeftOut", "de_DE@euro", "de_DE"},
                      NameCase{"bothAreLeftOut", "de_DE.ISO-8859-15@euro", "de_DE"},
                      NameCase{"languageAlone", "fr", "fr"}, NameCase{"languageOfThreeLetters", "haw_US", "haw_US"},
                      NameCase{"hyphens", "ja-JP", "ja_JP"}, NameCase{"scriptInTheName", "zh_Hant_TW", "zh_Hant_TW"},
                      NameCase{"regionOfDigits", "es_419", "es_419"},
                      NameCase{"latinScript", "sr_RS.UTF-8@latin", "sr_Latn_RS"},
                      NameCase{"cyrillicScript", "uz_UZ@cyrillic", "uz_Cyrl_UZ"},
                      NameCase{"devanagariScript", "ks_IN@devanagari", "ks_Deva_IN"},
                      NameCase{"unknownLanguageIsKept", "xx_YY", "xx_YY"}, NameCase{"c", "C", "en_US"},
                      NameCase{"cWithACharacterSet", "C.UTF-8", "en_US"}, NameCase{"posix", "POSIX", "en_US"},
                      NameCase{"empty", "", "en_US"}, NameCase{"path", "/usr/share/locale", "en_US"},
                      NameCase{"punctuation", "!!!", "en_US"}, NameCase{"emptyPart", "de_", "en_US"},
                      NameCase{"characterSetAlone", ".UTF-8", "en_US"}, NameCase{"oddRegion", "de_D$", "en_US"},
                      NameCase{"longLanguage", "german_DE", "en_US"}),
    [](const auto& row) { return std::string{row.param.test}; });

class LocaleOfTheEnvironment : public ::testing::Test {
protected:
    testing::ScopedVariables variables{"LC_ALL", "LC_MONETARY", "LANG", "LANGUAGE", "LC_NUMERIC"};
};

TEST_F(LocaleOfTheEnvironment, allCategoriesComeBeforeMoneyBeforeTheLanguage) {
    variables.set("LANG", "fr_FR.UTF-8");
    EXPECT_EQ(Locale::current().identifier(), "fr_FR");
    variables.set("LC_MONETARY", "ja_JP.UTF-8");
    EXPECT_EQ(Locale::current().identifier(), "ja_JP");
    variables.set("LC_ALL", "de_DE.UTF-8");
    EXPECT_EQ(Locale::current().identifier(), "de_DE");
}

TEST_F(LocaleOfTheEnvironment, emptyValuesAreAsGoodAsNone) {
    variables.set("LC_ALL", "");
    variables.set("LC_MONETARY", "");
    variables.set("LANG", "hi_IN");
    EXPECT_EQ(Locale::current().identifier(), "hi_IN");
}

TEST_F(LocaleOfTheEnvironment, nothingSetIsAmerican) {
    EXPECT_EQ(Locale::current().identifier(), "en_US");
}

TEST_F(LocaleOfTheEnvironment, theCLocaleHidesALaterVariable) {
    variables.set("LC_ALL", "C");
    variables.set("LANG", "de_DE.UTF-8");
    EXPECT_EQ(Locale::current().identifier(), "en_US");
}

TEST_F(LocaleOfTheEnvironment, otherVariablesHaveNoPart) {
    variables.set("LC_NUMERIC", "de_DE");
    variables.set("LANGUAGE", "de");
    EXPECT_EQ(Locale::current().identifier(), "en_US");
}

TEST(Locale, isComparedByItsIdentifier) {
    EXPECT_EQ(Locale{"de_DE.UTF-8"}, Locale{"de-DE"});
    EXPECT_NE(Locale{"de_DE"}, Locale{"de_AT"});
}

}  // namespace
}  // namespace quorvane
