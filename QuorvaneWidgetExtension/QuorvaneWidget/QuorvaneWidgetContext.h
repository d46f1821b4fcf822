#pragma once

namespace quorvane {

/// What a widget's host says about a request.
struct QuorvaneWidgetContext {
    bool isPreview = false;  ///< for a gallery to choose from, not for a widget in its place
};

}  // namespace quorvane
