#include <algorithm>
#include <limits>
#include <map>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "QuorvaneCore/model/Deduplicator.h"

namespace quorvane {
namespace {

constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();

UsageEvent event(const TokenUsage& usage, std::string model = "model") {
    return {.messageId = "m", .requestId = "r", .model = std::move(model), .usage = usage};
}

/// The one event that is kept of `events`, all of one key.
UsageEvent kept(const std::vector<UsageEvent>& events) {
    const std::vector<UsageEvent> left = Deduplicator::dedupe(events);
    EXPECT_EQ(left.size(), 1U);
    return left.empty() ? UsageEvent{} : left.front();
}

TEST(Deduplicator, emptyOneHasNoEvents) {
    EXPECT_TRUE(Deduplicator{}.events().empty());
    EXPECT_TRUE(Deduplicator::dedupe({}).empty());
}

TEST(Deduplicator, largerOutputWinsInEitherOrder) {
    const UsageEvent five = event({.input = 1, .output = 5});
    const UsageEvent three = event({.input = 1000, .output = 3});
    EXPECT_EQ(kept({five, three}).usage, five.usage);
    EXPECT_EQ(kept({three, five}).usage, five.usage);
}

TEST(Deduplicator, ofEqualOutputsTheLargerTotalWinsInEitherOrder) {
    const UsageEvent ten = event({.input = 5, .output = 5});
    for (const TokenUsage& usage :
         {TokenUsage{.input = 7, .output = 5}, TokenUsage{.output = 5, .cacheCreate5m = 7},
          TokenUsage{.output = 5, .cacheCreate1h = 7}, TokenUsage{.output = 5, .cacheRead = 7}}) {
        EXPECT_EQ(kept({ten, event(usage)}).usage, usage);
        EXPECT_EQ(kept({event(usage), ten}).usage, usage);
    }
}

TEST(Deduplicator, ofEqualTotalsTheFirstStays) {
    const UsageEvent first = event({.input = 3, .output = 5}, "first");
    const UsageEvent second = event({.output = 5, .cacheRead = 3}, "second");
    EXPECT_EQ(kept({first, second}).model, "first");
    EXPECT_EQ(kept({second, first}).model, "second");
}

TEST(Deduplicator, replacingEventBringsAllThatIsItsOwn) {
    UsageEvent poor = event({.output = 1}, "old");
    poor.project = "p";
    poor.timestamp = Date{100};
    UsageEvent rich = event({.output = 2}, "new");
    rich.timestamp = Date{50};
    rich.provider = ProviderID::Codex;
    const UsageEvent left = kept({poor, rich});
    EXPECT_EQ(left.model, "new");
    EXPECT_EQ(left.timestamp, Date{50});
    EXPECT_EQ(left.provider, ProviderID::Codex);
    EXPECT_FALSE(left.project);
}

TEST(Deduplicator, eventsThatDifferOnlyInTheProviderCollapse) {
    UsageEvent one = event({.output = 1});
    UsageEvent other = one;
    one.provider = ProviderID::Claude;
    other.provider = ProviderID::Grok;
    EXPECT_EQ(kept({one, other}).provider, ProviderID::Claude);
}

TEST(Deduplicator, otherMessageOrRequestIsAnotherEvent) {
    const UsageEvent first = event({.output = 1});
    UsageEvent otherMessage = first;
    otherMessage.messageId = "m2";
    UsageEvent otherRequest = first;
    otherRequest.requestId = "";
    EXPECT_EQ(Deduplicator::dedupe(std::vector{first, otherMessage, otherRequest}).size(), 3U);
}

TEST(Deduplicator, firstEventIsKeptEvenWithNegativeCounters) {
    EXPECT_EQ(kept({event({.output = -5})}).usage.output, -5);
    EXPECT_EQ(kept({event({.output = -5}), event({})}).usage.output, 0);
}

TEST(Deduplicator, keepsTheBestOfRandomEventsWhateverTheirOrder) {
    std::mt19937_64 random{11};
    std::vector<UsageEvent> events;
    std::map<std::pair<std::string, std::string>, TokenUsage> best;
    for (int count = 0; count < 500; ++count) {
        UsageEvent one = event({.input = static_cast<std::int64_t>(random() % 4),
                                .output = static_cast<std::int64_t>(random() % 3),
                                .cacheRead = static_cast<std::int64_t>(random() % 4)});
        one.messageId = "m" + std::to_string(random() % 10);
        one.requestId = "r" + std::to_string(random() % 5);
        const auto rank = [](const TokenUsage& usage) { return std::pair{usage.output, usage.total()}; };
        const auto [known, isNew] = best.try_emplace({one.messageId, one.requestId}, one.usage);
        if (!isNew && rank(one.usage) > rank(known->second)) known->second = one.usage;
        events.push_back(std::move(one));
    }
    for (int round = 0; round < 5; ++round) {
        Deduplicator steps;
        for (const UsageEvent& one : events)
            steps.add(one);
        const std::vector<UsageEvent> left = steps.events();
        ASSERT_EQ(left.size(), best.size());
        ASSERT_EQ(Deduplicator::dedupe(events).size(), best.size());
        for (const UsageEvent& one : left) {
            const TokenUsage& expected = best.at({one.messageId, one.requestId});
            EXPECT_EQ(one.usage.output, expected.output);
            EXPECT_EQ(one.usage.total(), expected.total());
        }
        std::shuffle(events.begin(), events.end(), random);
    }
}

TEST(Deduplicator, filteringTwiceChangesNothing) {
    const std::vector<UsageEvent> once =
        Deduplicator::dedupe(std::vector{event({.output = 1}), event({.output = 3}), event({.output = 2})});
    EXPECT_EQ(Deduplicator::dedupe(once).size(), 1U);
    EXPECT_EQ(Deduplicator::dedupe(once).front().usage.output, 3);
}

TEST(Deduplicator, totalsAreNotFormedWhereOutputsDecide) {
    // Neither total fits into 64 bits.
    EXPECT_EQ(kept({event({.input = most, .output = 2}), event({.input = most, .output = 3})}).usage.output, 3);
}

TEST(DeduplicatorDeathTest, overflowOfATotalEndsTheProcess) {
    const std::vector<UsageEvent> offered{event({.output = 5}), event({.input = most, .output = 5})};
    EXPECT_DEATH(static_cast<void>(Deduplicator::dedupe(offered)), "overflow");
    const std::vector<UsageEvent> stored{offered[1], offered[0]};
    EXPECT_DEATH(static_cast<void>(Deduplicator::dedupe(stored)), "overflow");
}

}  // namespace
}  // namespace quorvane
