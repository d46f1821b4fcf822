#include <gtest/gtest.h>

#include "QuorvaneHost/html/HTMLText.h"

namespace quorvane::testing {
namespace {

using host::HTMLText;

struct EscapeCase {
    const char* name;
    std::string text;
    std::string expected;
};

class HTMLTextEscaped : public ::testing::TestWithParam<EscapeCase> {};

TEST_P(HTMLTextEscaped, isFitForTextAndAttributes) {
    EXPECT_EQ(HTMLText::escaped(GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(OfHostileText, HTMLTextEscaped,
                         ::testing::Values(EscapeCase{"plain", "claude-opus-4-8", "claude-opus-4-8"},  //
                                           EscapeCase{"empty", "", ""},                                //
                                           EscapeCase{"endOfScript", "</script>", "&lt;/script&gt;"},
                                           EscapeCase{"quotes", "a\"b'c", "a&quot;b&#39;c"},
                                           EscapeCase{"ampersand", "a&amp;b", "a&amp;amp;b"},
                                           EscapeCase{"controlCharacters", std::string{"a\0b\x1b\n\t", 6},
                                                      "a\uFFFDb\uFFFD\uFFFD\uFFFD"},
                                           EscapeCase{"controlsOfTheSecondBlock", "a\u0085b", "a\uFFFDb"},
                                           EscapeCase{"invalidUTF8", "a\xff\xc3z", "a\uFFFD\uFFFDz"},
                                           EscapeCase{"halfASurrogatePair", "a\xed\xa0\x80z", "a\uFFFD\uFFFD\uFFFDz"},
                                           EscapeCase{"turnedDirection", "a\u202Eb\u2066c", "a\uFFFDb\uFFFDc"},
                                           EscapeCase{"lineSeparator", "a\u2028b", "a\uFFFDb"},
                                           EscapeCase{"nonCharacter", "a\uFFFEb", "a\uFFFDb"},
                                           EscapeCase{"otherScripts", "مشروع 日本 é", "مشروع 日本 é"}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(HTMLText, aNameIsIsolated) {
    EXPECT_EQ(HTMLText::name("<מודל>"), "<bdi>&lt;מודל&gt;</bdi>");
}

TEST(HTMLText, aNameOfEightyCharactersStaysWhole) {
    const std::string name(80, '&');
    std::string expected;
    for (int at = 0; at < 80; ++at)
        expected += "&amp;";
    EXPECT_EQ(HTMLText::plainName(name), expected);
}

TEST(HTMLText, aLongerNameLosesItsMiddle) {
    const std::string name = std::string(50, 'a') + std::string(50, 'b');
    EXPECT_EQ(HTMLText::plainName(name), std::string(40, 'a') + "…" + std::string(39, 'b'));
}

TEST(HTMLText, aLongNameIsCutBetweenCharacters) {
    std::string name;
    for (int at = 0; at < 100; ++at)
        name += "é";
    EXPECT_EQ(HTMLText::plainName(name).size(), 79 * 2 + std::string{"…"}.size());
}

}  // namespace
}  // namespace quorvane::testing
