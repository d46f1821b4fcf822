#pragma once
#include <string_view>

#include "QuorvaneCore/snapshots/QuorvaneWidgetContract.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetFamily.h"

namespace quorvane {

/// What a widget's host is told of the widget.
struct QuorvaneWidget {
    static constexpr std::string_view displayName = "Quorvane";
    static constexpr std::string_view description = "Track AI coding spend and provider limits at a glance.";
    static constexpr auto families = allQuorvaneWidgetFamilies;
    static constexpr bool usesDefaultContentMargins = false;  ///< the views lay out their own

    std::string_view kind = QuorvaneWidgetContract::kind;
};

}  // namespace quorvane
