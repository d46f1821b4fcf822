#include <csignal>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/index/SQLiteStatement.h"
#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/ingest/UsageIndexer.h"
#include "QuorvaneCore/providers/ClaudeProvider.h"
#include "tests/support/ScratchHome.h"

namespace quorvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::ScratchHome;
using ::testing::UnorderedElementsAre;
using namespace std::string_literals;

/// All of an event in one text.
std::string describe(const UsageEvent& event) {
    return fmt::format("{} {} {} {} {:.3f} {}/{}/{}/{}/{} {}", rawName(event.provider), event.messageId,
                       event.requestId, event.model, event.timestamp.secondsSince1970, event.usage.input,
                       event.usage.output, event.usage.cacheCreate5m, event.usage.cacheCreate1h, event.usage.cacheRead,
                       event.project.value_or("(none)"));
}

std::string describe(const std::optional<UsageEvent>& event) {
    return event ? describe(*event) : "no event";
}

std::vector<std::string> describe(const std::vector<UsageEvent>& events) {
    std::vector<std::string> texts;
    for (const UsageEvent& event : events)
        texts.push_back(describe(event));
    return texts;
}

/// A line as the agent writes it, with all that is read of it.
const std::string fullLine =
    R"({"type":"assistant","requestId":"req","timestamp":"2026-01-31T12:30:45.125Z","cwd":"/home/user/app",)"
    R"("message":{"id":"msg","model":"model","usage":{"input_tokens":11,"output_tokens":22,)"
    R"("cache_read_input_tokens":33,"cache_creation_input_tokens":99,"cache_creation":)"
    R"({"ephemeral_5m_input_tokens":44,"ephemeral_1h_input_tokens":55}}}})";
const std::string fullEvent = "claude msg req model 1769862645.125 11/22/44/55/33 app";

/// `fullLine` with `part`, which must be in it, replaced.
std::string with(std::string_view part, std::string_view replacement) {
    std::string line = fullLine;
    const std::size_t at = line.find(part);
    if (at == std::string::npos) throw std::runtime_error{"not in the line: " + std::string{part}};
    return line.replace(at, part.size(), replacement);
}

/// `fullLine` with a member in front of all others, or behind them.
std::string before(std::string_view member) {
    return "{" + std::string{member} + "," + fullLine.substr(1);
}
std::string behind(std::string_view member) {
    return fullLine.substr(0, fullLine.size() - 1) + "," + std::string{member} + "}";
}

std::string repeated(std::string_view text, std::size_t count) {
    std::string result;
    result.reserve(text.size() * count);
    for (std::size_t index = 0; index < count; ++index)
        result += text;
    return result;
}

struct DecodeCase {
    const char* name;
    std::string line;
    std::string expected = "no event";
};

void PrintTo(const DecodeCase& row, std::ostream* stream) {
    *stream << row.name;
}

const std::string usagePart =
    fullLine.substr(fullLine.find("{\"input_tokens\""), fullLine.find("}}}}") + 2 - fullLine.find("{\"input_tokens\""));

std::string withUsage(std::string_view usage) {
    return with(usagePart, usage);
}

/// The event of `fullLine` with other counters, in the order input, output, five minutes, one hour, cache reads.
std::string counters(std::string_view usage) {
    return "claude msg req model 1769862645.125 " + std::string{usage} + " app";
}

std::string dated(std::string_view seconds) {
    return "claude msg req model " + std::string{seconds} + " 11/22/44/55/33 app";
}

std::string inProject(std::string_view project) {
    return "claude msg req model 1769862645.125 11/22/44/55/33 " + std::string{project};
}

const std::string distantPast = dated("-62135769600.000");

