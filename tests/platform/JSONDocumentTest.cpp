#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/JSONDocument.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "tests/platform/RandomJSON.h"

namespace quorvane {
namespace {

using KeyOrder = JSONDocument::KeyOrder;

std::string kept(const std::string& json) {
    const std::optional<JSONDocument> document = JSONDocument::parse(json);
    return document ? document->pretty(KeyOrder::Kept) : "no JSON";
}

struct TextCase {
    const char* name;
    std::string text;
};
class JSONDocumentText : public ::testing::TestWithParam<TextCase> {};

TEST_P(JSONDocumentText, comesBackAsItWas) {
    EXPECT_EQ(kept(GetParam().text), GetParam().text);
    EXPECT_EQ(kept(" \n\t\r" + GetParam().text + " \r\n"), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Values, JSONDocumentText,
    ::testing::Values(TextCase{"null", "null"}, TextCase{"true_", "true"}, TextCase{"number", "12"},
                      TextCase{"longNumber", "123456789012345678901234567890"}, TextCase{"wholeFloat", "1.0"},
                      TextCase{"trailingZeros", "0.50"}, TextCase{"negativeZero", "-0"}, TextCase{"exponent", "1E+05"},
                      TextCase{"text", R"("a\u00e9\/é\"\\")"}, TextCase{"halfASurrogatePair", R"("\ud800")"},
                      TextCase{"emptyText", R"("")"}, TextCase{"emptyArray", "[]"}, TextCase{"emptyObject", "{}"},
                      TextCase{"nested",
                               "[\n  [\n    1,\n    {}\n  ],\n  {\n    \"b\": [],\n    \"a\": {\n      \"x\": "
                               "null\n    }\n  }\n]"},
                      TextCase{"doubledKeys", "{\n  \"b\": 1,\n  \"a\": 2,\n  \"b\": 3\n}"},
                      TextCase{"bracketsInTexts", "{\n  \"}],:\": \"{[,\"\n}"},
                      TextCase{"escapedKey", "{\n  \"\\u0061\\\"\": 1\n}"}),
    [](const auto& row) { return std::string{row.param.name}; });

class JSONDocumentRefused : public ::testing::TestWithParam<TextCase> {};

TEST_P(JSONDocumentRefused, isAbsent) {
    EXPECT_FALSE(JSONDocument::parse(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(Texts, JSONDocumentRefused,
                         ::testing::Values(TextCase{"empty", ""}, TextCase{"torn", "{\"a\":"},
                                           TextCase{"trailingComma", "[1,]"}, TextCase{"twoValues", "{}{}"},
                                           TextCase{"byteOrderMark", "\xef\xbb\xbf{}"}, TextCase{"noUTF8", "\"\xff\""},
                                           TextCase{"tooDeep", std::string(1100, '[') + std::string(1100, ']')},
                                           TextCase{"leadingZero", "01"}, TextCase{"bareWord", "nul"}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(JSONDocument, sortsTheKeysOfEachObjectAndKeepsDoubledOnesInOrder) {
    EXPECT_EQ(JSONDocument::parse(R"({"b":1,"\u0061":[{"d":1,"c":2}],"b":0,"B":3})")->pretty(KeyOrder::Sorted),
              "{\n  \"B\": 3,\n  \"\\u0061\": [\n    {\n      \"c\": 2,\n      \"d\": 1\n    }\n  ],\n  \"b\": 1,\n"
              "  \"b\": 0\n}");
}

TEST(JSONDocument, findsMembersByTheirTextAndTheLastOfTwo) {
    const std::optional<JSONDocument> document = JSONDocument::parse(R"({"\u0061":"x\ny","b":1,"b":"last"})");
    ASSERT_TRUE(document);
    EXPECT_EQ(document->member("a")->string(), "x\ny");
    EXPECT_EQ(document->member("b")->string(), "last");
    EXPECT_EQ(document->member("c"), nullptr);
    EXPECT_EQ(document->member("a")->member("x"), nullptr) << "no object";
    EXPECT_EQ(document->string(), std::nullopt);
    EXPECT_EQ(document->array(), nullptr);
    EXPECT_EQ(JSONDocument::parse("1")->string(), std::nullopt);
}

TEST(JSONDocument, changesWhatItIsToldToAndNothingElse) {
    std::optional<JSONDocument> document = JSONDocument::parse(R"({"z":1.0,"list":[-0],"gone":1,"a":2,"gone":3})");
    ASSERT_TRUE(document);
    document->set("z", JSONDocument::of("new\n"));
    document->set("k\"", JSONDocument::of(JSONTree::Object{{"t", true}, {"n", 2.5}}));
    document->member("list")->array()->push_back(JSONDocument::of(nullptr));
    document->remove("gone");
    document->remove("missing");
    EXPECT_EQ(document->pretty(KeyOrder::Kept),
              "{\n  \"z\": \"new\\n\",\n  \"list\": [\n    -0,\n    null\n  ],\n  \"a\": 2,\n  \"k\\\"\": {\n"
              "    \"n\": 2.5,\n    \"t\": true\n  }\n}");
}

TEST(JSONDocument, randomTextsKeepTheirValues) {
    testing::RandomJSON random{7};
    for (int round = 0; round < 2000; ++round) {
        const std::string text = random.objectText(4);
        const std::optional<JSONTree> tree = JSONParser::parseTree(text);
        ASSERT_TRUE(tree) << text;
        const std::optional<JSONDocument> document = JSONDocument::parse(text);
        ASSERT_TRUE(document) << text;
        for (const KeyOrder order : {KeyOrder::Kept, KeyOrder::Sorted}) {
            const std::string written = document->pretty(order);
            ASSERT_EQ(JSONParser::parseTree(written), tree) << text;
            ASSERT_EQ(JSONDocument::parse(written)->pretty(order), written) << text;
        }
    }
}

TEST(JSONDocument, newValuesAreWrittenAsTheWriterWritesThem) {
    testing::RandomJSON random{11};
    for (int round = 0; round < 500; ++round) {
        const JSONTree tree = random.tree(4);
        ASSERT_EQ(JSONDocument::of(tree).pretty(KeyOrder::Sorted), JSONWriter::pretty(tree));
    }
}

TEST(JSONDocument, deepNestingIsNoHindrance) {
    const std::string text = std::string(1000, '[') + std::string(1000, ']');
    ASSERT_TRUE(JSONDocument::parse(text));
    EXPECT_EQ(kept(kept(text)), kept(text));
}

}  // namespace
}  // namespace quorvane
