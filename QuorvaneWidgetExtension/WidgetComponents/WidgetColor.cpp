#include "QuorvaneWidgetExtension/WidgetComponents/WidgetColor.h"

#include "QuorvaneCore/snapshots/HexColor.h"

namespace quorvane {

WidgetColor WidgetColor::fromHex(std::string_view text, double opacity) noexcept {
    const std::optional<HexColor::Components> read = HexColor::components(text);
    const HexColor::Components color = read.value_or(HexColor::fallback);
    return {.red = color.red, .green = color.green, .blue = color.blue, .opacity = read ? opacity : 1};
}

WidgetColor WidgetColor::withOpacity(double value) const noexcept {
    WidgetColor color = *this;
    color.opacity = value;
    return color;
}

}  // namespace quorvane
