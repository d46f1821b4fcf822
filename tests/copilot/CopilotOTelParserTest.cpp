// A file of telemetry as a whole: traces, and which of several records of one call counts.

#include <algorithm>
#include <array>
#include <random>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/model/Deduplicator.h"
#include "tests/copilot/CopilotTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

std::vector<std::int64_t> keptOutputs(const TelemetryHome& home, std::string_view content) {
    std::vector<std::int64_t> kept;
    for (const Candidate& candidate : CopilotOTelParser::dedupedCandidates(home.parse(content)))
        kept.push_back(candidate.usage.output);
    return kept;
}

// Models and sessions.

TEST(CopilotTrace, namesTheModelForARecordAheadOfIt) {
    const TelemetryHome home;
    const std::vector<Candidate> found =
        home.parse(inferenceLog({.trace = "T", .span = "a"}) +
                   chatSpan({.trace = "T", .span = "b", .more = R"("gen_ai.response.model":"gpt-5")"}));
    ASSERT_THAT(found, SizeIs(2));
    EXPECT_EQ(found[0].model, "gpt-5");
    EXPECT_EQ(found[1].model, "gpt-5");
}

TEST(CopilotTrace, namesTheModelFromARecordThatIsNoCall) {
    const TelemetryHome home;
    const std::vector<Candidate> found =
        home.parse(chatSpan({.trace = "T", .span = "a"}) +
                   record(R"("name":"execute_tool","traceId":"T")", R"("gen_ai.request.model":"gpt-5-mini")"));
    ASSERT_THAT(found, SizeIs(1));
    EXPECT_EQ(found[0].model, "gpt-5-mini");
}

TEST(CopilotTrace, keepsTheFirstModelItSaw) {
    const TelemetryHome home;
    const std::vector<Candidate> found = home.parse(record(R"("traceId":"T")", R"("gen_ai.request.model":"first")") +
                                                    chatSpan({.trace = "T", .span = "a"}) +
                                                    record(R"("traceId":"T")", R"("gen_ai.response.model":"second")"));
    ASSERT_THAT(found, SizeIs(1));
    EXPECT_EQ(found[0].model, "first");
}

TEST(CopilotTrace, isNotAskedByARecordWithAModelOfItsOwn) {
    const TelemetryHome home;
    const std::vector<Candidate> found = home.parse(
        record(R"("traceId":"T")", R"("gen_ai.request.model":"first")") +
        chatSpan({.trace = "T", .more = R"("gen_ai.request.model":"asked","gen_ai.response.model":"given")"}) +
        chatSpan({.trace = "T", .more = R"("gen_ai.request.model":"asked","gen_ai.response.model":"")"}));
    ASSERT_THAT(found, SizeIs(2));
    EXPECT_EQ(found[0].model, "given");
    EXPECT_EQ(found[1].model, "asked");
}

TEST(CopilotTrace, doesNotSpeakForOtherTraces) {
    const TelemetryHome home;
    const std::vector<Candidate> found =
        home.parse(record(R"("traceId":"T")", R"("gen_ai.request.model":"gpt-5","session.id":"S")") +
                   chatSpan({.trace = "U", .span = "a"}) + chatSpan({}));
    ASSERT_THAT(found, SizeIs(2));
    EXPECT_EQ(found[0].model, "copilot");
    EXPECT_EQ(found[0].sessionID, "U");
    EXPECT_EQ(found[1].model, "copilot");
    EXPECT_EQ(found[1].sessionID, "unknown-session");
}

struct SessionCase {
    const char* name;
    std::string attributes;  ///< of the record itself
    std::string expected;
};
class CopilotRecordSession : public ::testing::TestWithParam<SessionCase> {};