std::vector<DecodeCase> typeCases() {
    const std::string type = R"("type":"assistant")";
    return {
        {"fullLine", fullLine, fullEvent},
        {"typeUser", with("assistant", "user")},
        {"typeInOtherCase", with("assistant", "Assistant")},
        {"typeWithABlank", with("assistant", "assistant ")},
        {"typeEmpty", with("assistant", "")},
        {"typeMissing", with(type + ",", "")},
        {"typeANumber", with(type, R"("type":1)")},
        {"typeNull", with(type, R"("type":null)")},
        {"typeAnArray", with(type, R"("type":["assistant"])")},
        {"typeInTheMessageOnly", with(type + ",", R"("message2":{"type":"assistant"},)")},
        {"typeLast",
         "{" + fullLine.substr(fullLine.find("\"requestId"), fullLine.size() - fullLine.find("\"requestId") - 1) + "," +
             type + "}",
         fullEvent},
        {"typeEscaped", with("\"assistant\"", R"("\u0061ssistant")"), fullEvent},
        {"typeKeyEscaped", with("\"type\"", R"("\u0074ype")"), fullEvent},
        {"typeUserEscaped", with("\"assistant\"", R"("\u0075ser")")},
        {"typeTwiceTheFirstCounts", behind(R"("type":"user")"), fullEvent},
        {"typeTwiceTheFirstIsUser", before(R"("type":"user")")},
        {"typeTwiceTheFirstIsANumber", before(R"("type":1)")},
        {"typeBehindBracesInTexts", before(R"("a":"}]{[\"","b":["}",{"c":"\\"}])"), fullEvent},
        {"typeBehindALongText", before("\"a\":\"" + std::string(100'000, 'x') + "\""), fullEvent},
        {"typeBehindALargeArray", before("\"a\":[" + repeated("1,", 10'000) + "1]"), fullEvent},
        {"typeUserBehindALargeArray", before("\"a\":[" + repeated("1,", 10'000) + "1],\"type\":\"user\"")},
        {"typeOfAnInnerObjectFirst", before(R"("a":{"type":"user"})"), fullEvent},
        {"apiError", before(R"("isApiErrorMessage":true)")},
        {"apiErrorLast", behind(R"("isApiErrorMessage":true)")},
        {"apiErrorFalse", before(R"("isApiErrorMessage":false)"), fullEvent},
        {"apiErrorNull", before(R"("isApiErrorMessage":null)"), fullEvent},
        {"apiErrorAsText", before(R"("isApiErrorMessage":"true")"), fullEvent},
        {"apiErrorAsNumber", before(R"("isApiErrorMessage":1)"), fullEvent},
        {"apiErrorInTheMessage", with(R"("message":{)", R"("message":{"isApiErrorMessage":true,)"), fullEvent},
    };
}

std::vector<DecodeCase> identityCases() {
    return {
        {"messageMissing", with("\"message\"", "\"massage\"")},
        {"messageNull", with("\"message\":{", "\"message\":null,\"m\":{")},
        {"messageAnArray", with("\"message\":{", "\"message\":[{}],\"m\":{")},
        {"messageAText", with("\"message\":{", "\"message\":\"{}\",\"m\":{")},
        {"messageIdMissing", with(R"("id":"msg",)", "")},
        {"messageIdEmpty", with(R"("msg")", R"("")")},
        {"messageIdANumber", with(R"("msg")", "1")},
        {"messageIdNull", with(R"("msg")", "null")},
        {"messageIdOnTopOnly", with(R"("message":{"id":"msg",)", R"("id":"msg","message":{)")},
        {"requestIdMissing", with(R"("requestId":"req",)", "")},
        {"requestIdEmpty", with(R"("req")", R"("")")},
        {"requestIdANumber", with(R"("req")", "1")},
        {"requestIdNull", with(R"("req")", "null")},
        {"requestIdInTheMessageOnly", with(R"("requestId":"req",)", R"("message2":{"requestId":"req"},)")},
        {"modelMissing", with(R"("model":"model",)", "")},
        {"modelEmpty", with(R"(:"model")", R"(:"")")},
        {"modelANumber", with(R"(:"model")", ":1")},
        {"modelNull", with(R"(:"model")", ":null")},
        {"textsWithEscapes", with(R"("msg")", R"("m\"\\\u00fc\ud83d\ude00")"),
         "claude m\"\\ü😀 req model 1769862645.125 11/22/44/55/33 app"},
        {"nulEscapeInAText", with(R"("msg")", R"("m\u0000sg")"),
         "claude m\0sg req model 1769862645.125 11/22/44/55/33 app"s},
        {"halfASurrogatePairInAText", with(R"(:"model")", R"(:"mo\ud83d")"),
         "claude msg req mo\uFFFD 1769862645.125 11/22/44/55/33 app"},
    };
}

std::vector<DecodeCase> counterCases() {
    return {
        {"usageMissing", with("\"usage\"", "\"usages\"")},
        {"usageNull", withUsage("null")},
        {"usageAnArray", withUsage("[1]")},
        {"usageEmptyArray", withUsage("[]")},
        {"usageAText", withUsage("\"x\"")},
        {"usageEmpty", withUsage("{}")},
        {"usageOfOneUnknownKey", withUsage(R"({"unknown":null})"), counters("0/0/0/0/0")},
        {"countersAllZero", withUsage(R"({"input_tokens":0,"output_tokens":0})"), counters("0/0/0/0/0")},
        {"splitOfOneHourAlone",
         withUsage(R"({"cache_creation":{"ephemeral_1h_input_tokens":200},"cache_creation_input_tokens":500})"),
         counters("0/0/0/200/0")},
        {"splitOfFiveMinutesAlone",
         withUsage(R"({"cache_creation_input_tokens":500,"cache_creation":{"ephemeral_5m_input_tokens":200}})"),
         counters("0/0/200/0/0")},
        {"splitEmpty", withUsage(R"({"cache_creation":{},"cache_creation_input_tokens":500})"), counters("0/0/0/0/0")},
        {"splitMissing", withUsage(R"({"cache_creation_input_tokens":500})"), counters("0/0/500/0/0")},
        {"splitNull", withUsage(R"({"cache_creation":null,"cache_creation_input_tokens":500})"),
         counters("0/0/500/0/0")},
        {"splitAnArray", withUsage(R"({"cache_creation":[1],"cache_creation_input_tokens":500})"),
         counters("0/0/500/0/0")},
        {"splitANumber", withUsage(R"({"cache_creation":3,"cache_creation_input_tokens":500})"),
         counters("0/0/500/0/0")},
        {"floatsAreCutOff", withUsage(R"({"input_tokens":3.9,"output_tokens":-3.9,"cache_read_input_tokens":1e2})"),
         counters("3/-3/0/0/100")},
        {"otherThanNumbersAreZero",
         withUsage(R"({"input_tokens":"3","output_tokens":null,"cache_read_input_tokens":[3]})"),
         counters("0/0/0/0/0")},
        {"negativeStays", withUsage(R"({"input_tokens":-5})"), counters("-5/0/0/0/0")},
        {"largestAndSmallest",
         withUsage(R"({"input_tokens":9223372036854775807,"output_tokens":-9223372036854775808})"),
         counters("9223372036854775807/-9223372036854775808/0/0/0")},
        {"integersBeyondFloatsStayExact", withUsage(R"({"input_tokens":9007199254740993})"),
         counters("9007199254740993/0/0/0/0")},
        {"countersOnTopDoNotCount", before(R"("input_tokens":7)"), fullEvent},
        {"counterTwiceTheFirstCounts", withUsage(R"({"input_tokens":1,"input_tokens":2})"), counters("1/0/0/0/0")},
        {"usageTwiceTheFirstCounts", with("\"usage\":", R"("usage":{"input_tokens":1},"usage":)"),
         counters("1/0/0/0/0")},
        {"unusedTotalBeyond64Bits", with("_tokens\":99", "_tokens\":99999999999999999999"), fullEvent},
        {"countBeyond64BitsInALineOfAnotherType",
         R"({"type":"user","message":{"usage":{"input_tokens":99999999999999999999}}})"},
        {"countBeyond64BitsInALineWithoutAModel",
         R"({"type":"assistant","requestId":"r","message":{"id":"m","usage":{"input_tokens":99999999999999999999}}})"},
    };
}

std::vector<DecodeCase> dateAndProjectCases() {
    const std::string date = R"("2026-01-31T12:30:45.125Z")";
    const std::string folder = R"("/home/user/app")";
    return {
        {"dateWithoutAFraction", with(date, R"("2026-01-31T12:30:45Z")"), dated("1769862645.000")},
        {"dateWithAZone", with(date, R"("2026-01-31T13:30:45.125+01:00")"), dated("1769862645.125")},
        {"dateMissing", with("\"timestamp\"", "\"time\""), distantPast},
        {"dateThatIsNone", with(date, R"("yesterday")"), distantPast},
        {"dateWithoutATime", with(date, R"("2026-01-31")"), distantPast},
        {"dateEmpty", with(date, R"("")"), distantPast},
        {"dateANumber", with(date, "1769862645"), distantPast},
        {"dateNull", with(date, "null"), distantPast},
        {"folderOfALoneSlash", with(folder, R"("/")"), inProject("/")},
        {"folderOfSlashes", with(folder, R"("///")"), inProject("/")},
        {"folderWithASlashAtTheEnd", with(folder, R"("/home/user/app/")"), inProject("app")},
        {"folderWithoutASlash", with(folder, R"("app")"), inProject("app")},
        {"folderWithEscapes", with(folder, R"("\/home\/caf\u00e9")"), inProject("café")},
        {"folderEmpty", with(folder, R"("")"), inProject("")},
        {"folderMissing", with("\"cwd\"", "\"dir\""), inProject("(none)")},
        {"folderANumber", with(folder, "1"), inProject("(none)")},
        {"folderNull", with(folder, "null"), inProject("(none)")},
    };
}

std::vector<DecodeCase> hostileCases() {
    return {
        {"emptyLine", ""},
        {"blanks", "  \t"},
        {"number", "12"},
        {"text", "\"assistant\""},
        {"array", "[" + fullLine + "]"},
        {"emptyObject", "{}"},
        {"half", fullLine.substr(0, fullLine.size() / 2)},
        {"allButTheLastByte", fullLine.substr(0, fullLine.size() - 1)},
        {"trailingText", fullLine + " x"},
        {"trailingObject", fullLine + "{}"},
        {"blanksAround", " \t" + fullLine + "\r", fullEvent},
        {"nulByteBehind", fullLine + "\0"s},
        {"nulByteInAText", with("user", "us\0er"s)},
        {"nulByteBehindALongInteger", behind(R"("n":99999999999999999999)") + "\0}"s},
        {"onlyNulBytes", std::string(20, '\0')},
        {"integerBeyond64BitsElsewhere", behind(R"("n":99999999999999999999,"m":-99999999999999999999)"), fullEvent},
        {"integerOf400DigitsElsewhere", behind("\"n\":" + std::string(400, '9'))},
        {"floatBeyondAllElsewhere", behind(R"("n":1e400)")},
        {"floatTooSmallElsewhere", behind(R"("n":1e-400)"), fullEvent},
        {"invalidUTF8Elsewhere", behind("\"t\":\"\xff\"")},
        {"overlongUTF8Elsewhere", behind("\"t\":\"\xc0\xaf\"")},
        {"invalidUTF8InFrontOfTheType", before("\"t\":\"\xff\"")},
        {"halfASurrogatePairElsewhere", behind(R"("t":"\ud83d","u":"\udc00\ud83d x")"), fullEvent},
        {"halfASurrogatePairInFrontOfTheType", before(R"("t":"\ud83d")"), fullEvent},
        {"halfASurrogatePairAndInvalidUTF8", behind("\"t\":\"\\ud83d\xff\"")},
        {"byteOrderMark", "\xef\xbb\xbf" + fullLine},
        {"byteOrderMarkAndALongInteger", "\xef\xbb\xbf" + behind(R"("n":99999999999999999999)")},
        {"nestingOf1000Levels", behind("\"n\":" + repeated("[", 1000) + repeated("]", 1000)), fullEvent},
        {"nestingOf10000Levels", behind("\"n\":" + repeated("[", 10'000) + repeated("]", 10'000))},
        {"nestingOf10000LevelsInFrontOfTheType", before("\"n\":" + repeated("[", 10'000) + repeated("]", 10'000))},
        {"nestingOf10000OpenLevels", repeated("{\"type\":", 10'000)},
        {"controlCharacterInAText", behind("\"t\":\"\x01\"")},
        {"singleQuotes", "{'type':'assistant'}"},
        {"comment", "/**/" + fullLine},
        {"infinityElsewhere", behind(R"("n":Infinity)")},
    };
}

class ClaudeProviderDecode : public ::testing::TestWithParam<DecodeCase> {};

TEST_P(ClaudeProviderDecode, givesTheCallOfTheLine) {
    EXPECT_EQ(describe(ClaudeProvider::decode(GetParam().line)), GetParam().expected);
}

TEST_P(ClaudeProviderDecode, givesTheSameFromAFile) {
    const ScratchHome home;
    const DecodeCase& row = GetParam();
    // A call in front and one behind: a strange line does no harm to its neighbours.
    const std::string file = home.write("log.jsonl", fullLine + "\n" + row.line + "\n" + fullLine + "\n");
    std::vector<std::string> expected{fullEvent};
    if (row.expected != "no event") expected.push_back(row.expected);
    expected.push_back(fullEvent);
    const DecodedFile decoded = ClaudeProvider{home.path()}.decodeFile(file, 0);
    EXPECT_EQ(describe(decoded.events), expected);
    EXPECT_EQ(decoded.consumed, static_cast<std::int64_t>(home.read("log.jsonl").size()));
}

const auto nameOfCase = [](const auto& row) { return std::string{row.param.name}; };
INSTANTIATE_TEST_SUITE_P(Types, ClaudeProviderDecode, ::testing::ValuesIn(typeCases()), nameOfCase);
INSTANTIATE_TEST_SUITE_P(Identities, ClaudeProviderDecode, ::testing::ValuesIn(identityCases()), nameOfCase);
INSTANTIATE_TEST_SUITE_P(Counters, ClaudeProviderDecode, ::testing::ValuesIn(counterCases()), nameOfCase);
INSTANTIATE_TEST_SUITE_P(DatesAndProjects, ClaudeProviderDecode, ::testing::ValuesIn(dateAndProjectCases()),
                         nameOfCase);
INSTANTIATE_TEST_SUITE_P(Hostile, ClaudeProviderDecode, ::testing::ValuesIn(hostileCases()), nameOfCase);

struct OverflowCase {
    const char* name;
    const char* usage;
};

class ClaudeProviderDeathTest : public ::testing::TestWithParam<OverflowCase> {};

TEST_P(ClaudeProviderDeathTest, aTokenCountBeyond64BitsEndsTheProcess) {
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    const std::string line = withUsage(GetParam().usage);
    EXPECT_EXIT(static_cast<void>(ClaudeProvider::decode(line)), ::testing::KilledBySignal(SIGABRT), "overflow");
}

INSTANTIATE_TEST_SUITE_P(
    OfEachCounter, ClaudeProviderDeathTest,
    ::testing::Values(OverflowCase{"input", R"({"input_tokens":9223372036854775808})"},
                      OverflowCase{"output", R"({"output_tokens":-9223372036854775809})"},
                      OverflowCase{"cacheRead", R"({"cache_read_input_tokens":1e19})"},
                      OverflowCase{"fiveMinutes", R"({"cache_creation":{"ephemeral_5m_input_tokens":-1e300}})"},
                      OverflowCase{"oneHour",
                                   R"({"cache_creation":{"ephemeral_1h_input_tokens":99999999999999999999}})"},
                      OverflowCase{"cacheTotal", R"({"cache_creation_input_tokens":9.3e18})"}),
    [](const auto& row) { return std::string{row.param.name}; });

// Files

/// A line of a call: of one message there are several, with growing output.
std::string line(std::string_view message, std::int64_t output, std::string_view model = "model") {
    return fmt::format(
        R"({{"type":"assistant","requestId":"r-{0}","timestamp":"2026-01-31T12:30:45.125Z","cwd":"/home/user/app",)"
        R"("message":{{"id":"{0}","model":"{2}","usage":{{"input_tokens":10,"output_tokens":{1}}}}}}})"
        "\n",
        message, output, model);
}

std::string eventOf(std::string_view message, std::int64_t output, std::string_view model = "model") {
    return fmt::format("claude {0} r-{0} {2} 1769862645.125 10/{1}/0/0/0 app", message, output, model);
}

class ClaudeProviderFiles : public ::testing::Test {
protected:
    std::string write(const std::string& name, std::string_view content) const {
        return home.write(".claude/projects/" + name, content);
    }
    std::string path(const std::string& name) const { return home.path(".claude/projects/" + name); }

    ScratchHome home;
    ClaudeProvider provider;
};

TEST_F(ClaudeProviderFiles, saysWhatItIs) {
    EXPECT_EQ(provider.id(), ProviderID::Claude);
    EXPECT_THAT(provider.watchPaths(), ElementsAre(home.path(".claude/projects")));
    EXPECT_TRUE(provider.canTailAppend());
    EXPECT_EQ(provider.parserRevision(), 1);
    EXPECT_EQ(provider.resetPolicy(), ResetPolicy::RereadWhole);
    EXPECT_EQ(provider.watermarkTimestamp(5), std::nullopt);
}

TEST_F(ClaudeProviderFiles, isAvailableIfThereIsAnythingAtItsRoot) {
    EXPECT_FALSE(provider.isAvailable());
    home.makeFolder(".claude/projects");
    EXPECT_TRUE(provider.isAvailable());
    EXPECT_TRUE(ClaudeProvider{home.write("file", "")}.isAvailable());
    EXPECT_FALSE(ClaudeProvider{home.path("missing")}.isAvailable());
}

TEST_F(ClaudeProviderFiles, anotherRootCanBeGiven) {
    const ClaudeProvider other{home.path("elsewhere")};
    const std::string log = home.write("elsewhere/a.jsonl", line("m", 1));
    EXPECT_THAT(other.watchPaths(), ElementsAre(home.path("elsewhere")));
    EXPECT_THAT(other.jsonlFiles(), ElementsAre(log));
    EXPECT_THAT(provider.jsonlFiles(), IsEmpty());
}

TEST_F(ClaudeProviderFiles, areThoseOfTheExtensionAtAnyDepth) {
    const std::vector<std::string> expected{
        write("one.jsonl", ""),           write("app/two.jsonl", ""),   write("app/session/subagents/agent.jsonl", ""),
        write("app/name with.jsonl", ""), write("app/a.b.c.jsonl", ""), write("app.jsonl/three.jsonl", "")};
    for (const char* name : {"upper.JSONL", "mixed.Jsonl", "jsonl", "other.json", "backup.jsonl.bak", "longer.jsonlx",
                             ".hidden.jsonl", ".jsonl", ".git/hidden.jsonl", "app/.cache/deep/hidden.jsonl"}) {
        write(name, line("m", 1));
    }
    std::vector<std::string> entries = expected;
    entries.push_back(path("app.jsonl"));  // a folder of that extension is an entry too; it has no lines
    EXPECT_THAT(provider.jsonlFiles(), ::testing::UnorderedElementsAreArray(entries));
    EXPECT_EQ(provider.dataFiles(), provider.jsonlFiles());
    EXPECT_THAT(provider.loadEvents(), IsEmpty());
}

TEST_F(ClaudeProviderFiles, ofAMissingOrStrangeRootAreNone) {
    EXPECT_THAT(provider.jsonlFiles(), IsEmpty());
    EXPECT_THAT(provider.loadEvents(), IsEmpty());
    EXPECT_THAT(ClaudeProvider{home.write("file.jsonl", line("m", 1))}.jsonlFiles(), IsEmpty());
}

TEST_F(ClaudeProviderFiles, decodeToTheirEventsInOrderWithRepeatedLines) {
    const std::string content = line("a", 1) + line("b", 2) + "\n{\"type\":\"user\"}\n" + line("a", 3);
    const DecodedFile decoded = provider.decodeFile(write("log.jsonl", content), 0);
    EXPECT_THAT(describe(decoded.events), ElementsAre(eventOf("a", 1), eventOf("b", 2), eventOf("a", 3)));
    EXPECT_EQ(decoded.consumed, static_cast<std::int64_t>(content.size()));
}

TEST_F(ClaudeProviderFiles, decodeFromAnOffsetOn) {
    const auto offset = static_cast<std::int64_t>(line("a", 1).size());
    const std::string log = write("log.jsonl", line("a", 1) + line("b", 2));
    EXPECT_THAT(describe(provider.decodeFile(log, offset).events), ElementsAre(eventOf("b", 2)));
}

TEST_F(ClaudeProviderFiles, halfWrittenLastLineWaitsForItsEnd) {
    const std::string last = line("b", 2);
    const std::string log = write("log.jsonl", line("a", 1) + last.substr(0, last.size() / 2));
    const DecodedFile first = provider.decodeFile(log, 0);
    EXPECT_THAT(describe(first.events), ElementsAre(eventOf("a", 1)));
    EXPECT_EQ(first.consumed, static_cast<std::int64_t>(line("a", 1).size()));
    EXPECT_THAT(describe(provider.loadEvents()), ElementsAre(eventOf("a", 1)));

    // All but the line feed: the line is finished.
    home.append(log, last.substr(last.size() / 2, last.size() - last.size() / 2 - 1));
    const DecodedFile second = provider.decodeFile(log, first.consumed);
    EXPECT_THAT(describe(second.events), ElementsAre(eventOf("b", 2)));
    EXPECT_EQ(second.consumed, static_cast<std::int64_t>(line("a", 1).size() + last.size() - 1));

    home.append(log, "\n");
    const DecodedFile third = provider.decodeFile(log, second.consumed);
    EXPECT_THAT(third.events, IsEmpty());
    EXPECT_EQ(third.consumed, second.consumed + 1);
}

TEST_F(ClaudeProviderFiles, thatCannotBeReadGiveNoEventsAndTheOffsetBack) {
    const DecodedFile missing = provider.decodeFile(path("missing.jsonl"), 7);
    EXPECT_THAT(missing.events, IsEmpty());
    EXPECT_EQ(missing.consumed, 7);
    home.makeFolder(".claude/projects/folder.jsonl");
    const DecodedFile folder = provider.decodeFile(path("folder.jsonl"), 7);
    EXPECT_THAT(folder.events, IsEmpty());
    EXPECT_EQ(folder.consumed, 7);
}

TEST_F(ClaudeProviderFiles, withALineOf100MegabytesAreReadLikeAnyOther) {
    const std::string big = "\"text\":\"" + std::string(100'000'000, 'x') + "\",";
    const std::string log = write("log.jsonl", "{" + big + line("a", 1).substr(1) + line("b", 2));
    const DecodedFile decoded = provider.decodeFile(log, 0);
    EXPECT_THAT(describe(decoded.events), ElementsAre(eventOf("a", 1), eventOf("b", 2)));
    EXPECT_EQ(decoded.consumed, static_cast<std::int64_t>(std::filesystem::file_size(log)));
}

// Both roads to all events

class ClaudeProviderRoads : public ClaudeProviderFiles {
protected:
    ClaudeProviderRoads() {
        write("app/first.jsonl", line("a", 1) + line("a", 7) + line("b", 2) + "\n" + line("c", 3) + "no JSON\n");
        // A resumed session carries its messages on; of these, one has more output here and one less.
        write("app/resumed.jsonl", line("a", 7) + line("b", 5) + line("c", 1) + line("d", 4));
        write("app/resumed/subagents/agent.jsonl", line("e", 6) + line("d", 4) + line("e", 6, "other"));
        write("other/third.jsonl", "{\"type\":\"user\"}\n" + line("f", 0) + line("g", 9).substr(0, 30));
        write("other/.hidden/fourth.jsonl", line("h", 1));
        write("other/FIFTH.JSONL", line("i", 1));
    }

    [[nodiscard]] std::vector<std::string> rows() const {
        const auto database = SQLiteDatabase::openReadOnly(index->path());
        const auto select = database->prepare(
            "SELECT provider, msg_id, req_id, model, ts, input, output, cache5m, cache1h, cache_read, project "
            "FROM events");
        std::vector<std::string> rows;
        while (select->step()) {
            UsageEvent event;
            event.provider = providerFromRawName(select->textView(0)).value_or(ProviderID::Amp);
            event.messageId = select->textView(1);
            event.requestId = select->textView(2);
            event.model = select->textView(3);
            event.timestamp = Date{select->real(4)};
            event.usage = {.input = select->integer(5),
                           .output = select->integer(6),
                           .cacheCreate5m = select->integer(7),
                           .cacheCreate1h = select->integer(8),
                           .cacheRead = select->integer(9)};
            event.project = select->text(10);
            rows.push_back(describe(event));
        }
        return rows;
    }

    [[nodiscard]] UsageIndexer::Stats refresh() const { return UsageIndexer{index}.refresh(provider); }

    std::shared_ptr<UsageIndex> index = std::make_shared<UsageIndex>(home.path("usage.sqlite"));
};

TEST_F(ClaudeProviderRoads, loadEventsKeepsTheBestLineOfEachCallAcrossFiles) {
    EXPECT_THAT(describe(provider.loadEvents()),
                UnorderedElementsAre(eventOf("a", 7), eventOf("b", 5), eventOf("c", 3), eventOf("d", 4),
                                     eventOf("e", 6), eventOf("f", 0)));
}

TEST_F(ClaudeProviderRoads, refreshStoresWhatLoadEventsGives) {
    EXPECT_EQ(refresh(),
              (UsageIndexer::Stats{.filesRead = 4, .filesSkipped = 0, .eventsIngested = 12, .fingerprintReads = 4}));
    EXPECT_THAT(rows(), ::testing::UnorderedElementsAreArray(describe(provider.loadEvents())));
}

TEST_F(ClaudeProviderRoads, theyStayTheSameWhileFilesGrow) {
    static_cast<void>(refresh());
    home.append(path("other/third.jsonl"), line("g", 9).substr(30) + line("a", 8));
    home.append(path("app/first.jsonl"), line("j", 1) + line("d", 2));
    write("new/session.jsonl", line("k", 1) + line("b", 6));
    EXPECT_EQ(refresh(),
              (UsageIndexer::Stats{.filesRead = 3, .filesSkipped = 2, .eventsIngested = 6, .fingerprintReads = 3}));
    EXPECT_THAT(rows(), ::testing::UnorderedElementsAreArray(describe(provider.loadEvents())));
    EXPECT_EQ(rows().size(), 9U);
    EXPECT_EQ(refresh().filesSkipped, 5);
}

}  // namespace
}  // namespace quorvane
