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

    std::variant<std::vector<ProviderGaugeRow>, std::vector<ProviderGridCell>> providers;
    std::string more;  ///< "+3 more" where there is not room for all, else empty

    [[nodiscard]] static ProviderGaugeList of(std::span<const WidgetProviderSnapshot> providers, bool showLimits,
                                              WidgetAllProvidersPresentation::Family family,
                                              const WidgetEnvironment& environment);

    friend bool operator==(const ProviderGaugeList&, const ProviderGaugeList&) = default;
};

}  // namespace quorvane
