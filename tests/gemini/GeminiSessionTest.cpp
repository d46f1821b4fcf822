// One chat, parsed.

#include <csignal>
#include <optional>
#include <ostream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/gemini/GeminiTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace std::string_literals;

TEST(GeminiSession, messagesOfTheModelAreTheCalls) {
    const ChatHome home;
    const std::vector<UsageEvent> events = home.parse(geminiChat(
        "s", {R"({"id":"m1","type":"user","content":"Hello","timestamp":"2026-03-02T10:00:00.000Z"})",
              geminiMessage("m2", {.input = 9120, .output = 310, .cached = 4096, .thoughts = 512, .tool = 20}),
              R"({"id":"m3","type":"info","content":"Update available"})",
              geminiMessage("m4", {.input = 11, .output = 22}, "gemini-3-flash-preview")}));
    EXPECT_THAT(told(events), ElementsAre("gemini m2 s gemini-3-pro-preview 1772445641.250 5044/822/0/0/4096 (none)",
                                          "gemini m4 s gemini-3-flash-preview 1772445641.250 11/22/0/0/0 (none)"));
}

struct DocumentCase {
    const char* name;
    std::string content;
    bool counts = false;
};
void PrintTo(const DocumentCase& row, std::ostream* stream) {
    *stream << row.name;
}
class GeminiDocument : public ::testing::TestWithParam<DocumentCase> {};

TEST_P(GeminiDocument, countsIfItIsAChat) {
    const ChatHome home;
    EXPECT_EQ(home.parse(GetParam().content).size(), GetParam().counts ? 1 : 0);
}

const std::string call = geminiMessage("m", {.input = 1});
const std::string chat = geminiChat("s", {call});

