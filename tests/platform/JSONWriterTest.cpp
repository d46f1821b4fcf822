#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/JSONWriter.h"

namespace quorvane {
namespace {

using Array = JSONTree::Array;
using Object = JSONTree::Object;

struct WriteCase {
    const char* name;
    JSONTree tree;
    const char* expected;
};

class JSONTexts : public ::testing::TestWithParam<WriteCase> {};

TEST_P(JSONTexts, areWrittenOnOneLine) {
    EXPECT_EQ(JSONWriter::compact(GetParam().tree), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    OfValues, JSONTexts,
    ::testing::Values(
        WriteCase{"null", nullptr, "null"}, WriteCase{"yes", true, "true"}, WriteCase{"no", false, "false"},
        WriteCase{"integer", -42, "-42"},
        WriteCase{"leastInteger", std::numeric_limits<std::int64_t>::min(), "-9223372036854775808"},
        WriteCase{"unsignedInteger", std::numeric_limits<std::uint64_t>::max(), "18446744073709551615"},
        WriteCase{"wholeFloat", 5.0, "5"}, WriteCase{"negativeWholeFloat", -3.0, "-3"}, WriteCase{"zero", 0.0, "0"},
        WriteCase{"negativeZero", -0.0, "0"}, WriteCase{"money", 1234.5, "1234.5"}, WriteCase{"tenth", 0.1, "0.1"},
        WriteCase{"sumOfTenths", 0.1 + 0.2, "0.30000000000000004"},
        WriteCase{"lastExactInteger", 9007199254740992.0, "9007199254740992"},
        WriteCase{"wholeFloatBeyondTheExactOnes", 9007199254740994.0, "9007199254740994"},
        WriteCase{"smallestFloat", std::numeric_limits<double>::denorm_min(), "5e-324"},
        WriteCase{"notANumber", std::numeric_limits<double>::quiet_NaN(), "null"},
        WriteCase{"infinity", std::numeric_limits<double>::infinity(), "null"},
        WriteCase{"negativeInfinity", -std::numeric_limits<double>::infinity(), "null"},
        WriteCase{"text", "a b", R"("a b")"}, WriteCase{"emptyText", "", R"("")"},
        WriteCase{"escapes", "\"\\/\b\f\n\r\t\x01\x1f\x7f", "\"\\\"\\\\/\\b\\f\\n\\r\\t\\u0001\\u001f\x7f\""},
        WriteCase{"NULInAText", std::string{"a\0b", 3}, R"("a\u0000b")"},
        WriteCase{"otherCharactersAsTheyAre", "\xc3\xa9\xf0\x9f\x98\x80", "\"\xc3\xa9\xf0\x9f\x98\x80\""},
        WriteCase{"bytesThatAreNoUTF8",
                  "a\xff"
                  "b\xc3",
                  "\"a\xef\xbf\xbd"
                  "b\xef\xbf\xbd\""},
        WriteCase{"keyThatIsNoUTF8", Object{{"k\xff", 1}}, "{\"k\xef\xbf\xbd\":1}"},
        WriteCase{"emptyArray", Array{}, "[]"}, WriteCase{"emptyObject", Object{}, "{}"},
        WriteCase{"array", Array{1, "x", Array{nullptr}, 2.5}, R"([1,"x",[null],2.5])"},
        WriteCase{"keysInOrder", Object{{"b", 1}, {"a", 2}, {"B", 3}, {"\xc3\xa9", 4}, {"", 5}, {"a1", 6}},
                  "{\"\":5,\"B\":3,\"a\":2,\"a1\":6,\"b\":1,\"\xc3\xa9\":4}"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(JSONWriter, prettyTextHasOneMemberALine) {
    const JSONTree tree = Object{{"list", Array{1, Object{{"x", "y"}}}},
                                 {"empty", Object{{"array", Array{}}, {"object", Object{}}}},
                                 {"cost", 0.25}};
    EXPECT_EQ(JSONWriter::pretty(tree), R"({
  "cost": 0.25,
  "empty": {
    "array": [],
    "object": {}
  },
  "list": [
    1,
    {
      "x": "y"
    }
  ]
})");
    EXPECT_EQ(JSONWriter::pretty(7), "7");
    EXPECT_EQ(JSONWriter::pretty(Array{}), "[]");
}

TEST(JSONWriter, floatsReadBackAndAreTheShortestThatDo) {
    std::mt19937_64 random{5};
    for (int round = 0; round < 50000; ++round) {
        const std::uint64_t bits = random();
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        // Half of them of the size of money, where most written floats lie.
        if (round % 2 == 0) value = std::ldexp(static_cast<double>(bits >> 11), -44);
        if (!std::isfinite(value) || std::trunc(value) == value) continue;
        const std::string text = JSONWriter::compact(value);
        ASSERT_EQ(std::strtod(text.c_str(), nullptr), value) << text;
        // With one significant digit less it would be another number.
        const auto digitsOf = [](const std::string& number) {
            std::string digits = number.substr(0, number.find('e'));
            std::erase_if(digits, [](char character) { return character == '-' || character == '.'; });
            digits.erase(0, digits.find_first_not_of('0'));
            return static_cast<int>(digits.size());
        };
        if (digitsOf(text) == 1) continue;
        char shorter[64];
        std::snprintf(shorter, sizeof shorter, "%.*e", digitsOf(text) - 2, value);
        ASSERT_NE(std::strtod(shorter, nullptr), value) << text << " could be " << shorter;
    }
}

TEST(JSONWriter, wholeFloatsReadBackAsTheSameNumber) {
    std::mt19937_64 random{6};
    for (int round = 0; round < 20000; ++round) {
        const double value = std::ldexp(static_cast<double>(random() >> 11), static_cast<int>(random() % 900));
        const std::string text = JSONWriter::compact(value);
        ASSERT_EQ(std::strtod(text.c_str(), nullptr), value) << text;
        if (value < 9007199254740992.0) {
            ASSERT_EQ(text.find_first_not_of("0123456789"), std::string::npos) << text;
        }
    }
}

TEST(JSONWriter, compactAndPrettySayTheSame) {
    const JSONTree tree = Object{{"a b", Array{1, 2.5, "x\n"}}, {"c", Object{{"d", nullptr}}}};
    EXPECT_EQ(JSONParser::parseTree(JSONWriter::pretty(tree)), tree);
    EXPECT_EQ(JSONParser::parseTree(JSONWriter::compact(tree)), tree);
}

}  // namespace
}  // namespace quorvane
