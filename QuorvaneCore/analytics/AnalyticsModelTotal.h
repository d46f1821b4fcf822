#pragma once
#include <cstdint>
#include <string>

#include "QuorvaneCore/model/ProviderID.h"

namespace quorvane {

/// What one model of one provider used over all days.
struct AnalyticsModelTotal {
    ProviderID provider{};
    std::string model;
    std::int64_t eventCount = 0;
    std::int64_t inputTokens = 0;
    std::int64_t outputTokens = 0;
    std::int64_t cache5mTokens = 0;
    std::int64_t cache1hTokens = 0;
    std::int64_t cacheReadTokens = 0;
    double cost = 0;  ///< US dollars

    /// The sum of all five kinds of token, checked.
    [[nodiscard]] std::int64_t totalTokens() const noexcept;

    /// The provider's raw name, "::" and the model.
    [[nodiscard]] std::string id() const;

    friend bool operator==(const AnalyticsModelTotal&, const AnalyticsModelTotal&) = default;
};

}  // namespace quorvane
