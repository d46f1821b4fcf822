#pragma once
#include <string>

#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetEntry.h"
#include "QuorvaneWidgetExtension/WidgetComponents/MiniSparkline.h"
#include "QuorvaneWidgetExtension/WidgetComponents/ProviderGaugeList.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetEnvironment.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetFooter.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetHeader.h"

namespace quorvane {

/// What the large widget shows: the header, the two figures with the sparkline beside them, the providers, the footer.
struct LargeSpendWidget {
    static constexpr double sparklineHeight = 66;  ///< of its frame, in points

    WidgetHeader header;
    std::string totalToday;
    std::string todayLabel = "today";
    std::string totalWindow;
    std::string windowLabel;
    MiniSparkline sparkline;
    ProviderGaugeList gauges;
    WidgetFooter footer;

    [[nodiscard]] static LargeSpendWidget of(const QuorvaneWidgetEntry& entry, const WidgetEnvironment& environment);
};

}  // namespace quorvane
