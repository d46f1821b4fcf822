#include <gtest/gtest.h>

#include "QuorvaneWidgetExtension/WidgetComponents/ProviderGaugeList.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetPalette.h"
#include "tests/widget/Snapshots.h"

namespace quorvane {
namespace {

using testing::providerRow;
using testing::tokenRow;
using Presentation = WidgetAllProvidersPresentation;
using Rows = std::vector<ProviderGaugeRow>;
using Cells = std::vector<ProviderGridCell>;

const WidgetEnvironment surroundings{.now = Date{1500}};

ProviderGaugeList listOf(std::size_t count, Presentation::Family family) {
    const std::vector<WidgetProviderSnapshot> providers(count, providerRow("claude", "Claude Code", 1));
    return ProviderGaugeList::of(providers, true, family, surroundings);
}

struct LayoutCase {
    const char* name;
    Presentation::Family family;
    std::size_t rows;
    Presentation::Layout layout;
};

class ProviderLayout : public ::testing::TestWithParam<LayoutCase> {};

TEST_P(ProviderLayout, goesByFamilyAndLength) {
    EXPECT_EQ(Presentation::layout(GetParam().family, GetParam().rows), GetParam().layout);
    EXPECT_EQ(std::holds_alternative<Cells>(listOf(GetParam().rows, GetParam().family).providers),
              GetParam().layout == Presentation::Layout::twoColumnGrid);
}

INSTANTIATE_TEST_SUITE_P(
    Families, ProviderLayout,
    ::testing::Values(
        LayoutCase{"mediumWithoutRows", Presentation::Family::medium, 0, Presentation::Layout::fullWidthStack},
        LayoutCase{"mediumWithTwoRows", Presentation::Family::medium, 2, Presentation::Layout::fullWidthStack},
        LayoutCase{"mediumWithThreeRows", Presentation::Family::medium, 3, Presentation::Layout::twoColumnGrid},
        LayoutCase{"mediumWithNineRows", Presentation::Family::medium, 9, Presentation::Layout::twoColumnGrid},
        LayoutCase{"largeWithOneRow", Presentation::Family::large, 1, Presentation::Layout::fullWidthStack},
        LayoutCase{"largeWithNineRows", Presentation::Family::large, 9, Presentation::Layout::fullWidthStack}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(ProviderGaugeListTest, isNarrowInTheMediumSizeAlone) {
    const ProviderGaugeRow narrow = std::get<Rows>(listOf(2, Presentation::Family::medium).providers).at(0);
    EXPECT_EQ(narrow.nameSize, 11);
    EXPECT_EQ(narrow.valueColumn, 56);
    const ProviderGaugeRow wide = std::get<Rows>(listOf(2, Presentation::Family::large).providers).at(0);
    EXPECT_EQ(wide.nameSize, 12);
    EXPECT_EQ(wide.valueColumn, 76);
}

TEST(ProviderGaugeListTest, keepsAColumnForGaugesWhereOneRowHasOne) {
    std::vector<WidgetProviderSnapshot> providers(2, providerRow("claude", "Claude Code", 1));
    const auto columnOf = [&providers](bool showLimits) {
        return ProviderGaugeList::of(providers, showLimits, Presentation::Family::large, surroundings).limitColumn;
    };
    EXPECT_EQ(columnOf(true), 0);
    providers[1].usedPercent = 60;
    providers[1].usageOfficial = true;
    EXPECT_EQ(columnOf(true), ProviderGaugeList::limitWidth);
    EXPECT_EQ(columnOf(false), 0);
}

TEST(ProviderGaugeListTest, saysHowManyThereAreThatItHasNoRoomFor) {
    EXPECT_EQ(listOf(6, Presentation::Family::medium).more, "");
    EXPECT_EQ(std::get<Cells>(listOf(6, Presentation::Family::medium).providers).size(), 6U);
    EXPECT_EQ(listOf(7, Presentation::Family::medium).more, "+2 more");
    EXPECT_EQ(std::get<Cells>(listOf(7, Presentation::Family::medium).providers).size(), 5U);
    EXPECT_EQ(listOf(8, Presentation::Family::large).more, "");
    EXPECT_EQ(listOf(20, Presentation::Family::large).more, "+13 more");
    EXPECT_EQ(std::get<Rows>(listOf(20, Presentation::Family::large).providers).size(), 7U);
}

TEST(ProviderGridCellTest, hasNameAndValueOfToday) {
    const ProviderGridCell cell = ProviderGridCell::of(tokenRow("copilot", "GitHub Copilot", 184200), surroundings);
    EXPECT_EQ(cell.name, "Copilot");
    EXPECT_EQ(cell.value, "184.2K tok");
    EXPECT_EQ(cell.chip.asset, "provider-copilot");
}

struct ShortNameCase {
    const char* id;
    const char* name;
    const char* shortName;
};

TEST(WidgetAllProvidersPresentationTest, shortensNames) {
    constexpr ShortNameCase cases[]{{"claude", "Claude Code", "Claude"},
                                    {"codex", "OpenAI Codex", "Codex"},
                                    {"grok", "Grok Build", "Grok"},
                                    {"copilot", "GitHub Copilot", "Copilot"},
                                    {"cursor", "The Cursor", "Cursor"},
                                    {"muse_spark", "Muse Spark", "Muse"},
                                    {"gemini", "Gemini", "Gemini"},
                                    {"other", "  Two words", "Two"},
                                    {"other", "", ""},
                                    {"other", "   ", "   "},
                                    {"Claude", "Claude Code", "Claude"}};
    for (const ShortNameCase& row : cases) {
        EXPECT_EQ(Presentation::shortName(providerRow(row.id, row.name, 1)), row.shortName) << row.id << row.name;
    }
}

TEST(ProviderBasisBadgeTest, namesWhatIsNotMoneySpent) {
    WidgetProviderSnapshot row = providerRow("codex", "Codex", 1);
    EXPECT_EQ(ProviderBasisBadge::of(row), std::nullopt);
    row.basis = WidgetCostBasis::NotionalListPrice;
    EXPECT_EQ(ProviderBasisBadge::of(row)->text, "notional");
    row.basis = WidgetCostBasis::RealAndNotionalListPrice;
    EXPECT_EQ(ProviderBasisBadge::of(row)->text, "incl notional");
    row.metric = WidgetValueMetric::Tokens;
    EXPECT_EQ(ProviderBasisBadge::of(row)->text, "estimate");
}

TEST(LimitCapsuleTest, fillsAtMostTheWholeTrackAndAtLeastNone) {
    EXPECT_EQ((LimitCapsule{.percent = 130, .tint = {}}.fraction()), 1);
    EXPECT_EQ((LimitCapsule{.percent = -4, .tint = {}}.fraction()), 0);
    EXPECT_EQ((LimitCapsule{.percent = 42, .tint = {}}.fraction()), 0.42);
}

TEST(LimitCapsuleTest, isThereForAPercentageThatIsTheProvidersOwn) {
    WidgetProviderSnapshot row = providerRow("claude", "Claude Code", 1);
    row.weeklyUsedPercent = 10;
    row.usageOfficial = true;
    EXPECT_EQ(LimitCapsule::of(row, {}), std::nullopt);
    row.usedPercent = 60;
    EXPECT_EQ(LimitCapsule::of(row, WidgetColor::fromHex("0866FF")),
              (LimitCapsule{.percent = 60, .tint = WidgetColor::fromHex("0866FF")}));
    row.usageOfficial = false;
    EXPECT_EQ(LimitCapsule::of(row, {}), std::nullopt);
}

TEST(ProviderGaugeRowTest, drawsTheLimitInTheProvidersColour) {
    WidgetProviderSnapshot row = providerRow("claude", "Claude Code", 1234.5);
    row.usedPercent = 60;
    row.usageOfficial = true;
    const ProviderGaugeRow drawn = ProviderGaugeRow::of(row, true, false, surroundings);
    EXPECT_EQ(drawn.name, "Claude");
    EXPECT_EQ(drawn.value, "$1,234.50");
    EXPECT_EQ(drawn.badge, std::nullopt);
    ASSERT_TRUE(drawn.limit);
    EXPECT_EQ(drawn.limit->tint, WidgetPalette::viz("#D6783F", WidgetColorScheme::Light));
    EXPECT_EQ(ProviderGaugeRow::of(row, false, false, surroundings).limit, std::nullopt);
}

}  // namespace
}  // namespace quorvane
