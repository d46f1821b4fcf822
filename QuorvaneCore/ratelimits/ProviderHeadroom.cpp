#include "QuorvaneCore/ratelimits/ProviderHeadroom.h"

#include <algorithm>

namespace quorvane {
namespace {

constexpr double highThreshold = 85.0;
constexpr double maxFreshMinutes = 10.0;

/// The fuller window of the two, the first on a tie.
const RateLimitWindow* tightest(const RateLimitSnapshot& snapshot) noexcept {
    const RateLimitWindow* primary = snapshot.primary ? &*snapshot.primary : nullptr;
    const RateLimitWindow* secondary = snapshot.secondary ? &*snapshot.secondary : nullptr;
    if (primary == nullptr) return secondary;
    if (secondary == nullptr) return primary;
    return secondary->usedPercent > primary->usedPercent ? secondary : primary;
}

struct Token {
    std::string_view operator()(const ProviderHeadroom::Official&) const noexcept { return "official"; }
    std::string_view operator()(const ProviderHeadroom::LikelyExhausted&) const noexcept { return "likely_exhausted"; }
    std::string_view operator()(const ProviderHeadroom::Unknown&) const noexcept { return "unknown"; }
};

}  // namespace

ProviderHeadroom ProviderHeadroom::resolve(const std::optional<RateLimitSnapshot>& snapshot, Date now) {
    if (!snapshot) return {Unknown{}};
    if (snapshot->likelyAtLimit(now, highThreshold, maxFreshMinutes)) return {LikelyExhausted{}};
    const std::optional<RateLimitSnapshot> current = snapshot->current(now);
    const RateLimitWindow* window = current ? tightest(*current) : nullptr;
    if (window == nullptr) return {Unknown{}};
    return {Official{.remainingPercent = std::clamp(100.0 - window->usedPercent, 0.0, 100.0),
                     .windowMinutes = window->windowMinutes,
                     .resetsAt = window->resetsAt}};
}

std::string_view ProviderHeadroom::stateToken() const noexcept {
    return std::visit(Token{}, verdict);
}

std::optional<double> ProviderHeadroom::remainingPercent() const noexcept {
    const Official* official = std::get_if<Official>(&verdict);
    if (official == nullptr) return std::nullopt;
    return official->remainingPercent;
}

}  // namespace quorvane
