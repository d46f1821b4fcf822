#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "QuorvaneCore/snapshots/SparklineScale.h"

namespace quorvane {
namespace {

struct SeriesCase {
    const char* name;
    std::vector<double> values;
    std::vector<double> fractions;
};
class SparklineScaleSeries : public ::testing::TestWithParam<SeriesCase> {};

TEST_P(SparklineScaleSeries, isFittedIntoTheHeight) {
    const std::vector<double> fractions = SparklineScale::fractions(GetParam().values);
    ASSERT_EQ(fractions.size(), GetParam().fractions.size());
    for (std::size_t index = 0; index < fractions.size(); ++index)
        EXPECT_DOUBLE_EQ(fractions[index], GetParam().fractions[index]) << index;
}
INSTANTIATE_TEST_SUITE_P(ByValues, SparklineScaleSeries,
                         ::testing::Values(SeriesCase{"empty", {}, {}}, SeriesCase{"single", {7}, {0}},
                                           SeriesCase{"allAlike", {10, 10, 10}, {0, 0, 0}},
                                           SeriesCase{"allZero", {0, 0}, {0, 0}},
                                           SeriesCase{"fromNothing", {0, 10}, {0, 1}},
                                           SeriesCase{"inOrder", {5, 10, 0, 2.5}, {0.5, 1, 0, 0.25}},
                                           SeriesCase{"smallChangeStaysLow", {100, 101}, {0, 1 / 15.15}},
                                           SeriesCase{"exactlyTheHeadroom", {85, 100}, {0, 1}},
                                           SeriesCase{"tinyValues", {0, 0.0000005}, {0, 0.5}},
                                           SeriesCase{"negative", {-10, 0, -5}, {0, 1, 0.5}}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(SparklineScale, everyFractionLiesInTheHeight) {
    const std::vector<double> values{3, 1, 4, 1, 5, 9, 2, 6, 5, 3, 5, 8.97};
    for (const double fraction : SparklineScale::fractions(values)) {
        EXPECT_GE(fraction, 0);
        EXPECT_LE(fraction, 1);
    }
    EXPECT_EQ(SparklineScale::headroomFraction, 0.15);
}

}  // namespace
}  // namespace quorvane
