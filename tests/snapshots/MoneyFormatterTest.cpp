#include <atomic>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "QuorvaneCore/snapshots/MoneyFormatter.h"
#include "tests/snapshots/VisibleText.h"
#include "tests/support/ScopedVariables.h"

namespace quorvane {
namespace {

using testing::visible;

struct MoneyCase {
    const char* name;
    const char* locale;
    const char* dollars;  ///< 1234567.891 US dollars with two fraction digits
    const char* amount;   ///< the same as a plain number
    const char* euros;    ///< -12.5 euros with no fraction digit
    const char* yen;      ///< 1234.56 yen with the usual fraction digits
    const char* compact;  ///< 12.5 US dollars in the narrow form
};
class MoneyFormatterByLocale : public ::testing::TestWithParam<MoneyCase> {};

TEST_P(MoneyFormatterByLocale, writesEveryForm) {
    const MoneyCase& row = GetParam();
    const Locale locale{row.locale};
    EXPECT_EQ(visible(MoneyFormatter::dollars(1234567.891, 2, "USD", locale)), row.dollars);
    EXPECT_EQ(visible(MoneyFormatter::amount(1234567.891, 2, locale)), row.amount);
    EXPECT_EQ(visible(MoneyFormatter::currency(-12.5, "EUR", 0, locale)), row.euros);
    EXPECT_EQ(visible(MoneyFormatter::currency(1234.56, "JPY", std::nullopt, locale)), row.yen);
    EXPECT_EQ(visible(MoneyFormatter::compactDollars(12.5, "USD", locale)), row.compact);
    // A large amount is written alike everywhere.
    EXPECT_EQ(MoneyFormatter::compactDollars(1500, "USD", locale), "$1.5K");
    EXPECT_EQ(MoneyFormatter::compactDollars(2.5e6, "EUR", locale), "EUR 2.5M");
}
INSTANTIATE_TEST_SUITE_P(
    ByLocale, MoneyFormatterByLocale,
    ::testing::Values(MoneyCase{"american", "en_US", "$1,234,567.89", "1,234,567.89", "-€12", "¥1,235", "$12.50"},
                      MoneyCase{"german", "de_DE", "1.234.567,89[nbsp]$", "1.234.567,89", "-12[nbsp]€", "1.235[nbsp]¥",
                                "12,50[nbsp]$"},
                      MoneyCase{"french", "fr_FR", "1[nnbsp]234[nnbsp]567,89[nbsp]$US", "1[nnbsp]234[nnbsp]567,89",
                                "-12[nbsp]€", "1[nnbsp]235[nbsp]JPY", "12,50[nbsp]$US"},
                      MoneyCase{"japanese", "ja_JP", "$1,234,567.89", "1,234,567.89", "-€12", "￥1,235", "$12.50"},
                      MoneyCase{"hindi", "hi_IN", "$12,34,567.89", "12,34,567.89", "-€12", "JP¥1,235", "$12.50"},
                      MoneyCase{"arabic", "ar_EG", "[rlm]١٬٢٣٤٬٥٦٧٫٨٩[nbsp]US$", "١٬٢٣٤٬٥٦٧٫٨٩", "[alm]-[rlm]١٢[nbsp]€",
                                "[rlm]١٬٢٣٥[nbsp]JP¥", "[rlm]١٢٫٥٠[nbsp]US$"},
                      MoneyCase{"c", "C", "$1,234,567.89", "1,234,567.89", "-€12", "¥1,235", "$12.50"},
                      MoneyCase{"posixWithCharacterSet", "POSIX.UTF-8", "$1,234,567.89", "1,234,567.89", "-€12",
                                "¥1,235", "$12.50"}),
    [](const auto& row) { return std::string{row.param.name}; });

struct CompactCase {
    const char* name;
    double value;
    const char* code;
    const char* text;
};
class MoneyFormatterCompact : public ::testing::TestWithParam<CompactCase> {};

TEST_P(MoneyFormatterCompact, isShort) {
    EXPECT_EQ(visible(MoneyFormatter::compactDollars(GetParam().value, GetParam().code, Locale{"en_US"})),
              GetParam().text);
}
INSTANTIATE_TEST_SUITE_P(ByValue, MoneyFormatterCompact,
                         ::testing::Values(CompactCase{"zero", 0, "USD", "$0.00"},
                                           CompactCase{"small", 12.5, "USD", "$12.50"},
                                           CompactCase{"smallNegativeIsTheLocales", -12.5, "USD", "-$12.50"},
                                           CompactCase{"smallEuroIsTheLocales", 12.5, "EUR", "€12.50"},
                                           CompactCase{"justBelowThousands", 999.99, "USD", "$999.99"},
                                           CompactCase{"roundedUpItStaysInItsForm", 999.999, "USD", "$1,000.00"},
                                           CompactCase{"thousand", 1000, "USD", "$1.0K"},
                                           CompactCase{"thousands", 1500, "USD", "$1.5K"},
                                           CompactCase{"thousandsOfEuros", 1500, "EUR", "EUR 1.5K"},
                                           CompactCase{"negativeThousands", -1500, "USD", "$-1.5K"},
                                           CompactCase{"justBelowMillions", 999999, "USD", "$1000.0K"},
                                           CompactCase{"million", 1e6, "USD", "$1.0M"},
                                           CompactCase{"negativeMillions", -2500000, "USD", "$-2.5M"},
                                           CompactCase{"billions", 1.5e9, "USD", "$1500.0M"},
                                           CompactCase{"lowerCaseCodeIsAPrefix", 1500, "usd", "usd 1.5K"}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(MoneyFormatter, whatIsNoCurrencyCodeIsWrittenPlainly) {
    const Locale german{"de_DE"};
    EXPECT_EQ(MoneyFormatter::dollars(1234.567, 2, "CREDITS", german), "1234.57");
    EXPECT_EQ(MoneyFormatter::dollars(1234.567, 0, "CREDITS", german), "1235");
    EXPECT_EQ(MoneyFormatter::currency(-1234.567, "", std::nullopt, german), "-1234.57");
    EXPECT_EQ(MoneyFormatter::compactDollars(12.5, "CREDITS", german), "12.50");
    EXPECT_EQ(MoneyFormatter::compactDollars(1500, "CREDITS", german), "CREDITS 1.5K");
}

TEST(MoneyFormatter, dollarsAreCurrencyWithFixedDigits) {
    const Locale french{"fr_FR"};
    for (const double value : {0.0, 0.005, 1.0, -99.999, 1e12}) {
        EXPECT_EQ(MoneyFormatter::dollars(value, 3, "EUR", french), MoneyFormatter::currency(value, "EUR", 3, french));
    }
}

TEST(MoneyFormatter, aFormatterIsMadeOnceForItsKey) {
    const Locale danish{"da_DK"};
    const std::string first = MoneyFormatter::dollars(1, 2, "DKK", danish);
    const std::int64_t made = MoneyFormatter::formatterCount();
    EXPECT_EQ(MoneyFormatter::dollars(1, 2, "DKK", danish), first);
    EXPECT_EQ(MoneyFormatter::currency(1, "DKK", 2, Locale{"da-DK"}), first);
    EXPECT_EQ(MoneyFormatter::formatterCount(), made);
}

TEST(MoneyFormatter, everyPartOfTheKeyMakesAFormatterOfItsOwn) {
    const Locale swedish{"sv_SE"};
    const std::int64_t made = MoneyFormatter::formatterCount();
    EXPECT_NE(MoneyFormatter::dollars(1, 2, "SEK", swedish), MoneyFormatter::dollars(1, 2, "NOK", swedish));
    EXPECT_NE(MoneyFormatter::dollars(1, 2, "SEK", swedish), MoneyFormatter::dollars(1, 1, "SEK", swedish));
    EXPECT_EQ(MoneyFormatter::dollars(1, 2, "SEK", swedish), MoneyFormatter::currency(1, "SEK", std::nullopt, swedish));
    EXPECT_NE(MoneyFormatter::dollars(1, 2, "SEK", swedish), MoneyFormatter::dollars(1, 2, "SEK", Locale{"en_ZA"}));
    EXPECT_NE(MoneyFormatter::amount(1, 2, swedish), MoneyFormatter::dollars(1, 2, "USD", swedish));
    EXPECT_EQ(MoneyFormatter::formatterCount(), made + 7);
}

TEST(MoneyFormatter, aKeyWithoutAFormatterIsLookedForOnce) {
    const Locale swedish{"sv_SE"};
    EXPECT_EQ(MoneyFormatter::dollars(1, 2, "NOTACODE", swedish), "1.00");
    const std::int64_t made = MoneyFormatter::formatterCount();
    EXPECT_EQ(MoneyFormatter::dollars(1, 2, "NOTACODE", swedish), "1.00");
    EXPECT_EQ(MoneyFormatter::formatterCount(), made);
}

TEST(MoneyFormatter, aChangeOfLocaleNeverUsesTheOldFormatter) {
    const testing::ScopedVariables variables{"LC_ALL", "LC_MONETARY", "LANG"};
    variables.set("LANG", "en_US.UTF-8");
    EXPECT_EQ(MoneyFormatter::dollars(1.5, 2, "USD", Locale::current()), "$1.50");
    variables.set("LANG", "de_DE.UTF-8");
    EXPECT_EQ(visible(MoneyFormatter::dollars(1.5, 2, "USD", Locale::current())), "1,50[nbsp]$");
    variables.set("LC_ALL", "C");
    EXPECT_EQ(MoneyFormatter::dollars(1.5, 2, "USD", Locale::current()), "$1.50");
}

TEST(MoneyFormatter, threadsShareTheFormatters) {
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&wrong] {
            const Locale locale{"en_GB"};
            for (int value = 0; value < 500; ++value) {
                const std::string digits = std::to_string(value);
                if (MoneyFormatter::dollars(value, 2, "GBP", locale) != "£" + digits + ".00") ++wrong;
                if (MoneyFormatter::amount(value, 1, locale) != digits + ".0") ++wrong;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST(MoneyFormatter, storedCostsAreInDollars) {
    EXPECT_EQ(MoneyFormatter::baseCurrencyCode, "USD");
}

}  // namespace
}  // namespace quorvane
