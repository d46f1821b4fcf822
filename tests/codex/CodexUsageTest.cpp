#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/codex/CodexTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

std::string turn(std::string_view model, std::string_view folder = "/home/ana/shop") {
    return line("turn_context", R"({"cwd":")" + std::string{folder} + R"(","model":")" + std::string{model} + "\"}");
}

std::string meta(std::string_view model, std::string_view folder = "/home/ana/shop") {
    return line("session_meta", R"({"cwd":")" + std::string{folder} + R"(","model":")" + std::string{model} + "\"}");
}

std::string countsOfOutput(std::initializer_list<std::int64_t> outputs) {
    std::string lines;
    for (const std::int64_t output : outputs)
        lines += tokenCount({.output = output});
    return lines;
}

// ---- running totals ----

struct TotalsCase {
    const char* name;
    std::vector<Totals> totals;
    std::vector<std::string> expected;  ///< "number input/cached/output"
};

class CodexTotalsBecomeCalls : public ::testing::TestWithParam<TotalsCase> {};

TEST_P(CodexTotalsBecomeCalls, inOrder) {
    const RolloutHome home;
    std::string lines;
    for (const Totals& totals : GetParam().totals)
        lines += tokenCount(totals);
    EXPECT_EQ(told(home.parse(lines)), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Totals, CodexTotalsBecomeCalls,
    ::testing::Values(
        TotalsCase{"aRepeatedTotalIsNoCall", {{100, 0, 0}, {100, 0, 0}, {100, 0, 0}}, {"0 100/0/0"}},
        TotalsCase{"aRiseIsACall", {{100, 40, 10}, {150, 90, 20}}, {"0 60/40/10", "1 0/50/10"}},
        TotalsCase{"zeroIsNoCall", {{0, 0, 0}}, {}},
        TotalsCase{"cachedAboveInputIsNoNegativeInput", {{10, 30, 5}}, {"0 0/30/5"}},
        // The total of output falls by 10: 5 from the newest call, which is gone with that, and 5 from the one before.
        TotalsCase{"aFallIsTakenFromTheNewestCalls", {{0, 0, 45}, {0, 0, 50}, {0, 0, 40}}, {"0 0/0/40"}},
        TotalsCase{"aNumberIsNotUsedAgain", {{0, 0, 45}, {0, 0, 50}, {0, 0, 40}, {0, 0, 60}}, {"0 0/0/40", "2 0/0/20"}},
        TotalsCase{"aCallWithAnotherBucketLeftStays", {{0, 0, 45}, {7, 0, 50}, {7, 0, 40}}, {"0 0/0/40", "1 7/0/0"}},
        TotalsCase{"aCallGoesWhenItsLastBucketDoes", {{0, 0, 45}, {7, 0, 50}, {7, 0, 40}, {0, 0, 40}}, {"0 0/0/40"}},
        TotalsCase{
            "onlyThatBucketIsTakenFrom", {{100, 50, 10}, {120, 60, 30}, {120, 60, 15}}, {"0 50/50/10", "1 10/10/5"}},
        TotalsCase{"callsWithoutTheBucketArePassedOver",
                   {{0, 0, 50}, {20, 0, 50}, {30, 0, 50}, {30, 0, 40}},
                   {"0 0/0/40", "1 20/0/0", "2 10/0/0"}},
        TotalsCase{"inputIsTakenBackWhenItTurnsOutCached", {{100, 0, 10}, {100, 60, 10}}, {"0 40/0/10", "1 0/60/0"}},
        TotalsCase{"cachedIsTakenBackWhenItTurnsOutUncached", {{100, 60, 10}, {100, 0, 10}}, {"0 40/0/10", "1 60/0/0"}},
        TotalsCase{"belowHalfIsANewSeries", {{600, 300, 100}, {333, 100, 66}}, {"0 300/300/100", "1 233/100/66"}},
        TotalsCase{"justBelowHalfIsANewSeries", {{1000, 0, 0}, {499, 0, 0}}, {"0 1000/0/0", "1 499/0/0"}},
        TotalsCase{"exactlyHalfOfOneBucketIsACorrection", {{1000, 0, 0}, {500, 0, 0}}, {"0 500/0/0"}},
        TotalsCase{"exactlyHalfIsACorrection", {{600, 300, 100}, {300, 150, 50}}, {"0 150/150/50"}},
        TotalsCase{"theLastTotalCountsAndNotTheLargest",
                   {{1000, 0, 0}, {600, 0, 0}, {400, 0, 0}, {500, 0, 0}},
                   {"0 400/0/0", "1 100/0/0"}},
        TotalsCase{"aCorrectionAfterARestartLeavesTheOldSeries",
                   {{0, 0, 1000}, {0, 0, 100}, {0, 0, 120}, {0, 0, 70}},
                   {"0 0/0/1000", "1 0/0/70"}},
        TotalsCase{"zeroAfterSomethingIsARestart", {{10, 0, 0}, {0, 0, 0}, {10, 0, 0}}, {"0 10/0/0", "1 10/0/0"}},
        // No agent counts below zero; if one does, what is taken back reaches beyond the restart.
        TotalsCase{"takingBackGoesOnAcrossARestart",
                   {{100, 0, 900}, {0, 0, 100}, {200, 0, -50}},
                   {"0 100/0/850", "2 200/0/0"}},
        TotalsCase{"whatIsTakenBackBeyondAllCallsIsDropped",
                   {{100, 0, 10}, {200, 0, -50}, {200, 0, 20}},
                   {"0 100/0/0", "1 100/0/0", "2 0/0/70"}},
        TotalsCase{"negativeCachedAddsToTheInput", {{10, -5, 0}}, {"0 15/0/0"}}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(CodexUsage, aCallHasAllItsFields) {
    const RolloutHome home;
    const std::string file =
        home.write("2026/09/14/rollout-2026-09-14T08-20-59-0199aaaa-bbbb-7ccc-8ddd-eeeeffff0000.jsonl",
                   turn("gpt-5.6-sol") + tokenCount({61230, 50176, 1811}, testNow - 90.5));
    const auto events = CodexProvider::parseUsage(file, {});
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_EQ(events[0].id(), "0199aaaa-bbbb-7ccc-8ddd-eeeeffff0000:0");
    EXPECT_EQ(events[0].provider, ProviderID::Codex);
    EXPECT_EQ(events[0].model, "gpt-5.6-sol");
    EXPECT_EQ(events[0].timestamp, Date{testNow - 90.5});
    EXPECT_EQ(events[0].usage, (TokenUsage{.input = 11054, .output = 1811, .cacheRead = 50176}));
    EXPECT_EQ(events[0].project, "shop");
}

TEST(CodexUsage, aReducedCallKeepsItsTimeModelAndProject) {
    const RolloutHome home;
    const auto events = home.parse(turn("first", "/a") + tokenCount({.output = 50}, testNow - 300) +
                                   turn("second", "/b") + tokenCount({.output = 40}, testNow - 200));
    EXPECT_THAT(told(events, true), ElementsAre("0 0/0/40 first a"));
    EXPECT_EQ(events[0].timestamp, Date{testNow - 300});
}

// ---- models ----

TEST(CodexUsage, aCallBeforeAnyModelHasNone) {
    const RolloutHome home;
    EXPECT_THAT(told(home.parse(tokenCount({.output = 1})), true), ElementsAre("0 0/0/1  (none)"));
}

TEST(CodexUsage, aModelThatArrivesLateFillsTheCallsBeforeIt) {
    const RolloutHome home;
    for (const std::string& naming : {turn("late"), meta("late")}) {
        const auto events =
            home.parse(countsOfOutput({1, 2}) + naming + countsOfOutput({3}) + turn("later") + countsOfOutput({4}));
        ASSERT_THAT(events, SizeIs(4));
        EXPECT_EQ(events[0].model, "late");
        EXPECT_EQ(events[1].model, "late");
        EXPECT_EQ(events[2].model, "late");
        EXPECT_EQ(events[3].model, "later");
    }
}

TEST(CodexUsage, aModelThatArrivesLateLeavesTheProjectsAlone) {
    const RolloutHome home;
    const auto events = home.parse(countsOfOutput({1}) + meta("", "/work/app") + countsOfOutput({2}) + turn("m", "/x"));
    EXPECT_THAT(told(events, true), ElementsAre("0 0/0/1 m (none)", "1 0/0/1 m app"));
}

TEST(CodexUsage, aTurnSwitchesTheModelFromThereOn) {
    const RolloutHome home;
    const auto events = home.parse(turn("one") + countsOfOutput({1}) + turn("two") + countsOfOutput({2}) + turn("one") +
                                   countsOfOutput({3}));
    EXPECT_THAT(told(events, true), ElementsAre("0 0/0/1 one shop", "1 0/0/1 two shop", "2 0/0/1 one shop"));
}

TEST(CodexUsage, theSessionsModelReplacesNoOther) {
    const RolloutHome home;
    EXPECT_EQ(home.parse(turn("turn") + meta("session") + countsOfOutput({1})).at(0).model, "turn");
    EXPECT_EQ(home.parse(meta("first") + meta("second") + countsOfOutput({1})).at(0).model, "first");
}

struct TurnModelCase {
    const char* name;
    const char* payload;
    const char* expected;  ///< the model before it is "before"
};

class CodexTurnModel : public ::testing::TestWithParam<TurnModelCase> {};

TEST_P(CodexTurnModel, isTakenFromItsPlaces) {
    const RolloutHome home;
    const auto events = home.parse(turn("before") + line("turn_context", GetParam().payload) + countsOfOutput({1}));
    EXPECT_EQ(events.at(0).model, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Payloads, CodexTurnModel,
    ::testing::Values(
        TurnModelCase{"model", R"({"model":"m","collaboration_mode":{"settings":{"model":"c"}}})", "m"},
        TurnModelCase{"emptyModel", R"({"model":"","collaboration_mode":{"settings":{"model":"c"}}})", "c"},
        TurnModelCase{"noModel", R"({"collaboration_mode":{"settings":{"model":"c"}}})", "c"},
        TurnModelCase{"modelIsANumber", R"({"model":5,"collaboration_mode":{"settings":{"model":"c"}}})", "c"},
        TurnModelCase{"bothEmpty", R"({"model":"","collaboration_mode":{"settings":{"model":""}}})", "before"},
        TurnModelCase{"modeIsAText", R"({"model":"","collaboration_mode":"settings"})", "before"},
        TurnModelCase{"settingsAreAList", R"({"collaboration_mode":{"settings":["model"]}})", "before"},
        TurnModelCase{"payloadIsAList", R"(["model"])", "before"}),
    [](const auto& row) { return std::string{row.param.name}; });

// ---- projects ----

TEST(CodexUsage, theProjectIsTheLastFolderOfThePath) {
    const RolloutHome home;
    const auto project = [&](std::string_view payload) {
        return home.parse(line("session_meta", payload) + countsOfOutput({1})).at(0).project;
    };
    EXPECT_EQ(project(R"({"cwd":"/work/app"})"), "app");
    EXPECT_EQ(project(R"({"cwd":"/work/app/"})"), "app");
    EXPECT_EQ(project(R"({"cwd":"/"})"), "/");
    EXPECT_EQ(project(R"({"cwd":7})"), std::nullopt);
    EXPECT_EQ(project(R"({"model":"m"})"), std::nullopt);
    EXPECT_EQ(project(R"("/work/app")"), std::nullopt);
}

TEST(CodexUsage, theLastFolderCounts) {
    const RolloutHome home;
    const auto events = home.parse(meta("m", "/a") + countsOfOutput({1}) + turn("m", "/b") + countsOfOutput({2}) +
                                   line("turn_context", R"({"model":"m","cwd":null})") + countsOfOutput({3}) +
                                   meta("m", "/c") + countsOfOutput({4}));
    EXPECT_THAT(told(events, true), ElementsAre("0 0/0/1 m a", "1 0/0/1 m b", "2 0/0/1 m b", "3 0/0/1 m c"));
}

// ---- lines ----

struct LineCase {
    const char* name;
    std::string text;
    std::vector<std::string> expected;
};

class CodexLineIsRead : public ::testing::TestWithParam<LineCase> {};

TEST_P(CodexLineIsRead, byItsTypes) {
    const RolloutHome home;
    EXPECT_EQ(told(home.parse(GetParam().text + "\n")), GetParam().expected);
}

TEST_P(CodexLineIsRead, andSoAreTheLinesBehindIt) {
    const RolloutHome home;
    TokenUsage sum;
    for (const UsageEvent& event : home.parse(GetParam().text + "\n" + tokenCount({30, 20, 10})))
        sum += event.usage;
    EXPECT_EQ(sum, (TokenUsage{.input = 10, .output = 10, .cacheRead = 20}));
}

const std::string counts = R"({"total_token_usage":{"input_tokens":3,"cached_input_tokens":2,"output_tokens":1}})";
const std::string countPayload = R"({"type":"token_count","info":)" + counts + "}";
const std::vector<std::string> taken{"0 1/2/1"};

INSTANTIATE_TEST_SUITE_P(
    Types, CodexLineIsRead,
    ::testing::Values(
        LineCase{"tokenCount", R"({"type":"event_msg","payload":)" + countPayload + "}", taken},
        LineCase{"blanks", R"({ "type" : "event_msg" , "payload" : )" + countPayload + " } ", taken},
        LineCase{"payloadFirst", R"({"payload":)" + countPayload + R"(,"type":"event_msg"})", taken},
        LineCase{"payloadTypeLast", R"({"type":"event_msg","payload":{"info":)" + counts + R"(,"type":"token_count"}})",
                 taken},
        LineCase{"typeBehindMuch",
                 R"({"payload":)" + countPayload + R"(,"x":")" + std::string(5000, 'x') + R"(","type":"event_msg"})",
                 taken},
        LineCase{"escapedTypeKey", R"({"typ\u0065":"event_msg","payload":)" + countPayload + "}", taken},
        LineCase{"escapedType", R"({"type":"event\u005fmsg","payload":)" + countPayload + "}", taken},
        LineCase{"escapedPayloadKey", R"({"type":"event_msg","p\u0061yload":)" + countPayload + "}", taken},
        LineCase{"escapedPayloadType",
                 R"({"type":"event_msg","payload":{"type":"token\u005fcount","info":)" + counts + "}}", taken},
        LineCase{"escapesInTextsBefore",
                 R"({"note":"\u001b[1m\"payload\":","type":"event_msg","payload":)" + countPayload + "}", taken},
        LineCase{"firstTypeCounts", R"({"type":"event_msg","type":"x","payload":)" + countPayload + "}", taken},
        LineCase{"secondTypeDoesNot", R"({"type":"x","type":"event_msg","payload":)" + countPayload + "}", {}},
        LineCase{"firstPayloadCounts",
                 R"({"payload":)" + countPayload + R"(,"type":"event_msg","payload":{"type":"x"}})", taken},
        LineCase{"escapedFirstPayloadCounts",
                 R"({"pa\u0079load":)" + countPayload + R"(,"type":"event_msg","payload":{"type":"x"}})", taken},
        LineCase{"secondPayloadDoesNot",
                 R"({"payload":{"type":"x"},"type":"event_msg","payload":)" + countPayload + "}",
                 {}},
        LineCase{"firstPayloadTypeCounts",
                 R"({"type":"event_msg","payload":{"type":"token_count","type":"x","info":)" + counts + "}}", taken},
        LineCase{"secondPayloadTypeDoesNot",
                 R"({"type":"event_msg","payload":{"type":"x","type":"token_count","info":)" + counts + "}}",
                 {}},
        LineCase{"firstCountCounts",
                 R"({"type":"event_msg","payload":{"type":"token_count","info":{"total_token_usage":)"
                 R"({"input_tokens":3,"cached_input_tokens":2,"output_tokens":1,"output_tokens":9}}}})",
                 taken},
        LineCase{"typeBehindAnEmptyPayload",
                 R"({"type":"event_msg","payload":{},"info":)" + counts + R"(,"type":"token_count"})",
                 {}},
        LineCase{"floatsAreCutOff",
                 R"({"type":"event_msg","payload":{"type":"token_count","info":{"total_token_usage":)"
                 R"({"input_tokens":3.9,"cached_input_tokens":2.0,"output_tokens":1e0}}}})",
                 taken},
        LineCase{"textsAreZero",
                 R"({"type":"event_msg","payload":{"type":"token_count","info":{"total_token_usage":)"
                 R"({"input_tokens":"3","output_tokens":1}}}})",
                 {"0 0/0/1"}},
        LineCase{"missingCountsAreZero",
                 R"({"type":"event_msg","payload":{"type":"token_count","info":{"total_token_usage":)"
                 R"({"cached_input_tokens":2}}}})",
                 {"0 0/2/0"}},
        LineCase{"longIntegerElsewhere",
                 R"({"id":123456789012345678901234567890,"type":"event_msg","payload":)" + countPayload + "}", taken},
        LineCase{"loneSurrogateElsewhere", R"({"type":"event_msg","payload":)" + countPayload + R"(,"x":"\ud83d"})",
                 taken},
        LineCase{"infoIsNull", R"({"type":"event_msg","payload":{"type":"token_count","info":null}})", {}},
        LineCase{"infoIsAList", R"({"type":"event_msg","payload":{"type":"token_count","info":[1]}})", {}},
        LineCase{"noTotals",
                 R"({"type":"event_msg","payload":{"type":"token_count","info":{"last_token_usage":)"
                 R"({"input_tokens":3,"output_tokens":1}}}})",
                 {}},
        LineCase{"totalsAreAList",
                 R"({"type":"event_msg","payload":{"type":"token_count","info":{"total_token_usage":[3,2,1]}}})",
                 {}},
        LineCase{"otherEvent", R"({"type":"event_msg","payload":{"type":"agent_message","info":)" + counts + "}}", {}},
        LineCase{"eventWithoutType", R"({"type":"event_msg","payload":{"info":)" + counts + "}}", {}},
        LineCase{"eventTypeIsANumber", R"({"type":"event_msg","payload":{"type":1,"info":)" + counts + "}}", {}},
        LineCase{"payloadIsAText", R"({"type":"event_msg","payload":"token_count"})", {}},
        LineCase{"payloadIsAList", R"({"type":"event_msg","payload":[)" + countPayload + "]}", {}},
        LineCase{"otherType", R"({"type":"response_item","payload":)" + countPayload + "}", {}},
        LineCase{"typeIsANumber", R"({"type":1,"payload":)" + countPayload + "}", {}},
        LineCase{"noType", R"({"payload":)" + countPayload + "}", {}},
        LineCase{"aLineInAText",
                 R"({"type":"response_item","payload":{"output":"\u001b[32m{\"type\":\"event_msg\",\"payload\":{}}"}})",
                 {}},
        LineCase{"list", R"(["type","event_msg"])", {}}, LineCase{"text", R"("event_msg")", {}},
        LineCase{"torn", R"({"type":"event_msg","payload":)" + countPayload, {}},
        LineCase{"trailingText", R"({"type":"event_msg","payload":)" + countPayload + "} x", {}},
        LineCase{"invalidBytes", "{\"x\":\"\xff\",\"type\":\"event_msg\",\"payload\":" + countPayload + "}", {}},
        LineCase{"empty", "", {}}, LineCase{"carriageReturn", "\r", {}}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(CodexUsage, theLastLineNeedsNoLineFeed) {
    const RolloutHome home;
    std::string lines = countsOfOutput({1, 2});
    lines.pop_back();
    EXPECT_THAT(told(home.parse(lines)), ElementsAre("0 0/0/1", "1 0/0/1"));
}

TEST(CodexUsage, aHalfWrittenLastLineIsPassedOver) {
    const RolloutHome home;
    const std::string lines = countsOfOutput({1, 2});
    EXPECT_THAT(told(home.parse(lines.substr(0, lines.size() - 2))), ElementsAre("0 0/0/1"));
}

TEST(CodexUsage, aDateThatCannotBeReadIsTheDistantPast) {
    const RolloutHome home;
    const auto date = [&](std::string_view timestamp) {
        return home
            .parse(R"({"timestamp":)" + std::string{timestamp} + R"(,"type":"event_msg","payload":)" + countPayload +
                   "}")
            .at(0)
            .timestamp;
    };
    EXPECT_EQ(date(R"("2026-09-14T12:00:00Z")"), Date{testNow});
    EXPECT_EQ(date(R"("2026-09-14T12:00:00.25Z")"), Date{testNow + 0.25});
    EXPECT_EQ(date(R"("2026-09-14T14:00:00+02:00")"), Date{testNow});
    EXPECT_EQ(date(R"("yesterday")"), Date::distantPast());
    EXPECT_EQ(date("1789387200"), Date::distantPast());
    EXPECT_EQ(home.parse(R"({"type":"event_msg","payload":)" + countPayload + "}").at(0).timestamp,
              Date::distantPast());
}

TEST(CodexUsage, aFileThatCannotBeReadHasNoCalls) {
    const RolloutHome home;
    home.home.makeFolder(".codex/sessions/rollout-folder.jsonl");
    EXPECT_THAT(CodexProvider::parseUsage(home.path("rollout-missing.jsonl"), {}), IsEmpty());
    EXPECT_THAT(CodexProvider::parseUsage(home.path("rollout-folder.jsonl"), {}), IsEmpty());
}

TEST(CodexUsage, longLinesThatDoNotMatterAreReadOver) {
    const RolloutHome home;
    std::string output;
    while (output.size() < 3'000'000)
        output += R"(\u001b[31m\"type\":\"token_count\"\u001b[0m\n)";
    const auto events =
        home.parse(countsOfOutput({1}) + line("response_item", R"({"type":"x","output":")" + output + "\"}") +
                   line("compacted", R"({"message":")" + output + "\"}") + countsOfOutput({2}));
    EXPECT_THAT(told(events), ElementsAre("0 0/0/1", "1 0/0/1"));
}

using CodexUsageDeathTest = ::testing::Test;

TEST(CodexUsageDeathTest, aTotalBeyond64BitsEndsTheProcess) {
    const RolloutHome home;
    const std::string lines = tokenCount({.input = INT64_MAX, .output = INT64_MAX}) + tokenCount({.output = 1});
    EXPECT_DEATH(static_cast<void>(home.parse(lines)), "overflowed");
}

}  // namespace
}  // namespace quorvane::testing
