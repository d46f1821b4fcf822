#pragma once
#include <optional>
#include <string>

#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetEntry.h"
#include "QuorvaneWidgetExtension/WidgetComponents/ProviderGaugeList.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetEnvironment.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetHeader.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetNote.h"

namespace quorvane {

/// What the medium widget shows, from top to bottom.
struct MediumSpendWidget {
    WidgetHeader header;
    std::string totalToday;
    ProviderGaugeList gauges;
    std::optional<WidgetNote> caption;

    [[nodiscard]] static MediumSpendWidget of(const QuorvaneWidgetEntry& entry, const WidgetEnvironment& environment);
};

}  // namespace quorvane
