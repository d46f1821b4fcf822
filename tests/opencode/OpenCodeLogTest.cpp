// The text log of older versions, for both readers.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/providers/detail/OpenCodeLogReader.h"
#include "tests/opencode/OpenCodeTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Fields = OpenCodeProvider::Fields;

struct FieldsCase {
    const char* name;
    std::string line;
    Fields expected;
};

class OpenCodeLogLine : public ::testing::TestWithParam<FieldsCase> {};

TEST_P(OpenCodeLogLine, isTakenApart) {
    EXPECT_EQ(OpenCodeProvider::parseFields(GetParam().line), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    ByLine, OpenCodeLogLine,
    ::testing::Values(
        FieldsCase{"wordsBetweenFields", "INFO  a=1 word b=2 end", {{"a", "1"}, {"b", "2"}}},
        FieldsCase{"empty", "", {}}, FieldsCase{"blanksOnly", "   ", {}}, FieldsCase{"wordOnly", "word", {}},
        FieldsCase{"theLineEndsBehindTheSign", "a=", {{"a", ""}}},
        FieldsCase{"aBlankBehindTheSign", "a= 5", {{"a", ""}}}, FieldsCase{"noKey", "=x", {{"", "x"}}},
        FieldsCase{"aSignInTheValue", "a=b=c", {{"a", "b=c"}}},
        FieldsCase{"blanksInQuotes", R"(a="x y" b=1)", {{"a", "x y"}, {"b", "1"}}},
        FieldsCase{"anEscapedQuote", R"(a="x\"y" b=1)", {{"a", "x\"y"}, {"b", "1"}}},
        FieldsCase{"anEscapedBackslash", R"(a="x\\" b=1)", {{"a", "x\\"}, {"b", "1"}}},
        FieldsCase{"anEscapedLetterIsTheLetter", R"(a="x\ny")", {{"a", "xny"}}},
        FieldsCase{"noClosingQuote", R"(a="x y b=1)", {{"a", "x y b=1"}}},
        FieldsCase{"aBackslashAtTheEnd", R"(a="x\)", {{"a", "x"}}}, FieldsCase{"aQuoteAtTheEnd", R"(a=")", {{"a", ""}}},
        FieldsCase{"emptyQuotes", R"(a="")", {{"a", ""}}},
        FieldsCase{"aQuoteWithinAValue", R"(a=x"y z)", {{"a", "x\"y"}}},
        FieldsCase{"aFieldRightBehindAQuote", R"(a="x"b=1)", {{"a", "x"}, {"b", "1"}}},
        FieldsCase{"theLaterOneCounts", "a=1 a=2", {{"a", "2"}}},
        FieldsCase{"aTabIsNoBlank", "a=1\tb=2", {{"a", "1\tb=2"}}},
        FieldsCase{"badBytesAreRepaired", "a\xff=\xc3 b=\xc3\xa9", {{"a\xef\xbf\xbd", "\xef\xbf\xbd"}, {"b", "é"}}},
        FieldsCase{"aNulByte", std::string{"a=x\0y b=1", 9}, {{"a", std::string{"x\0y", 3}}, {"b", "1"}}}),
    [](const auto& row) { return std::string{row.param.name}; });

Fields call(const Fields& changes) {
    Fields fields{{"id", "s1"}, {"tokens.input", "1"}};
    for (const auto& [key, value] : changes)
        fields.insert_or_assign(key, value);
    return fields;
}

TEST(OpenCodeLogCall, hasAllThatTheLineTells) {
    const auto event = OpenCodeProvider::decode(OpenCodeProvider::parseFields(
        "INFO timestamp=2026-09-14T10:00:00.500Z run=r7 id=s1 model=anthropic/claude-sonnet-5 tokens.input=1 "
        "tokens.output=2 tokens.reasoning=4 tokens.cache.write=8 tokens.cache.read=16 directory=/home/ana/shop"));
    ASSERT_TRUE(event);
    EXPECT_EQ(event->messageId, "s1");
    EXPECT_EQ(event->requestId, "r7");
    EXPECT_EQ(event->provider, ProviderID::Opencode);
    EXPECT_EQ(event->model, "claude-sonnet-5");
    EXPECT_EQ(event->timestamp.secondsSince1970, 1789380000.5);
    EXPECT_EQ(event->usage, (TokenUsage{.input = 1, .output = 6, .cacheCreate5m = 8, .cacheRead = 16}));
    EXPECT_EQ(event->project, "shop");
}