TEST_P(CopilotRecordSession, isTheBestOfItsAttributes) {
    const TelemetryHome home;
    EXPECT_EQ(home.parseOne(chatSpan({.trace = "T", .more = GetParam().attributes})).sessionID, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    ByAttributes, CopilotRecordSession,
    ::testing::Values(
        SessionCase{"conversation", R"("session.id":"d","gen_ai.conversation.id":"a")", "a"},
        SessionCase{"chatSession", R"("copilot_chat.chat_session_id":"c","copilot_chat.session_id":"b")", "b"},
        SessionCase{"olderChatSession", R"("session.id":"d","copilot_chat.chat_session_id":"c")", "c"},
        SessionCase{"session", R"("github.copilot.interaction_id":"e","session.id":"d")", "d"},
        SessionCase{"interaction", R"("gen_ai.response.id":"f","github.copilot.interaction_id":"e")", "e"},
        SessionCase{"response", R"("gen_ai.response.id":"f")", "f"},
        SessionCase{"emptyAndOtherTypesDoNotCount",
                    R"("gen_ai.conversation.id":"","copilot_chat.session_id":7,"session.id":"d")", "d"},
        SessionCase{"noneIsTheTrace", "", "T"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(CopilotTrace, keepsTheSessionOfTheHighestWorth) {
    const TelemetryHome home;
    const auto sessionOf = [&](std::initializer_list<std::string_view> attributes) {
        std::string content = chatSpan({.trace = "T", .span = "a"});
        for (const std::string_view of : attributes)
            content += record(R"("traceId":"T")", of);
        return home.parseOne(content).sessionID;
    };
    EXPECT_EQ(sessionOf({R"("gen_ai.response.id":"r")"}), "r");
    EXPECT_EQ(sessionOf({R"("gen_ai.response.id":"r")", R"("github.copilot.interaction_id":"i")"}), "i");
    EXPECT_EQ(sessionOf({R"("github.copilot.interaction_id":"i")", R"("gen_ai.response.id":"r")"}), "i");
    EXPECT_EQ(sessionOf({R"("github.copilot.interaction_id":"i")", R"("session.id":"s")"}), "s");
    EXPECT_EQ(sessionOf({R"("session.id":"s")", R"("gen_ai.conversation.id":"c")"}), "s") << "of equal worth";
}

TEST(CopilotTrace, sessionOfTheRecordItselfComesFirstWhateverItsWorth) {
    const TelemetryHome home;
    const std::string content =
        record(R"("traceId":"T")", R"("session.id":"s")") + chatSpan({.trace = "T", .span = "a", .response = "r"});
    EXPECT_EQ(home.parseOne(content).sessionID, "r");
}

// Which record of a call counts.

TEST(CopilotDeduplication, chatSpanCoversTheInferenceOfItsTrace) {
    const TelemetryHome home;
    EXPECT_THAT(keptOutputs(home, inferenceLog({.trace = "T", .output = 1}) + chatSpan({.trace = "T", .output = 2})),
                ElementsAre(2));
}

TEST(CopilotDeduplication, chatSpanCoversTheInferenceOfItsResponse) {
    const TelemetryHome home;
    EXPECT_THAT(keptOutputs(home, inferenceLog({.trace = "T", .response = "R", .output = 1}) +
                                      chatSpan({.trace = "U", .response = "R", .output = 2})),
                ElementsAre(2));
    EXPECT_THAT(
        keptOutputs(home, inferenceLog({.response = "R", .output = 1}) + chatSpan({.response = "R", .output = 2})),
        ElementsAre(2));
}

TEST(CopilotDeduplication, turnCoversTheAgentOfItsTrace) {
    const TelemetryHome home;
    EXPECT_THAT(keptOutputs(home, turnLog({.trace = "T", .output = 1}) + agentSpan({.trace = "T", .output = 2})),
                ElementsAre(1));
}

TEST(CopilotDeduplication, recordsOfOneKindDoNotCoverEachOther) {
    const TelemetryHome home;
    std::string content;
    for (int call = 1; call <= 5; ++call)
        content += chatSpan({.trace = "T", .response = "R", .output = call});
    EXPECT_THAT(keptOutputs(home, content), ElementsAre(1, 2, 3, 4, 5));
}

TEST(CopilotDeduplication, absentIdsMatchNothing) {
    const TelemetryHome home;
    EXPECT_THAT(keptOutputs(home, agentSpan({.output = 1}) + turnLog({.output = 2}) + inferenceLog({.output = 3}) +
                                      chatSpan({.output = 4})),
                ElementsAre(1, 2, 3, 4));
}

TEST(CopilotDeduplication, aTraceIsNoResponse) {
    const TelemetryHome home;
    EXPECT_THAT(keptOutputs(home, chatSpan({.trace = "X", .output = 1}) + inferenceLog({.response = "X", .output = 2})),
                ElementsAre(1, 2));
}

/// A record that is itself covered still covers others.
TEST(CopilotDeduplication, coveredInferenceCoversTheAgentOfItsResponse) {
    const TelemetryHome home;
    EXPECT_THAT(keptOutputs(home, chatSpan({.trace = "T", .output = 1}) +
                                      inferenceLog({.trace = "T", .response = "R", .output = 2}) +
                                      agentSpan({.trace = "U", .response = "R", .output = 3})),
                ElementsAre(1));
}

/// All pairs of kinds, by trace and by response, in both orders.
TEST(CopilotDeduplication, aMoreReliableKindCoversEveryOther) {
    const TelemetryHome home;
    for (int first = 0; first < 4; ++first) {
        for (int second = 0; second < 4; ++second) {
            for (const bool byTrace : {true, false}) {
                SCOPED_TRACE(std::to_string(first) + " " + std::to_string(second) + (byTrace ? " trace" : " response"));
                const std::string_view trace = byTrace ? "X" : "";
                const std::string_view response = byTrace ? "" : "X";
                const std::vector<std::int64_t> kept = keptOutputs(
                    home,
                    recordOf(static_cast<RecordKind>(first), {.trace = trace, .response = response, .output = 1}) +
                        recordOf(static_cast<RecordKind>(second), {.trace = trace, .response = response, .output = 2}));
                if (first == second) {
                    EXPECT_THAT(kept, ElementsAre(1, 2));
                } else {
                    EXPECT_THAT(kept, ElementsAre(first < second ? 1 : 2));
                }
            }
        }
    }
}

TEST(CopilotDeduplication, isTheSameInEveryOrderAndForWhatIsLeft) {
    const TelemetryHome home;
    std::mt19937 random{20260914};
    for (int round = 0; round < 50; ++round) {
        SCOPED_TRACE(round);
        std::vector<std::string> lines;
        for (int index = 0; index < 12; ++index) {
            const std::array<std::string, 4> ids{"", "A", "B", "C"};
            lines.push_back(recordOf(static_cast<RecordKind>(random() % 4),
                                     {.trace = ids[random() % 4], .response = ids[random() % 4], .output = index + 1}));
        }
        const auto joined = [&] {
            std::string content;
            for (const std::string& line : lines)
                content += line;
            return content;
        };
        std::vector<std::int64_t> once = keptOutputs(home, joined());
        const std::vector<Candidate> kept = CopilotOTelParser::dedupedCandidates(home.parse(joined()));
        ASSERT_EQ(CopilotOTelParser::dedupedCandidates(kept), kept);
        std::shuffle(lines.begin(), lines.end(), random);
        std::vector<std::int64_t> shuffled = keptOutputs(home, joined());
        std::sort(once.begin(), once.end());
        std::sort(shuffled.begin(), shuffled.end());
        ASSERT_EQ(once, shuffled);
    }
}

// Files.

TEST(CopilotFile, linesThatAreNoObjectsArePassedOver) {
    const TelemetryHome home;
    EXPECT_THAT(home.parse("\n[1]\n7\nnull\n{\"type\":\n" + chatSpan({}) + "{}\n\xff\xfe\n"), SizeIs(1));
}

TEST(CopilotFile, lastLineNeedsNoLineFeed) {
    const TelemetryHome home;
    std::string content = chatSpan({.trace = "T"}) + chatSpan({.trace = "U"});
    content.pop_back();
    EXPECT_THAT(home.parse(content), SizeIs(2));
    content.pop_back();
    EXPECT_THAT(home.parse(content), SizeIs(1)) << "not written to its end";
}

TEST(CopilotFile, missingOneGivesNone) {
    const TelemetryHome home;
    EXPECT_THAT(CopilotOTelParser::candidates(home.path("missing.jsonl"), {}), IsEmpty());
}

TEST(CopilotFile, candidatesAreTheSameInChunksOfAnySize) {
    const TelemetryHome home;
    const std::string content = inferenceLog({.trace = "T", .span = "a", .response = "R"}) + "{}\n" +
                                chatSpan({.trace = "T", .span = "b", .more = R"("gen_ai.response.model":"größe")"}) +
                                turnLog({.trace = "U"});
    const std::vector<Candidate> expected = home.parse(content);
    ASSERT_THAT(expected, SizeIs(3));
    for (const std::int64_t chunkSize : {1, 2, 7, 100, 1000})
        EXPECT_EQ(home.parse(content, chunkSize), expected) << chunkSize;
}

/// A record's identity does not change when the file grows, so an event is never counted twice in the index.
TEST(CopilotFile, keysStayAsTheFileGrows) {
    const TelemetryHome home;
    std::string content;
    std::vector<std::string> before;
    for (int index = 0; index < 8; ++index) {
        content += recordOf(static_cast<RecordKind>(index % 4), {.output = index + 1, .when = 100.0 + index});
        std::vector<std::string> keys;
        for (const Candidate& candidate : home.parse(content))
            keys.push_back(candidate.dedupKey);
        ASSERT_EQ(keys.size(), before.size() + 1);
        ASSERT_TRUE(std::equal(before.begin(), before.end(), keys.begin()));
        before = keys;
    }
    EXPECT_THAT(std::set(before.begin(), before.end()), SizeIs(8));
}

TEST(CopilotFileDeathTest, sumsAndTimesBeyond64BitsEndTheProcess) {
    const TelemetryHome home;
    const std::string large = chatSpan({.output = 9223372036854775807, .more = R"("gen_ai.usage.reasoning_tokens":1)"});
    EXPECT_DEATH(static_cast<void>(home.parse(large)), "overflow");
    const std::string far =
        record(R"("type":"span","name":"chat x","endTime":[1e300,0])", R"("gen_ai.usage.output_tokens":1)");
    EXPECT_DEATH(static_cast<void>(home.parse(far)), "overflow");
    // In whatever order a record stands that covers it.
    const std::string covered = record(R"("traceId":"T","type":"span","name":"invoke_agent x","endTime":[1e300,0])",
                                       R"("gen_ai.usage.output_tokens":1)");
    for (const std::string& content : {covered + chatSpan({.trace = "T"}), chatSpan({.trace = "T"}) + covered}) {
        const std::string file = home.write("otel.jsonl", content);
        EXPECT_DEATH(static_cast<void>(CopilotOTelParser::bestEvents(file, {})), "overflow");
    }
}

// Events.

struct ModelCase {
    const char* name;
    std::string model;
    std::string expected;
};
class CopilotEventModel : public ::testing::TestWithParam<ModelCase> {};

TEST_P(CopilotEventModel, losesTheVendor) {
    const Candidate candidate{.model = GetParam().model, .usage = {.output = 1}};
    const std::vector<UsageEvent> events = CopilotOTelParser::events({&candidate, 1});
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_EQ(events[0].model, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(ByName, CopilotEventModel,
                         ::testing::Values(ModelCase{"plain", "gpt-5", "gpt-5"},
                                           ModelCase{"vendor", "openai/gpt-5", "gpt-5"},
                                           ModelCase{"twoSlashes", "a/b/c", "c"},
                                           ModelCase{"slashAtTheEnd", "openai/", "openai/"},
                                           ModelCase{"slashAlone", "/", "/"}, ModelCase{"slashAhead", "/x", "x"},
                                           ModelCase{"empty", "", "copilot"}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(CopilotEvents, carryWhatTheRecordSays) {
    const TelemetryHome home;
    const std::vector<UsageEvent> events = home.events(
        R"({"type":"span","traceId":"4bf9","spanId":"00f0","name":"chat claude-sonnet-4.6","kind":2,)"
        R"("startTime":[1789374060,120000000],"endTime":[1789374066,480000000],"attributes":{)"
        R"("gen_ai.operation.name":"chat","gen_ai.request.model":"claude-sonnet-4.6",)"
        R"("gen_ai.response.model":"anthropic/claude-sonnet-4.6","gen_ai.conversation.id":"c1","gen_ai.response.id":"r1",)"
        R"("gen_ai.usage.input_tokens":19452,"gen_ai.usage.output_tokens":281,)"
        R"("gen_ai.usage.cache_read.input_tokens":17123,"gen_ai.usage.cache_creation.input_tokens":1025,)"
        R"("gen_ai.usage.reasoning.output_tokens":128,"github.copilot.nano_aiu":41000000}})");
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_EQ(events[0].messageId, "c1");
    EXPECT_EQ(events[0].requestId, "chatSpan-span:4bf9:00f0");
    EXPECT_EQ(events[0].provider, ProviderID::Copilot);
    EXPECT_EQ(events[0].model, "claude-sonnet-4.6");
    EXPECT_DOUBLE_EQ(events[0].timestamp.secondsSince1970, 1789374066.48);
    EXPECT_EQ(
        events[0].usage,
        (TokenUsage{.input = 2329, .output = 409, .cacheCreate5m = 1025, .cacheCreate1h = 0, .cacheRead = 17123}));
    EXPECT_EQ(events[0].project, std::nullopt);
}

/// Files with calls of few traces, spans, turns and responses, and with some that name none of these.
class CopilotBestEvents : public ::testing::Test {
protected:
    std::string line(int output) {
        const std::array<std::string, 4> ids{"", "A", "B", "A:B"};
        const std::array<std::string, 4> more{"", R"("session.id":"S")", R"("gen_ai.request.model":"x/y")",
                                              R"("turn.index":"1","copilot_chat.session_id":"Z")"};
        const std::string& trace = pick(ids);
        if (random_() % 8 == 0) return record(R"("traceId":")" + trace + '"', pick(more));
        return recordOf(static_cast<RecordKind>(random_() % 4), {.trace = trace,
                                                                 .span = pick(ids),
                                                                 .response = random_() % 2 == 0 ? "" : pick(ids),
                                                                 .output = output,
                                                                 .more = pick(more),
                                                                 .when = 100.0 + static_cast<double>(random_() % 2)});
    }

    std::mt19937 random_{20260915};

private:
    const std::string& pick(const std::array<std::string, 4>& texts) { return texts[random_() % texts.size()]; }
};

std::vector<std::string> described(const std::vector<UsageEvent>& events) {
    std::vector<std::string> lines;
    for (const UsageEvent& event : events) {
        lines.push_back(event.id() + " " + event.model + " " + std::to_string(event.timestamp.secondsSince1970) + " " +
                        std::to_string(event.usage.output) + (event.provider == ProviderID::Copilot ? "" : " ?"));
    }
    return lines;
}

TEST_F(CopilotBestEvents, areWhatTheRulesLeaveOfAllEvents) {
    const TelemetryHome home;
    std::size_t dropped = 0;
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        std::string content;
        for (std::uint32_t lines = random_() % 60; lines > 0; --lines)
            content += line(1 + static_cast<int>(random_() % 3));
        const std::string file = home.write("otel.jsonl", content);
        const std::vector<UsageEvent> all = CopilotOTelParser::events(CopilotOTelParser::candidates(file, {}));
        std::vector<std::string> expected = described(Deduplicator::dedupe(all));
        std::vector<std::string> best = described(CopilotOTelParser::bestEvents(file, {}));
        dropped += all.size() - best.size();
        std::sort(expected.begin(), expected.end());
        std::sort(best.begin(), best.end());
        ASSERT_EQ(best, expected);
    }
    EXPECT_GT(dropped, 50) << "the rounds try it";
}

TEST_F(CopilotBestEvents, standInTheOrderOfTheFile) {
    const TelemetryHome home;
    std::string content;
    for (int call = 1; call <= 300; ++call)
        content += chatSpan({.trace = std::to_string(call % 7), .span = std::to_string(call), .output = call});
    const std::vector<UsageEvent> best = CopilotOTelParser::bestEvents(home.write("otel.jsonl", content), {});
    ASSERT_THAT(best, SizeIs(300));
    for (std::size_t at = 0; at < best.size(); ++at)
        ASSERT_EQ(best[at].usage.output, static_cast<std::int64_t>(at) + 1);
}

/// The record that covers stands behind, so an event has been made by then.
TEST_F(CopilotBestEvents, loseThoseThatALaterRecordCovers) {
    const TelemetryHome home;
    const std::string file = home.write(
        "otel.jsonl",
        agentSpan({.trace = "T", .span = "1", .output = 1}) + chatSpan({.trace = "U", .span = "2", .output = 2}) +
            inferenceLog({.trace = "V", .span = "3", .response = "R", .output = 3}) +
            turnLog({.trace = "W", .output = 4}) + chatSpan({.trace = "T", .span = "5", .response = "R", .output = 5}));
    EXPECT_THAT(outputs(CopilotOTelParser::bestEvents(file, {})), ElementsAre(2, 4, 5));
}

TEST(CopilotAIU, samplesAreOfCallsThatNameSome) {
    const TelemetryHome home;
    const std::vector<CopilotOTelParser::AIUSample> samples = CopilotOTelParser::aiuSamples(
        home.parse(chatSpan({.trace = "T", .more = R"("github.copilot.nano_aiu":5)", .when = 100}) +
                   inferenceLog({.trace = "T", .more = R"("github.copilot.nano_aiu":7)"}) + chatSpan({.trace = "U"}) +
                   chatSpan({.more = R"("github.copilot.nano_aiu":-3)"}) +
                   turnLog({.more = R"("copilot.nano_aiu":1)", .when = 200})));
    EXPECT_THAT(samples,
                ElementsAre(CopilotOTelParser::AIUSample{Date{100}, 5}, CopilotOTelParser::AIUSample{Date{200}, 1}));
}

}  // namespace
}  // namespace quorvane::testing
