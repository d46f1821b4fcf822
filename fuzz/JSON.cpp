// The two parsers agree on every text: what they refuse, and every value of what they accept. The fast one reads the
// logs; the other one takes over where the fast one gives up, and reads documents that are kept.

#include <array>
#include <bit>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/JSONRecordReader.h"
#include "QuorvaneCore/platform/JSONTopLevelScan.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "fuzz/FuzzTarget.h"

using quorvane::JSONField;
using quorvane::JSONKeySet;
using quorvane::JSONNumberValue;
using quorvane::JSONParser;
using quorvane::JSONRecordReader;
using quorvane::JSONTree;
using quorvane::JSONValue;
using quorvane::JSONWriter;
using quorvane::fuzz::require;

namespace {

constexpr std::size_t largestText = 16384;

/// As numbers, bit for bit: of equal floats, 0 and -0 are two.
bool isSame(const JSONNumberValue& left, const JSONNumberValue& right) {
    if (left.index() != right.index()) return false;
    const auto* real = std::get_if<double>(&left);
    return real == nullptr
               ? left == right
               : std::bit_cast<std::uint64_t>(*real) == std::bit_cast<std::uint64_t>(std::get<double>(right));
}

void requireSame(JSONValue left, JSONValue right);

void requireSameMembers(JSONValue left, JSONValue right) {
    std::size_t count = 0;
    left.forEachMember([&](std::string_view key, JSONValue value) {
        ++count;
        requireSame(value, right[key]);
        require(left[key].isPresent(), "a member is found by the key that it is visited with");
    });
    std::size_t otherCount = 0;
    right.forEachMember([&](std::string_view, JSONValue) { ++otherCount; });
    require(count == otherCount, "both see the same keys");
}

void requireSameElements(JSONValue left, JSONValue right) {
    std::vector<JSONValue> elements;
    left.forEachElement([&](JSONValue element) { elements.push_back(element); });
    std::size_t at = 0;
    right.forEachElement([&](JSONValue element) {
        require(at < elements.size(), "no array is longer in the second parser");
        requireSame(elements[at++], element);
    });
    require(at == elements.size(), "no array is longer in the first parser");
}

void requireSame(JSONValue left, JSONValue right) {
    require(left.isPresent() && right.isPresent(), "both have the value");
    require(left.isNull() == right.isNull(), "null is null in both");
    require(left.isObject() == right.isObject(), "an object is one in both");
    require(left.isArray() == right.isArray(), "an array is one in both");
    require(left.boolean() == right.boolean(), "booleans are the same");
    require(left.string() == right.string(), "texts are the same");
    require(left.isEmpty() == right.isEmpty(), "what is empty is so in both");
    const auto number = left.number();
    const auto other = right.number();
    require(number.has_value() == other.has_value() && (!number || isSame(*number, *other)), "numbers are the same");
    if (left.isObject()) requireSameMembers(left, right);
    if (left.isArray()) requireSameElements(left, right);
}

/// The short cut that passes over log lines must not contradict the parser.
void checkScan(std::string_view text, JSONValue document) {
    const auto scanned = quorvane::scanTopLevelString(text, "type");
    if (!scanned || !document.isPresent()) return;
    const auto parsed = document["type"].string();
    require(*scanned == parsed.value_or(std::string_view{}), "the scan finds the parser's text, or none");
}

bool isSame(const JSONField& field, JSONValue value) {
    const auto number = [](JSONValue of) -> std::optional<double> {
        const auto held = of.number();
        if (!held) return std::nullopt;
        return std::visit([](auto alternative) { return static_cast<double>(alternative); }, *held);
    };
    std::vector<std::optional<double>> parts;
    value.forEachElement([&](JSONValue element) { parts.push_back(number(element)); });
    const bool isPair = parts.size() == 2 && parts[0] && parts[1];
    return field.isPresent() == value.isPresent() && field.text() == value.string() &&
           field.integer() == value.integer() && field.number() == number(value) &&
           field.pair() == (isPair ? std::optional{JSONField::Pair{*parts[0], *parts[1]}} : std::nullopt);
}

/// Nor must the reader that takes members out of a text without parsing all of it.
void checkRecord(std::string_view padded, JSONValue document) {
    constexpr std::array<std::string_view, 4> keys{"type", "a", "payload", "b"};
    constexpr std::size_t payload = 2;
    static constexpr JSONKeySet<keys.size()> set{keys};
    static JSONRecordReader reader{set.keys(), payload, set.keys()};
    const bool isRecord = reader.readPadded(padded);
    require(isRecord == document.isObject(), "an object is a record");
    for (std::size_t index = 0; isRecord && index < keys.size(); ++index) {
        require(isSame(reader.members()[index], document[keys[index]]), "members are the same");
        require(isSame(reader.innerMembers()[index], document["payload"][keys[index]]), "inner members are the same");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > largestText) return 0;
    const std::string_view text{reinterpret_cast<const char*>(data), size};
    static JSONParser kept;  // as readers use it: line after line through one parser
    const JSONValue document = kept.parse(text);
    const auto tree = JSONParser::parseTree(text);
    require(document.isPresent() == tree.has_value(), "the parsers accept the same texts");
    checkScan(text, document);

    std::string padded{text};
    padded.append(JSONParser::padding, '}');
    JSONParser fresh;
    const JSONValue again = fresh.parsePadded(std::string_view{padded}.substr(0, size));
    require(again.isPresent() == document.isPresent(), "what lies behind a text does not matter");
    checkRecord(std::string_view{padded}.substr(0, size), document);
    if (!tree) return 0;
    requireSame(document, JSONValue{*tree});
    requireSame(again, JSONValue{*tree});

    // A float that is whole is written as an integer, so the first text may differ; from there on nothing changes.
    const std::string written = JSONWriter::compact(*tree);
    const auto reread = JSONParser::parseTree(written);
    require(reread.has_value(), "what is written can be read");
    require(JSONWriter::compact(*reread) == written, "writing what was read gives the same text");
    const auto pretty = JSONParser::parseTree(JSONWriter::pretty(*tree));
    require(pretty == reread, "both ways of writing hold the same value");
    return 0;
}
