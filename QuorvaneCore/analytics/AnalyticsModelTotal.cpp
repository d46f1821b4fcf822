#include "QuorvaneCore/analytics/AnalyticsModelTotal.h"

#include "QuorvaneCore/analytics/detail/ModelIdentity.h"
#include "QuorvaneCore/model/TokenUsage.h"

namespace quorvane {

std::int64_t AnalyticsModelTotal::totalTokens() const noexcept {
    const TokenUsage tokens{.input = inputTokens,
                            .output = outputTokens,
                            .cacheCreate5m = cache5mTokens,
                            .cacheCreate1h = cache1hTokens,
                            .cacheRead = cacheReadTokens};
    return tokens.total();
}

std::string AnalyticsModelTotal::id() const {
    return detail::modelIdentity(provider, model);
}

}  // namespace quorvane
