#include <optional>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "QuorvaneCore/snapshots/HexColor.h"

namespace quorvane {
namespace {

using Components = HexColor::Components;

struct ColorCase {
    const char* name;
    std::string_view text;
    std::optional<Components> color;
};
class HexColorText : public ::testing::TestWithParam<ColorCase> {};

TEST_P(HexColorText, givesTheColor) {
    EXPECT_EQ(HexColor::components(GetParam().text), GetParam().color);
    EXPECT_EQ(HexColor::componentsOrFallback(GetParam().text), GetParam().color.value_or(HexColor::fallback));
}
INSTANTIATE_TEST_SUITE_P(
    ByText, HexColorText,
    ::testing::Values(ColorCase{"withSign", "#FF8000", Components{1, 128.0 / 255, 0}},
                      ColorCase{"lowerCaseWithoutSign", "ff8000", Components{1, 128.0 / 255, 0}},
                      ColorCase{"mixedCase", "#Ab12Cd", Components{171.0 / 255, 18.0 / 255, 205.0 / 255}},
                      ColorCase{"black", "000000", Components{0, 0, 0}},
                      ColorCase{"white", "#ffffff", Components{1, 1, 1}}, ColorCase{"short", "#FFF", {}},
                      ColorCase{"empty", "", {}}, ColorCase{"signAlone", "#", {}},
                      ColorCase{"twoSigns", "##FF8000", {}}, ColorCase{"signAtTheEnd", "FF8000#", {}},
                      ColorCase{"tooLong", "FF800000", {}}, ColorCase{"noDigit", "GG8000", {}},
                      ColorCase{"noDigitAtTheEnd", "FF800G", {}}, ColorCase{"prefix", "0xFF80", {}},
                      ColorCase{"minus", "-F8000", {}}, ColorCase{"plus", "+F8000", {}},
                      ColorCase{"blank", " FF800", {}}, ColorCase{"noAscii", "ÄÄÄ", {}}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(HexColor, fallbackIsAWarmGrey) {
    EXPECT_EQ(HexColor::fallback, (Components{0.424, 0.384, 0.325}));
}

}  // namespace
}  // namespace quorvane