INSTANTIATE_TEST_SUITE_P(
    ByContent, GeminiDocument,
    ::testing::Values(DocumentCase{"chat", chat, true},
                      DocumentCase{"printedOverSeveralLines",
                                   "{\n  \"messages\": [\n" + call + "\n],\r\n\"sessionId\":\t\"s\"}\n", true},
                      DocumentCase{"empty", ""}, DocumentCase{"half", chat.substr(0, chat.size() - 1)},
                      DocumentCase{"trailingText", chat + "x"}, DocumentCase{"array", "[" + chat + "]"},
                      DocumentCase{"number", "1"}, DocumentCase{"byteOrderMark", "\xef\xbb\xbf" + chat},
                      DocumentCase{"invalidUTF8", geminiChat("s\xff", {call})},
                      DocumentCase{"halfASurrogatePair", geminiChat("s\\ud83d", {call}), true},
                      DocumentCase{"nulByteBehind", chat + "\0"s},
                      DocumentCase{"sessionMissing", R"({"messages":[)" + call + "]}"},
                      DocumentCase{"sessionEmpty", geminiChat("", {call})},
                      DocumentCase{"sessionANumber", R"({"sessionId":1,"messages":[)" + call + "]}"},
                      DocumentCase{"messagesMissing", R"({"sessionId":"s"})"},
                      DocumentCase{"messagesAnObject", R"({"sessionId":"s","messages":{"0":)" + call + "}}"},
                      DocumentCase{"messagesNull", R"({"sessionId":"s","messages":null})"},
                      DocumentCase{"messagesEmpty", geminiChat("s", {})},
                      DocumentCase{"otherThingsAmongTheMessages",
                                   geminiChat("s", {"null", "1", "[" + call + "]", "\"x\"", call}), true}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(GeminiSession, fileThatCannotBeReadGivesNoEvents) {
    const ChatHome home;
    EXPECT_THAT(GeminiProvider::parseUsage(home.path("none.json")), IsEmpty());
    home.home.makeFolder("folder.json");
    EXPECT_THAT(GeminiProvider::parseUsage(home.home.path("folder.json")), IsEmpty());
}

struct MessageCase {
    const char* name;
    std::string message;
    std::string expected = "no event";
};
void PrintTo(const MessageCase& row, std::ostream* stream) {
    *stream << row.name;
}
class GeminiMessage : public ::testing::TestWithParam<MessageCase> {};

/// The message stands between two others, which a strange one does no harm.
TEST_P(GeminiMessage, givesItsCall) {
    const ChatHome home;
    const std::vector<std::string> texts =
        told(home.parse(geminiChat("s", {geminiMessageWith("first", R"({"input":1})"), GetParam().message,
                                         geminiMessageWith("last", R"({"input":1})")})));
    std::vector<std::string> expected{"gemini first s m 1772445641.000 1/0/0/0/0 (none)"};
    if (GetParam().expected != "no event") expected.push_back(GetParam().expected);
    expected.push_back("gemini last s m 1772445641.000 1/0/0/0/0 (none)");
    EXPECT_EQ(texts, expected);
}

MessageCase tokens(const char* name, std::string_view json, std::string_view counters) {
    return {name, geminiMessageWith("i", json), "gemini i s m 1772445641.000 " + std::string{counters} + " (none)"};
}

/// A message with one member, `member`, in place of the one of the same key.
std::string messageWith(std::string_view key, std::string_view member) {
    std::string message = "{";
    const auto add = [&](std::string_view ownKey, std::string_view own) {
        const std::string_view chosen = key == ownKey ? member : own;
        if (chosen.empty()) return;
        if (message.size() > 1) message += ",";
        message += chosen;
    };
    add("type", R"("type":"gemini")");
    add("id", R"("id":"i")");
    add("tokens", R"("tokens":{"input":5,"output":6})");
    add("model", R"("model":"m")");
    add("timestamp", R"("timestamp":"2026-03-02T10:00:41Z")");
    return message + "}";
}

const std::string plain = "gemini i s m 1772445641.000 5/6/0/0/0 (none)";
const std::string ofNoModel = "gemini i s gemini 1772445641.000 5/6/0/0/0 (none)";
const std::string ofNoTime = "gemini i s m -62135769600.000 5/6/0/0/0 (none)";

INSTANTIATE_TEST_SUITE_P(
    Tokens, GeminiMessage,
    ::testing::Values(
        tokens("allFive", R"({"input":100,"output":10,"cached":40,"thoughts":50,"tool":7,"total":167})",
               "67/60/0/0/40"),
        tokens("thoughtsAreOutput", R"({"output":10,"thoughts":50})", "0/60/0/0/0"),
        tokens("moreCachedThanInput", R"({"input":100,"cached":120,"tool":7})", "7/0/0/0/120"),
        tokens("asMuchCachedAsInput", R"({"input":100,"cached":100})", "0/0/0/0/100"),
        tokens("toolIsInput", R"({"tool":7})", "7/0/0/0/0"), tokens("cachedAlone", R"({"cached":9})", "0/0/0/0/9"),
        tokens("floatsAreCutOff", R"({"input":3.9,"output":1e2})", "3/100/0/0/0"),
        tokens("otherThanNumbersAreZero", R"({"input":"3","output":[4],"cached":null,"thoughts":true,"tool":2})",
               "2/0/0/0/0"),
        tokens("negativeOutputStays", R"({"output":-5})", "0/-5/0/0/0"),
        tokens("negativeCachedAddsToTheInput", R"({"input":5,"cached":-2,"output":1})", "7/1/0/0/-2"),
        tokens("counterTwiceTheFirstCounts", R"({"input":1,"input":2})", "1/0/0/0/0"),
        tokens("integersBeyondFloatsStayExact", R"({"input":9007199254740993})", "9007199254740993/0/0/0/0"),
        tokens("unusedTotalBeyond64Bits", R"({"input":1,"total":99999999999999999999})", "1/0/0/0/0"),
        MessageCase{"allZero", geminiMessage("i", {})}, MessageCase{"tokensEmpty", geminiMessageWith("i", "{}")},
        MessageCase{"sumZeroOfNegativeAndPositive", geminiMessageWith("i", R"({"output":-5,"tool":5})")}),
    [](const auto& row) { return std::string{row.param.name}; });

INSTANTIATE_TEST_SUITE_P(
    Members, GeminiMessage,
    ::testing::Values(MessageCase{"plain", messageWith("", ""), plain},
                      MessageCase{"typeUser", messageWith("type", R"("type":"user")")},
                      MessageCase{"typeInOtherCase", messageWith("type", R"("type":"Gemini")")},
                      MessageCase{"typeMissing", messageWith("type", "")},
                      MessageCase{"typeAnArray", messageWith("type", R"("type":["gemini"])")},
                      MessageCase{"typeEscaped", messageWith("type", R"("\u0074ype":"gemin\u0069")"), plain},
                      MessageCase{"tokensMissing", messageWith("tokens", "")},
                      MessageCase{"tokensNull", messageWith("tokens", R"("tokens":null)")},
                      MessageCase{"tokensAnArray", messageWith("tokens", R"("tokens":[5])")},
                      MessageCase{"tokensANumber", messageWith("tokens", R"("tokens":5)")},
                      MessageCase{"idMissing", messageWith("id", "")},
                      MessageCase{"idEmpty", messageWith("id", R"("id":"")")},
                      MessageCase{"idANumber", messageWith("id", R"("id":7)")},
                      MessageCase{"modelMissing", messageWith("model", ""), ofNoModel},
                      MessageCase{"modelEmpty", messageWith("model", R"("model":"")"), ofNoModel},
                      MessageCase{"modelNull", messageWith("model", R"("model":null)"), ofNoModel},
                      MessageCase{"timeMissing", messageWith("timestamp", ""), ofNoTime},
                      MessageCase{"timeANumber", messageWith("timestamp", R"("timestamp":1772445641)"), ofNoTime},
                      MessageCase{"timeThatIsNone", messageWith("timestamp", R"("timestamp":"now")"), ofNoTime},
                      MessageCase{"timeWithAZone",
                                  messageWith("timestamp", R"("timestamp":"2026-03-02T11:00:41.500+01:00")"),
                                  "gemini i s m 1772445641.500 5/6/0/0/0 (none)"}),
    [](const auto& row) { return std::string{row.param.name}; });

// Messages of one identity

struct FirstCase {
    const char* name;
    std::vector<std::string> messages;
    std::vector<std::string> expected;
};
void PrintTo(const FirstCase& row, std::ostream* stream) {
    *stream << row.name;
}
class GeminiIdentity : public ::testing::TestWithParam<FirstCase> {};

TEST_P(GeminiIdentity, belongsToTheFirstMessage) {
    const ChatHome home;
    EXPECT_EQ(told(home.parse(geminiChat("s", GetParam().messages))), GetParam().expected);
}

const std::string small = geminiMessageWith("i", R"({"input":1,"output":1})");
const std::string large = geminiMessageWith("i", R"({"input":9,"output":9})");
const std::string smallEvent = "gemini i s m 1772445641.000 1/1/0/0/0 (none)";
const std::string largeEvent = "gemini i s m 1772445641.000 9/9/0/0/0 (none)";

INSTANTIATE_TEST_SUITE_P(
    ByOrder, GeminiIdentity,
    ::testing::Values(FirstCase{"smallerFirst", {small, large}, {smallEvent}},
                      FirstCase{"largerFirst", {large, small, large}, {largeEvent}},
                      FirstCase{"unusedFirst", {geminiMessageWith("i", "{}"), large}, {}},
                      FirstCase{"userFirst", {R"({"id":"i","type":"user","tokens":{"input":5}})", large}, {largeEvent}},
                      FirstCase{"withoutTokensFirst", {R"({"id":"i","type":"gemini"})", large}, {largeEvent}},
                      FirstCase{"otherIdentityBetween",
                                {small, geminiMessageWith("j", R"({"input":2})"), large},
                                {smallEvent, "gemini j s m 1772445641.000 2/0/0/0/0 (none)"}}),
    [](const auto& row) { return std::string{row.param.name}; });

// Counters that 64 bits cannot hold

class GeminiOverflowDeathTest : public ::testing::TestWithParam<const char*> {};

TEST_P(GeminiOverflowDeathTest, endsTheProcess) {
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    const ChatHome home;
    const std::string content = geminiChat("s", {geminiMessageWith("i", GetParam())});
    EXPECT_EXIT(static_cast<void>(home.parse(content)), ::testing::KilledBySignal(SIGABRT), "overflowed");
}

INSTANTIATE_TEST_SUITE_P(ByCounter, GeminiOverflowDeathTest,
                         ::testing::Values(R"({"input":99999999999999999999})",
                                           R"({"input":9223372036854775807,"tool":1})",
                                           R"({"output":9223372036854775807,"thoughts":1})",
                                           R"({"input":-9223372036854775808,"cached":1})",
                                           R"({"input":9223372036854775807,"output":1})"));

}  // namespace
}  // namespace quorvane::testing