TEST(OpenCodeLogCall, withoutMoreHasTheNeutralValues) {
    const auto event = OpenCodeProvider::decode(call({}));
    ASSERT_TRUE(event);
    EXPECT_EQ(event->requestId, "opencode-log");
    EXPECT_EQ(event->model, "opencode");
    EXPECT_EQ(event->timestamp, Date::distantPast());
    EXPECT_EQ(event->project, std::nullopt);
}

TEST(OpenCodeLogCall, theSessionIsTheFirstUsableOne) {
    EXPECT_EQ(OpenCodeProvider::decode(call({{"id", "undefined"}, {"session.id", "abc"}}))->messageId, "abc");
    EXPECT_EQ(OpenCodeProvider::decode(call({{"id", "\"\""}, {"session.id", "abc"}}))->messageId, "abc");
    EXPECT_EQ(OpenCodeProvider::decode(call({{"session.id", "abc"}}))->messageId, "s1");
    EXPECT_FALSE(OpenCodeProvider::decode(call({{"id", "undefined"}})));
    EXPECT_FALSE(OpenCodeProvider::decode({{"tokens.input", "1"}}));
}

TEST(OpenCodeLogCall, theModelIsTheFirstUsableOne) {
    EXPECT_EQ(OpenCodeProvider::decode(call({{"model", "undefined"}, {"modelID", "x/y"}}))->model, "y");
    EXPECT_EQ(OpenCodeProvider::decode(call({{"model", "a"}, {"modelID", "b"}}))->model, "a");
    EXPECT_EQ(OpenCodeProvider::decode(call({{"model", "undefined"}}))->model, "opencode");
}

TEST(OpenCodeLogCall, textsThatAreNotUsableCountAsMissing) {
    const auto event =
        OpenCodeProvider::decode(call({{"run", "undefined"}, {"timestamp", "undefined"}, {"directory", "undefined"}}));
    ASSERT_TRUE(event);
    EXPECT_EQ(event->requestId, "opencode-log");
    EXPECT_EQ(event->timestamp, Date::distantPast());
    EXPECT_EQ(event->project, std::nullopt);
}

struct FigureCase {
    const char* name;
    const char* text;
    std::int64_t expected;
};

class OpenCodeLogFigure : public ::testing::TestWithParam<FigureCase> {};

