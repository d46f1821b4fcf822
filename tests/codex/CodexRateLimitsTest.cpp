#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/providers/CodexRateLimits.h"
#include "tests/codex/CodexTestSupport.h"

namespace quorvane::testing {
namespace {

constexpr double reset = testNow + day;

RateLimitWindow window(double usedPercent, std::int64_t minutes, std::optional<double> resetsAt = reset) {
    RateLimitWindow made{.usedPercent = usedPercent, .windowMinutes = minutes, .resetsAt = std::nullopt};
    if (resetsAt) made.resetsAt = Date{*resetsAt};
    return made;
}

std::optional<RateLimitSnapshot> snapshotOf(std::string_view json) {
    JSONParser parser;
    return CodexRateLimits::snapshot(parser.parse(json));
}

// ---- one report ----

TEST(CodexRateLimitReport, hasBothWindowsAndThePlan) {
    const auto snapshot = snapshotOf(R"({"primary":)" + windowJSON(37.5, 300, reset) + R"(,"secondary":)" +
                                     windowJSON(12, 10080, reset + 1) + R"(,"plan_type":"plus"})");
    ASSERT_TRUE(snapshot);
    EXPECT_EQ(snapshot->primary, window(37.5, 300));
    EXPECT_EQ(snapshot->secondary, window(12, 10080, reset + 1));
    EXPECT_EQ(snapshot->planType, "plus");
    EXPECT_EQ(snapshot->capturedAt, std::nullopt);
    EXPECT_TRUE(snapshot->modelWindows.empty());
}

struct WindowCase {
    const char* name;
    const char* json;
    std::optional<RateLimitWindow> expected;
};

class CodexRateLimitWindow : public ::testing::TestWithParam<WindowCase> {};

TEST_P(CodexRateLimitWindow, isReadAsItStands) {
    const std::string both =
        std::string{R"({"primary":)"} + GetParam().json + R"(,"secondary":{"used_percent":1,"window_minutes":7}})";
    const auto snapshot = snapshotOf(both);
    ASSERT_TRUE(snapshot);
    EXPECT_EQ(snapshot->primary, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Values, CodexRateLimitWindow,
    ::testing::Values(
        WindowCase{"whole", R"({"used_percent":37,"window_minutes":300,"resets_at":1789473600})", window(37, 300)},
        WindowCase{"fractions", R"({"used_percent":37.25,"window_minutes":300.9,"resets_at":1789473600.5})",
                   window(37.25, 300, reset + 0.5)},
        WindowCase{"aboveAHundred", R"({"used_percent":140})", window(140, 0, std::nullopt)},
        WindowCase{"belowZero", R"({"used_percent":-5})", window(-5, 0, std::nullopt)},
        WindowCase{"minutesAsText", R"({"used_percent":1,"window_minutes":"300"})", window(1, 0, std::nullopt)},
        WindowCase{"resetAsText", R"({"used_percent":1,"resets_at":"1789473600"})", window(1, 0, std::nullopt)},
        WindowCase{"resetIsNull", R"({"used_percent":1,"resets_at":null})", window(1, 0, std::nullopt)},
        WindowCase{"shareAsText", R"({"used_percent":"37"})", std::nullopt},
        WindowCase{"noShare", R"({"window_minutes":300})", std::nullopt},
        WindowCase{"anotherAgentsKey", R"({"used_percentage":37})", std::nullopt},
        WindowCase{"null", "null", std::nullopt}, WindowCase{"list", R"(["used_percent"])", std::nullopt}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(CodexRateLimitReport, withoutAnyWindowIsNone) {
    EXPECT_EQ(snapshotOf(R"({"primary":null,"secondary":null,"plan_type":"plus"})"), std::nullopt);
    EXPECT_EQ(snapshotOf("{}"), std::nullopt);
    EXPECT_EQ(snapshotOf("[]"), std::nullopt);
    EXPECT_EQ(snapshotOf("null"), std::nullopt);
}

TEST(CodexRateLimitReport, aPlanThatIsNoTextIsAbsent) {
    EXPECT_EQ(snapshotOf(R"({"primary":{"used_percent":1},"plan_type":5})")->planType, std::nullopt);
}

// ---- one line ----

struct ReportCase {
    const char* name;
    std::string line;
    bool isReport;
};

class CodexRateLimitLine : public ::testing::TestWithParam<ReportCase> {};

TEST_P(CodexRateLimitLine, reportsOrNot) {
    const auto record = CodexRateLimits::rateLimitSnapshot(GetParam().line);
    ASSERT_EQ(record.has_value(), GetParam().isReport);
    if (!record) return;
    EXPECT_EQ(record->date, Date{testNow});
    EXPECT_EQ(record->snapshot.primary, window(5, 300));
}

const std::string window5 = R"("primary":{"used_percent":5,"window_minutes":300,"resets_at":1789473600})";

std::string reportLine(std::string_view type, std::string_view event, std::string_view limits) {
    return R"({"timestamp":"2026-09-14T12:00:00Z","type":")" + std::string{type} + R"(","payload":{"type":")" +
           std::string{event} + R"(","info":null,"rate_limits":)" + std::string{limits} + "}}";
}

INSTANTIATE_TEST_SUITE_P(
    Lines, CodexRateLimitLine,
    ::testing::Values(
        ReportCase{"codex", reportLine("event_msg", "token_count", R"({"limit_id":"codex",)" + window5 + "}"), true},
        ReportCase{"noLimitName", reportLine("event_msg", "token_count", "{" + window5 + "}"), true},
        ReportCase{"limitNameIsNull", reportLine("event_msg", "token_count", R"({"limit_id":null,)" + window5 + "}"),
                   true},
        ReportCase{"limitNameIsANumber", reportLine("event_msg", "token_count", R"({"limit_id":5,)" + window5 + "}"),
                   true},
        ReportCase{"otherLimit", reportLine("event_msg", "token_count", R"({"limit_id":"premium",)" + window5 + "}"),
                   false},
        ReportCase{"emptyLimitName", reportLine("event_msg", "token_count", R"({"limit_id":"",)" + window5 + "}"),
                   false},
        ReportCase{"limitNameInUpperCase",
                   reportLine("event_msg", "token_count", R"({"limit_id":"Codex",)" + window5 + "}"), false},
        ReportCase{"firstOfTwoLimitNames",
                   reportLine("event_msg", "token_count", R"({"limit_id":"codex","limit_id":"x",)" + window5 + "}"),
                   true},
        ReportCase{"secondOfTwoLimitNames",
                   reportLine("event_msg", "token_count", R"({"limit_id":"x","limit_id":"codex",)" + window5 + "}"),
                   false},
        ReportCase{"escapedType", reportLine("event\\u005fmsg", "token\\u005fcount", "{" + window5 + "}"), true},
        ReportCase{"noWindow", reportLine("event_msg", "token_count", R"({"limit_id":"codex"})"), false},
        ReportCase{"null", reportLine("event_msg", "token_count", "null"), false},
        ReportCase{"list", reportLine("event_msg", "token_count", "[" + std::string{"1"} + "]"), false},
        ReportCase{"otherEvent", reportLine("event_msg", "agent_message", "{" + window5 + "}"), false},
        ReportCase{"otherType", reportLine("response_item", "token_count", "{" + window5 + "}"), false},
        ReportCase{"torn", reportLine("event_msg", "token_count", "{" + window5 + "}").substr(0, 150), false},
        ReportCase{"empty", "", false}, ReportCase{"noObject", "[1]", false}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(CodexRateLimitLine, withoutADateIsOfTheDistantPast) {
    const auto record = CodexRateLimits::rateLimitSnapshot(
        R"({"type":"event_msg","payload":{"type":"token_count","rate_limits":{)" + window5 + "}}}");
    ASSERT_TRUE(record);
    EXPECT_EQ(record->date, Date::distantPast());
}

// ---- the right places ----

struct PlaceCase {
    const char* name;
    std::optional<RateLimitWindow> primary;
    std::optional<RateLimitWindow> secondary;
    std::optional<RateLimitWindow> shortOne;
    std::optional<RateLimitWindow> longOne;
};

class CodexRateLimitPlaces : public ::testing::TestWithParam<PlaceCase> {};

TEST_P(CodexRateLimitPlaces, areByLength) {
    const RateLimitSnapshot raw{.primary = GetParam().primary,
                                .secondary = GetParam().secondary,
                                .planType = "plus",
                                .capturedAt = Date{7},
                                .modelWindows = {{.key = "k", .window = window(1, 300)}}};
    const RateLimitSnapshot expected{.primary = GetParam().shortOne,
                                     .secondary = GetParam().longOne,
                                     .planType = "plus",
                                     .capturedAt = Date{7},
                                     .modelWindows = {}};
    EXPECT_EQ(CodexRateLimits::normalizedIgnoringExpiry(raw), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Windows, CodexRateLimitPlaces,
    ::testing::Values(
        PlaceCase{"inPlace", window(1, 300), window(2, 10080), window(1, 300), window(2, 10080)},
        PlaceCase{"swapped", window(2, 10080), window(1, 300), window(1, 300), window(2, 10080)},
        PlaceCase{"weeklyAlone", window(2, 10080), std::nullopt, std::nullopt, window(2, 10080)},
        PlaceCase{"shortAloneAsSecondary", std::nullopt, window(1, 300), window(1, 300), std::nullopt},
        PlaceCase{"firstOfTwoShortOnes", window(1, 300), window(9, 300), window(1, 300), std::nullopt},
        PlaceCase{"firstOfTwoWeeklyOnes", window(1, 10080), window(9, 10080), std::nullopt, window(1, 10080)},
        PlaceCase{"anHour", window(1, 60), std::nullopt, std::nullopt, std::nullopt},
        PlaceCase{"aMinuteOff", window(1, 299), window(2, 10081), std::nullopt, std::nullopt},
        PlaceCase{"expired", window(1, 300, 5), window(2, 10080, 5), window(1, 300, 5), window(2, 10080, 5)},
        PlaceCase{"none", std::nullopt, std::nullopt, std::nullopt, std::nullopt}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(CodexRateLimitPlaces, aWindowOfAnHourIsReadAllTheSame) {
    const auto snapshot = snapshotOf(R"({"primary":{"used_percent":1,"window_minutes":60,"resets_at":1789473600}})");
    EXPECT_EQ(snapshot->primary, window(1, 60));
}

// ---- placeholders ----

CodexRateLimitRecord weekly(double usedPercent, double after, std::optional<double> resetAfter) {
    CodexRateLimitRecord record{.date = Date{testNow + after}, .snapshot = {}};
    record.snapshot.primary =
        window(usedPercent, 10080, resetAfter ? std::optional{reset + *resetAfter} : std::nullopt);
    return record;
}

CodexRateLimitRecord withShortWindow(CodexRateLimitRecord record) {
    record.snapshot.secondary = window(0, 300);
    return record;
}

struct PlaceholderCase {
    const char* name;
    CodexRateLimitRecord previous;
    CodexRateLimitRecord newest;
    bool isPlaceholder;
};

class CodexRateLimitPlaceholder : public ::testing::TestWithParam<PlaceholderCase> {};

TEST_P(CodexRateLimitPlaceholder, isToldByItsMovingReset) {
    EXPECT_EQ(CodexRateLimits::isRollingZeroPlaceholder(GetParam().newest, GetParam().previous),
              GetParam().isPlaceholder);
}

INSTANTIATE_TEST_SUITE_P(
    Pairs, CodexRateLimitPlaceholder,
    ::testing::Values(PlaceholderCase{"movesAlong", weekly(0, 0, 0), weekly(0, 60, 60), true},
                      PlaceholderCase{"aSecondOff", weekly(0, 0, 0), weekly(0, 60, 61), true},
                      PlaceholderCase{"twoSecondsOff", weekly(0, 0, 0), weekly(0, 60, 62), true},
                      PlaceholderCase{"twoSecondsOffTheOtherWay", weekly(0, 0, 0), weekly(0, 60, 58), true},
                      PlaceholderCase{"threeSecondsOff", weekly(0, 0, 0), weekly(0, 60, 63), false},
                      PlaceholderCase{"threeSecondsOffTheOtherWay", weekly(0, 0, 0), weekly(0, 60, 57), false},
                      PlaceholderCase{"standsStill", weekly(0, 0, 0), weekly(0, 60, 0), false},
                      PlaceholderCase{"sameDate", weekly(0, 0, 0), weekly(0, 0, 0), false},
                      PlaceholderCase{"olderThanTheOneBefore", weekly(0, 0, 0), weekly(0, -60, -60), false},
                      PlaceholderCase{"aSecondLater", weekly(0, 0, 0), weekly(0, 1, 0), true},
                      PlaceholderCase{"someUse", weekly(0, 0, 0), weekly(0.1, 60, 60), false},
                      PlaceholderCase{"someUseBefore", weekly(1, 0, 0), weekly(0, 60, 60), false},
                      PlaceholderCase{"noReset", weekly(0, 0, 0), weekly(0, 60, std::nullopt), false},
                      PlaceholderCase{"noResetBefore", weekly(0, 0, std::nullopt), weekly(0, 60, 60), false},
                      PlaceholderCase{"withAShortWindow", weekly(0, 0, 0), withShortWindow(weekly(0, 60, 60)), false},
                      PlaceholderCase{"withAShortWindowBefore", withShortWindow(weekly(0, 0, 0)), weekly(0, 60, 60),
                                      false}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(CodexRateLimitPlaceholder, needsAReportBeforeIt) {
    EXPECT_FALSE(CodexRateLimits::isRollingZeroPlaceholder(weekly(0, 60, 60), std::nullopt));
}

TEST(CodexRateLimitPlaceholder, windowsOfOtherLengthsDoNotCount) {
    CodexRateLimitRecord previous = weekly(0, 0, 0);
    CodexRateLimitRecord newest = weekly(0, 60, 60);
    newest.snapshot.secondary = window(50, 60);
    EXPECT_TRUE(CodexRateLimits::isRollingZeroPlaceholder(newest, previous));
}

}  // namespace
}  // namespace quorvane::testing
