#pragma once
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "QuorvaneWidgetExtension/WidgetComponents/ProviderGaugeRow.h"
#include "QuorvaneWidgetExtension/WidgetComponents/ProviderGridCell.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetAllProvidersPresentation.h"

namespace quorvane {

/// The providers of a snapshot, in its order, as cells of a grid or as rows of a stack.
struct ProviderGaugeList {
    static constexpr double stackSpacing = 7;  ///< between the rows of a stack, in points
    static constexpr double limitWidth = 64;   ///< of a gauge, in points

    std::variant<std::vector<ProviderGaugeRow>, std::vector<ProviderGridCell>> providers;
    /// Room for the gauges of a stack, so that the values stand in one column whether a row has a gauge or not.
    double limitColumn = 0;
    std::string more;  ///< "+3 more" where there is not room for all, else empty

    [[nodiscard]] static ProviderGaugeList of(std::span<const WidgetProviderSnapshot> providers, bool showLimits,
                                              WidgetAllProvidersPresentation::Family family,
                                              const WidgetEnvironment& environment);

    friend bool operator==(const ProviderGaugeList&, const ProviderGaugeList&) = default;
};

}  // namespace quorvane
