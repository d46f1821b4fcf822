#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/JSONParser.h"

namespace quorvane {
namespace {

struct NumberCase {
    const char* name;
    const char* text;
    std::optional<double> asDouble;
    std::int64_t asInt;
};

class JSONNumbers : public ::testing::TestWithParam<NumberCase> {};

TEST_P(JSONNumbers, areConverted) {
    JSONParser parser;
    const JSONValue value = parser.parse(GetParam().text);
    ASSERT_TRUE(value.isPresent());
    EXPECT_EQ(JSONNumber::asDouble(value), GetParam().asDouble);
    EXPECT_EQ(JSONNumber::asInt(value), GetParam().asInt);
    const std::optional<JSONTree> tree = JSONParser::parseTree(GetParam().text);
    ASSERT_TRUE(tree);
    EXPECT_EQ(JSONNumber::asDouble(JSONValue{*tree}), GetParam().asDouble);
    EXPECT_EQ(JSONNumber::asInt(JSONValue{*tree}), GetParam().asInt);
}

INSTANTIATE_TEST_SUITE_P(
    ByText, JSONNumbers,
    ::testing::Values(NumberCase{"zero", "0", 0, 0}, NumberCase{"integer", "42", 42, 42},
                      NumberCase{"negative", "-42", -42, -42}, NumberCase{"float", "3.9", 3.9, 3},
                      NumberCase{"negativeFloat", "-3.9", -3.9, -3}, NumberCase{"exponent", "1e3", 1000, 1000},
                      NumberCase{"smallFloat", "1e-9", 1e-9, 0},
                      NumberCase{"largestInteger", "9223372036854775807", 9223372036854775808.0, 9223372036854775807},
                      NumberCase{"leastInteger", "-9223372036854775808", -9223372036854775808.0,
                                 std::numeric_limits<std::int64_t>::min()},
                      NumberCase{"largestFloatThatFits", "9223372036854774784.0", 9223372036854774784.0,
                                 9223372036854774784},
                      NumberCase{"text", "\"3\"", std::nullopt, 0}, NumberCase{"emptyText", "\"\"", std::nullopt, 0},
                      NumberCase{"yes", "true", std::nullopt, 0}, NumberCase{"no", "false", std::nullopt, 0},
                      NumberCase{"null", "null", std::nullopt, 0}, NumberCase{"array", "[1]", std::nullopt, 0},
                      NumberCase{"object", R"({"a":1})", std::nullopt, 0}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(JSONNumber, absentValueIsNoNumber) {
    EXPECT_FALSE(JSONNumber::asDouble(JSONValue{}));
    EXPECT_EQ(JSONNumber::asInt(JSONValue{}), 0);
}

TEST(JSONNumber, integersAbove63BitsAreFloatsAllTheSame) {
    JSONParser parser;
    EXPECT_EQ(JSONNumber::asDouble(parser.parse("18446744073709551615")), 18446744073709551616.0);
    EXPECT_EQ(JSONNumber::asDouble(parser.parse("123456789012345678901234567890")), 123456789012345678901234567890.0);
}

TEST(JSONNumberDeathTest, numberThat64BitsCannotHoldEndsTheProcess) {
    for (const char* text : {"9223372036854775808", "18446744073709551615", "18446744073709551616",
                             "-9223372036854775809", "9223372036854775808.0", "-9223372036854775808.0", "1e300"}) {
        JSONParser parser;
        const JSONValue value = parser.parse(text);
        ASSERT_TRUE(value.isPresent()) << text;
        EXPECT_DEATH(static_cast<void>(JSONNumber::asInt(value)), "overflow") << text;
    }
    for (const double unfit : {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        const JSONTree tree{unfit};
        EXPECT_DEATH(static_cast<void>(JSONNumber::asInt(JSONValue{tree})), "overflow");
    }
}

struct TextCase {
    const char* name;
    std::optional<std::string_view> text;
    std::int64_t expected;
};

class NumbersInTexts : public ::testing::TestWithParam<TextCase> {};

TEST_P(NumbersInTexts, areWholeAndNeverNegative) {
    EXPECT_EQ(JSONNumber::intFromString(GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    ByText, NumbersInTexts,
    ::testing::Values(TextCase{"absent", std::nullopt, 0}, TextCase{"empty", "", 0}, TextCase{"integer", "42", 42},
                      TextCase{"float", "3.9", 3}, TextCase{"negativeFloat", "-3.9", 0},
                      TextCase{"negativeInteger", "-42", 0}, TextCase{"largeNegative", "-9e18", 0},
                      TextCase{"exponent", "1.5e3", 1500}, TextCase{"hexadecimal", "0x10", 16},
                      TextCase{"largestFloatThatFits", "9223372036854774784", 9223372036854774784},
                      TextCase{"blankBefore", " 3", 0}, TextCase{"blankBehind", "3 ", 0}, TextCase{"tab", "\t3", 0},
                      TextCase{"lineFeed", "\n3", 0}, TextCase{"verticalTab", "\v3", 0}, TextCase{"formFeed", "\f3", 0},
                      TextCase{"carriageReturn", "\r3", 0}, TextCase{"trailingText", "3 tokens", 0},
                      TextCase{"words", "many", 0}, TextCase{"groups", "1,000", 0}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(JSONNumberDeathTest, textOfANumberThat64BitsCannotHoldEndsTheProcess) {
    for (const char* text :
         {"inf", "-inf", "Infinity", "nan", "1e400", "-1e400", "9223372036854775808", "-1e30", "9223372036854775807"}) {
        EXPECT_DEATH(static_cast<void>(JSONNumber::intFromString(text)), "overflow") << text;
    }
}

}  // namespace
}  // namespace quorvane
