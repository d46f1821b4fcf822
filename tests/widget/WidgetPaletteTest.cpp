#include <gtest/gtest.h>

#include "QuorvaneWidgetExtension/WidgetComponents/ProviderMarkChip.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetPalette.h"
#include "tests/widget/Snapshots.h"

namespace quorvane {
namespace {

using enum WidgetColorScheme;

TEST(WidgetColorTest, readsHexAndFallsBackToAnOpaqueWarmGrey) {
    EXPECT_EQ(WidgetColor::fromHex("FF8000"), (WidgetColor{1, 128.0 / 255, 0, 1}));
    EXPECT_EQ(WidgetColor::fromHex("#ff8000", 0.5), (WidgetColor{1, 128.0 / 255, 0, 0.5}));
    EXPECT_EQ(WidgetColor::fromHex("orange", 0.5), (WidgetColor{0.424, 0.384, 0.325, 1}));
    EXPECT_EQ(WidgetColor::fromHex("FF8000").withOpacity(0.16), (WidgetColor{1, 128.0 / 255, 0, 0.16}));
}

struct RoleCase {
    const char* name;
    WidgetColor (*color)(WidgetColorScheme) noexcept;
    WidgetColor light;
    WidgetColor dark;
};

class WidgetPaletteRole : public ::testing::TestWithParam<RoleCase> {};

TEST_P(WidgetPaletteRole, hasItsColours) {
    EXPECT_EQ(GetParam().color(Light), GetParam().light);
    EXPECT_EQ(GetParam().color(Dark), GetParam().dark);
}

WidgetColor hex(const char* text, double opacity = 1) {
    return WidgetColor::fromHex(text, opacity);
}

INSTANTIATE_TEST_SUITE_P(
    Roles, WidgetPaletteRole,
    ::testing::Values(RoleCase{"primaryText", WidgetPalette::primaryText, hex("221D15"), hex("F2F1EC")},
                      RoleCase{"mutedText", WidgetPalette::mutedText, hex("6C6253"), hex("B8B6AE")},
                      RoleCase{"warningText", WidgetPalette::warningText, hex("A84D14"), hex("FBA85F")},
                      RoleCase{"honeyWash", WidgetPalette::honeyWash, hex("EDB454", 0.25), hex("EBB454", 0.25)},
                      RoleCase{"markRim", WidgetPalette::markRim, hex("221D15", 0.12), hex("FFFFFF", 0.48)},
                      RoleCase{"mascotBadge", WidgetPalette::mascotBadge, hex("FDCD2D"), hex("FDCD2D")},
                      RoleCase{"gaugeTrack", WidgetPalette::gaugeTrack, hex("4E4A40"), hex("ECDCBD")}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(WidgetPaletteTest, hasAGradientOfThreeColours) {
    EXPECT_EQ(WidgetPalette::background(Light), (std::array{hex("FFFDF7"), hex("FAF6EC"), hex("F4ECDA")}));
    EXPECT_EQ(WidgetPalette::background(Dark), (std::array{hex("2B2622"), hex("221E1B"), hex("191512")}));
}

TEST(WidgetPaletteTest, vizKeepsALegibleTintAndChangesOneThatIsNot) {
    EXPECT_EQ(WidgetPalette::viz("#0866FF", Light), hex("0866FF"));
    EXPECT_EQ(WidgetPalette::viz("#2F2F33", Light), hex("2F2F33"));
    EXPECT_EQ(WidgetPalette::viz("#2f2f33", Dark), hex("A6A6A8"));
    EXPECT_NE(WidgetPalette::viz("#111111", Dark), hex("111111"));
    EXPECT_NE(WidgetPalette::viz("#FFF0A0", Light), hex("FFF0A0"));
    EXPECT_EQ(WidgetPalette::viz("no colour", Light), (WidgetColor{0.424, 0.384, 0.325, 1}));
}

TEST(ProviderMarkChipTest, hasTheProvidersPictureInThePapersColourOnTheProviders) {
    const WidgetProviderSnapshot row = testing::providerRow("muse_spark", "Muse Spark", 1);
    const ProviderMarkChip light = ProviderMarkChip::of(row, Light);
    EXPECT_EQ(light.asset, "provider-muse_spark");
    EXPECT_EQ(light.container, 15);
    EXPECT_EQ(light.color, WidgetPalette::viz(row.tintHex, Light));
    EXPECT_EQ(light.glyphColor, hex("FFFDF7"));
    EXPECT_EQ(ProviderMarkChip::of(row, Dark).glyphColor, hex("221E1B"));
}

}  // namespace
}  // namespace quorvane
