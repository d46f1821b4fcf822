#pragma once
#include <vector>

#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetEntry.h"

namespace quorvane {

/// The entries of a widget, and when to ask for new ones.
struct QuorvaneWidgetTimeline {
    std::vector<QuorvaneWidgetEntry> entries;
    Date reloadAfter;  ///< at this moment or later

    friend bool operator==(const QuorvaneWidgetTimeline&, const QuorvaneWidgetTimeline&) = default;
};

}  // namespace quorvane
