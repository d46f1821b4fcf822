// One line of a session log.

#include <csignal>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/providers/GrokProvider.h"
#include "tests/grok/GrokTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace std::string_literals;

using Texts = std::vector<std::string>;

Texts decoded(std::string_view line, const std::optional<std::string>& project = "/home/ana/shop") {
    const std::optional<std::vector<UsageEvent>> events = GrokProvider::decode(line, project);
    if (!events) return {};
    EXPECT_FALSE(events->empty()) << "without a call there is no list";
    return told(*events);
}

/// A line as the agent writes it, with all that is read of it.
const std::string fullLine =
    R"({"timestamp":1789374000,"method":"session/update","params":{"sessionId":"s","update":{"sessionUpdate":)"
    R"("turn_completed","prompt_id":"p-7","stop_reason":"end_turn","usage":{"inputTokens":100,"outputTokens":10,)"
    R"("cachedReadTokens":30,"reasoningTokens":5,"modelUsage":{"grok-4.5":{"inputTokens":100,"outputTokens":10,)"
    R"("cachedReadTokens":30,"reasoningTokens":5}}}}},"_meta":{"eventId":"e-1","agentTimestampMs":1789374066480}})";
const std::string fullEvent = "grok e-1-grok-4.5 p-7 grok-4.5 1789374066.480 70/15/0/0/30 /home/ana/shop";

/// `fullLine` with `part`, which must be in it, replaced.
std::string with(std::string_view part, std::string_view replacement) {
    std::string line = fullLine;
    const std::size_t at = line.find(part);
    if (at == std::string::npos) throw std::runtime_error{"not in the line: " + std::string{part}};
    return line.replace(at, part.size(), replacement);
}

struct LineCase {
    const char* name;
    std::string line;
    Texts expected = {};
};
void PrintTo(const LineCase& row, std::ostream* stream) {
    *stream << row.name;
}

