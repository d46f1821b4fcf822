// Price lists: any bytes give a whole table or none, the table holds exactly the text's models, and it does not depend
// on how the text is laid out.

#include <cmath>
#include <string>
#include <string_view>

#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "QuorvaneCore/pricing/PricingTable.h"
#include "fuzz/FuzzTarget.h"

using quorvane::JSONParser;
using quorvane::JSONTree;
using quorvane::JSONValue;
using quorvane::JSONWriter;
using quorvane::ModelPrice;
using quorvane::PricingTable;
using quorvane::fuzz::require;

namespace {

constexpr std::size_t largestText = 65536;

void checkModels(const PricingTable& table, JSONValue models) {
    std::size_t count = 0;
    models.forEachMember([&](std::string_view model, JSONValue) {
        ++count;
        const auto entry = table.models().find(model);
        require(entry != table.models().end(), "each model of the text is in the table");
        require(table.price(model) == entry->second, "a model has its own price, whatever its name looks like");
    });
    require(count == table.models().size(), "no model is invented");
}

void checkNames(const PricingTable& table) {
    for (const auto& [model, price] : table.models()) {
        require(std::isfinite(price.inputCostPerToken) && std::isfinite(price.outputCostPerToken), "prices are finite");
        // A name that is put into its normal form may have another one, but no name is its own.
        const auto normal = PricingTable::normalizedModelID(model);
        require(normal != model, "a normal form differs from the name");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > largestText) return 0;
    const std::string_view text{reinterpret_cast<const char*>(data), size};
    const auto table = PricingTable::fromJSON(text);
    const auto tree = JSONParser::parseTree(text);
    require(tree.has_value() || !table, "what is no JSON is no price list");
    if (!tree) return 0;

    const auto rewritten = PricingTable::fromJSON(JSONWriter::pretty(*tree));
    require(rewritten == table, "the layout of the text does not matter");
    if (!table) return 0;
    checkModels(*table, JSONValue{*tree}["models"]);
    checkNames(*table);
    require(table->merging(*table) == *table, "merging a table with itself changes nothing");
    require(table->merging(PricingTable{}) == *table && PricingTable{}.merging(*table) == *table,
            "merging with an empty table changes nothing");
    return 0;
}
