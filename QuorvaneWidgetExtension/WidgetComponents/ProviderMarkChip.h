#pragma once
#include <string>

#include "QuorvaneCore/snapshots/WidgetSnapshot.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetColor.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetColorScheme.h"

namespace quorvane {

/// A chip in a provider's colour with the provider's glyph on it.
struct ProviderMarkChip {
    static constexpr double rowContainer = 15;  ///< width and height of the chip in lists, in points
    static constexpr double rowGlyph = 10;      ///< and of its glyph

    std::string asset;       ///< name of the glyph's picture: "provider-" and the provider's id
    WidgetColor color;       ///< of the chip
    WidgetColor glyphColor;  ///< of the glyph: the paper's, from which the chip's colour was made to stand out
    double container = rowContainer;
    double glyph = rowGlyph;

    [[nodiscard]] static ProviderMarkChip of(const WidgetProviderSnapshot& provider, WidgetColorScheme scheme);

    friend bool operator==(const ProviderMarkChip&, const ProviderMarkChip&) = default;
};

}  // namespace quorvane