std::vector<LineCase> kindCases() {
    const std::string kind = R"("sessionUpdate":"turn_completed",)";
    return {
        {"fullLine", fullLine, {fullEvent}},
        {"blanksAround", " \t" + fullLine + "\r", {fullEvent}},
        {"otherKind", with("turn_completed", "agent_message_chunk")},
        {"otherKindThatSpeaksOfIt", with("turn_completed", "turn_completed_soon")},
        {"kindInATextOnly",
         R"({"params":{"update":{"sessionUpdate":"agent_message_chunk","content":{"text":"turn_completed"}}}})"},
        {"kindMissing", with(kind, "")},
        {"kindANumber", with(R"("turn_completed")", "1")},
        {"kindAnArray", with(R"("turn_completed")", R"(["turn_completed"])")},
        {"kindWithOneEscapedLetter", with("turn_completed", R"(t\u0075rn_completed)"), {fullEvent}},
        {"kindWithAnEscapedUnderscore", with("turn_completed", R"(turn\u005fcompleted)"), {fullEvent}},
        {"kindWithAnEscapedUnderscoreInUpperCase", with("turn_completed", R"(turn\u005Fcompleted)"), {fullEvent}},
        {"kindWithItsFirstAndLastLetterEscaped", with("turn_completed", R"(\u0074urn_complete\u0064)"), {fullEvent}},
        {"kindAllEscaped",
         with("turn_completed",
              R"(\u0074\u0075\u0072\u006e\u005f\u0063\u006F\u006d\u0070\u006c\u0065\u0074\u0065\u0064)"),
         {fullEvent}},
        {"escapedKindBehindOtherEscapes",
         R"({"a":"\u001b[0m\u00e9\u0020",)" + with("turn_completed", R"(turn\u005fcompleted)").substr(1),
         {fullEvent}},
        {"escapedKey", with(R"("sessionUpdate")", R"("session\u0055pdate")"), {fullEvent}},
        {"kindTwiceTheFirstCounts", with(kind, kind + R"("sessionUpdate":"other",)"), {fullEvent}},
        {"kindOnTopOnly", R"({"sessionUpdate":"turn_completed",)" + with(kind, "").substr(1)},
        {"paramsMissing", with(R"("params")", R"("param")")},
        {"paramsAnArray", R"({"params":[{"update":{"sessionUpdate":"turn_completed"}}],"_meta":{"eventId":"e"}})"},
        {"updateMissing", with(R"("update":)", R"("updates":)")},
        {"updateNull", R"({"params":{"update":null,"sessionUpdate":"turn_completed"},"_meta":{"eventId":"e"}})"},
        {"usageMissing", with(R"("usage")", R"("use")")},
        {"usageNull", R"({"params":{"update":{"sessionUpdate":"turn_completed","usage":null,"prompt_id":"p"}}})"},
        {"usageAnArray", R"({"params":{"update":{"sessionUpdate":"turn_completed","usage":[1],"prompt_id":"p"}}})"},
    };
}

std::vector<LineCase> identityCases() {
    const std::string meta = R"(,"_meta":{"eventId":"e-1","agentTimestampMs":1789374066480})";
    const auto event = [](std::string_view identity, std::string_view request,
                          std::string_view seconds = "1789374066.480") {
        return Texts{"grok " + std::string{identity} + "-grok-4.5 " + std::string{request} + " grok-4.5 " +
                     std::string{seconds} + " 70/15/0/0/30 /home/ana/shop"};
    };
    std::string withoutEither = with(R"("prompt_id":"p-7",)", "");
    withoutEither.replace(withoutEither.find(meta), meta.size(), "");
    std::string withoutPromptAndSession = with(R"("prompt_id":"p-7",)", "");
    withoutPromptAndSession.replace(withoutPromptAndSession.find(R"("sessionId":"s",)"), 16, "");
    return {
        {"eventIdMissing", with(R"("eventId":"e-1",)", ""), event("p-7", "p-7")},
        {"eventIdEmpty", with(R"("e-1")", R"("")"), event("p-7", "p-7")},
        {"eventIdANumber", with(R"("e-1")", "1"), event("p-7", "p-7")},
        {"metaMissing", with(meta, ""), event("p-7", "p-7", "1789374000.000")},
        {"metaAnArray", with(meta, R"(,"_meta":["eventId","e-1"])"), event("p-7", "p-7", "1789374000.000")},
        {"promptMissing", with(R"("prompt_id":"p-7",)", ""), event("e-1", "s")},
        {"promptEmpty", with(R"("p-7")", R"("")"), event("e-1", "s")},
        {"promptANumber", with(R"("p-7")", "7"), event("e-1", "s")},
        {"promptAndSessionMissing", withoutPromptAndSession, event("e-1", "e-1")},
        {"sessionIsEmptyAndStillAString",
         R"({"params":{"sessionId":"","update":{"sessionUpdate":"turn_completed","usage":{"inputTokens":1}}},)"
         R"("_meta":{"eventId":"e","agentTimestampMs":1000}})",
         {"grok e  grok 1.000 1/0/0/0/0 /home/ana/shop"}},
        {"sessionANumber",
         R"({"params":{"sessionId":1,"update":{"sessionUpdate":"turn_completed","usage":{"inputTokens":1}}},)"
         R"("_meta":{"eventId":"e","agentTimestampMs":1000}})",
         {"grok e e grok 1.000 1/0/0/0/0 /home/ana/shop"}},
        {"neitherEventNorPrompt", withoutEither},
        {"bothEmpty",
         R"({"params":{"update":{"sessionUpdate":"turn_completed","prompt_id":"","usage":{"inputTokens":9}}},)"
         R"("_meta":{"eventId":""}})"},
    };
}

/// A line with that usage, which is JSON, and the events' texts from the model on.
LineCase usageCase(const char* name, const std::string& usage, const Texts& expected) {
    Texts events;
    for (const std::string& text : expected) {
        const bool isTotal = text.starts_with("= ");
        const std::string rest = isTotal ? text.substr(2) : text;
        const std::string model = rest.substr(0, rest.find(' '));
        events.push_back("grok e" + (isTotal ? "" : "-" + model) + " p-e " + model + " 1789374066.480 " +
                         rest.substr(model.size() + 1) + " /home/ana/shop");
    }
    return {name, turnLine("e", usage), events};
}

std::vector<LineCase> usageCases() {
    const std::string one = grokUsage(1, 2, 0, 0);
    const auto models = [](const std::string& members, const std::string& total = grokUsage(50, 60, 0, 0)) {
        return total.substr(0, total.size() - 1) + R"(,"modelUsage":{)" + members + "}}";
    };
    return {
        usageCase("totalsAlone", grokUsage(100, 10, 30, 5), {"= grok 70/15/0/0/30"}),
        usageCase("moreCachedThanInput", grokUsage(10, 0, 30, 0), {"= grok 0/0/0/0/30"}),
        usageCase("reasoningAlone", R"({"reasoningTokens":5})", {"= grok 0/5/0/0/0"}),
        usageCase("allZero", grokUsage(0, 0, 0, 0), {}),
        usageCase("noCounters", "{}", {}),
        usageCase("sumBelowOne", R"({"outputTokens":-5,"inputTokens":2})", {}),
        usageCase("sumOfOne", R"({"outputTokens":-5,"inputTokens":6})", {"= grok 6/-5/0/0/0"}),
        usageCase("floatsAreCutOff", R"({"inputTokens":3.9,"outputTokens":1e2})", {"= grok 3/100/0/0/0"}),
        usageCase("otherThanNumbersAreZero", R"({"inputTokens":"3","outputTokens":[1],"reasoningTokens":2})",
                  {"= grok 0/2/0/0/0"}),
        usageCase("twoModels", models("\"grok-4.5\":" + grokUsage(100, 10, 30, 5) + ",\"grok-code-fast-1\":" + one),
                  {"grok-4.5 70/15/0/0/30", "grok-code-fast-1 1/2/0/0/0"}),
        usageCase("twoModelsInTheOtherOrder",
                  models("\"grok-code-fast-1\":" + one + ",\"grok-4.5\":" + grokUsage(100, 10, 30, 5)),
                  {"grok-4.5 70/15/0/0/30", "grok-code-fast-1 1/2/0/0/0"}),
        usageCase("modelsWithoutUseArePassedOver", models("\"a\":" + grokUsage(0, 0) + ",\"b\":" + one),
                  {"b 1/2/0/0/0"}),
        usageCase("modelsThatAreNoObjectsArePassedOver",
                  models("\"a\":5,\"b\":" + one + ",\"c\":null,\"d\":[" + one + "]"), {"b 1/2/0/0/0"}),
        usageCase("modelWithoutAName", models("\"\":" + one), {"grok 1/2/0/0/0"}),
        usageCase("modelTwiceTheFirstCounts", models("\"a\":" + one + ",\"a\":" + grokUsage(7, 7)), {"a 1/2/0/0/0"}),
        usageCase("modelsAllWithoutUseDoNotFallBackToTheTotals", models("\"a\":" + grokUsage(0, 0)), {}),
        usageCase("modelsAllStrangeDoNotFallBackToTheTotals", models("\"a\":null"), {}),
        usageCase("modelsEmpty", models(""), {"= grok 50/60/0/0/0"}),
        usageCase("modelsANumber", R"({"inputTokens":1,"modelUsage":5})", {"= grok 1/0/0/0/0"}),
        usageCase("modelsAnArray", R"({"inputTokens":1,"modelUsage":[{"inputTokens":2}]})", {"= grok 1/0/0/0/0"}),
        usageCase("modelsNull", R"({"inputTokens":1,"modelUsage":null})", {"= grok 1/0/0/0/0"}),
        usageCase("modelWithEscapes", models(R"("m\u00fc\"":)" + one), {"mü\" 1/2/0/0/0"}),
    };
}

