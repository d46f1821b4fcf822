#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/CheckedArithmetic.h"

namespace quorvane {
namespace {

constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
constexpr double twoToThe63 = 9223372036854775808.0;

TEST(CheckedArithmetic, resultsThatFitAreExact) {
    EXPECT_EQ(checkedAdd(most - 1, 1), most);
    EXPECT_EQ(checkedAdd(least, most), -1);
    EXPECT_EQ(checkedSubtract(least + 1, 1), least);
    EXPECT_EQ(checkedSubtract(-1, least), most);
    EXPECT_EQ(checkedMultiply(most, -1), least + 1);
    EXPECT_EQ(checkedMultiply(least, 1), least);
    EXPECT_EQ(checkedMultiply(std::int64_t{1} << 31, std::int64_t{1} << 31), std::int64_t{1} << 62);
}

TEST(CheckedArithmetic, floatsAreTruncatedTowardZero) {
    EXPECT_EQ(checkedInt64(3.9), 3);
    EXPECT_EQ(checkedInt64(-3.9), -3);
    EXPECT_EQ(checkedInt64(-0.5), 0);
    EXPECT_EQ(checkedInt64(std::nextafter(twoToThe63, 0.0)), 9223372036854774784);
    EXPECT_EQ(checkedInt64(std::nextafter(-twoToThe63, 0.0)), -9223372036854774784);
    EXPECT_EQ(checkedInt64(std::numeric_limits<double>::denorm_min()), 0);
}

TEST(CheckedArithmetic, unsignedIntegersUpToTheLargestSignedOneAreConverted) {
    EXPECT_EQ(checkedInt64(std::uint64_t{0}), 0);
    EXPECT_EQ(checkedInt64(static_cast<std::uint64_t>(most)), most);
}

TEST(CheckedArithmeticDeathTest, overflowOfAnOperationEndsTheProcessWithOneLine) {
    const char* addition = "^quorvane: 64 bits overflowed in an integer addition\n$";
    EXPECT_DEATH(static_cast<void>(checkedAdd(most, 1)), addition);
    EXPECT_DEATH(static_cast<void>(checkedAdd(least, -1)), addition);
    const char* subtraction = "^quorvane: 64 bits overflowed in an integer subtraction\n$";
    EXPECT_DEATH(static_cast<void>(checkedSubtract(least, 1)), subtraction);
    EXPECT_DEATH(static_cast<void>(checkedSubtract(0, least)), subtraction);
    const char* multiplication = "^quorvane: 64 bits overflowed in an integer multiplication\n$";
    EXPECT_DEATH(static_cast<void>(checkedMultiply(least, -1)), multiplication);
    EXPECT_DEATH(static_cast<void>(checkedMultiply(most / 2 + 1, 2)), multiplication);
}

TEST(CheckedArithmeticDeathTest, floatBeyondTheIntegersEndsTheProcess) {
    const char* conversion = "^quorvane: 64 bits overflowed in an integer conversion\n$";
    EXPECT_DEATH(static_cast<void>(checkedInt64(twoToThe63)), conversion);
    EXPECT_DEATH(static_cast<void>(checkedInt64(-twoToThe63)), conversion);
    EXPECT_DEATH(static_cast<void>(checkedInt64(1e300)), conversion);
    EXPECT_DEATH(static_cast<void>(checkedInt64(std::numeric_limits<double>::infinity())), conversion);
    EXPECT_DEATH(static_cast<void>(checkedInt64(-std::numeric_limits<double>::infinity())), conversion);
    EXPECT_DEATH(static_cast<void>(checkedInt64(std::numeric_limits<double>::quiet_NaN())), conversion);
}

TEST(CheckedArithmeticDeathTest, unsignedIntegerBeyondTheSignedOnesEndsTheProcess) {
    const std::uint64_t justTooLarge = std::uint64_t{1} << 63;
    EXPECT_DEATH(static_cast<void>(checkedInt64(justTooLarge)), "integer conversion");
    EXPECT_EXIT(static_cast<void>(checkedInt64(std::numeric_limits<std::uint64_t>::max())),
                ::testing::KilledBySignal(SIGABRT), "integer conversion");
}

}  // namespace
}  // namespace quorvane
