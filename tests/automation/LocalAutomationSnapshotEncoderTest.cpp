#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "QuorvaneCore/snapshots/LocalAutomationSnapshotEncoder.h"
#include "QuorvaneCore/snapshots/SnapshotCodingError.h"
#include "tests/automation/SampleAutomationSnapshot.h"

namespace quorvane::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using Encoder = LocalAutomationSnapshotEncoder;

TEST(LocalAutomationSnapshotEncoder, whatWasWrittenReadsBackEqual) {
    const LocalAutomationSnapshot full = sampleAutomationSnapshot();
    EXPECT_EQ(Encoder::decode(Encoder::encode(full)), full);
    LocalAutomationSnapshot bare;
    bare.status = "no_sources";
    EXPECT_EQ(Encoder::decode(Encoder::encode(bare)), bare);
}

TEST(LocalAutomationSnapshotEncoder, writesSnakeCaseSortedAndPretty) {
    const std::string text = Encoder::encode(sampleAutomationSnapshot());
    EXPECT_THAT(text, HasSubstr("\n  \"generated_at\": \"2026-03-01T09:30:00Z\",\n"));
    EXPECT_THAT(text, HasSubstr("\n  \"schema_version\": 4,\n"));
    EXPECT_THAT(text, HasSubstr("\n  \"total_today\": 1.3,\n  \"total_window\": 41,\n"));
    EXPECT_THAT(text, Not(HasSubstr("null")));
    EXPECT_LT(text.find("\"cost_basis\""), text.find("\"currency_code\""));
}

/// Every object of the file, by the path to it, with the keys that may be missing.
struct RequiredCase {
    const char* name;
    std::vector<std::string> path;
    std::vector<std::string> optional;
};

JSONTree* follow(JSONTree& tree, const std::vector<std::string>& path) {
    JSONTree* at = &tree;
    for (const std::string& step : path) {
        if (auto* array = std::get_if<JSONTree::Array>(&at->content)) {
            at = &array->at(std::stoul(step));
        } else {
            at = &std::get<JSONTree::Object>(at->content).at(step);
        }
    }
    return at;
}

class RequiredKeys : public ::testing::TestWithParam<RequiredCase> {};
TEST_P(RequiredKeys, eachOneMissingFailsTheReadAndTheOthersDoNot) {
    const JSONTree whole = JSONParser::parseTree(Encoder::encode(sampleAutomationSnapshot())).value();
    JSONTree copy = whole;
    const auto keys = std::get<JSONTree::Object>(follow(copy, GetParam().path)->content);
    ASSERT_FALSE(keys.empty());
    for (const auto& [key, value] : keys) {
        JSONTree without = whole;
        std::get<JSONTree::Object>(follow(without, GetParam().path)->content).erase(key);
        const std::string text = JSONWriter::pretty(without);
        if (std::count(GetParam().optional.begin(), GetParam().optional.end(), key) > 0) {
            EXPECT_NO_THROW(static_cast<void>(Encoder::decode(text))) << key;
        } else {
            EXPECT_THROW(static_cast<void>(Encoder::decode(text)), SnapshotCodingError) << key;
        }
        JSONTree wrong = whole;
        std::get<JSONTree::Object>(follow(wrong, GetParam().path)->content)[key] = JSONTree::Array{JSONTree::Object{}};
        EXPECT_THROW(static_cast<void>(Encoder::decode(JSONWriter::pretty(wrong))), SnapshotCodingError) << key;
    }
}
INSTANTIATE_TEST_SUITE_P(
    ByObject, RequiredKeys,
    ::testing::Values(
        RequiredCase{"snapshot", {}, {"notice"}}, RequiredCase{"provider", {"providers", "0"}, {"aiu_window"}},
        RequiredCase{"headroom", {"providers", "0", "headroom"}, {"remaining_percent", "window_minutes", "resets_at"}},
        RequiredCase{"limits", {"rate_limits", "claude"}, {"plan_type", "primary_5h", "secondary_weekly"}},
        RequiredCase{"window", {"rate_limits", "claude", "primary_5h"}, {"resets_at"}}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(LocalAutomationSnapshotEncoder, unknownKeysAreIgnored) {
    JSONTree tree = JSONParser::parseTree(Encoder::encode(sampleAutomationSnapshot())).value();
    std::get<JSONTree::Object>(tree.content)["from_the_future"] = JSONTree{1};
    EXPECT_EQ(Encoder::decode(JSONWriter::pretty(tree)), sampleAutomationSnapshot());
}

TEST(LocalAutomationSnapshotEncoder, aNumberThatNoTextCanHoldIsRefused) {
    LocalAutomationSnapshot snapshot = sampleAutomationSnapshot();
    snapshot.totalToday = std::numeric_limits<double>::infinity();
    EXPECT_THROW(static_cast<void>(Encoder::encode(snapshot)), SnapshotCodingError);
}

TEST(LocalAutomationSnapshotEncoder, datesAreWholeSecondsInUTC) {
    EXPECT_EQ(Encoder::string(Date{1772357400.9}), "2026-03-01T09:30:00Z");
    EXPECT_EQ(Encoder::string(Date{-0.5}), "1969-12-31T23:59:59Z");
}

TEST(LocalAutomationSnapshot, onlyVersionTimeAndMetricAreNoContent) {
    const LocalAutomationSnapshot snapshot = sampleAutomationSnapshot();
    LocalAutomationSnapshot other = snapshot;
    other.generatedAt = Date{0};
    other.schemaVersion = 5;
    other.valueMetric = WidgetValueMetric::Tokens;
    EXPECT_TRUE(snapshot.hasSameContent(other));

    const auto differs = [&](auto change) {
        LocalAutomationSnapshot changed = snapshot;
        change(changed);
        return !snapshot.hasSameContent(changed);
    };
    EXPECT_TRUE(differs([](auto& changed) { changed.source = "b"; }));
    EXPECT_TRUE(differs([](auto& changed) { changed.windowDays = 7; }));
    EXPECT_TRUE(differs([](auto& changed) { changed.currencyCode = "EUR"; }));
    EXPECT_TRUE(differs([](auto& changed) { changed.totalToday += 0.001; }));
    EXPECT_TRUE(differs([](auto& changed) { changed.totalWindow += 0.001; }));
    EXPECT_TRUE(differs([](auto& changed) { changed.costBasis = LocalAutomationCostBasis::TokenEstimate; }));
    EXPECT_TRUE(differs([](auto& changed) { changed.series.pop_back(); }));
    EXPECT_TRUE(differs([](auto& changed) { changed.providers[0].eventsToday = 4; }));
    EXPECT_TRUE(differs([](auto& changed) { std::swap(changed.providers[0], changed.providers[1]); }));
    EXPECT_TRUE(differs([](auto& changed) { changed.rateLimits.clear(); }));
    EXPECT_TRUE(differs([](auto& changed) { changed.status = "no_sources"; }));
    EXPECT_TRUE(differs([](auto& changed) { changed.notice.reset(); }));
}

}  // namespace
}  // namespace quorvane::testing
