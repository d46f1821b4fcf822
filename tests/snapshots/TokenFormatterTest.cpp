#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "QuorvaneCore/snapshots/TokenFormatter.h"

namespace quorvane {
namespace {

struct CountCase {
    const char* name;
    std::int64_t value;
    const char* suffix;
    const char* text;
};
class TokenFormatterCount : public ::testing::TestWithParam<CountCase> {};

TEST_P(TokenFormatterCount, isCompact) {
    EXPECT_EQ(TokenFormatter::compact(GetParam().value, GetParam().suffix), GetParam().text);
}
INSTANTIATE_TEST_SUITE_P(
    ByValue, TokenFormatterCount,
    ::testing::Values(CountCase{"zero", 0, "", "0"}, CountCase{"belowAThousand", 999, " tok", "999 tok"},
                      CountCase{"thousand", 1000, "", "1.0K"}, CountCase{"thousands", 1234, " tok", "1.2K tok"},
                      CountCase{"justBelowAMillion", 999999, "", "1000.0K"},
                      CountCase{"million", 1000000, " tok", "1.0M tok"}, CountCase{"millions", 12345678, "", "12.3M"},
                      CountCase{"billions", 1234567890, "", "1234.6M"}, CountCase{"negative", -5, "", "-5"},
                      CountCase{"negativeThousands", -1500, "", "-1.5K"},
                      CountCase{"negativeMillions", -2500000, " tok", "-2.5M tok"},
                      CountCase{"greatest", std::numeric_limits<std::int64_t>::max(), "", "9223372036854.8M"},
                      CountCase{"least", std::numeric_limits<std::int64_t>::min(), "", "-9223372036854.8M"}),
    [](const auto& row) { return std::string{row.param.name}; });

struct FloatCase {
    const char* name;
    double value;
    const char* text;
};
class TokenFormatterFloat : public ::testing::TestWithParam<FloatCase> {};

TEST_P(TokenFormatterFloat, isCompact) {
    EXPECT_EQ(TokenFormatter::compact(GetParam().value, " tok"), std::string{GetParam().text} + " tok");
}
INSTANTIATE_TEST_SUITE_P(ByValue, TokenFormatterFloat,
                         ::testing::Values(FloatCase{"zero", 0.0, "0"}, FloatCase{"roundedDown", 12.4, "12"},
                                           FloatCase{"halfGoesAwayFromZero", 12.5, "13"},
                                           FloatCase{"negativeHalfGoesAwayFromZero", -12.5, "-13"},
                                           FloatCase{"nearlyNothingIsZero", -0.4, "0"},
                                           FloatCase{"roundedUpItStaysInItsForm", 999.6, "1000"},
                                           FloatCase{"thousands", 1234.5, "1.2K"},
                                           FloatCase{"justBelowAMillion", 999999.9, "1000.0K"},
                                           FloatCase{"millions", 1.25e8, "125.0M"}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(TokenFormatter, wholeFloatsAreWrittenLikeIntegers) {
    for (const std::int64_t value : {std::int64_t{0}, std::int64_t{7}, std::int64_t{-999}, std::int64_t{1000},
                                     std::int64_t{65536}, std::int64_t{123456789}}) {
        EXPECT_EQ(TokenFormatter::compact(static_cast<double>(value), ""), TokenFormatter::compact(value, ""));
    }
}

TEST(TokenFormatterDeathTest, aNumberThatIsNotFiniteEndsTheProcess) {
    EXPECT_DEATH(static_cast<void>(TokenFormatter::compact(std::numeric_limits<double>::infinity(), "")), "quorvane");
    EXPECT_DEATH(static_cast<void>(TokenFormatter::compact(std::numeric_limits<double>::quiet_NaN(), "")), "quorvane");
}

}  // namespace
}  // namespace quorvane
