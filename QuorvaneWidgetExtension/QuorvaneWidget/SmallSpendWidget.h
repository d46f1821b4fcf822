#pragma once
#include <optional>
#include <string>

#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetEntry.h"
#include "QuorvaneWidgetExtension/WidgetComponents/MiniSparkline.h"
#include "QuorvaneWidgetExtension/WidgetComponents/ProviderBasisBadge.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetEnvironment.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetHeader.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetNote.h"

namespace quorvane {

/// What the small widget shows, from top to bottom.
struct SmallSpendWidget {
    WidgetHeader header;
    std::string totalToday;
    std::optional<ProviderBasisBadge> badge;
    std::string todayLabel = "today";
    MiniSparkline sparkline;
    std::optional<WidgetNote> caption;

    [[nodiscard]] static SmallSpendWidget of(const QuorvaneWidgetEntry& entry, const WidgetEnvironment& environment);
};

}  // namespace quorvane
