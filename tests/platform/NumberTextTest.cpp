#include <clocale>
#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/NumberText.h"

namespace quorvane {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

struct NumberCase {
    const char* name;
    std::string_view text;
    std::optional<double> expected;
};

class NumberTexts : public ::testing::TestWithParam<NumberCase> {};

TEST_P(NumberTexts, areReadWholeOrNotAtAll) {
    EXPECT_EQ(parseFloat(GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    ByShape, NumberTexts,
    ::testing::Values(
        NumberCase{"integer", "42", 42}, NumberCase{"decimal", "3.9", 3.9}, NumberCase{"negative", "-3.9", -3.9},
        NumberCase{"plusSign", "+7", 7}, NumberCase{"noDigitBeforeTheDot", ".5", 0.5},
        NumberCase{"noDigitBehindTheDot", "5.", 5}, NumberCase{"leadingZeros", "007", 7},
        NumberCase{"exponent", "1e3", 1000}, NumberCase{"upperCaseExponent", "1E-3", 0.001},
        NumberCase{"hexadecimal", "0x1F", 31}, NumberCase{"hexadecimalFloat", "0x1.8p1", 3},
        NumberCase{"infinity", "inf", infinity}, NumberCase{"infinityInFull", "-INFINITY", -infinity},
        NumberCase{"tooLarge", "1e400", infinity}, NumberCase{"tooLargeNegative", "-1e400", -infinity},
        NumberCase{"tooSmall", "1e-400", 0}, NumberCase{"empty", "", std::nullopt},
        NumberCase{"leadingBlank", " 3", std::nullopt}, NumberCase{"leadingTab", "\t3", std::nullopt},
        NumberCase{"leadingLineFeed", "\n3", std::nullopt}, NumberCase{"leadingVerticalTab", "\v3", std::nullopt},
        NumberCase{"leadingFormFeed", "\f3", std::nullopt}, NumberCase{"leadingCarriageReturn", "\r3", std::nullopt},
        NumberCase{"blankAlone", " ", std::nullopt}, NumberCase{"trailingBlank", "3 ", std::nullopt},
        NumberCase{"trailingLineFeed", "3\n", std::nullopt}, NumberCase{"trailingText", "3px", std::nullopt},
        NumberCase{"trailingNUL", std::string_view{"3\0", 2}, std::nullopt},
        NumberCase{"NULInside",
                   std::string_view{"3\0"
                                    "4",
                                    3},
                   std::nullopt},
        NumberCase{"word", "three", std::nullopt}, NumberCase{"signAlone", "-", std::nullopt},
        NumberCase{"dotAlone", ".", std::nullopt}, NumberCase{"exponentAlone", "e5", std::nullopt},
        NumberCase{"commaForDot", "3,9", std::nullopt}, NumberCase{"groups", "1,000", std::nullopt},
        NumberCase{"unfinishedExponent", "1e", std::nullopt}, NumberCase{"twoNumbers", "1 2", std::nullopt}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(NumberText, nanIsANumberText) {
    for (const char* text : {"nan", "NaN", "NAN", "-nan"}) {
        const std::optional<double> value = parseFloat(text);
        EXPECT_TRUE(value && std::isnan(*value)) << text;
    }
}

TEST(NumberText, textNeedNotEndInNUL) {
    const std::string text = "12345";
    EXPECT_EQ(parseFloat(std::string_view{text}.substr(1, 2)), 23);
}

TEST(NumberText, localeOfTheProcessDoesNotCount) {
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    // Whichever of them is installed writes its fractions with a comma.
    const bool hasComma =
        std::setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr || std::setlocale(LC_NUMERIC, "fr_FR.UTF-8") != nullptr;
    EXPECT_EQ(parseFloat("3.9"), 3.9) << (hasComma ? "with a decimal comma" : "in the C locale");
    EXPECT_FALSE(parseFloat("3,9"));
    std::setlocale(LC_NUMERIC, before.c_str());
}

}  // namespace
}  // namespace quorvane
