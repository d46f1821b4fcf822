#include "QuorvaneCore/pricing/PricingTable.h"

#include <utility>

#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/model/QuorvaneResourceBundle.h"
#include "QuorvaneCore/platform/FileContents.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/Pattern.h"

namespace quorvane {
namespace {

using Aliases = std::unordered_map<std::string_view, std::string_view>;

/// Applied once: a canonical name is not looked up again.
const Aliases& aliases() {
    static const Aliases table{
        {"gpt-5.6", "gpt-5.6-sol"},
        {"grok-4.6-latest", "grok-4.6"},
        {"grok-4.6-build", "grok-4.6"},
        {"grok-4.5-latest", "grok-4.5"},
        {"grok-4.5-build", "grok-4.5"},
        {"grok-build-latest", "grok-4.5"},
        {"grok-build", "grok-4.5"},
        {"grok-4.3-latest", "grok-4.3"},
        {"grok-latest", "grok-4.3"},
        {"grok-code-fast-1", "grok-build-0.1"},
        {"grok-code-fast", "grok-build-0.1"},
        {"grok-code-fast-1-0825", "grok-build-0.1"},
        {"grok-4.20", "grok-4.20-0309-reasoning"},
        {"grok-4.20-reasoning", "grok-4.20-0309-reasoning"},
        {"grok-4.20-reasoning-latest", "grok-4.20-0309-reasoning"},
        {"grok-4.20-0309", "grok-4.20-0309-reasoning"},
        {"grok-4.20-beta", "grok-4.20-0309-reasoning"},
        {"grok-4.20-beta-latest", "grok-4.20-0309-reasoning"},
        {"grok-4.20-beta-reasoning", "grok-4.20-0309-reasoning"},
        {"grok-4.20-beta-latest-reasoning", "grok-4.20-0309-reasoning"},
        {"grok-4.20-beta-0309", "grok-4.20-0309-reasoning"},
        {"grok-4.20-beta-0309-reasoning", "grok-4.20-0309-reasoning"},
        {"grok-4.20-non-reasoning", "grok-4.20-0309-non-reasoning"},
        {"grok-4.20-non-reasoning-latest", "grok-4.20-0309-non-reasoning"},
        {"meta/muse-spark-1.1", "muse-spark-1.1"},
        {"meta-muse-spark-1.1", "muse-spark-1.1"},
        {"muse-spark", "muse-spark-1.1"},
        {"composer-2.5-fast", "grok-composer-2.5-fast"},
        {"cursor-composer-2.5-fast", "grok-composer-2.5-fast"},
        {"composer-2.5", "grok-composer-2.5"},
        {"cursor-composer-2.5", "grok-composer-2.5"},
    };
    return table;
}

/// The prices of one model, as they are read; `isValid` falls with the first value that the format does not allow.
class PriceReader {
public:
    explicit PriceReader(JSONValue entry) noexcept : entry_{entry}, isValid_{entry.isObject()} {}

    double required(std::string_view key) noexcept {
        const std::optional<double> price = JSONNumber::asDouble(entry_[key]);
        isValid_ = isValid_ && price;
        return price.value_or(0);
    }

    std::optional<double> optional(std::string_view key) noexcept {
        const JSONValue value = entry_[key];
        if (!value.isPresent() || value.isNull()) return std::nullopt;
        const std::optional<double> price = JSONNumber::asDouble(value);
        isValid_ = isValid_ && price;
        return price;
    }

    [[nodiscard]] bool isValid() const noexcept { return isValid_; }

private:
    JSONValue entry_;
    bool isValid_;
};

std::optional<ModelPrice> readPrice(JSONValue entry) {
    PriceReader reader{entry};
    const ModelPrice price{
        .inputCostPerToken = reader.required("input_cost_per_token"),
        .outputCostPerToken = reader.required("output_cost_per_token"),
        .cacheCreationInputTokenCost = reader.optional("cache_creation_input_token_cost"),
        .cacheCreationInputTokenCostAbove1hr = reader.optional("cache_creation_input_token_cost_above_1hr"),
        .cacheReadInputTokenCost = reader.optional("cache_read_input_token_cost"),
        .inputCostPerTokenAbove200k = reader.optional("input_cost_per_token_above_200k_tokens"),
        .outputCostPerTokenAbove200k = reader.optional("output_cost_per_token_above_200k_tokens"),
        .cacheCreationInputTokenCostAbove200k = reader.optional("cache_creation_input_token_cost_above_200k_tokens"),
        .cacheCreationInputTokenCostAbove1hrAbove200k =
            reader.optional("cache_creation_input_token_cost_above_1hr_above_200k_tokens"),
        .cacheReadInputTokenCostAbove200k = reader.optional("cache_read_input_token_cost_above_200k_tokens"),
    };
    return reader.isValid() ? std::optional{price} : std::nullopt;
}

}  // namespace

PricingTable PricingTable::bundledDefault() {
    const std::optional<std::string> path = QuorvaneResourceBundle::url("pricing-default", "json", "QuorvaneCore");
    const std::optional<std::string> text = path ? readFile(*path) : std::nullopt;
    return text ? fromJSON(*text).value_or(PricingTable{}) : PricingTable{};
}

std::optional<PricingTable> PricingTable::fromJSON(std::string_view text) {
    JSONParser parser;
    const JSONValue models = parser.parse(text)["models"];
    if (!models.isObject()) return std::nullopt;
    Models table;
    bool isValid = true;
    models.forEachMember([&](std::string_view model, JSONValue entry) {
        const std::optional<ModelPrice> price = readPrice(entry);
        if (price) table.emplace(model, *price);
        isValid = isValid && price;
    });
    return isValid ? std::optional{PricingTable{std::move(table)}} : std::nullopt;
}

std::set<std::string> PricingTable::knownModels() const {
    std::set<std::string> known;
    for (const auto& [model, price] : models_)
        known.insert(model);
    return known;
}

PricingTable PricingTable::merging(const PricingTable& other) const {
    Models merged = other.models_;
    merged.insert(models_.begin(), models_.end());
    return PricingTable{std::move(merged)};
}

std::optional<ModelPrice> PricingTable::price(std::string_view model) const {
    if (const auto exact = models_.find(model); exact != models_.end()) return exact->second;
    const std::optional<std::string> normalized = normalizedModelID(model);
    if (!normalized) return std::nullopt;
    const auto found = models_.find(*normalized);
    return found == models_.end() ? std::nullopt : std::optional{found->second};
}

std::optional<std::string> PricingTable::normalizedModelID(std::string_view model) {
    static const Pattern dateAtEnd{"-(?:[0-9]{8}|[0-9]{4}-[0-9]{2}-[0-9]{2})$"};
    constexpr std::string_view longContextMark = "[1m]";
    std::string_view name = model;
    if (name.ends_with(longContextMark)) name.remove_suffix(longContextMark.size());
    if (const std::optional<std::size_t> date = dateAtEnd.search(name)) name = name.substr(0, *date);
    if (const auto alias = aliases().find(name); alias != aliases().end()) name = alias->second;
    return name == model ? std::nullopt : std::optional{std::string{name}};
}

}  // namespace quorvane
