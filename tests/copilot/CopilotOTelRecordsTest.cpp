// What one record of telemetry tells by itself: its kind, its tokens, its time, its identity.

#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/copilot/CopilotTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr std::string_view tokens = R"("gen_ai.usage.output_tokens":7)";

std::string withTokens(std::string_view attributes) {
    return std::string{attributes} + (attributes.empty() ? "" : ",") + std::string{tokens};
}

struct KindCase {
    const char* name;
    std::string members;
    std::string attributes;
    std::optional<RecordKind> expected;
};
class CopilotRecordKind : public ::testing::TestWithParam<KindCase> {};

TEST_P(CopilotRecordKind, isToldByNameAndAttributes) {
    const KindCase& row = GetParam();
    const TelemetryHome home;
    const std::vector<Candidate> found = home.parse(record(row.members, withTokens(row.attributes)));
    ASSERT_EQ(found.size(), row.expected ? 1 : 0);
    if (row.expected) {
        EXPECT_EQ(found.front().kind, *row.expected);
    }
}

constexpr auto chat = RecordKind::ChatSpan;
constexpr auto inference = RecordKind::InferenceLog;
constexpr auto turn = RecordKind::AgentTurnLog;
constexpr auto agent = RecordKind::AgentSummarySpan;
const std::string chatOperation = R"("gen_ai.operation.name":"chat")";
const std::string agentOperation = R"("gen_ai.operation.name":"invoke_agent")";
const std::string inferenceEvent = R"("event.name":"gen_ai.client.inference.operation.details")";

INSTANTIATE_TEST_SUITE_P(
    ByShape, CopilotRecordKind,
    ::testing::Values(
        KindCase{"spanTypeWithChatOperation", R"("type":"span")", chatOperation, chat},
        KindCase{"spanTypeWithChatName", R"("type":"span","name":"chat gpt-5")", "", chat},
        KindCase{"chatNameWithoutModelIsNone", R"("type":"span","name":"chat")", "", std::nullopt},
        KindCase{"chatNameInCapitalsIsNone", R"("type":"span","name":"Chat gpt-5")", "", std::nullopt},
        KindCase{"spanTypeWithAgentOperation", R"("type":"span")", agentOperation, agent},
        KindCase{"spanTypeWithAgentName", R"("type":"span","name":"invoke_agent x")", "", agent},
        KindCase{"chatOperationBeatsAgentName", R"("type":"span","name":"invoke_agent x")", chatOperation, chat},
        KindCase{"chatNameBeatsAgentOperation", R"("type":"span","name":"chat x")", agentOperation, chat},
        KindCase{"toolSpanIsNone", R"("type":"span","name":"execute_tool ls")",
                 R"("gen_ai.operation.name":"execute_tool")", std::nullopt},
        KindCase{"spanIsNoLogWhateverItsEvent", R"("type":"span","body":"GenAI inference: x")", inferenceEvent,
                 std::nullopt},
        KindCase{"nameWithSpanId", R"("name":"chat x","spanId":"a")", "", chat},
        KindCase{"nameWithTraceId", R"("name":"chat x","traceId":"a")", "", chat},
        KindCase{"nameWithStartTime", R"("name":"chat x","startTime":null)", "", chat},
        KindCase{"nameWithEndTime", R"("name":"chat x","endTime":3)", "", chat},
        KindCase{"nameWithDuration", R"("name":"chat x","duration":[0,1])", "", chat},
        KindCase{"nameWithKind", R"("name":"chat x","kind":2)", "", chat},
        KindCase{"nameAloneIsNoSpan", R"("name":"chat x","status":{})", "", std::nullopt},
        KindCase{"emptyNameWithSpanIdIsNoSpan", R"("name":"","spanId":"a")", chatOperation, std::nullopt},
        KindCase{"spanIdWithoutNameIsNoSpan", R"("spanId":"a","kind":2)", chatOperation, std::nullopt},
        KindCase{"otherTypeWithNameAndKind", R"("type":"log","name":"chat x","kind":2)", "", chat},
        KindCase{"inferenceEvent", R"("traceId":"a")", inferenceEvent, inference},
        KindCase{"inferenceBody", R"("body":"GenAI inference: gpt-5")", "", inference},
        KindCase{"inferenceUnderlinedBody", R"("_body":"GenAI inference: gpt-5")", "", inference},
        KindCase{"underlinedBodyBehindABodyThatIsNoText", R"("body":{"a":1},"_body":"GenAI inference:")", "",
                 inference},
        KindCase{"bodyHidesTheUnderlinedOne", R"("body":"x","_body":"GenAI inference:")", "", std::nullopt},
        KindCase{"emptyBodyHidesTheUnderlinedOne", R"("body":"","_body":"GenAI inference:")", "", std::nullopt},
        KindCase{"inferenceWithinTheBodyIsNone", R"("body":"a GenAI inference: x")", "", std::nullopt},
        KindCase{"turnEvent", "", R"("event.name":"copilot_chat.agent.turn")", turn},
        KindCase{"turnBody", R"("body":"copilot_chat.agent.turn: 3")", "", turn},
        KindCase{"inferenceEventBeatsTurnBody", R"("body":"copilot_chat.agent.turn")", inferenceEvent, inference},
        KindCase{"inferenceBodyBeatsTurnEvent", R"("body":"GenAI inference:")",
                 R"("event.name":"copilot_chat.agent.turn")", inference},
        KindCase{"otherEventIsNone", R"("body":"copilot_chat.session.start")",
                 R"("event.name":"copilot_chat.session.start")", std::nullopt},
        KindCase{"nothingAtAllIsNone", "", "", std::nullopt}),
    [](const auto& row) { return std::string{row.param.name}; });

