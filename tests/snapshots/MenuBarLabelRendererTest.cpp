#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "QuorvaneCore/snapshots/MenuBarLabelRenderer.h"
#include "tests/snapshots/VisibleText.h"

namespace quorvane {
namespace {

using testing::visible;
using Limit = MenuBarProviderLimit;
using Summary = MenuBarProviderLimitSummary;
using Shown = MenuBarProviderLimit::Window;
using Renderer = MenuBarLabelRenderer;
using Basis = MenuBarTooltipCostBasis;

const auto rowName = [](const auto& row) { return std::string{row.param.name}; };

Limit share(double used, Shown window = Shown::FiveHour) {
    return {.shortName = "Claude", .usedPct = used, .window = window};
}
Limit tokens(std::int64_t count, Shown window = Shown::Other) {
    return {.shortName = "Cursor", .usedPct = 77, .tokenCount = count, .isEstimate = true, .window = window};
}

struct SettingsCase {
    const char* name;
    const char* format;
    std::optional<Limit> limit;
    const char* title;
    const char* subtitle;
};
class MenuBarSettings : public ::testing::TestWithParam<SettingsCase> {};

TEST_P(MenuBarSettings, nameTheLimitWhoseTurnItIs) {
    const auto format = MenuBarDisplayFormat::normalized(GetParam().format);
    EXPECT_EQ(Renderer::renderedSettingsTitle(format, GetParam().limit), GetParam().title);
    EXPECT_EQ(Renderer::renderedSettingsSubtitle(format, GetParam().limit), GetParam().subtitle);
}
INSTANTIATE_TEST_SUITE_P(
    ByChoice, MenuBarSettings,
    ::testing::Values(
        SettingsCase{"total", "total", share(5), "Total", "Quorvane badge + today total"},
        SettingsCase{"totalWithTokens", "total", tokens(5), "Total", "Quorvane badge + today total"},
        SettingsCase{"rotatingFiveHour", "limit", share(5), "Claude 5h", "Limit % only"},
        SettingsCase{"rotatingWeekly", "limit", share(5, Shown::Weekly), "Claude week", "Limit % only"},
        SettingsCase{"rotatingOther", "limit", share(5, Shown::Other), "Claude", "Limit % only"},
        SettingsCase{"rotatingBoth", "totalAndLimit", share(5), "Total + Claude 5h", "Today total + Limit %"},
        SettingsCase{"rotatingBothWeekly", "totalAndLimit", share(5, Shown::Weekly), "Total + Claude week",
                     "Today total + Limit %"},
        SettingsCase{"rotatingTokens", "limit", tokens(5), "Cursor", "Today tokens"},
        SettingsCase{"rotatingBothTokens", "totalAndLimit", tokens(5), "Total + Cursor", "Today total + tokens"},
        SettingsCase{"rotatingWithoutLimit", "limit", {}, "Limit", "Limit % only"},
        SettingsCase{"rotatingBothWithoutLimit", "totalAndLimit", {}, "Total + limit", "Today total + Limit %"},
        SettingsCase{"chosenKeepsItsOwnName", "limit:codex:weekly", share(5), "Codex week", "Limit % only"},
        SettingsCase{"chosenKeepsItsOwnSubtitle", "totalAndLimit:codex:weekly", tokens(5), "Total + Codex week",
                     "Today total + Limit %"},
        SettingsCase{"chosenEstimate", "limit:cursor:estimate", tokens(5), "Cursor", "Today tokens"}),
    rowName);

struct TitleCase {
    const char* name;
    const char* format;
    std::optional<double> today;
    std::optional<Limit> limit;
    const char* title;
    const char* currency = "USD";
    const char* locale = "en_US";
    bool isUnavailable = false;
};
class MenuBarStatusTitle : public ::testing::TestWithParam<TitleCase> {};

TEST_P(MenuBarStatusTitle, isShort) {
    const TitleCase& row = GetParam();
    EXPECT_EQ(visible(Renderer::compactStatusTitle(row.today, row.limit, MenuBarDisplayFormat::normalized(row.format),
                                                   row.currency, row.isUnavailable, Locale{row.locale})),
              row.title);
}
INSTANTIATE_TEST_SUITE_P(
    LimitAlone, MenuBarStatusTitle,
    ::testing::Values(TitleCase{"fiveHour", "limit", 5, share(42.4), "Claude 42% (5hr)"},
                      TitleCase{"weekly", "limit", 5, share(42.4, Shown::Weekly), "Claude 42% (W)"},
                      TitleCase{"otherWindow", "limit", 5, share(42.4, Shown::Other), "Claude 42%"},
                      TitleCase{"halfGoesUp", "limit", 5, share(42.5), "Claude 43% (5hr)"},
                      TitleCase{"negativeHalfGoesDown", "limit", 5, share(-2.5), "Claude -3% (5hr)"},
                      TitleCase{"nearlyNothing", "limit", 5, share(-0.2), "Claude 0% (5hr)"},
                      TitleCase{"all", "limit", 5, share(100), "Claude 100% (5hr)"},
                      TitleCase{"tokens", "limit", 5, tokens(12345), "Cursor 12.3K"},
                      TitleCase{"tokensHaveNoWindow", "limit", 5, tokens(999, Shown::FiveHour), "Cursor 999"},
                      TitleCase{"chosenProvider", "limit:claude:fiveHour", 5, share(42.4), "Claude 42% (5hr)"},
                      TitleCase{"beforeTheAmountIsKnown", "limit", {}, share(42.4), "Claude 42% (5hr)"},
                      TitleCase{"withoutALimitTheAmount", "limit", 12.34, {}, "$12.34"},
                      TitleCase{"withoutALimitAndAmount", "limit", {}, {}, "…"},
                      TitleCase{"withoutAnyProvider", "limit", {}, {}, "—", "USD", "en_US", true}),
    rowName);
INSTANTIATE_TEST_SUITE_P(
    Total, MenuBarStatusTitle,
    ::testing::Values(TitleCase{"zero", "total", 0, {}, "$0.00"}, TitleCase{"cents", "total", 9.99, {}, "$9.99"},
                      TitleCase{"dollars", "total", 12.34, {}, "$12.34"},
                      TitleCase{"thousandsAreGrouped", "total", 1234.5, {}, "$1,234.50"},
                      TitleCase{"justBelowAbbreviation", "total", 99999, {}, "$99,999.00"},
                      TitleCase{"abbreviated", "total", 123456, {}, "$123.5K"},
                      TitleCase{"exactlyAbbreviated", "total", 100000, {}, "$100.0K"},
                      TitleCase{"justBelowAMillion", "total", 999999, {}, "$1000.0K"},
                      TitleCase{"million", "total", 1240000, {}, "$1.2M"},
                      TitleCase{"negative", "total", -12.34, {}, "-$12.34"},
                      TitleCase{"negativeAbbreviated", "total", -123456, {}, "-$123.5K"},
                      TitleCase{"negativeMillions", "total", -1240000, {}, "-$1.2M"},
                      TitleCase{"negativeZeroHasNoSign", "total", -0.0, {}, "$0.00"},
                      TitleCase{"aLimitIsNotShown", "total", 12.34, share(42), "$12.34"},
                      TitleCase{"loading", "total", {}, {}, "…"},
                      TitleCase{"loadingWithALimit", "total", {}, share(42), "…"},
                      TitleCase{"unavailable", "total", {}, {}, "—", "USD", "en_US", true},
                      TitleCase{"anAmountThoughUnavailable", "total", 5, {}, "$5.00", "USD", "en_US", true},
                      TitleCase{"german", "total", 1234.5, {}, "1.234,50[nbsp]$", "USD", "de_DE"},
                      TitleCase{"germanNegative", "total", -12.5, {}, "-12,50[nbsp]$", "USD", "de_DE"},
                      TitleCase{"abbreviatedAlikeInGerman", "total", 123456, {}, "$123.5K", "USD", "de_DE"},
                      TitleCase{"cLocale", "total", 1234.5, {}, "$1,234.50", "USD", "C"},
                      TitleCase{"euro", "total", 999.99, {}, "€999.99", "EUR"},
                      TitleCase{"euroThousands", "total", 1000, {}, "€1,000", "EUR"},
                      TitleCase{"euroMillionsAreNotAbbreviated", "total", 1234567, {}, "€1,234,567", "EUR"},
                      TitleCase{"euroNegativeKeepsItsSign", "total", -12.5, {}, "-€12.50", "EUR"},
                      TitleCase{"euroNegativeThousands", "total", -1234.5, {}, "-€1,234", "EUR"},
                      TitleCase{"yen", "total", 12, {}, "￥12.00", "JPY", "ja_JP"},
                      TitleCase{"noCurrencyIsPlain", "total", 12.5, {}, "12.50", "CREDITS"},
                      TitleCase{"noCurrencyThousandsArePlain", "total", 1234.6, {}, "1235", "CREDITS"}),
    rowName);
INSTANTIATE_TEST_SUITE_P(
    TotalAndLimit, MenuBarStatusTitle,
    ::testing::Values(
        TitleCase{"both", "totalAndLimit", 12.34, share(42.4), "$12 · Claude 42% (5hr)"},
        TitleCase{"smallAmountsKeepTheirCents", "totalAndLimit", 9.99, share(42.4), "$9.99 · Claude 42% (5hr)"},
        TitleCase{"exactlyTenLosesThem", "totalAndLimit", 10, share(42.4, Shown::Weekly), "$10 · Claude 42% (W)"},
        TitleCase{"abbreviated", "totalAndLimit", 123456, tokens(1500000), "$123.5K · Cursor 1.5M"},
        TitleCase{"thousands", "totalAndLimit", 99999.4, share(1), "$99,999 · Claude 1% (5hr)"},
        TitleCase{"negative", "totalAndLimit", -12.34, share(1), "-$12 · Claude 1% (5hr)"},
        TitleCase{"negativeCents", "totalAndLimit", -1.5, share(1), "-$1.50 · Claude 1% (5hr)"},
        TitleCase{"withoutALimit", "totalAndLimit", 12.34, {}, "$12"},
        TitleCase{"withoutALimitCents", "totalAndLimit", 1.5, {}, "$1.50"},
        TitleCase{"withoutAnAmount", "totalAndLimit", {}, share(42), "…"},
        TitleCase{"withoutAnyProvider", "totalAndLimit", {}, share(42), "—", "USD", "en_US", true},
        TitleCase{"chosenProvider", "totalAndLimit:claude:weekly", 12.34, share(42, Shown::Weekly),
                  "$12 · Claude 42% (W)"},
        TitleCase{"euroHasNoCents", "totalAndLimit", 1.6, share(42), "€2 · Claude 42% (5hr)", "EUR"},
        TitleCase{"germanEuro", "totalAndLimit", 12.6, share(42), "13[nbsp]€ · Claude 42% (5hr)", "EUR", "de_DE"}),
    rowName);

struct SpokenCase {
    const char* name;
    std::optional<double> today;
    bool includesNotional;
    std::optional<Limit> limit;
    const char* text;
    const char* currency = "USD";
    const char* locale = "en_US";
    bool isUnavailable = false;
};
class MenuBarAccessibility : public ::testing::TestWithParam<SpokenCase> {};

TEST_P(MenuBarAccessibility, valueIsReadOut) {
    const SpokenCase& row = GetParam();
    EXPECT_EQ(visible(Renderer::accessibilityValue(row.today, row.includesNotional, row.limit, row.currency,
                                                   row.isUnavailable, Locale{row.locale})),
              row.text);
}
INSTANTIATE_TEST_SUITE_P(
    ByState, MenuBarAccessibility,
    ::testing::Values(
        SpokenCase{"amount", 1234.5, false, {}, "Today 1,234.50 dollars"},
        SpokenCase{"zero", 0, false, {}, "Today 0.00 dollars"},
        SpokenCase{"notional", 12.34, true, {}, "Today 12.34 dollars, includes notional list-price estimates"},
        SpokenCase{"fiveHour", 12.34, false, share(42.4),
                   "Today 12.34 dollars, Claude 42 percent used in the 5-hour window"},
        SpokenCase{"weekly", 12.34, false, share(42.6, Shown::Weekly),
                   "Today 12.34 dollars, Claude 43 percent used in the weekly window"},
        SpokenCase{"otherWindow", 12.34, false, share(42, Shown::Other), "Today 12.34 dollars, Claude 42 percent used"},
        SpokenCase{"notionalAndLimit", 12.34, true, share(42),
                   "Today 12.34 dollars, includes notional list-price estimates, Claude 42 percent used in the 5-hour "
                   "window"},
        SpokenCase{"tokens", 12.34, false, tokens(1234567),
                   "Today 12.34 dollars, Cursor 1234567 tokens today, quota unavailable"},
        SpokenCase{"limitAlone", {}, false, share(42), "Claude 42 percent used in the 5-hour window"},
        SpokenCase{"limitThoughUnavailable",
                   {},
                   true,
                   share(42),
                   "Claude 42 percent used in the 5-hour window",
                   "USD",
                   "en_US",
                   true},
        SpokenCase{"loading", {}, false, {}, "Loading"},
        SpokenCase{"unavailable", {}, false, {}, "All providers unavailable", "USD", "en_US", true},
        SpokenCase{"euro", 12.5, false, {}, "Today 12.50 Euro", "EUR"},
        SpokenCase{"yen", 1234, false, {}, "Today 1,234.00 Japanese Yen", "JPY"},
        SpokenCase{"germanYen", 1234.5, false, {}, "Today 1.234,50 Japanischer Yen", "JPY", "de_DE"},
        SpokenCase{"dollarsAreDollarsEverywhere", 1234.5, false, {}, "Today 1.234,50 dollars", "USD", "de_DE"},
        SpokenCase{"unknownCode", 1, false, {}, "Today 1.00 CREDITS", "CREDITS"},
        SpokenCase{"unknownThreeLetters", 1, false, {}, "Today 1.00 QQQ", "QQQ"}),
    rowName);

Summary claude(std::optional<double> primary, std::optional<double> secondary, bool official = true) {
    return {.id = "claude",
            .name = "Claude",
            .primaryUsedPct = primary,
            .primaryWindowMinutes = 300,
            .secondaryUsedPct = secondary,
            .secondaryWindowMinutes = 10080,
            .isOfficial = official};
}
Summary planned(Summary summary, std::string plan) {
    summary.planLabel = std::move(plan);
    return summary;
}
Summary lasting(std::optional<std::int64_t> primaryMinutes, std::optional<std::int64_t> secondaryMinutes) {
    Summary summary = claude(10, 20);
    summary.primaryWindowMinutes = primaryMinutes;
    summary.secondaryWindowMinutes = secondaryMinutes;
    return summary;
}
Summary cursor(std::optional<std::int64_t> count) {
    return {.id = "cursor", .name = "Cursor", .estimatedUsedPct = 50, .estimatedTokenCount = count};
}

struct LineCase {
    const char* name;
    Summary summary;
    std::optional<std::string> line;
};
class MenuBarLimitLine : public ::testing::TestWithParam<LineCase> {};

TEST_P(MenuBarLimitLine, standsInTheTooltip) {
    const std::vector<Summary> summaries{GetParam().summary};
    const std::string expected = GetParam().line ? "\n\nRate limits:\n" + *GetParam().line : "";
    EXPECT_EQ(Renderer::tooltip(std::nullopt, {}, {}, Basis::RealSpend, summaries, {}, "USD", false, Locale{"en_US"}),
              "Loading provider data…" + expected);
}
INSTANTIATE_TEST_SUITE_P(
    BySummary, MenuBarLimitLine,
    ::testing::Values(LineCase{"both", claude(42.4, 12.5), "Claude: 5h 42% used · weekly 13% used (official)"},
                      LineCase{"primary", claude(42.4, {}), "Claude: 5h 42% used (official)"},
                      LineCase{"secondary", claude({}, 7), "Claude: weekly 7% used (official)"},
                      LineCase{"zeroIsShown", claude(0, {}), "Claude: 5h 0% used (official)"},
                      LineCase{"estimated", claude(42, {}, false), "Claude: 5h 42% used (estimated)"},
                      LineCase{"plan", planned(claude(42, {}), "Max 20x"), "Claude: 5h 42% used (official · Max 20x)"},
                      LineCase{"planIsTrimmed", planned(claude(42, {}), " \n Max\t"),
                               "Claude: 5h 42% used (official · Max)"},
                      LineCase{"blankPlan", planned(claude(42, {}), " \n"), "Claude: 5h 42% used (official)"},
                      LineCase{"absentMinutes", lasting({}, {}), "Claude: 5h 10% used · weekly 20% used (official)"},
                      LineCase{"days", lasting(1440, 43200), "Claude: 1d 10% used · 30d 20% used (official)"},
                      LineCase{"hours", lasting(60, 720), "Claude: 1h 10% used · 12h 20% used (official)"},
                      LineCase{"minutes", lasting(90, 1), "Claude: 90m 10% used · 1m 20% used (official)"},
                      LineCase{"swapped", lasting(10080, 300), "Claude: weekly 10% used · 5h 20% used (official)"},
                      LineCase{"noLengthIsNoDays", lasting(0, -1440), "Claude: 0d 10% used · -1d 20% used (official)"},
                      LineCase{"tokens", cursor(12345), "Cursor: 12.3K tokens today · quota unavailable (estimated)"},
                      LineCase{"tokensWithPlan", planned(cursor(999), "Pro"),
                               "Cursor: 999 tokens today · quota unavailable (estimated · Pro)"},
                      LineCase{"noTokens", cursor(0), std::nullopt}, LineCase{"noCount", cursor({}), std::nullopt}),
    rowName);

struct TooltipCase {
    const char* name;
    std::optional<double> today;
    std::optional<double> windowTotal;
    std::optional<std::int64_t> windowDays;
    Basis basis;
    std::vector<Summary> summaries;
    std::optional<std::string> freshness;
    const char* text;
    const char* currency = "USD";
    const char* locale = "en_US";
    bool isUnavailable = false;
};
class MenuBarTooltip : public ::testing::TestWithParam<TooltipCase> {};

TEST_P(MenuBarTooltip, saysEverything) {
    const TooltipCase& row = GetParam();
    EXPECT_EQ(visible(Renderer::tooltip(row.today, row.windowTotal, row.windowDays, row.basis, row.summaries,
                                        row.freshness, row.currency, row.isUnavailable, Locale{row.locale})),
              row.text);
}
INSTANTIATE_TEST_SUITE_P(
    ByState, MenuBarTooltip,
    ::testing::Values(
        TooltipCase{"loading", {}, 5, 30, Basis::RealSpend, {}, {}, "Loading provider data…"},
        TooltipCase{
            "unavailable", {}, 5, 30, Basis::RealSpend, {}, {}, "No provider data available", "USD", "en_US", true},
        TooltipCase{"todayAlone", 12.34, {}, 30, Basis::RealSpend, {}, {}, "Today: $12.34\nBasis: real spend"},
        TooltipCase{"window",
                    12.34,
                    1234.5,
                    30,
                    Basis::RealSpend,
                    {},
                    {},
                    "Today: $12.34\nLast 30 days: $1,234.50\nBasis: real spend"},
        TooltipCase{"windowOfADay", 1, 2, 1, Basis::RealSpend, {}, {}, "Today: $1.00\nToday: $2.00\nBasis: real spend"},
        TooltipCase{"windowOfTwoDays",
                    1,
                    2,
                    2,
                    Basis::RealSpend,
                    {},
                    {},
                    "Today: $1.00\nLast 2 days: $2.00\nBasis: real spend"},
        TooltipCase{"windowOfNoDays",
                    1,
                    2,
                    0,
                    Basis::RealSpend,
                    {},
                    {},
                    "Today: $1.00\nSelected window: $2.00\nBasis: real spend"},
        TooltipCase{"windowOfUnknownDays",
                    1,
                    2,
                    {},
                    Basis::RealSpend,
                    {},
                    {},
                    "Today: $1.00\nSelected window: $2.00\nBasis: real spend"},
        TooltipCase{"notional",
                    1,
                    {},
                    {},
                    Basis::NotionalListPrice,
                    {},
                    {},
                    "Today: $1.00\nBasis: notional list-price estimates"},
        TooltipCase{"mixed",
                    1,
                    {},
                    {},
                    Basis::RealAndNotionalListPrice,
                    {},
                    {},
                    "Today: $1.00\nBasis: real spend + notional list-price estimates"},
        TooltipCase{"largeAmountsAreNotAbbreviated",
                    1240000,
                    {},
                    {},
                    Basis::RealSpend,
                    {},
                    {},
                    "Today: $1,240,000.00\nBasis: real spend"},
        TooltipCase{"negative", -1.5, {}, {}, Basis::RealSpend, {}, {}, "Today: -$1.50\nBasis: real spend"},
        TooltipCase{"limits",
                    1,
                    {},
                    {},
                    Basis::RealSpend,
                    {claude(42, {}), cursor(0), cursor(5)},
                    {},
                    "Today: $1.00\nBasis: real spend\n\nRate limits:\nClaude: 5h 42% used (official)\n"
                    "Cursor: 5 tokens today · quota unavailable (estimated)"},
        TooltipCase{"noLineNoSection", 1, {}, {}, Basis::RealSpend, {cursor(0)}, {}, "Today: $1.00\nBasis: real spend"},
        TooltipCase{"freshness",
                    1,
                    {},
                    {},
                    Basis::RealSpend,
                    {},
                    "2 min ago",
                    "Today: $1.00\nBasis: real spend\n\nFreshness: 2 min ago"},
        TooltipCase{"emptyFreshness", 1, {}, {}, Basis::RealSpend, {}, "", "Today: $1.00\nBasis: real spend"},
        TooltipCase{"allSections",
                    1,
                    2,
                    7,
                    Basis::RealSpend,
                    {claude(42, 7)},
                    "now",
                    "Today: $1.00\nLast 7 days: $2.00\nBasis: real spend\n\nRate limits:\n"
                    "Claude: 5h 42% used · weekly 7% used (official)\n\nFreshness: now"},
        TooltipCase{"unavailableWithFreshness",
                    {},
                    {},
                    {},
                    Basis::RealSpend,
                    {},
                    "yesterday",
                    "No provider data available\n\nFreshness: yesterday",
                    "USD",
                    "en_US",
                    true},
        TooltipCase{"euro", 1234.5, {}, {}, Basis::RealSpend, {}, {}, "Today: €1,234.50\nBasis: real spend", "EUR"},
        TooltipCase{"germanEuro",
                    1234.5,
                    {},
                    {},
                    Basis::RealSpend,
                    {},
                    {},
                    "Today: 1.234,50[nbsp]€\nBasis: real spend",
                    "EUR",
                    "de_DE"},
        TooltipCase{"noCurrencyIsPlain",
                    1234.567,
                    {},
                    {},
                    Basis::RealSpend,
                    {},
                    {},
                    "Today: 1234.57\nBasis: real spend",
                    "CREDITS"}),
    rowName);

}  // namespace
}  // namespace quorvane
