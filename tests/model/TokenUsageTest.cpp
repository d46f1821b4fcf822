#include <array>
#include <csignal>
#include <cstdio>
#include <limits>

#include <gtest/gtest.h>

#include "QuorvaneCore/model/TokenUsage.h"

namespace quorvane {
namespace {

constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();

constexpr std::array counters{&TokenUsage::input, &TokenUsage::output, &TokenUsage::cacheCreate5m,
                              &TokenUsage::cacheCreate1h, &TokenUsage::cacheRead};

TokenUsage withOne(std::int64_t TokenUsage::*counter, std::int64_t value) {
    TokenUsage usage;
    usage.*counter = value;
    return usage;
}

TEST(TokenUsage, startsAtZero) {
    EXPECT_EQ(TokenUsage{}, (TokenUsage{0, 0, 0, 0, 0}));
    EXPECT_EQ(TokenUsage{}.total(), 0);
}

TEST(TokenUsage, totalIsTheSumOfAllFiveCounters) {
    EXPECT_EQ((TokenUsage{1, 20, 300, 4000, 50000}).total(), 54321);
    for (const auto counter : counters)
        EXPECT_EQ(withOne(counter, 7).total(), 7);
    EXPECT_EQ((TokenUsage{most - 4, 1, 1, 1, 1}).total(), most);
}

TEST(TokenUsage, sumIsMadeFieldByField) {
    const TokenUsage left{1, 2, 3, 4, 5};
    const TokenUsage right{10, 20, 30, 40, 50};
    const TokenUsage expected{11, 22, 33, 44, 55};
    EXPECT_EQ(left + right, expected);
    TokenUsage sum = left;
    sum += right;
    EXPECT_EQ(sum, expected);
    sum += sum;
    EXPECT_EQ(sum, (TokenUsage{22, 44, 66, 88, 110}));
    EXPECT_EQ(left + TokenUsage{}, left);
}

TEST(TokenUsage, equalityIsFieldByField) {
    for (const auto counter : counters)
        EXPECT_NE(withOne(counter, 1), TokenUsage{});
    EXPECT_NE((TokenUsage{1, 0, 0, 0, 0}), (TokenUsage{0, 1, 0, 0, 0}));
}

TEST(TokenUsageDeathTest, overflowOfAnyCounterOfASumEndsTheProcess) {
    for (const auto counter : counters) {
        const TokenUsage large = withOne(counter, most);
        const TokenUsage small = withOne(counter, least);
        EXPECT_DEATH(static_cast<void>(large + withOne(counter, 1)), "overflow");
        EXPECT_DEATH(static_cast<void>(small + withOne(counter, -1)), "overflow");
        TokenUsage sum = large;
        EXPECT_DEATH(sum += withOne(counter, 1), "overflow");
    }
}

TEST(TokenUsageDeathTest, overflowOfATotalEndsTheProcess) {
    for (std::size_t index = 1; index < counters.size(); ++index) {
        TokenUsage usage = withOne(counters[0], most);
        usage.*counters[index] = 1;
        EXPECT_DEATH(static_cast<void>(usage.total()), "overflow");
    }
    // Added in order, without looking ahead to what would bring the sum back.
    EXPECT_DEATH(static_cast<void>((TokenUsage{most, 1, -1, 0, 0}).total()), "overflow");
}

TokenUsage target;

/// Tells what is in `target` when the process ends.
void reportTarget(int) {
    std::fprintf(stderr, "target %lld %lld %lld %lld %lld\n", static_cast<long long>(target.input),
                 static_cast<long long>(target.output), static_cast<long long>(target.cacheCreate5m),
                 static_cast<long long>(target.cacheCreate1h), static_cast<long long>(target.cacheRead));
}

TEST(TokenUsageDeathTest, overflowLeavesTheTargetUntouched) {
    const auto overflowInTheLastCounter = [] {
        std::signal(SIGABRT, reportTarget);
        target = TokenUsage{1, 2, 3, 4, most};
        target += TokenUsage{10, 20, 30, 40, 50};
    };
    EXPECT_DEATH(overflowInTheLastCounter(), "target 1 2 3 4 9223372036854775807");
}

}  // namespace
}  // namespace quorvane