TEST_P(OpenCodeLogFigure, isATruncatedFloat) {
    const auto event = OpenCodeProvider::decode(call({{"tokens.input", GetParam().text}, {"tokens.output", "9"}}));
    ASSERT_TRUE(event);
    EXPECT_EQ(event->usage.input, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(ByText, OpenCodeLogFigure,
                         ::testing::Values(FigureCase{"integer", "12", 12}, FigureCase{"fraction", "1.9", 1},
                                           FigureCase{"belowZero", "-3.9", -3}, FigureCase{"exponent", "2e3", 2000},
                                           FigureCase{"empty", "", 0}, FigureCase{"blankInFront", " 5", 0},
                                           FigureCase{"tabInFront", "\t5", 0}, FigureCase{"textBehind", "5x", 0},
                                           FigureCase{"blankBehind", "5 ", 0}, FigureCase{"word", "undefined", 0}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(OpenCodeLogCall, withoutTokensIsNone) {
    EXPECT_FALSE(OpenCodeProvider::decode(call({{"tokens.input", "0"}})));
    EXPECT_FALSE(OpenCodeProvider::decode(call({{"tokens.input", "-5"}, {"tokens.output", "5"}})));
    EXPECT_FALSE(OpenCodeProvider::decode({{"id", "s1"}}));
}

TEST(OpenCodeLogCallDeathTest, aFigureThat64BitsCannotHoldEndsTheProcess) {
    EXPECT_DEATH(static_cast<void>(OpenCodeProvider::decode(call({{"tokens.input", "1e19"}}))), "");
    EXPECT_DEATH(static_cast<void>(OpenCodeProvider::decode(call({{"tokens.input", "nan"}}))), "");
}

TEST(OpenCodeLogCall, ofMuseSparkBelongsToItsOwnReader) {
    const Fields fields = call({{"model", "Meta/Muse-Spark-1.1"}});
    EXPECT_FALSE(OpenCodeProvider::decode(fields));
    const auto event = MuseSparkProvider::decode(fields);
    ASSERT_TRUE(event);
    EXPECT_EQ(event->provider, ProviderID::MuseSpark);
    EXPECT_EQ(event->model, "Muse-Spark-1.1");
    EXPECT_EQ(event->requestId, "opencode-log");
    EXPECT_FALSE(MuseSparkProvider::decode(call({{"model", "gpt-5"}})));
    EXPECT_FALSE(MuseSparkProvider::decode(call({})));
}

/// Whatever the model, a call is told by one of the two readers and never by both.
TEST(OpenCodeLogCall, isToldByExactlyOneReader) {
    for (const char* model :
         {"", "opencode", "muse-spark", "x/MUSE-spark-2", "meta/spark-large", "muse", "undefined"}) {
        const Fields fields = call({{"model", model}});
        EXPECT_NE(OpenCodeProvider::decode(fields).has_value(), MuseSparkProvider::decode(fields).has_value()) << model;
    }
}

TEST(OpenCodeLog, linesOfOneCallCollapseToTheBest) {
    const OpenCodeHome home;
    home.home.write(home.log, agentLogLine("s1", "gpt-5", 10, 5) + agentLogLine("s1", "gpt-5", 10, 7) +
                                  agentLogLine("s1", "gpt-5", 90, 6) + agentLogLine("s1", "gpt-5", 12, 7) +
                                  agentLogLine("s1", "gpt-5", 1, 1, "run=r2"));
    const std::vector<std::string> expected{"s1 opencode-log gpt-5 12/7/0/0", "s1 r2 gpt-5 1/1/0/0"};
    EXPECT_EQ(told(home.opencode.loadEvents()), expected);
    EXPECT_EQ(told(home.opencode.decodeFile(home.log, 0).events), expected);
    EXPECT_EQ(OpenCodeProvider::parseUsage(home.log, 0, JSONLStreamReader{}).events.size(), 5);
}

TEST(OpenCodeLog, linesThatAreNoUTF8ArePassedOver) {
    const OpenCodeHome home;
    home.home.write(home.log, agentLogLine("bad\xff", "gpt-5", 1, 1) + agentLogLine("s1", "gpt-5", 1, 1) +
                                  agentLogLine("bad\xff", "muse-spark", 1, 1));
    EXPECT_THAT(told(home.opencode.loadEvents()), ElementsAre("s1 opencode-log gpt-5 1/1/0/0"));
    EXPECT_THAT(told(home.opencode.decodeFile(home.log, 0).events), ElementsAre("s1 opencode-log gpt-5 1/1/0/0"));
    EXPECT_THAT(home.museSpark.loadEvents(), IsEmpty());
}

TEST(OpenCodeLog, isReadOnFromItsOffset) {
    const OpenCodeHome home;
    const std::string first = agentLogLine("s1", "gpt-5", 1, 1);
    home.home.write(home.log, first + "INFO id=s2 tokens.inp");
    const DecodedFile read = home.opencode.decodeFile(home.log, 0);
    EXPECT_THAT(told(read.events), ElementsAre("s1 opencode-log gpt-5 1/1/0/0"));
    EXPECT_EQ(read.consumed, static_cast<std::int64_t>(first.size()));
    home.home.append(home.log, "ut=5\n");
    const DecodedFile rest = home.opencode.decodeFile(home.log, read.consumed);
    EXPECT_THAT(told(rest.events), ElementsAre("s2 opencode-log opencode 5/0/0/0"));
    EXPECT_TRUE(home.opencode.canTailAppend());
}

TEST(OpenCodeLog, isParsedOnceForBothReaders) {
    const OpenCodeHome home;
    home.home.write(home.log, agentLogLine("s1", "gpt-5", 1, 1) + agentLogLine("s2", "muse-spark-1.1", 2, 2));
    const std::int64_t before = OpenCodeLogCache::shared().traversalCount();
    EXPECT_THAT(told(home.opencode.loadEvents()), ElementsAre("s1 opencode-log gpt-5 1/1/0/0"));
    EXPECT_THAT(told(home.museSpark.loadEvents()), ElementsAre("s2 opencode-log muse-spark-1.1 2/2/0/0"));
    EXPECT_THAT(told(home.museSpark.decodeFile(home.log, 0).events),
                ElementsAre("s2 opencode-log muse-spark-1.1 2/2/0/0"));
    EXPECT_EQ(OpenCodeLogCache::shared().traversalCount(), before + 1);

    home.home.append(home.log, agentLogLine("s3", "gpt-5", 1, 1));
    EXPECT_EQ(home.opencode.loadEvents().size(), 2);
    EXPECT_EQ(home.museSpark.loadEvents().size(), 1);
    EXPECT_EQ(OpenCodeLogCache::shared().traversalCount(), before + 2);

    home.home.touch(home.log, 10);
    EXPECT_EQ(home.museSpark.loadEvents().size(), 1);
    EXPECT_EQ(OpenCodeLogCache::shared().traversalCount(), before + 3);
}

TEST(OpenCodeLog, ofAnotherPlaceTakesTheCachesPlace) {
    const OpenCodeHome home;
    const std::string other = home.home.write("other.log", agentLogLine("s9", "gpt-5", 1, 1));
    home.home.write(home.log, agentLogLine("s1", "gpt-5", 1, 1));
    const std::int64_t before = OpenCodeLogCache::shared().traversalCount();
    for (int round = 0; round < 2; ++round) {
        EXPECT_THAT(told(home.opencode.loadEvents()), ElementsAre("s1 opencode-log gpt-5 1/1/0/0"));
        EXPECT_THAT(told(OpenCodeProvider{other}.loadEvents()), ElementsAre("s9 opencode-log gpt-5 1/1/0/0"));
    }
    EXPECT_EQ(OpenCodeLogCache::shared().traversalCount(), before + 4);
}

TEST(OpenCodeLog, thatIsGoneGivesNothingAndIsNotKept) {
    const OpenCodeHome home;
    const std::int64_t before = OpenCodeLogCache::shared().traversalCount();
    EXPECT_THAT(OpenCodeLogReader::parse(home.log, JSONLStreamReader{}).opencode, IsEmpty());
    EXPECT_THAT(OpenCodeLogReader::parse(home.log, JSONLStreamReader{}).museSpark, IsEmpty());
    EXPECT_EQ(OpenCodeLogCache::shared().traversalCount(), before + 2);
    EXPECT_EQ(home.museSpark.decodeFile(home.log, 7).consumed, 0);
    EXPECT_EQ(home.opencode.decodeFile(home.log, 7).consumed, 7);
}

/// Muse Spark's reader takes the whole log each time, and its whole size as consumed.
TEST(OpenCodeLog, isReadWholeForMuseSparkWhateverTheOffset) {
    const OpenCodeHome home;
    home.home.write(home.log, agentLogLine("s1", "muse-spark", 1, 1));
    const DecodedFile decoded = home.museSpark.decodeFile(home.log, 20);
    EXPECT_EQ(decoded.events.size(), 1);
    EXPECT_EQ(decoded.consumed, static_cast<std::int64_t>(home.home.read(home.log).size()));
    EXPECT_EQ(home.museSpark.resetPolicy(), ResetPolicy::RereadWhole);
}

TEST(OpenCodeLog, tellsOfMuseSparkByItsBeginning) {
    const OpenCodeHome home;
    home.home.write(home.log, agentLogLine("s1", "gpt-5", 1, 1));
    EXPECT_FALSE(home.museSpark.isAvailable());
    home.home.append(home.log, agentLogLine("s1", "Muse-Spark", 1, 1));
    EXPECT_TRUE(home.museSpark.isAvailable());
    constexpr std::size_t window = 262144;
    home.home.write(home.log, std::string(window - 9, 'x').append("muse-spark"));
    EXPECT_FALSE(home.museSpark.isAvailable());
    home.home.write(home.log, std::string(window - 10, 'x').append("muse-spark"));
    EXPECT_TRUE(home.museSpark.isAvailable());
    home.home.write(home.log, "muse-spark " + std::string(window - 12, 'x') + "é");
    EXPECT_FALSE(home.museSpark.isAvailable()) << "the cut goes through a letter";
    home.home.write(home.log, "muse-spark\xff");
    EXPECT_FALSE(home.museSpark.isAvailable());
}

}  // namespace
}  // namespace quorvane::testing
