#pragma once
#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "QuorvaneCore/index/UsageWindowSummary.h"

namespace quorvane::detail {

/// A `UsageWindowSummary` while it is being added up.
struct WindowAccumulator {
    explicit WindowAccumulator(std::int64_t days)
        : dailyCostSeries(static_cast<std::size_t>(std::max<std::int64_t>(days, 0)), 0.0),
          windowDays{std::max<std::int64_t>(days, 0)} {}

    /// For a rollup, which has no series: however long the window, no memory goes with its days.
    [[nodiscard]] static WindowAccumulator withoutSeries(std::int64_t days) {
        WindowAccumulator sums{0};
        sums.windowDays = days;
        return sums;
    }

    CostBucket today;
    CostBucket window;
    std::map<std::string, CostBucket, std::less<>> byModel;
    std::vector<double> dailyCostSeries;
    std::int64_t windowDays;

    void addToWindow(std::string_view model, const TokenUsage& usage, std::optional<double> cost, std::int64_t count) {
        window.addGrouped(model, usage, cost, count);
        auto entry = byModel.find(model);
        if (entry == byModel.end()) entry = byModel.try_emplace(std::string{model}).first;
        entry->second.addGrouped(model, usage, cost, count);
    }

    void addToSeries(std::int64_t position, double cost) {
        if (position < 0 || std::cmp_greater_equal(position, dailyCostSeries.size())) return;
        dailyCostSeries[static_cast<std::size_t>(position)] += cost;
    }

    /// A rollup never says 0 days, even where its series is empty.
    [[nodiscard]] UsageWindowSummary finished() && {
        return UsageWindowSummary{.rollup = {.today = std::move(today),
                                             .last7d = std::move(window),
                                             .byModel7d = std::move(byModel),
                                             .windowDays = std::max<std::int64_t>(windowDays, 1)},
                                  .dailyCostSeries = std::move(dailyCostSeries)};
    }
};

/// One window of a multi-window call: all requested providers, each alone and together.
struct WindowBucket {
    WindowBucket(std::int64_t length, std::span<const ProviderID> ids) : days{length}, aggregate{length} {
        for (const ProviderID id : ids)
            providers.try_emplace(id, length);
    }

    std::int64_t days;
    WindowAccumulator aggregate;
    std::map<ProviderID, WindowAccumulator> providers;

    /// Adds a call, or a group of calls, to the provider's sums and to those of all.
    template <typename Add>
    void addTo(ProviderID provider, Add&& add) {
        if (const auto entry = providers.find(provider); entry != providers.end()) add(entry->second);
        add(aggregate);
    }

    [[nodiscard]] UsageWindowSummaries finished() && {
        UsageWindowSummaries summaries;
        summaries.aggregate = std::move(aggregate).finished();
        for (auto& [id, sums] : providers)
            summaries.providers.emplace(id, std::move(sums).finished());
        return summaries;
    }
};

}  // namespace quorvane::detail
