#include <gtest/gtest.h>

#include "QuorvaneWidgetExtension/WidgetComponents/MiniSparkline.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetPalette.h"

namespace quorvane {
namespace {

std::vector<MiniSparkline::Point> points(std::vector<double> values, double width, double height) {
    return MiniSparkline{.values = std::move(values), .tintHex = "#DF7A2E"}.normalizedPoints({width, height});
}

TEST(MiniSparklineTest, fewerThanTwoValuesAreThePointInTheMiddle) {
    EXPECT_EQ(points({}, 80, 40), (std::vector<MiniSparkline::Point>{{40, 20}}));
    EXPECT_EQ(points({7}, 80, 40), (std::vector<MiniSparkline::Point>{{40, 20}}));
}

TEST(MiniSparklineTest, zerosLieOnTheBaseline) {
    EXPECT_EQ(points({0, 0}, 80, 100), (std::vector<MiniSparkline::Point>{{0, 93}, {80, 93}}));
}

TEST(MiniSparklineTest, capsTheMarginsOfAHighFrame) {
    // Top 12, bottom 7: the plot is 81 high.
    const std::vector<MiniSparkline::Point> line = points({0, 5, 10}, 100, 100);
    EXPECT_EQ(line, (std::vector<MiniSparkline::Point>{{0, 93}, {50, 12 + 81 * 0.5}, {100, 12}}));
}

TEST(MiniSparklineTest, takesPartsOfALowFrame) {
    // Top 5.6, bottom 3.2: the plot is 11.2 high.
    const std::vector<MiniSparkline::Point> line = points({0, 10}, 100, 20);
    EXPECT_NEAR(line[0].y, 16.8, 1e-12);
    EXPECT_NEAR(line[1].y, 5.6, 1e-12);
}

TEST(MiniSparklineTest, keepsAPlotOfOnePointInAFrameWithoutHeight) {
    const std::vector<MiniSparkline::Point> line = points({0, 10}, 100, 0);
    EXPECT_EQ(line[0].y, 1);
    EXPECT_EQ(line[1].y, 0);
}

TEST(MiniSparklineTest, steadySpendingLiesAtTheTop) {
    for (const MiniSparkline::Point& point : points({4, 4, 4}, 100, 100))
        EXPECT_EQ(point.y, 12);
}

TEST(MiniSparklineTest, aPeakBelowACentDoesNotFillTheHeight) {
    EXPECT_EQ(points({0, 0.005}, 100, 100)[1].y, 12 + 81 * 0.5);
}

TEST(MiniSparklineTest, isDrawnInALegibleColour) {
    const MiniSparkline line{.values = {}, .tintHex = "#111111"};
    EXPECT_EQ(line.color(WidgetColorScheme::Dark), WidgetPalette::viz("#111111", WidgetColorScheme::Dark));
    EXPECT_EQ(MiniSparkline::strokeWidth, 2.6);
    EXPECT_EQ(MiniSparkline::fillOpacityTop, 0.16);
    EXPECT_EQ(MiniSparkline::fillOpacityBottom, 0.02);
}

}  // namespace
}  // namespace quorvane
