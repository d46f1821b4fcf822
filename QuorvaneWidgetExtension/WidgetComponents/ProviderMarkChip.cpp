#include "QuorvaneWidgetExtension/WidgetComponents/ProviderMarkChip.h"

#include "QuorvaneWidgetExtension/WidgetComponents/WidgetPalette.h"

namespace quorvane {

ProviderMarkChip ProviderMarkChip::of(const WidgetProviderSnapshot& provider, WidgetColorScheme scheme) {
    // The end of the gradient that the chip's colour is judged against.
    const std::size_t paper = scheme == WidgetColorScheme::Dark ? 1 : 0;
    return {.asset = "provider-" + provider.id,
            .color = WidgetPalette::viz(provider.tintHex, scheme),
            .glyphColor = WidgetPalette::background(scheme)[paper]};
}

}  // namespace quorvane
