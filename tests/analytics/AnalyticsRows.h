#pragma once
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "QuorvaneCore/index/ModelDaySummary.h"
#include "QuorvaneCore/platform/ISODate.h"

namespace quorvane::testing {

/// A row with a cost, a call and as many tokens as dollars.
inline ModelDaySummary row(ProviderID provider, std::string model, Date day, double cost) {
    return {.provider = provider,
            .model = std::move(model),
            .day = day,
            .eventCount = 1,
            .inputTokens = static_cast<std::int64_t>(cost),
            .cost = cost};
}

inline Date at(const char* text) {
    return ISODate::parsePlain(text).value();
}

/// Rows of a few models on days around `now`, some of them before and behind it.
inline std::vector<ModelDaySummary> randomRows(unsigned seed, Date now, const Calendar& calendar) {
    std::mt19937 generator{seed};
    const auto below = [&](int limit) { return std::uniform_int_distribution<int>{0, limit - 1}(generator); };
    const std::vector<std::string> models{"opus", "sonnet", "haiku", "sol", ""};
    const std::vector<ProviderID> providers{ProviderID::Claude, ProviderID::Codex};
    std::vector<ModelDaySummary> rows;
    for (int count = 0; count < 200; ++count) {
        rows.push_back({.provider = providers[static_cast<std::size_t>(below(2))],
                        .model = models[static_cast<std::size_t>(below(5))],
                        .day = calendar.start(calendar.day(now) + 3 - below(50)),
                        .eventCount = below(5),
                        .inputTokens = below(1000),
                        .outputTokens = below(1000),
                        .cache5mTokens = below(1000),
                        .cache1hTokens = below(1000),
                        .cacheReadTokens = below(1000),
                        .cost = below(1000) / 8.0});
    }
    return rows;
}

}  // namespace quorvane::testing
