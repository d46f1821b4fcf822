#include <limits>

#include <gtest/gtest.h>

#include "QuorvaneCore/analytics/HeatmapRamp.h"

namespace quorvane {
namespace {

constexpr const char* accent = "#DF7A2E";
constexpr const char* track = "FFFDF7";

TEST(HeatmapRamp, runsFromTheTrackToTheAccent) {
    EXPECT_EQ(HeatmapRamp::cellHex(0, accent, track, 1), "FFFDF7");
    EXPECT_EQ(HeatmapRamp::cellHex(1, accent, track, 1), "DF7A2E");
    EXPECT_EQ(HeatmapRamp::cellHex(0.5, "000000", "FFFFFF", 1), "808080");
    EXPECT_EQ(HeatmapRamp::cellHex(0.5, "ff0000", "0000ff", 0.5), "4000BF");
}

TEST(HeatmapRamp, holdsItsArgumentsBetweenNothingAndAll) {
    EXPECT_EQ(HeatmapRamp::cellHex(2, accent, track, 1), HeatmapRamp::cellHex(1, accent, track, 1));
    EXPECT_EQ(HeatmapRamp::cellHex(-1, accent, track, 1), HeatmapRamp::cellHex(0, accent, track, 1));
    EXPECT_EQ(HeatmapRamp::cellHex(1, accent, track, 1.5), HeatmapRamp::cellHex(1, accent, track, 1));
    EXPECT_EQ(HeatmapRamp::cellHex(1, accent, track, -1), HeatmapRamp::cellHex(0, accent, track, 1));
    EXPECT_EQ(HeatmapRamp::cellHex(std::numeric_limits<double>::quiet_NaN(), accent, track, 1), "FFFDF7");
}

TEST(HeatmapRamp, ofUnreadableColoursRunsToTheFallback) {
    const HexColor::Components colour = HeatmapRamp::cellComponents(1, "no colour", track, 1);
    EXPECT_NEAR(colour.red, HexColor::fallback.red, 0.002);
    EXPECT_NEAR(colour.green, HexColor::fallback.green, 0.002);
    EXPECT_NEAR(colour.blue, HexColor::fallback.blue, 0.002);
    EXPECT_EQ(HeatmapRamp::cellHex(0, accent, "", 1), "6C6253");
}

TEST(HeatmapRamp, givesExactLevelsOfEightBits) {
    for (int step = 0; step <= 1000; ++step) {
        const HexColor::Components colour = HeatmapRamp::cellComponents(step / 1000.0, accent, track, 0.9);
        for (const double component : {colour.red, colour.green, colour.blue})
            EXPECT_EQ(component, static_cast<int>(component * 255 + 0.5) / 255.0);
    }
}

}  // namespace
}  // namespace quorvane
