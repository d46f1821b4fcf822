#include <limits>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/NumberFormat.h"
#include "tests/snapshots/VisibleText.h"

namespace quorvane {
namespace {

using testing::visible;

struct CurrencyCase {
    const char* name;
    const char* locale;
    const char* code;
    std::optional<std::int64_t> decimals;
    double value;
    const char* text;
};
class NumberFormatCurrency : public ::testing::TestWithParam<CurrencyCase> {};

TEST_P(NumberFormatCurrency, writesTheAmountAsTheLocaleDoes) {
    const CurrencyCase& row = GetParam();
    const auto format = NumberFormat::currency(Locale{row.locale}, row.code, row.decimals);
    ASSERT_TRUE(format);
    const auto text = format->format(row.value);
    ASSERT_TRUE(text);
    EXPECT_EQ(visible(*text), row.text);
}
INSTANTIATE_TEST_SUITE_P(
    ByLocale, NumberFormatCurrency,
    ::testing::Values(CurrencyCase{"american", "en_US", "USD", 2, 1234567.89, "$1,234,567.89"},
                      CurrencyCase{"americanNegative", "en_US", "USD", 2, -12.5, "-$12.50"},
                      CurrencyCase{"americanEuro", "en_US", "EUR", 2, 1234.5, "€1,234.50"},
                      CurrencyCase{"americanYenHasNoFraction", "en_US", "JPY", {}, 1234.5, "¥1,234"},
                      CurrencyCase{"fixedDigitsOverrideTheCurrency", "en_US", "JPY", 2, 1234.5, "¥1,234.50"},
                      CurrencyCase{"noFraction", "en_US", "USD", 0, 1234.6, "$1,235"},
                      CurrencyCase{"usualFraction", "en_US", "USD", {}, 1234.6, "$1,234.60"},
                      CurrencyCase{"manyDigits", "en_US", "USD", 5, 0.5, "$0.50000"},
                      CurrencyCase{"fewerThanNoDigitsAreNone", "en_US", "USD", -3, 1.6, "$2"},
                      CurrencyCase{"halfGoesToTheEvenDigit", "en_US", "USD", 2, 0.125, "$0.12"},
                      CurrencyCase{"unknownCodeIsItsOwnSign", "en_US", "QQQ", 2, 1.5, "QQQ[nbsp]1.50"},
                      CurrencyCase{"german", "de_DE", "USD", 2, 1234567.89, "1.234.567,89[nbsp]$"},
                      CurrencyCase{"germanEuro", "de_DE", "EUR", {}, -12.5, "-12,50[nbsp]€"},
                      CurrencyCase{"french", "fr_FR", "USD", 2, 1234567.89, "1[nnbsp]234[nnbsp]567,89[nbsp]$US"},
                      CurrencyCase{"frenchEuro", "fr_FR", "EUR", 2, 1234.5, "1[nnbsp]234,50[nbsp]€"},
                      CurrencyCase{"japanese", "ja_JP", "USD", 2, 1234567.89, "$1,234,567.89"},
                      CurrencyCase{"japaneseYen", "ja_JP", "JPY", {}, 1234567, "￥1,234,567"},
                      CurrencyCase{"hindiGroupsByTwo", "hi_IN", "USD", 2, 1234567.89, "$12,34,567.89"},
                      CurrencyCase{"hindiRupees", "hi_IN", "INR", {}, 1234567.5, "₹12,34,567.50"},
                      CurrencyCase{"arabicDigits", "ar_EG", "USD", 2, 1234.5, "[rlm]١٬٢٣٤٫٥٠[nbsp]US$"},
                      CurrencyCase{"arabicNegative", "ar_EG", "USD", 2, -12.5, "[alm]-[rlm]١٢٫٥٠[nbsp]US$"},
                      CurrencyCase{"serbianInLatin", "sr_RS@latin", "EUR", 2, 1234.5, "1.234,50[nbsp]€"},
                      CurrencyCase{"cIsAmerican", "C", "USD", 2, 1234567.89, "$1,234,567.89"},
                      CurrencyCase{"posixIsAmerican", "POSIX", "USD", 2, -1.5, "-$1.50"}),
    [](const auto& row) { return std::string{row.param.name}; });

struct DecimalCase {
    const char* name;
    const char* locale;
    std::optional<std::int64_t> decimals;
    double value;
    const char* text;
};
class NumberFormatDecimal : public ::testing::TestWithParam<DecimalCase> {};

TEST_P(NumberFormatDecimal, writesTheNumberAsTheLocaleDoes) {
    const DecimalCase& row = GetParam();
    const auto format = NumberFormat::decimal(Locale{row.locale}, row.decimals);
    ASSERT_TRUE(format);
    const auto text = format->format(row.value);
    ASSERT_TRUE(text);
    EXPECT_EQ(visible(*text), row.text);
}
INSTANTIATE_TEST_SUITE_P(ByLocale, NumberFormatDecimal,
                         ::testing::Values(DecimalCase{"american", "en_US", 2, 1234567.5, "1,234,567.50"},
                                           DecimalCase{"upToThreeDigits", "en_US", {}, 0.12345, "0.123"},
                                           DecimalCase{"noMoreThanNeeded", "en_US", {}, 1234, "1,234"},
                                           DecimalCase{"negative", "en_US", 0, -1234, "-1,234"},
                                           DecimalCase{"german", "de_DE", 2, 1234567.5, "1.234.567,50"},
                                           DecimalCase{"french", "fr_FR", 2, 1234567.5, "1[nnbsp]234[nnbsp]567,50"},
                                           DecimalCase{"japanese", "ja_JP", 2, 1234567.5, "1,234,567.50"},
                                           DecimalCase{"hindi", "hi_IN", 2, 1234567.5, "12,34,567.50"},
                                           DecimalCase{"arabic", "ar_EG", 2, 1234567.5, "١٬٢٣٤٬٥٦٧٫٥٠"},
                                           DecimalCase{"c", "C", 2, 1234567.5, "1,234,567.50"}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(NumberFormat, aCodeThatIsNotThreeLettersHasNoFormat) {
    const Locale american{"en_US"};
    for (const char* code : {"", "US", "DOLLAR", "U$D", "12A", "\xE2\x82\xAC"})
        EXPECT_FALSE(NumberFormat::currency(american, code, 2)) << code;
}

TEST(NumberFormat, anUnknownLanguageIsWrittenNeutrally) {
    const auto format = NumberFormat::currency(Locale{"xx_YY"}, "EUR", 2);
    ASSERT_TRUE(format);
    EXPECT_EQ(visible(*format->format(1234.5)), "€[nbsp]1,234.50");
}

TEST(NumberFormat, numbersWithoutDigitsHaveATextToo) {
    const auto format = NumberFormat::decimal(Locale{"en_US"}, 2);
    ASSERT_TRUE(format);
    EXPECT_EQ(format->format(std::numeric_limits<double>::infinity()), "∞");
    EXPECT_EQ(format->format(std::numeric_limits<double>::quiet_NaN()), "NaN");
}

TEST(NumberFormat, aFormatCanBeMoved) {
    auto first = NumberFormat::decimal(Locale{"en_US"}, 0);
    auto second = NumberFormat::decimal(Locale{"de_DE"}, 1);
    ASSERT_TRUE(first && second);
    *first = *std::move(second);
    EXPECT_EQ(first->format(1.5), "1,5");
}

struct CurrencyNameCase {
    const char* name;
    const char* locale;
    const char* code;
    std::optional<std::string> text;
};
class NumberFormatCurrencyName : public ::testing::TestWithParam<CurrencyNameCase> {};

TEST_P(NumberFormatCurrencyName, isTheLocalesOwn) {
    EXPECT_EQ(NumberFormat::currencyName(Locale{GetParam().locale}, GetParam().code), GetParam().text);
}
INSTANTIATE_TEST_SUITE_P(ByLocale, NumberFormatCurrencyName,
                         ::testing::Values(CurrencyNameCase{"american", "en_US", "USD", "US Dollar"},
                                           CurrencyNameCase{"lowerCaseCode", "en_US", "eur", "Euro"},
                                           CurrencyNameCase{"german", "de_DE", "JPY", "Japanischer Yen"},
                                           CurrencyNameCase{"french", "fr_FR", "USD", "dollar des États-Unis"},
                                           CurrencyNameCase{"japanese", "ja_JP", "JPY", "日本円"},
                                           CurrencyNameCase{"cIsAmerican", "C", "EUR", "Euro"},
                                           CurrencyNameCase{"unknownCode", "en_US", "QQQ", std::nullopt},
                                           CurrencyNameCase{"noCode", "en_US", "", std::nullopt}),
                         [](const auto& row) { return std::string{row.param.name}; });

}  // namespace
}  // namespace quorvane
