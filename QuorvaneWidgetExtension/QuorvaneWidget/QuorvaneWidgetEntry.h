#pragma once
#include "QuorvaneCore/snapshots/WidgetSnapshot.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetConfigurationIntent.h"

namespace quorvane {

/// What a widget shows from one moment on.
struct QuorvaneWidgetEntry {
    Date date;  ///< when it was made
    QuorvaneWidgetConfigurationIntent configuration;
    WidgetSnapshot snapshot;  ///< already narrowed to the configuration
    bool isPreview = false;   ///< the data is a sample, or is shown as one, and not the user's

    friend bool operator==(const QuorvaneWidgetEntry&, const QuorvaneWidgetEntry&) = default;
};

}  // namespace quorvane
