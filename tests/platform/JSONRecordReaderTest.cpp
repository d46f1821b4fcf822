#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/JSONRecordReader.h"
#include "tests/platform/RandomJSON.h"

namespace quorvane {
namespace {

constexpr std::array<std::string_view, 6> keys{"type", "id", "message", "typ", "types", "\xc3\xa9t\xc3\xa9"};
constexpr std::size_t messageKey = 2;
constexpr JSONKeySet<keys.size()> keySet{keys};

/// With memory of its own behind the text, so that what is read beyond the padding shows.
bool read(JSONRecordReader& reader, std::string& memory, std::string_view text, char behind = '}') {
    memory.assign(text);
    memory.append(JSONParser::padding, behind);
    return reader.readPadded(std::string_view{memory}.substr(0, text.size()));
}

std::optional<double> numberOf(JSONValue value) {
    const std::optional<JSONNumberValue> number = value.number();
    if (!number) return std::nullopt;
    return std::visit([](auto held) { return static_cast<double>(held); }, *number);
}

std::optional<JSONField::Pair> pairOf(JSONValue value) {
    std::vector<std::optional<double>> parts;
    value.forEachElement([&](JSONValue element) { parts.push_back(numberOf(element)); });
    if (parts.size() != 2 || !parts[0] || !parts[1]) return std::nullopt;
    return JSONField::Pair{*parts[0], *parts[1]};
}

bool isSame(const JSONField& field, JSONValue value) {
    return field.isPresent() == value.isPresent() && field.text() == value.string() &&
           field.integer() == value.integer() && field.number() == numberOf(value) && field.pair() == pairOf(value);
}

/// Whether the reader gives of a text what the parser gives.
::testing::AssertionResult isReadAsParsed(JSONRecordReader& reader, std::string_view text) {
    JSONParser parser;
    const JSONValue record = parser.parse(text);
    std::string memory;
    for (const char behind : {'}', '\0', '"', '1'}) {
        const bool isRecord = read(reader, memory, text, behind);
        if (isRecord != record.isObject()) return ::testing::AssertionFailure() << text << " is a record: " << isRecord;
        if (!isRecord) continue;
        for (std::size_t index = 0; index < keys.size(); ++index) {
            if (!isSame(reader.members()[index], record[keys[index]])) {
                return ::testing::AssertionFailure() << text << " differs in " << keys[index];
            }
            if (!isSame(reader.innerMembers()[index], record["message"][keys[index]])) {
                return ::testing::AssertionFailure() << text << " differs in message." << keys[index];
            }
        }
    }
    return ::testing::AssertionSuccess();
}

JSONRecordReader newReader() {
    return JSONRecordReader{keySet.keys(), messageKey, keySet.keys()};
}

TEST(JSONKeys, eachKeyIsItsOwnCandidate) {
    for (std::size_t index = 0; index < keys.size(); ++index)
        EXPECT_EQ(keySet.keys().candidate(keys[index]), index);
    EXPECT_EQ(keySet.keys().all().size(), keys.size());
}

TEST(JSONRecordReader, takesWhatWasAskedFor) {
    JSONRecordReader reader = newReader();
    std::string memory;
    ASSERT_TRUE(read(reader, memory,
                     R"({"type":"span","other":[{"id":1}],"id":[5,250000000],"message":{"typ":12,"id":"r1",)"
                     R"("more":{"types":3}},"types":0.5,"typ":null})"));
    const std::span<const JSONField> members = reader.members();
    EXPECT_EQ(members[0].text(), "span");
    EXPECT_EQ(members[1].pair(), (JSONField::Pair{5, 250000000}));
    EXPECT_TRUE(members[messageKey].isPresent());
    EXPECT_TRUE(members[3].isPresent());
    EXPECT_EQ(members[3].text(), std::nullopt);
    EXPECT_EQ(members[4].number(), 0.5);
    EXPECT_EQ(members[4].integer(), std::nullopt);
    EXPECT_FALSE(members[5].isPresent());
    const std::span<const JSONField> inner = reader.innerMembers();
    EXPECT_EQ(inner[1].text(), "r1");
    EXPECT_EQ(inner[3].integer(), 12);
    EXPECT_EQ(inner[3].number(), 12);
    EXPECT_FALSE(inner[4].isPresent());
}

TEST(JSONRecordReader, keepsNothingOfTheRecordBefore) {
    JSONRecordReader reader = newReader();
    std::string memory;
    for (const char* before :
         {R"({"type":1,"message":{"id":2}})", R"({"type":"\n","message":{"id":"\n"}})", "{", "7"}) {
        static_cast<void>(read(reader, memory, before));
        for (const char* text : {"{}", R"({"a":"\n"})", R"({"message":7})", R"({"message":[{"id":1}]})"})
            EXPECT_TRUE(isReadAsParsed(reader, text)) << "behind " << before;
    }
}

struct RecordCase {
    const char* name;
    std::string text;
};
class JSONRecords : public ::testing::TestWithParam<RecordCase> {};

TEST_P(JSONRecords, areReadAsParsed) {
    JSONRecordReader reader = newReader();
    EXPECT_TRUE(isReadAsParsed(reader, GetParam().text));
}

std::string nested(std::size_t depth) {
    return R"({"id":)" + std::string(depth, '[') + std::string(depth, ']') + R"(,"type":1})";
}

std::string with(std::string_view value) {
    return R"({"id":)" + std::string{value} + R"(,"message":{"id":)" + std::string{value} + "}}";
}

INSTANTIATE_TEST_SUITE_P(
    ByForm, JSONRecords,
    ::testing::Values(
        RecordCase{"empty", ""}, RecordCase{"blank", " "}, RecordCase{"emptyObject", "{}"},
        RecordCase{"array", R"([{"id":1}])"}, RecordCase{"scalar", "12"}, RecordCase{"text", R"("id")"},
        RecordCase{"blanksAround", " \t{ \"id\" : 1 , \"type\" : \"a\" } \r"},
        RecordCase{"blanksInAPair", with("[ 1 , 2 ]")}, RecordCase{"blanksInText", with(R"("  a  ")")},
        RecordCase{"blankText", with(R"("  ")")}, RecordCase{"emptyText", with(R"("")")},
        RecordCase{"emptyKey", R"({"":1,"id":2})"}, RecordCase{"doubledKey", R"({"id":1,"id":2})"},
        RecordCase{"doubledKeyFirstNull", R"({"id":null,"id":2})"},
        RecordCase{"doubledInner", R"({"message":{"id":1},"message":{"id":2,"type":3}})"},
        RecordCase{"doubledInnerFirstNone", R"({"message":5,"message":{"id":2}})"},
        RecordCase{"emptyInner", R"({"message":{},"id":1})"}, RecordCase{"escapedKey", R"({"\u0069d":1})"},
        RecordCase{"escapedText", with(R"("a\"b")")}, RecordCase{"escapeElsewhere", R"({"id":1,"x":"\\"})"},
        RecordCase{"wrongEscapeElsewhere", R"({"id":1,"x":"\q"})"},
        RecordCase{"halfASurrogatePair", with(R"("\ud800")")},
        RecordCase{"umlauts", with("\"gr\xc3\xb6\xc3\x9f"
                                   "e\"")},
        RecordCase{"noUTF8", with("\"\xff\"")}, RecordCase{"noUTF8Elsewhere", "{\"id\":1,\"x\":\"\xc3\"}"},
        RecordCase{"controlCharacter", with("\"a\x01\"")}, RecordCase{"unfinished", R"({"id":1)"},
        RecordCase{"unfinishedText", R"({"id":"a)"}, RecordCase{"unfinishedInner", R"({"message":{"id":1})"},
        RecordCase{"unfinishedArray", R"({"id":[1)"}, RecordCase{"unfinishedKey", R"({"id)"},
        RecordCase{"keyAlone", R"({"id"})"}, RecordCase{"noValue", R"({"id":})"}, RecordCase{"noColon", R"({"id" 1})"},
        RecordCase{"commaForColon", R"({"id",1})"}, RecordCase{"noComma", R"({"id":1 "type":2})"},
        RecordCase{"commaAtTheEnd", R"({"id":1,})"}, RecordCase{"commaInAnEmptyOne", R"({,})"},
        RecordCase{"textBehindAText", R"({"id":"a""b"})"}, RecordCase{"textBehindANumber", R"({"id":1"b"})"},
        RecordCase{"numberBehindAText", R"({"id":"a"1})"}, RecordCase{"numberAsKey", R"({1:2})"},
        RecordCase{"wrongBrace", R"({"id":[1}})"}, RecordCase{"wrongBracket", R"({"id":1]})"},
        RecordCase{"trailingText", R"({"id":1} x)"}, RecordCase{"trailingBrace", R"({"id":1}})"},
        RecordCase{"trailingRecord", R"({"id":1}{"id":2})"}, RecordCase{"byteOrderMark", "\xef\xbb\xbf{\"id\":1}"},
        RecordCase{"nulByte", std::string("{\"id\":1}\0", 9)}, RecordCase{"true", with("true")},
        RecordCase{"trueAndMore", with("trueish")}, RecordCase{"false", with("false")},
        RecordCase{"null", with("null")}, RecordCase{"noWord", with("none")}, RecordCase{"zero", with("0")},
        RecordCase{"minusZero", with("-0")}, RecordCase{"leadingZero", with("01")},
        RecordCase{"leadingZeros", with("000000001")}, RecordCase{"negative", with("-12")},
        RecordCase{"minusAlone", with("-")}, RecordCase{"plus", with("+1")},
        RecordCase{"eightDigits", with("12345678")}, RecordCase{"nineDigits", with("123456789")},
        RecordCase{"sixteenDigits", with("9876543210987654")}, RecordCase{"seventeenDigits", with("12345678901234567")},
        RecordCase{"mostSigned", with("9223372036854775807")}, RecordCase{"beyondSigned", with("9223372036854775808")},
        RecordCase{"beyondUnsigned", with("18446744073709551616")}, RecordCase{"letterInANumber", with("12a4")},
        RecordCase{"letterInALongNumber", with("1234567890123x5")}, RecordCase{"slashInANumber", with("12/4")},
        RecordCase{"colonInANumber", with("12:4")}, RecordCase{"blankInANumber", with("12 4")},
        RecordCase{"fraction", with("1789374066.480001")}, RecordCase{"zeroAndFraction", with("0.1")},
        RecordCase{"leadingZeroAndFraction", with("00.1")},
        RecordCase{"longFraction", with("0.1234567890123456789012345678901234567890")},
        RecordCase{"pointAtTheEnd", with("1.")}, RecordCase{"pointAhead", with(".5")},
        RecordCase{"twoPoints", with("1.2.3")}, RecordCase{"exponent", with("5e8")},
        RecordCase{"fractionAndExponent", with("1.5E-3")}, RecordCase{"tooLarge", with("1e400")},
        RecordCase{"emptyArray", with("[]")}, RecordCase{"one", with("[1]")},
        RecordCase{"pair", with("[1789374066,480000000]")}, RecordCase{"pairOfFractions", with("[0.5,1.25]")},
        RecordCase{"pairOfLarge", with("[18446744073709551615,1]")}, RecordCase{"pairWithText", with(R"([1,"2"])")},
        RecordCase{"pairWithNull", with("[null,2]")}, RecordCase{"three", with("[1,2,3]")},
        RecordCase{"threeWithNull", with("[1,2,null]")}, RecordCase{"pairAndComma", with("[1,2,]")},
        RecordCase{"pairWithoutComma", with("[1 2]")}, RecordCase{"pairInAPair", with("[[1,2],[3,4]]")},
        RecordCase{"pairWithLeadingZero", with("[01,2]")}, RecordCase{"pairWithFractionAtTheEnd", with("[1,2.]")},
        RecordCase{"nested60", nested(60)}, RecordCase{"nested70", nested(70)}, RecordCase{"nested1000", nested(1000)},
        RecordCase{"nested1100", nested(1100)},
        RecordCase{"longerThanTheFirstRoom", with('"' + std::string(100'000, 'x') + '"')},
        RecordCase{"manyMembers", R"({"a":[)" +
                                      [] {
                                          std::string members;
                                          for (int index = 0; index < 20'000; ++index)
                                              members += R"({"id":[1,2]},)";
                                          return members;
                                      }() +
                                      R"(0],"id":7})"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(JSONRecordReader, neverContradictsTheParser) {
    testing::RandomJSON random{20260914};
    JSONRecordReader reader = newReader();
    for (int round = 0; round < 20000; ++round) {
        std::string text = random.objectText(3);
        ASSERT_TRUE(isReadAsParsed(reader, text));
        constexpr std::string_view odd = "{}[]\":,\\ \t0123456789.-+eEtruefalsn\x01\xc3\xff";
        for (std::size_t changes = 1 + random.below(2); changes > 0 && !text.empty(); --changes) {
            const std::size_t at = random.below(text.size());
            switch (random.below(3)) {
                case 0: text[at] = odd[random.below(odd.size())]; break;
                case 1: text.insert(at, 1, odd[random.below(odd.size())]); break;
                default: text.erase(at, 1 + random.below(4)); break;
            }
        }
        ASSERT_TRUE(isReadAsParsed(reader, text));
    }
}

TEST(JSONRecordReader, takesNothingButDigitsForANumber) {
    constexpr std::string_view odd{"/:.-+eE \"\0\x01\x7f\x80\xaf\xb0\xb9\xff", 17};
    JSONRecordReader reader = newReader();
    for (std::size_t count = 1; count <= 21; ++count) {
        const std::string digits = std::string{"987654321098765432109"}.substr(0, count);
        ASSERT_TRUE(isReadAsParsed(reader, with(digits)));
        for (std::size_t at = 0; at < count; ++at) {
            for (const char other : odd) {
                std::string text = digits;
                text[at] = other;
                ASSERT_TRUE(isReadAsParsed(reader, with(text)));
            }
        }
    }
}

TEST(JSONRecordReader, anyBeginningOfARecordIsReadAsParsed) {
    const std::string text =
        R"({"type":"span","id":[1789374060,120000000],"typ":{"code":0},"message":{"id":"r1","type":19452,"x":["stop"]}})";
    JSONRecordReader reader = newReader();
    for (std::size_t size = 0; size <= text.size(); ++size)
        ASSERT_TRUE(isReadAsParsed(reader, text.substr(0, size)));
}

}  // namespace
}  // namespace quorvane
