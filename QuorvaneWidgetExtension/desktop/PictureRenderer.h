#pragma once
#include <QImage>

#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetEntryView.h"

namespace quorvane::desktop {

/// The entry as the window draws it, at `scale` pixels a point, transparent outside of the round corners. Needs a
/// `QGuiApplication`, of any platform, and the software scene graph. Empty if it could not be drawn.
[[nodiscard]] QImage renderedPicture(const QuorvaneWidgetEntryView& view, const WidgetEnvironment& environment,
                                     double scale);

}  // namespace quorvane::desktop
