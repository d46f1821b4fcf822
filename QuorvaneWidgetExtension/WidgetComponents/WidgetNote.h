#pragma once
#include <cstdint>
#include <string>

#include "QuorvaneWidgetExtension/WidgetComponents/WidgetColor.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetColorScheme.h"

namespace quorvane {

/// A short remark on the data, in the colour of its weight.
struct WidgetNote {
    enum class Tone : std::uint8_t { Muted, Warning };

    std::string text;
    Tone tone = Tone::Muted;

    [[nodiscard]] WidgetColor color(WidgetColorScheme scheme) const noexcept;

    friend bool operator==(const WidgetNote&, const WidgetNote&) = default;
};

}  // namespace quorvane
