#pragma once
#include <string_view>

namespace quorvane {

/// A colour in sRGB, each component and the opacity from 0 to 1.
struct WidgetColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double opacity = 1;

    /// The colour of six hexadecimal digits, with or without "#" before them. Any other text gives the warm grey of
    /// `HexColor::fallback`, opaque.
    [[nodiscard]] static WidgetColor fromHex(std::string_view text, double opacity = 1) noexcept;

    /// The same colour at another opacity.
    [[nodiscard]] WidgetColor withOpacity(double value) const noexcept;

    friend bool operator==(const WidgetColor&, const WidgetColor&) = default;
};

}  // namespace quorvane
