#pragma once
#include <string_view>

#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetProviderChoice.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetTimeframeChoice.h"

namespace quorvane {

/// What a user sets of one widget.
struct QuorvaneWidgetConfigurationIntent {
    static constexpr std::string_view title = "Quorvane";
    static constexpr std::string_view showLimitsTitle = "Show limits";

    QuorvaneWidgetProviderChoice provider = QuorvaneWidgetProviderChoice::all;
    bool showLimits = true;  ///< whether gauges of the limits are drawn
    QuorvaneWidgetTimeframeChoice timeframe = QuorvaneWidgetTimeframeChoice::fourteenDays;

    friend bool operator==(const QuorvaneWidgetConfigurationIntent&,
                           const QuorvaneWidgetConfigurationIntent&) = default;
};

}  // namespace quorvane
