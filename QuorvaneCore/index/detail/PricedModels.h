#pragma once
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "QuorvaneCore/model/TokenUsage.h"
#include "QuorvaneCore/platform/StringHash.h"
#include "QuorvaneCore/pricing/CostCalculator.h"

namespace quorvane::detail {

/// The rates of the models of one scan: a name is looked up and normalised once, not for each of its calls.
class PricedModels {
public:
    /// `calculator` must outlive this.
    explicit PricedModels(const CostCalculator& calculator) noexcept : calculator_{calculator} {}

    /// What a call cost; 0 for an unpriced model.
    [[nodiscard]] double cost(std::string_view model, const TokenUsage& usage) {
        const std::optional<ModelRates>& rates =
            CostCalculator::exceedsContextTier(usage) ? find(model).tier : find(model).base;
        return rates ? rates->cost(usage) : 0;
    }

private:
    struct Rates {
        std::optional<ModelRates> base;
        std::optional<ModelRates> tier;
    };

    const Rates& find(std::string_view model) {
        if (const auto known = models_.find(model); known != models_.end()) return known->second;
        return models_.emplace(model, Rates{calculator_.rates(model, false), calculator_.rates(model, true)})
            .first->second;
    }

    const CostCalculator& calculator_;
    std::unordered_map<std::string, Rates, StringHash, std::equal_to<>> models_;
};

}  // namespace quorvane::detail
