#pragma once
#include <string>

#include "QuorvaneWidgetExtension/WidgetComponents/ProviderMarkChip.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetEnvironment.h"

namespace quorvane {

/// One provider of many: the name, and today's value under it, both at `textSize` points.
struct ProviderGridCell {
    static constexpr double textSize = 11;
    static constexpr double minimumScale = 0.8;  ///< how far name and value may shrink

    ProviderMarkChip chip;
    std::string name;
    std::string value;

    [[nodiscard]] static ProviderGridCell of(const WidgetProviderSnapshot& provider,
                                             const WidgetEnvironment& environment);

    friend bool operator==(const ProviderGridCell&, const ProviderGridCell&) = default;
};

}  // namespace quorvane
