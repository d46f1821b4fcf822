#include <vector>

#include <gtest/gtest.h>

#include "QuorvaneHost/text/Cells.h"
#include "QuorvaneHost/text/Sparkline.h"

namespace quorvane::host {
namespace {

std::string drawn(const std::vector<double>& values, std::size_t width) {
    return sparkline(values, width);
}

TEST(Sparkline, drawsOneBlockAValueUpToTheLargest) {
    EXPECT_EQ(drawn({0, 1, 4, 8}, 10), "·▁▄█");
    EXPECT_EQ(drawn({0.001, 100}, 10), "▁█");
}

TEST(Sparkline, nothingSpentIsAllDots) {
    EXPECT_EQ(drawn({0, 0, 0}, 10), "···");
    EXPECT_EQ(drawn({}, 10), "");
    EXPECT_EQ(drawn({1}, 0), "");
}

TEST(Sparkline, moreValuesThanCellsAreAddedUpFromTheRight) {
    EXPECT_EQ(drawn({8, 0, 0, 4, 4}, 3), "█·█");
    for (std::size_t count = 1; count < 200; ++count) {
        EXPECT_LE(cellWidth(drawn(std::vector<double>(count, 1.0), 30)), 30U) << count;
    }
}

}  // namespace
}  // namespace quorvane::host
