#include <unordered_set>

#include <gtest/gtest.h>

#include "QuorvaneCore/model/DedupKey.h"
#include "QuorvaneCore/model/UsageEvent.h"
#include "QuorvaneCore/model/UsageRollup.h"

namespace quorvane {
namespace {

TEST(UsageEvent, idIsMessageColonRequest) {
    UsageEvent event{.messageId = "msg_1", .requestId = "req_2"};
    EXPECT_EQ(event.id(), "msg_1:req_2");
    event.requestId = "";
    EXPECT_EQ(event.id(), "msg_1:");
}

TEST(DedupKey, isTakenFromMessageAndRequestAlone) {
    const UsageEvent event{.messageId = "m", .requestId = "r", .provider = ProviderID::Claude, .model = "one"};
    UsageEvent other = event;
    other.provider = ProviderID::Codex;
    other.model = "two";
    other.usage.output = 7;
    other.project = "p";
    EXPECT_EQ(DedupKey::of(event), (DedupKey{"m", "r"}));
    EXPECT_EQ(DedupKey::of(event), DedupKey::of(other));
    EXPECT_EQ(std::hash<DedupKey>{}(DedupKey::of(event)), std::hash<DedupKey>{}(DedupKey::of(other)));
}

TEST(DedupKey, partsAreNotJoined) {
    EXPECT_NE((DedupKey{"a", "b"}), (DedupKey{"b", "a"}));
    EXPECT_NE((DedupKey{"ab", ""}), (DedupKey{"a", "b"}));
    EXPECT_NE((DedupKey{"a:b", "c"}), (DedupKey{"a", "b:c"}));
    const std::unordered_set<DedupKey> keys{{"ab", ""}, {"a", "b"}, {"", "ab"}, {"b", "a"}, {"a", "b"}};
    EXPECT_EQ(keys.size(), 4U);
}

TEST(UsageRollup, startsEmpty) {
    const UsageRollup rollup;
    EXPECT_EQ(rollup.today, CostBucket{});
    EXPECT_EQ(rollup.last7d, CostBucket{});
    EXPECT_TRUE(rollup.byModel7d.empty());
    EXPECT_EQ(rollup.windowDays, 0);
}

}  // namespace
}  // namespace quorvane
