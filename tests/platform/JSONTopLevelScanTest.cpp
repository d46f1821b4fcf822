#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/JSONTopLevelScan.h"
#include "tests/platform/RandomJSON.h"

namespace quorvane {
namespace {

using Answer = std::optional<std::string_view>;
constexpr std::nullopt_t askTheParser = std::nullopt;

struct ScanCase {
    const char* name;
    const char* text;
    Answer expected;
};

class JSONTopLevelScans : public ::testing::TestWithParam<ScanCase> {};

TEST_P(JSONTopLevelScans, answerForTheKeyType) {
    EXPECT_EQ(scanTopLevelString(GetParam().text, "type"), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    ByText, JSONTopLevelScans,
    ::testing::Values(
        ScanCase{"firstMember", R"({"type":"user","x":1})", "user"},
        ScanCase{"laterMember", R"({"a":1,"b":[1,{"type":"no"}],"c":"x","type":"user"})", "user"},
        ScanCase{"whiteSpace", " \t\r\n{ \"a\" : null ,\n\"type\"\t:\r\n\"user\" } ", "user"},
        ScanCase{"firstOfDoubledKeys", R"({"type":"one","type":"two"})", "one"},
        ScanCase{"firstOfDoubledKeysIsNoText", R"({"type":1,"type":"two"})", ""},
        ScanCase{"missing", R"({"a":1,"b":"type"})", ""}, ScanCase{"emptyObject", "{}", ""},
        ScanCase{"emptyObjectWithBlanks", "{ \n }", ""}, ScanCase{"nestedOnly", R"({"a":{"type":"x"}})", ""},
        ScanCase{"keyInAText", R"({"a":"\"type\":\"x\""})", ""}, ScanCase{"longerKey", R"({"types":"x"})", ""},
        ScanCase{"shorterKey", R"({"typ":"x"})", ""}, ScanCase{"otherCase", R"({"Type":"x"})", ""},
        ScanCase{"emptyKey", R"({"":"x"})", ""}, ScanCase{"emptyText", R"({"type":""})", ""},
        ScanCase{"number", R"({"type":1})", ""}, ScanCase{"null", R"({"type":null})", ""},
        ScanCase{"object", R"({"type":{"type":"x"}})", ""}, ScanCase{"array", R"({"type":["x"]})", ""},
        ScanCase{"textWithAnEscape", R"({"type":"us\u0065r"})", askTheParser},
        ScanCase{"textWithAnEscapedQuote", R"({"type":"a\"b"})", askTheParser},
        ScanCase{"escapedKeyBefore", R"({"ty\u0070e":"one","type":"two"})", askTheParser},
        ScanCase{"escapesInOtherTexts", R"({"a":"\"\\","b":"\\\"}","type":"user"})", "user"},
        ScanCase{"bracketsInOtherTexts", R"({"a":["]}","\"]"],"type":"user"})", "user"},
        ScanCase{"escapedKeyBehind", R"({"type":"one","ty\u0070e":"two"})", "one"},
        ScanCase{"deepContainerBefore", R"({"a":[[[{"b":[{}]}]],[]],"type":"user"})", "user"},
        ScanCase{"notAnObject", R"(["type","user"])", askTheParser}, ScanCase{"empty", "", askTheParser},
        ScanCase{"cutInTheKey", R"({"ty)", askTheParser}, ScanCase{"cutInTheText", R"({"type":"us)", askTheParser},
        ScanCase{"cutBehindABackslash", R"({"type":"us\)", askTheParser},
        ScanCase{"cutInAnotherValue", R"({"a":[1,2)", askTheParser}, ScanCase{"noColon", R"({"a" 1})", askTheParser},
        ScanCase{"behindManyShortMembers",
                 R"({"parent":"6d1c2f","sidechain":false,"cwd":"/home/ana/shop","version":"2.1.97","type":"user"})",
                 "user"},
        ScanCase{"farKeyWithABlank", R"({"parent":"6d1c2f","folder":"/home/ana/shop","type" : "user","x":[1,2,3]})",
                 "user"},
        ScanCase{"keyAsATextBefore", R"({"parent":"6d1c2f","kind":"type","folder":"/home/ana/shop","type":"user"})",
                 "user"},
        ScanCase{"longerKeyBefore", R"({"parent":"6d1c2f","types":"a","folder":"/home/ana/shop","type":"user"})",
                 "user"},
        ScanCase{"shortContainerBefore", R"({"parent":"6d1c2f","data":{"type":"no"},"folder":"/home","type":"user"})",
                 "user"},
        ScanCase{"textThatLooksLikeAContainer", R"({"parent":"6d1c2f","a":":[x","folder":"/home/ana","type":"user"})",
                 "user"},
        ScanCase{"textThatEndsLikeAKey", R"({"parent":"6d1c2f","a":"x:","b":[{"type":1}],"type":"user","c":"/home"})",
                 "user"},
        ScanCase{"braceInATextBefore", R"({"parent":"6d1c2f","folder":"/home/ana/{shop}/[id]","type":"user","c":1})",
                 "user"},
        ScanCase{"otherLanguage", "{\"type\":\"\xc3\xa9\"}", "\xc3\xa9"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(JSONTopLevelScan, largeContainerBeforeTheKeyIsLeftToTheParser) {
    const std::string large = "[" + std::string(10000, ' ') + "]";
    EXPECT_EQ(scanTopLevelString(R"({"a":)" + large + R"(,"type":"user"})", "type"), askTheParser);
    const std::string text(10000, 'x');
    EXPECT_EQ(scanTopLevelString(R"({"a":")" + text + R"(","type":"user"})", "type"), "user");
}

TEST(JSONTopLevelScan, answerPointsIntoTheText) {
    const std::string text = R"({"type":"user"})";
    const Answer answer = scanTopLevelString(text, "type");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->data(), text.data() + 9);
}

TEST(JSONTopLevelScan, neverContradictsTheParser) {
    testing::RandomJSON random{7};
    JSONParser parser;
    int texts = 0;
    int without = 0;
    int leftToTheParser = 0;
    for (int round = 0; round < 20000; ++round) {
        const std::string text = random.objectText(3);
        const std::string key = random.key();
        const JSONValue value = parser.parse(text);
        ASSERT_TRUE(value.isObject()) << text;
        const Answer truth = value[key].string();
        const Answer answer = scanTopLevelString(text, key);
        if (!answer) {
            ++leftToTheParser;
        } else if (answer->empty()) {
            ++without;
            ASSERT_TRUE(!truth || truth->empty()) << text;
        } else {
            ++texts;
            ASSERT_EQ(answer, truth) << text;
        }
    }
    EXPECT_GT(texts, 500);
    EXPECT_GT(without, 5000);
    EXPECT_GT(leftToTheParser, 1000);
    EXPECT_LT(leftToTheParser, 10000) << "the scan is of use only if it mostly knows";
}

TEST(JSONTopLevelScan, anyBeginningOfATextIsSurvived) {
    testing::RandomJSON random{8};
    for (int round = 0; round < 300; ++round) {
        const std::string text = random.objectText(3);
        for (std::size_t length = 0; length <= text.size(); ++length) {
            // A copy of exactly that length, so that a memory checker sees a read beyond it.
            const std::vector<char> beginning(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length));
            const Answer answer = scanTopLevelString({beginning.data(), beginning.size()}, "type");
            if (answer && !answer->empty()) {
                ASSERT_NE(text.find('"' + std::string{*answer} + '"'), std::string::npos);
            }
        }
    }
}

}  // namespace
}  // namespace quorvane
