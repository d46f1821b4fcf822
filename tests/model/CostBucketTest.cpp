#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/model/CostBucket.h"

namespace quorvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();

UsageEvent event(const TokenUsage& usage, std::string model = "model") {
    return {.messageId = "m", .requestId = "r", .model = std::move(model), .usage = usage};
}

TEST(CostBucket, startsEmpty) {
    const CostBucket bucket;
    EXPECT_EQ(bucket.cost, 0);
    EXPECT_EQ(bucket.usage, TokenUsage{});
    EXPECT_EQ(bucket.eventCount, 0);
    EXPECT_THAT(bucket.unpricedModels, IsEmpty());
}

TEST(CostBucket, pricedEventsAddUp) {
    CostBucket bucket;
    bucket.add(event({1, 2, 3, 4, 5}), 0.5);
    bucket.add(event({10, 20, 30, 40, 50}), 0.25);
    EXPECT_EQ(bucket.cost, 0.75);
    EXPECT_EQ(bucket.usage, (TokenUsage{11, 22, 33, 44, 55}));
    EXPECT_EQ(bucket.eventCount, 2);
    EXPECT_THAT(bucket.unpricedModels, IsEmpty());
}

TEST(CostBucket, unpricedEventCountsAndIsNamedAndCostsNothing) {
    CostBucket bucket;
    bucket.add(event({.input = 1}, "known"), 0.5);
    bucket.add(event({.input = 2}, "b"), std::nullopt);
    bucket.add(event({.input = 3}, "a"), std::nullopt);
    bucket.add(event({.input = 4}, "b"), std::nullopt);
    EXPECT_EQ(bucket.cost, 0.5);
    EXPECT_EQ(bucket.usage.input, 10);
    EXPECT_EQ(bucket.eventCount, 4);
    EXPECT_THAT(bucket.unpricedModels, ElementsAre("a", "b"));
}

TEST(CostBucket, costOfZeroIsAPrice) {
    CostBucket bucket;
    bucket.add(event({.input = 1}), 0.0);
    bucket.addGrouped("free", {.input = 2}, 0.0, 3);
    EXPECT_THAT(bucket.unpricedModels, IsEmpty());
    EXPECT_EQ(bucket.cost, 0);
    EXPECT_EQ(bucket.eventCount, 4);
}

TEST(CostBucket, modelWithoutANameIsNamedToo) {
    CostBucket bucket;
    bucket.add(event({}, ""), std::nullopt);
    EXPECT_THAT(bucket.unpricedModels, ElementsAre(""));
}

TEST(CostBucket, groupEqualsItsEvents) {
    CostBucket single;
    CostBucket grouped;
    for (const std::optional<double> cost : {std::optional<double>{0.25}, std::optional<double>{}}) {
        const std::string model = cost ? "priced" : "unpriced";
        for (int count = 0; count < 4; ++count)
            single.add(event({1, 2, 3, 4, 5}, model), cost);
        grouped.addGrouped(model, {4, 8, 12, 16, 20}, cost ? std::optional{4 * *cost} : std::nullopt, 4);
    }
    EXPECT_EQ(single, grouped);
    EXPECT_EQ(grouped.eventCount, 8);
}

TEST(CostBucketDeathTest, overflowEndsTheProcess) {
    CostBucket bucket;
    bucket.addGrouped("m", {.cacheRead = most}, 1.0, most);
    EXPECT_DEATH(bucket.add(event({}), 1.0), "overflow");
    EXPECT_DEATH(bucket.addGrouped("m", {}, std::nullopt, 1), "overflow");
    EXPECT_DEATH(bucket.addGrouped("m", {.cacheRead = 1}, 1.0, 0), "overflow");
    bucket.addGrouped("m", {.input = 1}, 1.0, 0);
    EXPECT_EQ(bucket.eventCount, most);
}

}  // namespace
}  // namespace quorvane
