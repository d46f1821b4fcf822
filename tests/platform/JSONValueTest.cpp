#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/JSONValue.h"
#include "tests/platform/RandomJSON.h"

namespace quorvane {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

bool same(JSONValue left, JSONValue right) {
    if (left.isPresent() != right.isPresent() || left.isNull() != right.isNull()) return false;
    if (left.isObject() != right.isObject() || left.isArray() != right.isArray()) return false;
    return left.string() == right.string() && left.boolean() == right.boolean() && left.number() == right.number() &&
           left.isEmpty() == right.isEmpty();
}

/// The same document read in both ways in which a value can be held.
class JSONValues : public ::testing::TestWithParam<bool> {
protected:
    JSONValue read(std::string_view text) {
        if (GetParam()) {
            tree_ = JSONParser::parseTree(text);
            return tree_ ? JSONValue{*tree_} : JSONValue{};
        }
        return parser_.parse(text);
    }

private:
    JSONParser parser_;
    std::optional<JSONTree> tree_;
};

INSTANTIATE_TEST_SUITE_P(Of, JSONValues, ::testing::Bool(),
                         [](const auto& row) { return std::string{row.param ? "aTree" : "aParsedText"}; });

struct Answers {
    bool isPresent = true;
    bool isNull = false;
    bool isObject = false;
    bool isArray = false;
    bool isEmpty = true;
    std::optional<std::string_view> string;
    std::optional<bool> boolean;
    std::optional<JSONNumberValue> number;
};

void expectAnswers(JSONValue value, const Answers& expected) {
    EXPECT_EQ(value.isPresent(), expected.isPresent);
    EXPECT_EQ(value.isNull(), expected.isNull);
    EXPECT_EQ(value.isObject(), expected.isObject);
    EXPECT_EQ(value.isArray(), expected.isArray);
    EXPECT_EQ(value.isEmpty(), expected.isEmpty);
    EXPECT_EQ(value.string(), expected.string);
    EXPECT_EQ(value.boolean(), expected.boolean);
    EXPECT_EQ(value.number(), expected.number);
    const auto* integer = expected.number ? std::get_if<std::int64_t>(&*expected.number) : nullptr;
    EXPECT_EQ(value.integer(), integer != nullptr ? std::optional{*integer} : std::nullopt);
    if (!expected.isObject) {
        EXPECT_FALSE(value["key"].isPresent());
        value.forEachMember([](std::string_view, JSONValue) { ADD_FAILURE() << "a member of no object"; });
    }
    if (!expected.isArray) {
        value.forEachElement([](JSONValue) { ADD_FAILURE() << "an element of no array"; });
    }
}

TEST_P(JSONValues, everyQuestionMayBeAskedOfEveryKind) {
    expectAnswers(JSONValue{}, {.isPresent = false});
    expectAnswers(read("null"), {.isNull = true});
    expectAnswers(read("true"), {.boolean = true});
    expectAnswers(read("false"), {.boolean = false});
    expectAnswers(read("\"\""), {.string = ""});
    expectAnswers(read("\"text\""), {.string = "text"});
    expectAnswers(read("-3"), {.number = JSONNumberValue{std::int64_t{-3}}});
    expectAnswers(read("18446744073709551615"), {.number = JSONNumberValue{std::uint64_t{18446744073709551615U}}});
    expectAnswers(read("2.0"), {.number = JSONNumberValue{2.0}});
    expectAnswers(read("[]"), {.isArray = true});
    expectAnswers(read("[null]"), {.isArray = true, .isEmpty = false});
    expectAnswers(read("{}"), {.isObject = true});
    expectAnswers(read(R"({"a":null})"), {.isObject = true, .isEmpty = false});
}

TEST_P(JSONValues, everyKindIsToldInPartsOfOthersToo) {
    const std::vector<std::pair<std::string, Answers>> kinds{
        {"null", {.isNull = true}},
        {"true", {.boolean = true}},
        {"false", {.boolean = false}},
        {R"("text")", {.string = "text"}},
        {R"("")", {.string = ""}},
        {"-9223372036854775808", {.number = JSONNumberValue{std::numeric_limits<std::int64_t>::min()}}},
        {"9223372036854775807", {.number = JSONNumberValue{std::numeric_limits<std::int64_t>::max()}}},
        {"9223372036854775808", {.number = JSONNumberValue{std::uint64_t{1} << 63}}},
        {"18446744073709551616", {.number = JSONNumberValue{18446744073709551616.0}}},
        {"1.0", {.number = JSONNumberValue{1.0}}},
        {"{}", {.isObject = true}},
        {R"({"b":1})", {.isObject = true, .isEmpty = false}},
        {"[]", {.isArray = true}},
        {"[[]]", {.isArray = true, .isEmpty = false}},
    };
    constexpr std::array<std::string_view, 1> keys{"a"};
    for (const auto& [text, expected] : kinds) {
        SCOPED_TRACE(text);
        int visited = 0;
        const auto expectPart = [&, &expected = expected](JSONValue part) {
            ++visited;
            expectAnswers(part, expected);
        };
        const JSONValue object = read(R"({"a":)" + text + "}");
        expectPart(object["a"]);
        expectPart(object.members(keys)[0]);
        object.forEachMember([&](std::string_view, JSONValue member) { expectPart(member); });
        read("[" + text + "]").forEachElement(expectPart);
        EXPECT_EQ(visited, 4);
    }
}

TEST_P(JSONValues, missingMembersAreAbsentAtAnyDepth) {
    const JSONValue value = read(R"({"a":{"b":[1]},"":7,"n":null})");
    EXPECT_TRUE(value["a"]["b"].isArray());
    EXPECT_FALSE(value["a"]["c"].isPresent());
    EXPECT_FALSE(value["a"]["b"]["c"]["d"].isPresent());
    EXPECT_FALSE(value["A"].isPresent());
    EXPECT_TRUE(value[""].isPresent());
    EXPECT_TRUE(value["n"].isPresent());
}

TEST_P(JSONValues, elementsComeInOrder) {
    std::vector<std::string> seen;
    read(R"(["b","a","b"])").forEachElement([&](JSONValue element) { seen.emplace_back(element.string().value()); });
    EXPECT_THAT(seen, ElementsAre("b", "a", "b"));
}

TEST_P(JSONValues, doubledKeysAreVisitedOnceWithTheirFirstValue) {
    std::vector<std::pair<std::string, std::string>> seen;
    read(R"({"a":"1","b":"2","a":"3","\u0062":"4"})").forEachMember([&](std::string_view key, JSONValue member) {
        seen.emplace_back(key, member.string().value());
    });
    EXPECT_THAT(seen, ElementsAre(Pair("a", "1"), Pair("b", "2")));
}

TEST_P(JSONValues, keysOfAnyLengthAreToldApartAtEveryByte) {
    for (std::size_t length = 1; length <= 80; ++length) {
        const std::string key(length, 'k');
        const JSONValue value = read(R"({"a":1,")" + key + R"(":2,"k)" + key + R"(":3})");
        ASSERT_EQ(value[key].integer(), 2) << length;
        for (std::size_t at = 0; at < length; ++at) {
            std::string other = key;
            other[at] = 'x';
            ASSERT_FALSE(value[other].isPresent()) << length << " at " << at;
        }
    }
}

TEST_P(JSONValues, membersOfSeveralKeysComeInTheOrderAskedFor) {
    constexpr std::array<std::string_view, 4> keys{"c", "missing", "a", ""};
    const auto found = read(R"({"a":1,"b":2,"c":3,"a":4,"c":5})").members(keys);
    EXPECT_EQ(found[0].number(), JSONNumberValue{std::int64_t{3}});
    EXPECT_FALSE(found[1].isPresent());
    EXPECT_EQ(found[2].number(), JSONNumberValue{std::int64_t{1}});
    EXPECT_FALSE(found[3].isPresent());
    for (const JSONValue value : read("[1]").members(keys))
        EXPECT_FALSE(value.isPresent());
}

TEST_P(JSONValues, membersAreFoundInAnyOrderOfTheTextWithTheirFirstValue) {
    constexpr std::array<std::string_view, 4> keys{"id", "", "model", "usage"};
    // One key twice, and two that only their other characters tell from those asked for.
    std::vector<std::string> order{"", "id", "id", "mobel", "model", "ud", "usage"};
    do {
        std::string text;
        std::array<std::optional<std::int64_t>, keys.size()> expected;
        for (std::size_t place = 0; place < order.size(); ++place) {
            text += (text.empty() ? "{\"" : ",\"") + order[place] + "\":" + std::to_string(place);
            const auto* const key = std::find(keys.begin(), keys.end(), order[place]);
            if (key == keys.end()) continue;
            std::optional<std::int64_t>& first = expected[static_cast<std::size_t>(key - keys.begin())];
            if (!first) first = static_cast<std::int64_t>(place);
        }
        const auto found = read(text + "}").members(keys);
        for (std::size_t index = 0; index < keys.size(); ++index)
            ASSERT_EQ(found[index].integer(), expected[index]) << text << " " << keys[index];
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST_P(JSONValues, membersAgreeWithSingleLookUpsOnRandomObjects) {
    testing::RandomJSON random{4};
    constexpr std::array<std::string_view, 5> keys{"type", "id", "message", "typ", "nothing"};
    for (int round = 0; round < 2000; ++round) {
        const std::string text = random.objectText(2);
        const JSONValue value = read(text);
        const auto found = value.members(keys);
        for (std::size_t index = 0; index < keys.size(); ++index)
            ASSERT_TRUE(same(found[index], value[keys[index]])) << text;
    }
}

TEST(JSONValue, membersAreVisitedInTheOrderOfTheText) {
    JSONParser parser;
    std::string seen;
    parser.parse(R"({"z":1,"a":2,"m":3})").forEachMember([&](std::string_view key, JSONValue) { seen += key; });
    EXPECT_EQ(seen, "zam");
}

TEST(JSONValue, objectWithThousandsOfKeysIsVisited) {
    std::string text = "{";
    for (int key = 0; key < 5000; ++key)
        text += '"' + std::to_string(key) + "\":" + std::to_string(key) + ",";
    text += R"("0":"doubled"})";
    JSONParser parser;
    const JSONValue value = parser.parse(text);
    std::int64_t sum = 0;
    value.forEachMember([&](std::string_view, JSONValue member) { sum += std::get<0>(member.number().value()); });
    EXPECT_EQ(sum, 5000 * 4999 / 2);
}

TEST(JSONValue, copiesViewTheSameDocument) {
    const JSONTree tree = JSONTree::Object{{"a", "x"}};
    const JSONValue value{tree};
    JSONValue copy;
    copy = value["a"];
    EXPECT_EQ(copy.string(), "x");
    EXPECT_EQ(copy.string()->data(), JSONValue{tree}["a"].string()->data());
}

}  // namespace
}  // namespace quorvane
