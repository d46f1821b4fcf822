#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "tests/platform/RandomJSON.h"

namespace quorvane {
namespace {

using namespace std::string_view_literals;

/// An element that only the slower of the two parsers inside can read, so that it reads the whole text.
constexpr std::string_view longInteger = "123456789012345678901234567890";

std::string nested(std::size_t levels, std::string_view innermost) {
    return std::string(levels, '[') + std::string{innermost} + std::string(levels, ']');
}

JSONTree copyOf(JSONValue value) {
    if (value.isObject()) {
        JSONTree::Object members;
        value.forEachMember([&](std::string_view key, JSONValue member) {
            EXPECT_TRUE(members.emplace(key, copyOf(member)).second) << "doubled key " << key;
        });
        return members;
    }
    if (value.isArray()) {
        JSONTree::Array elements;
        value.forEachElement([&](JSONValue element) { elements.push_back(copyOf(element)); });
        return elements;
    }
    if (const auto text = value.string()) return std::string{*text};
    if (const auto flag = value.boolean()) return *flag;
    if (const auto number = value.number()) return std::visit([](auto digits) { return JSONTree{digits}; }, *number);
    EXPECT_TRUE(value.isNull());
    return nullptr;
}

/// What the parser makes of a text, on all its roads, which must agree.
std::optional<JSONTree> parsed(std::string_view text) {
    JSONParser parser;
    const JSONValue value = parser.parse(text);
    std::optional<JSONTree> tree;
    if (value.isPresent()) tree = copyOf(value);

    std::string padded{text};
    padded.append(JSONParser::padding, '"');  // the content of the padding does not matter
    JSONParser other;
    const JSONValue same = other.parsePadded(std::string_view{padded}.substr(0, text.size()));
    EXPECT_EQ(same.isPresent(), tree.has_value()) << text;
    if (tree && same.isPresent()) {
        EXPECT_EQ(copyOf(same), *tree) << text;
    }

    EXPECT_EQ(JSONParser::parseTree(text), tree) << text;
    return tree;
}

struct TextCase {
    const char* name;
    std::string_view text;
};

class RefusedJSON : public ::testing::TestWithParam<TextCase> {};

TEST_P(RefusedJSON, isAbsentOnEveryRoad) {
    const std::string text{GetParam().text};
    EXPECT_FALSE(parsed(text));
    // The same beside an integer that only the slower road can read: before it and behind it.
    EXPECT_FALSE(parsed("[" + std::string{longInteger} + "," + text + "]"));
    EXPECT_FALSE(parsed("[" + text + "," + std::string{longInteger} + "]"));
}

INSTANTIATE_TEST_SUITE_P(
    ByText, RefusedJSON,
    ::testing::Values(
        TextCase{"empty", ""}, TextCase{"blanksAlone", " \n\t"}, TextCase{"trailingText", "{} x"},
        TextCase{"twoObjects", "{}{}"}, TextCase{"unfinishedObject", R"({"a":1)"},
        TextCase{"unfinishedText", R"("abc)"}, TextCase{"trailingCommaInAnArray", "[1,]"},
        TextCase{"trailingCommaInAnObject", R"({"a":1,})"}, TextCase{"missingColon", R"({"a" 1})"},
        TextCase{"missingComma", "[1 2]"}, TextCase{"keyWithoutQuotes", "{a:1}"}, TextCase{"numberAsAKey", "{1:2}"},
        TextCase{"singleQuotes", "{'a':1}"}, TextCase{"comment", "[1/* */]"}, TextCase{"floatBeyondAllFloats", "1e400"},
        TextCase{"negativeFloatBeyondAllFloats", "-1e400"}, TextCase{"notANumber", "NaN"},
        TextCase{"infinity", "Infinity"}, TextCase{"leadingZero", "01"}, TextCase{"plusSign", "+1"},
        TextCase{"dotAtTheEnd", "1."}, TextCase{"dotAtTheStart", ".5"}, TextCase{"signAlone", "-"},
        TextCase{"hexadecimal", "0x10"}, TextCase{"unfinishedExponent", "1e"}, TextCase{"upperCaseWord", "True"},
        TextCase{"invalidUTF8", "\"\xff\""}, TextCase{"overlongUTF8", "\"\xc0\xaf\""},
        TextCase{"cutUTF8", "\"\xe2\x82\""}, TextCase{"surrogateInUTF8", "\"\xed\xa0\x80\""},
        TextCase{"UTF8AboveTheLastCharacter", "\"\xf4\x90\x80\x80\""}, TextCase{"byteOrderMark", "\xef\xbb\xbf{}"},
        TextCase{"controlCharacter", "\"a\tb\""}, TextCase{"lineFeedInAText", "\"a\nb\""},
        TextCase{"unknownEscape", R"("\x41")"}, TextCase{"badHexadecimalEscape", R"("\u12g4")"},
        TextCase{"shortEscape", R"("\u12")"}, TextCase{"loneSurrogateAndABadEscape", R"("\ud800\x")"},
        TextCase{"NULBehind", std::string_view{"{}\0", 3}}, TextCase{"NULAndTextBehind", std::string_view{"{}\0{}", 5}},
        TextCase{"NULBefore", std::string_view{"\0{}", 3}}, TextCase{"NULInAText", std::string_view{"\"a\0b\"", 5}},
        TextCase{"NULAlone", std::string_view{"\0", 1}}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(JSONParser, integerTooLongForAnyFloatIsRefused) {
    EXPECT_FALSE(parsed(std::string(400, '9')));
    EXPECT_FALSE(parsed("[-" + std::string(400, '9') + "]"));
}

TEST(JSONParser, NULBehindALongIntegerIsNoEnd) {
    const std::string text = "[" + std::string{longInteger} + "]";
    ASSERT_TRUE(parsed(text));
    EXPECT_FALSE(parsed(text + '\0'));
    EXPECT_FALSE(parsed(text + '\0' + "garbage"));
}

TEST(JSONParser, numbersKeepTheirKind) {
    EXPECT_EQ(parsed("0"), JSONTree{0});
    EXPECT_EQ(parsed("-0"), JSONTree{0});
    EXPECT_EQ(parsed("9223372036854775807"), JSONTree{std::int64_t{9223372036854775807}});
    EXPECT_EQ(parsed("-9223372036854775808"), JSONTree{std::numeric_limits<std::int64_t>::min()});
    EXPECT_EQ(parsed("9223372036854775808"), JSONTree{std::uint64_t{1} << 63});
    EXPECT_EQ(parsed("18446744073709551615"), JSONTree{std::numeric_limits<std::uint64_t>::max()});
    EXPECT_EQ(parsed("1.0"), JSONTree{1.0});
    EXPECT_EQ(parsed("1e2"), JSONTree{100.0});
    EXPECT_EQ(parsed("1e-400"), JSONTree{0.0});
    EXPECT_EQ(parsed("0.1"), JSONTree{0.1});
    EXPECT_EQ(parsed("1.7976931348623157e308"), JSONTree{1.7976931348623157e308});
}

TEST(JSONParser, integersBeyond64BitsAreReadAsFloats) {
    EXPECT_EQ(parsed("18446744073709551616"), JSONTree{18446744073709551616.0});
    EXPECT_EQ(parsed("-9223372036854775809"), JSONTree{-9223372036854775808.0});
    EXPECT_EQ(parsed(longInteger), JSONTree{123456789012345678901234567890.0});
}

TEST(JSONParser, ofDoubledKeysTheFirstWins) {
    const JSONTree::Object expected{{"a", 1}, {"b", JSONTree::Object{{"c", "x"}}}};
    EXPECT_EQ(parsed(R"({"a":1,"b":{"c":"x","c":"y"},"a":2,"b":3})"), JSONTree{expected});
}

TEST(JSONParser, ofDoubledKeysTheFirstWinsBesideLongIntegers) {
    EXPECT_EQ(parsed(R"({"a":1,"a":123456789012345678901})"), JSONTree{(JSONTree::Object{{"a", 1}})});
    EXPECT_EQ(parsed(R"({"a":123456789012345678901,"b":{"c":1,"c":2},"a":2})"),
              JSONTree{(JSONTree::Object{{"a", 123456789012345678901.0}, {"b", JSONTree::Object{{"c", 1}}}})});
}

TEST(JSONParser, keyThatIsEscapedIsTheSameKey) {
    EXPECT_EQ(parsed(R"({"\u0061":1,"a":2})"), JSONTree{(JSONTree::Object{{"a", 1}})});
}

TEST(JSONParser, escapesAreRead) {
    EXPECT_EQ(parsed(R"("\"\\\/\b\f\n\r\t\u00e9\u20AC")"), JSONTree{"\"\\/\b\f\n\r\t\xc3\xa9\xe2\x82\xac"});
    EXPECT_EQ(parsed(R"("\ud83d\ude00")"), JSONTree{"\xf0\x9f\x98\x80"});
    EXPECT_EQ(parsed(R"("a\u0000b")"), (JSONTree{std::string{"a\0b", 3}}));
}

struct SurrogateCase {
    const char* name;
    const char* text;
    std::string expected;
};

class LoneSurrogates : public ::testing::TestWithParam<SurrogateCase> {};

TEST_P(LoneSurrogates, becomeTheReplacementCharacter) {
    EXPECT_EQ(parsed(GetParam().text), JSONTree{GetParam().expected});
    EXPECT_EQ(parsed("[" + std::string{GetParam().text} + ",123456789012345678901]"),
              JSONTree{(JSONTree::Array{GetParam().expected, 123456789012345678901.0})});
}

INSTANTIATE_TEST_SUITE_P(
    ByText, LoneSurrogates,
    ::testing::Values(SurrogateCase{"high", R"("\ud800")", "\xef\xbf\xbd"},
                      SurrogateCase{"highInUpperCase", R"("\uDBFF")", "\xef\xbf\xbd"},
                      SurrogateCase{"low", R"("\udc00")", "\xef\xbf\xbd"},
                      SurrogateCase{"highBeforeText", R"("\ud800x")", "\xef\xbf\xbdx"},
                      SurrogateCase{"highBeforeAnEscape", R"("\ud800\n")", "\xef\xbf\xbd\n"},
                      SurrogateCase{"highBeforeAnotherCharacter", R"("\ud800\u0041")",
                                    "\xef\xbf\xbd"
                                    "A"},
                      SurrogateCase{"highBeforeAPair", R"("\ud83d\ud83d\ude00")", "\xef\xbf\xbd\xf0\x9f\x98\x80"},
                      SurrogateCase{"pairBeforeALow", R"("\ud83d\ude00\ude00")", "\xf0\x9f\x98\x80\xef\xbf\xbd"},
                      SurrogateCase{"lowBeforeHigh", R"("\ude00\ud83d")", "\xef\xbf\xbd\xef\xbf\xbd"},
                      SurrogateCase{"escapedBackslashIsNoEscape", R"("\\ud800")", "\\ud800"},
                      SurrogateCase{"behindAnEscapedBackslash", R"("\\\ud800")", "\\\xef\xbf\xbd"},
                      SurrogateCase{"cutPair", R"("caf\u00e9 \ud83d")", "caf\xc3\xa9 \xef\xbf\xbd"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(JSONParser, loneSurrogateInAKeyBecomesTheReplacementCharacter) {
    EXPECT_EQ(parsed(R"({"\ud800":1})"), JSONTree{(JSONTree::Object{{"\xef\xbf\xbd", 1}})});
}

TEST(JSONParser, thousandLevelsOfNestingAreRead) {
    for (const std::string_view innermost : {std::string_view{""}, std::string_view{"1"}, longInteger}) {
        JSONParser parser;
        const std::string text = nested(1000, innermost);
        EXPECT_TRUE(parser.parse(text).isPresent());
        EXPECT_TRUE(JSONParser::parseTree(text));
    }
}

TEST(JSONParser, deeperNestingIsRefused) {
    for (const std::size_t levels : {1025U, 10000U, 1000000U}) {
        for (const std::string_view innermost : {std::string_view{""}, std::string_view{"1"}, longInteger}) {
            JSONParser parser;
            const std::string text = nested(levels, innermost);
            EXPECT_FALSE(parser.parse(text).isPresent()) << levels << innermost;
            EXPECT_FALSE(JSONParser::parseTree(text)) << levels << innermost;
        }
    }
    std::string objects;
    for (int level = 0; level < 10000; ++level)
        objects += R"({"a":)";
    EXPECT_FALSE(parsed(objects + "1" + std::string(10000, '}')));
    EXPECT_FALSE(parsed(objects + std::string{longInteger} + std::string(10000, '}')));
}

TEST(JSONParser, lineOf100MegabytesIsRead) {
    std::string text = R"({"type":"assistant","output":")";
    text.append(100000000, 'x');
    text += R"(","last":7})";
    JSONParser parser;
    const JSONValue value = parser.parse(text);
    ASSERT_TRUE(value.isPresent());
    EXPECT_EQ(value["output"].string()->size(), 100000000U);
    EXPECT_EQ(value["last"].number(), JSONNumberValue{std::int64_t{7}});
    // The same parser goes on with short texts.
    EXPECT_EQ(parser.parse(R"({"last":8})")["last"].number(), JSONNumberValue{std::int64_t{8}});
}

TEST(JSONParser, oneParserReadsOneTextAfterTheOther) {
    JSONParser parser;
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(parser.parse(R"({"a":1})")["a"].number(), JSONNumberValue{std::int64_t{1}});
        EXPECT_FALSE(parser.parse(R"({"a":)").isPresent());
        EXPECT_EQ(parser.parse("[123456789012345678901]").isArray(), true);
        EXPECT_FALSE(parser.parse("").isPresent());
        EXPECT_EQ(parser.parse(R"({"a":"\ud800"})")["a"].string(), "\xef\xbf\xbd");
    }
}

TEST(JSONParser, textMayGoAfterTheCall) {
    JSONParser parser;
    auto text = std::make_unique<std::string>(R"({"a":"some text that is too long for a short string","b":[1,2]})");
    text->append(JSONParser::padding, '\0');
    const JSONValue value = parser.parsePadded(std::string_view{*text}.substr(0, text->size() - JSONParser::padding));
    text->assign(text->size(), '#');
    text.reset();
    EXPECT_EQ(value["a"].string(), "some text that is too long for a short string");
    EXPECT_TRUE(value["b"].isArray());
}

TEST(JSONParser, movedParserKeepsItsValue) {
    JSONParser first;
    const JSONValue fast = first.parse(R"({"a":"x"})");
    JSONParser second{std::move(first)};
    EXPECT_EQ(fast["a"].string(), "x");
    const JSONValue slow = second.parse(R"({"a":"y","b":123456789012345678901})");
    JSONParser third;
    third = std::move(second);
    EXPECT_EQ(slow["a"].string(), "y");
}

TEST(JSONParser, allRoadsAgreeOnRandomTexts) {
    testing::RandomJSON random{1};
    for (int round = 0; round < 3000; ++round) {
        const std::string text = random.objectText(3);
        ASSERT_TRUE(parsed(text)) << text;
    }
}

TEST(JSONParser, allRoadsAgreeOnDamagedTexts) {
    testing::RandomJSON random{2};
    constexpr std::string_view bytes = "{}[]\",:\\u0-.eE \n\0\xff\xc3tfn"sv;
    int accepted = 0;
    for (int round = 0; round < 3000; ++round) {
        std::string text = random.objectText(2);
        const std::size_t at = random.below(text.size());
        switch (random.below(3)) {
            case 0: text[at] = bytes[random.below(bytes.size())]; break;
            case 1: text.erase(at, 1 + random.below(3)); break;
            default: text.insert(at, 1, bytes[random.below(bytes.size())]); break;
        }
        accepted += parsed(text) ? 1 : 0;
        if (HasFailure()) return;
    }
    EXPECT_GT(accepted, 100);  // some damage is harmless, as within a text
    EXPECT_LT(accepted, 2900);
}

TEST(JSONParser, writtenTreesAreReadBack) {
    testing::RandomJSON random{3};
    for (int round = 0; round < 3000; ++round) {
        const JSONTree tree = random.tree(4);
        ASSERT_EQ(parsed(JSONWriter::compact(tree)), tree);
        ASSERT_EQ(parsed(JSONWriter::pretty(tree)), tree);
    }
}

}  // namespace
}  // namespace quorvane
