#pragma once
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "QuorvaneCore/platform/StringHash.h"
#include "QuorvaneCore/pricing/ModelPrice.h"

namespace quorvane {

/// The price list: model identifiers, case counts, and their prices. A value; any thread may read a shared one.
/// A model without a price is never guessed at. docs/pricing.md tells the file format.
class PricingTable {
public:
    using Models = std::unordered_map<std::string, ModelPrice, StringHash, std::equal_to<>>;

    PricingTable() = default;
    explicit PricingTable(Models models) : models_{std::move(models)} {}

    /// The list that ships with the library, of the resource "pricing-default.json". An empty table if it is missing
    /// or damaged; every model is then unpriced.
    [[nodiscard]] static PricingTable bundledDefault();

    /// The list that a price file holds; absent if anything in it is not as the format says.
    [[nodiscard]] static std::optional<PricingTable> fromJSON(std::string_view text);

    [[nodiscard]] const Models& models() const noexcept { return models_; }
    [[nodiscard]] std::set<std::string> knownModels() const;

    /// The entries of both. Of a model in both the price of `other` counts, as a whole.
    [[nodiscard]] PricingTable merging(const PricingTable& other) const;

    /// The price of exactly this identifier, else of the one it normalises to.
    [[nodiscard]] std::optional<ModelPrice> price(std::string_view model) const;

    /// The identifier without "[1m]" and without a date at its end, and its canonical name if that is an alias.
    /// Absent when nothing changes.
    [[nodiscard]] static std::optional<std::string> normalizedModelID(std::string_view model);

    friend bool operator==(const PricingTable&, const PricingTable&) = default;

private:
    Models models_;
};

}  // namespace quorvane
