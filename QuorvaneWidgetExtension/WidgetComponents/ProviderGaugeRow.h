#pragma once
#include <optional>
#include <string>

#include "QuorvaneWidgetExtension/WidgetComponents/LimitCapsule.h"
#include "QuorvaneWidgetExtension/WidgetComponents/ProviderBasisBadge.h"
#include "QuorvaneWidgetExtension/WidgetComponents/ProviderMarkChip.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetEnvironment.h"

namespace quorvane {

/// One provider in one line. Lengths are in points.
struct ProviderGaugeRow {
    static constexpr double minimumScale = 0.85;  ///< how far name and value may shrink

    ProviderMarkChip chip;
    std::string name;
    double nameSize = 12;
    std::optional<ProviderBasisBadge> badge;
    std::string value;  ///< of today
    double valueColumn = 76;
    std::optional<LimitCapsule> limit;

    [[nodiscard]] static ProviderGaugeRow of(const WidgetProviderSnapshot& provider, bool showLimits, bool compact,
                                             const WidgetEnvironment& environment);

    friend bool operator==(const ProviderGaugeRow&, const ProviderGaugeRow&) = default;
};

}  // namespace quorvane
