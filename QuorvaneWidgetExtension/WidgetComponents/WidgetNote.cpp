#include "QuorvaneWidgetExtension/WidgetComponents/WidgetNote.h"

#include "QuorvaneWidgetExtension/WidgetComponents/WidgetPalette.h"

namespace quorvane {

WidgetColor WidgetNote::color(WidgetColorScheme scheme) const noexcept {
    return tone == Tone::Warning ? WidgetPalette::warningText(scheme) : WidgetPalette::mutedText(scheme);
}

}  // namespace quorvane
