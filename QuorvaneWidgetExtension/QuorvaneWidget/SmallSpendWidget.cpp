#include "QuorvaneWidgetExtension/QuorvaneWidget/SmallSpendWidget.h"

#include "QuorvaneWidgetExtension/WidgetComponents/WidgetPalette.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetStatusCaption.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetValueText.h"

namespace quorvane {

SmallSpendWidget SmallSpendWidget::of(const QuorvaneWidgetEntry& entry, const WidgetEnvironment& environment) {
    const WidgetSnapshot& snapshot = entry.snapshot;
    return {.header = {.title = snapshot.title, .compact = true},
            .totalToday = WidgetValueText::totalToday(snapshot, environment.locale),
            .badge = ProviderBasisBadge::of(snapshot),
            .sparkline = {.values = snapshot.series, .tintHex = std::string{WidgetPalette::brandTintHex}},
            .caption = WidgetStatusCaption::of(snapshot, entry.isPreview, environment.now)};
}

}  // namespace quorvane
