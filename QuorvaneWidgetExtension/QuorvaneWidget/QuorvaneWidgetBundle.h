#pragma once
#include <array>

#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidget.h"

namespace quorvane {

/// The widgets that there are.
struct QuorvaneWidgetBundle {
    std::array<QuorvaneWidget, 1> widgets;
};

}  // namespace quorvane
