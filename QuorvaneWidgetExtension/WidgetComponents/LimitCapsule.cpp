#include "QuorvaneWidgetExtension/WidgetComponents/LimitCapsule.h"

#include <algorithm>

namespace quorvane {

double LimitCapsule::fraction() const noexcept {
    return std::clamp(percent, 0.0, 100.0) / 100;
}

std::optional<LimitCapsule> LimitCapsule::of(const WidgetProviderSnapshot& provider, const WidgetColor& tint) noexcept {
    if (!provider.usedPercent || !provider.usageOfficial) return std::nullopt;
    return LimitCapsule{.percent = *provider.usedPercent, .tint = tint};
}

}  // namespace quorvane
