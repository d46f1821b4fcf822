#pragma once
#include <cstdint>

namespace quorvane {

/// Whether the widget is drawn dark on light or light on dark.
enum class WidgetColorScheme : std::uint8_t { Light, Dark };

}  // namespace quorvane
