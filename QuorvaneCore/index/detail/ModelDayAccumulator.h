#pragma once
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "QuorvaneCore/index/ModelDaySummary.h"
#include "QuorvaneCore/index/detail/CallSums.h"
#include "QuorvaneCore/platform/LocalDay.h"
#include "QuorvaneCore/platform/StringHash.h"

namespace quorvane::detail {

/// Adds up calls by provider, model and local day.
class ModelDayAccumulator {
public:
    void add(ProviderID provider, std::string_view model, LocalDay day, const TokenUsage& usage, double cost) {
        ModelDays& byModel = models_[static_cast<std::size_t>(provider)];
        auto days = byModel.find(model);
        if (days == byModel.end()) days = byModel.emplace(model, Days{}).first;
        const auto [place, isNew] = days->second.try_emplace(day.number, summaries_.size());
        if (isNew) {
            summaries_.push_back({day, {}});
            summaries_.back().second.provider = provider;
            summaries_.back().second.model = model;
        }
        addCall(summaries_[place->second].second, usage, cost);
    }

    /// The oldest day first, then by the provider's raw name and by the model.
    [[nodiscard]] std::vector<ModelDaySummary> finished(const Calendar& calendar) && {
        std::vector<ModelDaySummary> sorted;
        sorted.reserve(summaries_.size());
        for (auto& [day, summary] : summaries_) {
            summary.day = calendar.start(day);
            sorted.push_back(std::move(summary));
        }
        std::sort(sorted.begin(), sorted.end(), [](const ModelDaySummary& left, const ModelDaySummary& right) {
            return std::tuple{left.day, rawName(left.provider), std::string_view{left.model}} <
                   std::tuple{right.day, rawName(right.provider), std::string_view{right.model}};
        });
        return sorted;
    }

private:
    using Days = std::unordered_map<std::int64_t, std::size_t>;  // the place of a day's summary
    using ModelDays = std::unordered_map<std::string, Days, StringHash, std::equal_to<>>;

    std::array<ModelDays, allProviderIDs().size()> models_;
    std::vector<std::pair<LocalDay, ModelDaySummary>> summaries_;
};

}  // namespace quorvane::detail