struct TokenCase {
    const char* name;
    std::string attributes;
    std::optional<TokenUsage> expected;
};
class CopilotRecordTokens : public ::testing::TestWithParam<TokenCase> {};

TEST_P(CopilotRecordTokens, areTakenFromTheAttributes) {
    const TokenCase& row = GetParam();
    const TelemetryHome home;
    const std::vector<Candidate> found = home.parse(record(R"("type":"span","name":"chat x")", row.attributes));
    ASSERT_EQ(found.size(), row.expected ? 1 : 0);
    if (row.expected) {
        EXPECT_EQ(found.front().usage, *row.expected);
    }
}

const std::string in = R"("gen_ai.usage.input_tokens":)";
const std::string out = R"("gen_ai.usage.output_tokens":)";
const std::string cached = R"("gen_ai.usage.cache_read.input_tokens":)";
const std::string written = R"("gen_ai.usage.cache_write.input_tokens":)";
const std::string created = R"("gen_ai.usage.cache_creation.input_tokens":)";
const std::string reasoned = R"("gen_ai.usage.reasoning.output_tokens":)";
const std::string reasoning = R"("gen_ai.usage.reasoning_tokens":)";

INSTANTIATE_TEST_SUITE_P(
    ByAttributes, CopilotRecordTokens,
    ::testing::Values(
        TokenCase{"allOfThem", in + "100," + out + "20," + cached + "60," + written + "5," + reasoned + "7",
                  TokenUsage{.input = 40, .output = 27, .cacheCreate5m = 5, .cacheRead = 60}},
        TokenCase{"onlyCacheRead", cached + "9", TokenUsage{.cacheRead = 9}},
        TokenCase{"moreCachedThanInput", in + "100," + cached + "150", TokenUsage{.cacheRead = 150}},
        TokenCase{"onlyReasoning", reasoned + "3", TokenUsage{.output = 3}},
        TokenCase{"reasoningCountsAsOutput", out + "4," + reasoned + "3," + reasoning + "50", TokenUsage{.output = 7}},
        TokenCase{"zeroReasoningAsksTheOtherKey", out + "4," + reasoned + "0," + reasoning + "50",
                  TokenUsage{.output = 54}},
        TokenCase{"absentReasoningAsksTheOtherKey", out + "4," + reasoning + "50", TokenUsage{.output = 54}},
        TokenCase{"cacheWriteComesFirst", out + "1," + written + "6," + created + "8",
                  TokenUsage{.output = 1, .cacheCreate5m = 6}},
        TokenCase{"zeroCacheWriteAsksCacheCreation", out + "1," + written + "0," + created + "8",
                  TokenUsage{.output = 1, .cacheCreate5m = 8}},
        TokenCase{"textIsANumber", in + R"("120",)" + out + R"("12.9")", TokenUsage{.input = 120, .output = 12}},
        TokenCase{"textWithBlankAheadIsNone", in + R"(" 120",)" + out + "1", TokenUsage{.output = 1}},
        TokenCase{"textWithTrailingTextIsNone", in + R"("120 tokens",)" + out + "1", TokenUsage{.output = 1}},
        TokenCase{"emptyTextIsNone", in + R"("",)" + out + "1", TokenUsage{.output = 1}},
        TokenCase{"floatIsTruncated", in + "3.9," + out + "1.2e1", TokenUsage{.input = 3, .output = 12}},
        TokenCase{"otherTypesAreNone",
                  in + "true," + out + "5," + cached + "null," + written + "[4]," + reasoned + "{}",
                  TokenUsage{.output = 5}},
        TokenCase{"beyond64BitsIsNone",
                  in + "1e30," + out + "5," + cached + "18446744073709551615," + written + R"("inf",)" + reasoned +
                      R"("nan")",
                  TokenUsage{.output = 5}},
        TokenCase{"negativeInputAloneIsNoCall", in + "-5", std::nullopt},
        TokenCase{"negativeTextStaysNegative", out + R"("-5.9",)" + cached + "9",
                  TokenUsage{.output = -5, .cacheRead = 9}},
        TokenCase{"noTokensAreNoCall", in + "0," + out + "0", std::nullopt},
        TokenCase{"noAttributesAreNoCall", "", std::nullopt}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(CopilotRecord, attributesThatAreNoObjectCountAsNone) {
    const TelemetryHome home;
    EXPECT_THAT(home.parse(R"({"type":"span","name":"chat x","attributes":[1]})"
                           "\n"
                           R"({"type":"span","name":"chat x","attributes":"gen_ai.usage.output_tokens"})"
                           "\n"
                           R"({"type":"span","name":"chat x","gen_ai.usage.output_tokens":5})"
                           "\n"),
                IsEmpty());
}

struct TimeCase {
    const char* name;
    std::string members;
    double expected;
};
class CopilotRecordTime : public ::testing::TestWithParam<TimeCase> {};

TEST_P(CopilotRecordTime, isTheFirstThatThereIs) {
    const TelemetryHome home;
    const std::string separator = GetParam().members.empty() ? "" : ",";
    const Candidate found =
        home.parseOne(record(R"("type":"span","name":"chat x")" + separator + GetParam().members, tokens));
    EXPECT_DOUBLE_EQ(found.timestamp.secondsSince1970, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    ByMembers, CopilotRecordTime,
    ::testing::Values(TimeCase{"endTimePair", R"("endTime":[1789374066,480000000])", 1789374066.48},
                      TimeCase{"endBeforeStart", R"("startTime":[1,0],"endTime":[2,0])", 2},
                      TimeCase{"startTimePair", R"("startTime":[1789374066,5e8],"hrTime":[3,0])", 1789374066.5},
                      TimeCase{"hrTimePair", R"("_hrTime":[4,0],"hrTime":[3,0])", 3},
                      TimeCase{"underlinedHrTimePair", R"("time":[5,0],"_hrTime":[4,0])", 4},
                      TimeCase{"timePair", R"("timestamp":6,"time":[5,250000000])", 5.25},
                      TimeCase{"pairOfOneDoesNotCount", R"("endTime":[9],"startTime":[8,0])", 8},
                      TimeCase{"pairOfThreeDoesNotCount", R"("endTime":[9,0,0],"startTime":[8,0])", 8},
                      TimeCase{"pairOfTextsDoesNotCount", R"("endTime":["9",0],"startTime":[8,0])", 8},
                      TimeCase{"emptyPairDoesNotCount", R"("endTime":[],"timestamp":7)", 7},
                      TimeCase{"scalarEndTimeDoesNotCount", R"("endTime":9,"timestamp":7)", 7},
                      TimeCase{"pairTimestampDoesNotCount", R"("timestamp":[9,0],"observedTimestamp":7)", 7},
                      TimeCase{"timestampInSeconds", R"("timestamp":1700000000)", 1700000000},
                      TimeCase{"timestampInMilliseconds", R"("timestamp":1700000000000)", 1700000000},
                      TimeCase{"timestampInMicroseconds", R"("timestamp":1700000000000000)", 1700000000},
                      TimeCase{"timestampInNanoseconds", R"("timestamp":1700000000000000000)", 1700000000},
                      TimeCase{"largestSeconds", R"("timestamp":99999999999)", 99999999999},
                      TimeCase{"smallestMilliseconds", R"("timestamp":100000000000)", 1e8},
                      TimeCase{"largestMilliseconds", R"("timestamp":99999999999999)", 99999999999.999},
                      TimeCase{"smallestMicroseconds", R"("timestamp":100000000000000)", 1e8},
                      TimeCase{"largestMicroseconds", R"("timestamp":99999999999999984)", 99999999999.999984},
                      TimeCase{"smallestNanoseconds", R"("timestamp":100000000000000000)", 1e8},
                      TimeCase{"fractionOfSeconds", R"("timestamp":1700000000.5)", 1700000000.5},
                      TimeCase{"observedTimestamp", R"("observedTimestamp":1700000000123)", 1700000000.123},
                      TimeCase{"timestampBeforeObserved", R"("observedTimestamp":5,"timestamp":6)", 6},
                      TimeCase{"zeroTimestampDoesNotCount", R"("timestamp":0,"observedTimestamp":5)", 5},
                      TimeCase{"negativeTimestampDoesNotCount", R"("timestamp":-3,"observedTimestamp":5)", 5},
                      TimeCase{"textTimestampDoesNotCount",
                               R"("timestamp":"2026-09-14T10:00:00Z","observedTimestamp":5)", 5},
                      TimeCase{"timeUnixNano", R"("timeUnixNano":1700000000000000000)", 1700000000},
                      TimeCase{"timeUnixNanoIsNeverSeconds", R"("timeUnixNano":1700000000)", 1.7},
                      TimeCase{"timeUnixNanoComesLast", R"("timeUnixNano":1700000000,"observedTimestamp":9)", 9},
                      TimeCase{"zeroTimeUnixNanoDoesNotCount", R"("timeUnixNano":0)", fileTime},
                      TimeCase{"noTimeIsThatOfTheFile", "", fileTime}),
    [](const auto& row) { return std::string{row.param.name}; });

struct KeyCase {
    const char* name;
    std::string line;
    std::string expected;
};
class CopilotRecordKey : public ::testing::TestWithParam<KeyCase> {};

/// Behind two other records, so that the record's number is 2.
TEST_P(CopilotRecordKey, tellsTheRecordFromOthers) {
    const TelemetryHome home;
    const Candidate found = home.parseOne("{}\nno JSON\n[1]\n\n{\"a\":1}\n" + GetParam().line);
    EXPECT_EQ(found.dedupKey, GetParam().expected);
}

constexpr std::string_view session = R"("session.id":"S")";

INSTANTIATE_TEST_SUITE_P(
    ByKind, CopilotRecordKey,
    ::testing::Values(
        KeyCase{"chatSpan", chatSpan({.trace = "T", .span = "P", .more = session}), "chatSpan-span:T:P"},
        KeyCase{"chatSpanWithoutSpanId", chatSpan({.trace = "T", .more = session, .when = 12}),
                "chatSpan-span:S:12000:2"},
        KeyCase{"chatSpanWithoutTrace", chatSpan({.span = "P", .more = session, .when = 12}),
                "chatSpan-span:S:12000:2"},
        KeyCase{"agentSpan", agentSpan({.trace = "T", .span = "P"}), "agentSummarySpan-span:T:P"},
        KeyCase{"agentSpanWithoutIds", agentSpan({.when = 12}), "agentSummarySpan-span:unknown-session:12000:2"},
        KeyCase{"inference", inferenceLog({.trace = "T", .span = "P"}), "log:T:P"},
        KeyCase{"inferenceWithoutSpanId", inferenceLog({.trace = "T", .when = 12}), "log:T:12000:2"},
        KeyCase{"inferenceWithoutTrace", inferenceLog({.span = "P", .response = "R", .when = 12}), "log:R:12000:2"},
        KeyCase{"turn", turnLog({.trace = "T", .more = R"("turn.index":"4","copilot_chat.turn.index":"5")"}),
                "agent-turn:T:4"},
        KeyCase{"turnByTheOtherKey", turnLog({.trace = "T", .more = R"("turn.index":4,"copilot_chat.turn.index":"5")"}),
                "agent-turn:T:5"},
        KeyCase{"turnWithoutIndex", turnLog({.trace = "T"}), "agent-turn:T:idx-2"},
        KeyCase{"turnWithoutTrace", turnLog({.span = "P", .more = R"("session.id":"S","turn.index":"4")"}),
                "agent-turn:S:4:2"},
        KeyCase{"turnWithoutTraceAndIndex", turnLog({.more = session}), "agent-turn:S:idx-2:2"},
        KeyCase{"millisecondsAreTruncated", record(R"("type":"span","name":"chat x","endTime":[12,345999999])", tokens),
                "chatSpan-span:unknown-session:12345:2"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(CopilotRecord, emptyIdsCountAsAbsent) {
    const TelemetryHome home;
    const Candidate found =
        home.parseOne(record(R"("type":"span","name":"chat x","traceId":"","spanId":"","timestamp":1)",
                             R"("gen_ai.response.id":"",)" + std::string{tokens}));
    EXPECT_EQ(found.traceID, std::nullopt);
    EXPECT_EQ(found.responseID, std::nullopt);
    EXPECT_EQ(found.sessionID, "unknown-session");
    EXPECT_EQ(found.dedupKey, "chatSpan-span:unknown-session:1000:0");
}

struct AIUCase {
    const char* name;
    std::string attributes;
    std::int64_t expected;
};
class CopilotRecordAIU : public ::testing::TestWithParam<AIUCase> {};

TEST_P(CopilotRecordAIU, isTakenFromEitherKey) {
    const TelemetryHome home;
    EXPECT_EQ(home.parseOne(chatSpan({.more = GetParam().attributes})).aiuNano, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    ByAttributes, CopilotRecordAIU,
    ::testing::Values(AIUCase{"newerKey", R"("github.copilot.nano_aiu":41,"copilot.nano_aiu":7)", 41},
                      AIUCase{"olderKey", R"("copilot.nano_aiu":7)", 7},
                      AIUCase{"zeroAsksTheOlderKey", R"("github.copilot.nano_aiu":0,"copilot.nano_aiu":7)", 7},
                      AIUCase{"text", R"("github.copilot.nano_aiu":"41")", 41}, AIUCase{"none", "", 0}),
    [](const auto& row) { return std::string{row.param.name}; });

}  // namespace
}  // namespace quorvane::testing