std::vector<LineCase> hostileCases() {
    return {
        {"emptyLine", ""},
        {"text", R"("turn_completed")"},
        {"array", "[" + fullLine + "]"},
        {"half", fullLine.substr(0, fullLine.size() / 2)},
        {"allButTheLastByte", fullLine.substr(0, fullLine.size() - 1)},
        {"trailingText", fullLine + "x"},
        {"nulByteBehind", fullLine + "\0"s},
        {"invalidUTF8", with("s\"", "s\xff\"")},
        {"halfASurrogatePair",
         with("e-1", R"(e\ud83d)"),
         {"grok e\xEF\xBF\xBD-grok-4.5 p-7 grok-4.5 1789374066.480 70/15/0/0/30 /home/ana/shop"}},
        {"escapeCutOffAtTheEnd", R"({"a":"\u00)"},
        {"countBeyond64BitsElsewhere", with(R"("stop_reason":"end_turn")", R"("n":99999999999999999999)"), {fullEvent}},
        {"deepNesting", R"({"turn_completed":)" + std::string(10'000, '[')},
    };
}

class GrokDecode : public ::testing::TestWithParam<LineCase> {};

TEST_P(GrokDecode, givesTheCallsOfTheLine) {
    EXPECT_EQ(decoded(GetParam().line), GetParam().expected);
}

TEST_P(GrokDecode, givesTheSameFromAFile) {
    const GrokScratchHome home;
    const LineCase& row = GetParam();
    // A call in front and one behind: a strange line does no harm to its neighbours.
    const std::string file = home.write("sessions/%2Fhome%2Fana%2Fshop/s/updates.jsonl",
                                        fullLine + "\n" + row.line + "\n" + fullLine + "\n");
    Texts expected{fullEvent, fullEvent};
    expected.insert(expected.end(), row.expected.begin(), row.expected.end());
    std::sort(expected.begin(), expected.end());
    const GrokProvider provider{home.path()};
    const DecodedFile read = provider.decodeFile(file, 0);
    EXPECT_EQ(told(read.events), expected);
    EXPECT_EQ(read.consumed, static_cast<std::int64_t>(home.read(file).size()));
    EXPECT_EQ(told(provider.loadEvents()), expected);
}

const auto nameOfCase = [](const auto& row) { return std::string{row.param.name}; };
INSTANTIATE_TEST_SUITE_P(Kinds, GrokDecode, ::testing::ValuesIn(kindCases()), nameOfCase);
INSTANTIATE_TEST_SUITE_P(Identities, GrokDecode, ::testing::ValuesIn(identityCases()), nameOfCase);
INSTANTIATE_TEST_SUITE_P(Usages, GrokDecode, ::testing::ValuesIn(usageCases()), nameOfCase);
INSTANTIATE_TEST_SUITE_P(Hostile, GrokDecode, ::testing::ValuesIn(hostileCases()), nameOfCase);

TEST(GrokDecodeLine, modelsOfOneTurnDifferInTheirMessageAndShareTheRequest) {
    const auto events = GrokProvider::decode(
        turnLine("e", R"({"modelUsage":{"a":{"inputTokens":1},"b":{"inputTokens":2}}})"), std::nullopt);
    ASSERT_TRUE(events);
    ASSERT_EQ(events->size(), 2);
    EXPECT_EQ(events->at(0).requestId, events->at(1).requestId);
    EXPECT_THAT((std::vector{events->at(0).messageId, events->at(1).messageId}),
                ::testing::UnorderedElementsAre("e-a", "e-b"));
    EXPECT_EQ(events->at(0).project, std::nullopt);
}

// Times

struct TimeCase {
    const char* name;
    const char* line;
    Date expected;
};
class GrokTimestamp : public ::testing::TestWithParam<TimeCase> {};

TEST_P(GrokTimestamp, isReadInItsUnit) {
    JSONParser parser;
    const JSONValue line = parser.parse(GetParam().line);
    ASSERT_TRUE(line.isObject());
    EXPECT_EQ(GrokProvider::decodeTimestamp(line, line["_meta"]), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    ByNumbers, GrokTimestamp,
    ::testing::Values(
        TimeCase{"ofTheAgent", R"({"timestamp":1789374066,"_meta":{"agentTimestampMs":1789374066480}})",
                 Date{1789374066.48}},
        TimeCase{"ofTheAgentAlwaysMilliseconds", R"({"timestamp":5,"_meta":{"agentTimestampMs":1000}})", Date{1}},
        TimeCase{"ofTheAgentAFloat", R"({"_meta":{"agentTimestampMs":1789374066480.5}})", Date{1789374066.4805}},
        TimeCase{"ofTheAgentZero", R"({"timestamp":1789374066,"_meta":{"agentTimestampMs":0}})", Date{1789374066}},
        TimeCase{"ofTheAgentNegative", R"({"timestamp":1789374066,"_meta":{"agentTimestampMs":-5}})", Date{1789374066}},
        TimeCase{"ofTheAgentAText", R"({"timestamp":1789374066,"_meta":{"agentTimestampMs":"1789374066480"}})",
                 Date{1789374066}},
        TimeCase{"tenDigits", R"({"timestamp":1789374066})", Date{1789374066}},
        TimeCase{"tenDigitsAndAFraction", R"({"timestamp":1789374066.25})", Date{1789374066.25}},
        TimeCase{"thirteenDigits", R"({"timestamp":1789374066480})", Date{1789374066.48}},
        TimeCase{"tenToTheTwelfthIsSeconds", R"({"timestamp":1000000000000})", Date{1e12}},
        TimeCase{"oneMoreIsMilliseconds", R"({"timestamp":1000000000001})", Date{1000000000.001}},
        TimeCase{"aBitMoreIsMilliseconds", R"({"timestamp":1000000000000.5})", Date{1000000000.0005}},
        TimeCase{"zero", R"({"timestamp":0})", Date::distantPast()},
        TimeCase{"negative", R"({"timestamp":-1789374066})", Date::distantPast()},
        TimeCase{"aText", R"({"timestamp":"2026-09-14T08:20:01.204Z"})", Date::distantPast()},
        TimeCase{"none", R"({"_meta":{}})", Date::distantPast()},
        TimeCase{"metaIsNoObject", R"({"timestamp":7,"_meta":1789374066480})", Date{7}}),
    [](const auto& row) { return std::string{row.param.name}; });

// Counters that 64 bits cannot hold

class GrokOverflowDeathTest : public ::testing::TestWithParam<const char*> {};

TEST_P(GrokOverflowDeathTest, endsTheProcess) {
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    const std::string line = turnLine("e", GetParam());
    EXPECT_EXIT(static_cast<void>(GrokProvider::decode(line, std::nullopt)), ::testing::KilledBySignal(SIGABRT),
                "overflowed");
}

INSTANTIATE_TEST_SUITE_P(
    ByCounter, GrokOverflowDeathTest,
    ::testing::Values(R"({"inputTokens":99999999999999999999})",
                      R"({"outputTokens":9223372036854775807,"reasoningTokens":1})",
                      R"({"inputTokens":-9223372036854775808,"cachedReadTokens":1})",
                      R"({"modelUsage":{"m":{"inputTokens":9223372036854775807,"outputTokens":1}}})"));

}  // namespace
}  // namespace quorvane::testing
