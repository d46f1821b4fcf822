#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/providers/RateLimitTailCache.h"
#include "tests/codex/CodexTestSupport.h"

namespace quorvane::testing {
namespace {

RateLimitTailCache::Entry entryOf(std::int64_t size) {
    return {.size = size, .mtime = 1.5, .result = CodexRateLimitRecord{.date = Date{testNow}, .snapshot = {}}};
}

TEST(RateLimitTailCache, knowsNothingAtFirst) {
    const RateLimitTailCache cache;
    EXPECT_EQ(cache.entry("/a"), std::nullopt);
    EXPECT_EQ(cache.count(), 0);
}

TEST(RateLimitTailCache, givesBackWhatWasStoredLast) {
    RateLimitTailCache cache;
    cache.store("/a", entryOf(1));
    cache.store("/a", entryOf(2));
    EXPECT_EQ(cache.entry("/a"), entryOf(2));
    EXPECT_EQ(cache.entry("/b"), std::nullopt);
    EXPECT_EQ(cache.count(), 1);
}

TEST(RateLimitTailCache, keepsAnAbsentResult) {
    RateLimitTailCache cache;
    cache.store("/a", {.size = 1, .mtime = 2, .result = std::nullopt});
    ASSERT_TRUE(cache.entry("/a"));
    EXPECT_EQ(cache.entry("/a")->result, std::nullopt);
}

TEST(RateLimitTailCache, forgetsGoneFilesOnlyWhenItKnowsMoreThanThereAre) {
    RateLimitTailCache cache;
    cache.store("/a", entryOf(1));
    cache.store("/gone", entryOf(1));
    cache.prune({"/a", "/b"});
    EXPECT_EQ(cache.count(), 2);
    cache.store("/b", entryOf(1));
    cache.prune({"/a", "/b"});
    EXPECT_EQ(cache.count(), 2);
    EXPECT_EQ(cache.entry("/gone"), std::nullopt);
    EXPECT_TRUE(cache.entry("/a"));
    EXPECT_TRUE(cache.entry("/b"));
}

TEST(RateLimitTailCache, forgetsAllWithoutFiles) {
    RateLimitTailCache cache;
    cache.store("/a", entryOf(1));
    cache.prune({});
    EXPECT_EQ(cache.count(), 0);
}

TEST(RateLimitTailCache, isOneForTheProcess) {
    EXPECT_EQ(&RateLimitTailCache::shared(), &RateLimitTailCache::shared());
}

}  // namespace
}  // namespace quorvane::testing
