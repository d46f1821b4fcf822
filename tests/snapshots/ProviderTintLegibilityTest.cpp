#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "QuorvaneCore/snapshots/HexColor.h"
#include "QuorvaneCore/snapshots/ProviderTintLegibility.h"

namespace quorvane {
namespace {

constexpr double usualContrast = 2.9;

std::string onDark(std::string_view tint, double minContrast = usualContrast) {
    return ProviderTintLegibility::legibleHex(tint, "221E1B", "F2F1EC", true, minContrast);
}
std::string onLight(std::string_view tint, double minContrast = usualContrast) {
    return ProviderTintLegibility::legibleHex(tint, "FFFDF7", "221D15", false, minContrast);
}

/// The contrast of WCAG 2.0, written down a second time.
double contrast(std::string_view one, std::string_view other) {
    const auto luminance = [](std::string_view hex) {
        const HexColor::Components color = HexColor::componentsOrFallback(hex);
        const auto linear = [](double channel) {
            if (channel <= 0.03928) return channel / 12.92;
            return std::pow((channel + 0.055) / 1.055, 2.4);
        };
        return linear(color.red) * 0.2126 + linear(color.green) * 0.7152 + linear(color.blue) * 0.0722;
    };
    const double first = luminance(one);
    const double second = luminance(other);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

TEST(ProviderTintLegibility, aLegibleTintIsReturnedInUpperCaseWithoutTheSign) {
    EXPECT_EQ(onDark("#d97757"), "D97757");
    EXPECT_EQ(onLight("4b0082"), "4B0082");
}

TEST(ProviderTintLegibility, theNearBlackMarkHasAFixedFormOnDark) {
    EXPECT_EQ(onDark("#2F2F33"), "A6A6A8");
    EXPECT_EQ(onDark("#2f2f33"), "A6A6A8");
    EXPECT_EQ(onDark("#2f2F33", 50), "A6A6A8");
}

TEST(ProviderTintLegibility, withoutTheSignItIsATintLikeAnyOther) {
    EXPECT_NE(onDark("2F2F33"), "A6A6A8");
}

TEST(ProviderTintLegibility, theNearBlackMarkTakesTheOrdinaryPathOnLight) {
    EXPECT_EQ(onLight("#2F2F33"), "2F2F33");
}

TEST(ProviderTintLegibility, theFirstMixThatReachesTheContrastWins) {
    // 0.55 of the way from black to white is the first step at which grey stands out on black by so much.
    EXPECT_EQ(ProviderTintLegibility::legibleHex("000000", "000000", "FFFFFF", true, 1.2), "262626");
    EXPECT_EQ(ProviderTintLegibility::legibleHex("000000", "000000", "FFFFFF", true, 5.0), "8C8C8C");
    EXPECT_EQ(ProviderTintLegibility::legibleHex("000000", "000000", "FFFFFF", true, 18.0), "F2F2F2");
}

TEST(ProviderTintLegibility, anImpossibleContrastGivesTheInk) {
    EXPECT_EQ(onDark("#111111", 100), "F2F1EC");
    EXPECT_EQ(ProviderTintLegibility::legibleHex("#ffffff", "FFFDF7", "#221d15", false, 100), "221D15");
}

TEST(ProviderTintLegibility, anUnreadableTintIsJudgedAsTheFallback) {
    // The warm grey is legible on the light background, so the text itself comes back.
    EXPECT_GE(contrast("nonsense", "FFFDF7"), usualContrast);
    EXPECT_EQ(onLight("#nonsense"), "NONSENSE");
    EXPECT_LT(contrast("nonsense", "221E1B"), usualContrast);
    EXPECT_NE(onDark("#nonsense"), "NONSENSE");
}

TEST(ProviderTintLegibility, whateverComesBackIsLegible) {
    for (int value = 0; value < 0x1000; value += 7) {
        std::string tint = "#";
        for (const int shift : {8, 4, 0}) {
            const char digit = "0123456789ABCDEF"[(value >> shift) & 15];
            tint.append(2, digit);
        }
        // Rounding to bytes can cost a little of the contrast.
        EXPECT_GE(contrast(onDark(tint), "221E1B"), usualContrast - 0.03) << tint;
        EXPECT_GE(contrast(onLight(tint), "FFFDF7"), usualContrast - 0.03) << tint;
    }
}

TEST(ProviderTintLegibility, aTintIsLeftAloneExactlyFromTheContrastUp) {
    const double reached = contrast("808080", "FFFDF7");
    EXPECT_EQ(onLight("808080", reached), "808080");
    EXPECT_NE(onLight("808080", std::nextafter(reached, 10.0) + 1e-9), "808080");
}

}  // namespace
}  // namespace quorvane
