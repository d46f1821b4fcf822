// JSON texts that are changed in places and written back: what is not changed keeps its value, and a second writing
// changes nothing.

#include "QuorvaneCore/platform/JSONDocument.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "QuorvaneCore/platform/JSONParser.h"
#include "fuzz/FuzzTarget.h"

using quorvane::JSONDocument;
using quorvane::JSONParser;
using quorvane::JSONTree;
using quorvane::fuzz::require;

namespace {

constexpr std::size_t largestText = 65536;
constexpr std::string_view newKey = "\"a new key\"";

void requireSameValue(const JSONDocument& document, JSONDocument::KeyOrder order, const JSONTree& tree) {
    const std::string written = document.pretty(order);
    require(JSONParser::parseTree(written) == tree, "written text has the value");
    const std::optional<JSONDocument> again = JSONDocument::parse(written);
    require(again && again->pretty(order) == written, "a second writing changes nothing");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > largestText) return 0;
    const std::string_view text{reinterpret_cast<const char*>(data), size};
    JSONParser parser;
    std::optional<JSONDocument> document = JSONDocument::parse(text);
    require(document.has_value() == parser.parse(text).isPresent(), "the same texts are JSON");
    if (!document) return 0;
    const std::optional<JSONTree> tree = JSONParser::parseTree(text);
    require(tree.has_value(), "has a value");
    requireSameValue(*document, JSONDocument::KeyOrder::Kept, *tree);
    requireSameValue(*document, JSONDocument::KeyOrder::Sorted, *tree);

    if (document->object() == nullptr || text.find(newKey) != std::string_view::npos) return 0;
    const std::string before = document->pretty(JSONDocument::KeyOrder::Kept);
    const std::string key{newKey.substr(1, newKey.size() - 2)};
    document->set(key, JSONDocument::of(JSONTree::Array{1, "x"}));
    require(document->member(key) != nullptr, "what is set is there");
    document->remove(key);
    require(document->pretty(JSONDocument::KeyOrder::Kept) == before, "what is removed leaves no trace");
    return 0;
}
