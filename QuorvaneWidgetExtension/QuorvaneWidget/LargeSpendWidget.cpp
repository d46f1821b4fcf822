#include "QuorvaneWidgetExtension/QuorvaneWidget/LargeSpendWidget.h"

#include "QuorvaneWidgetExtension/WidgetComponents/WidgetPalette.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetValueText.h"

namespace quorvane {

LargeSpendWidget LargeSpendWidget::of(const QuorvaneWidgetEntry& entry, const WidgetEnvironment& environment) {
    const WidgetSnapshot& snapshot = entry.snapshot;
    return {.header = {.title = snapshot.title},
            .totalToday = WidgetValueText::totalToday(snapshot, environment.locale),
            .totalWindow = WidgetValueText::totalWindow(snapshot, environment.locale),
            .windowLabel = "last " + std::to_string(snapshot.windowDays) + " days",
            .sparkline = {.values = snapshot.series, .tintHex = std::string{WidgetPalette::brandTintHex}},
            .gauges = ProviderGaugeList::of(snapshot.providers, entry.configuration.showLimits,
                                            WidgetAllProvidersPresentation::Family::large, environment),
            .footer = WidgetFooter::of(snapshot, entry.isPreview, environment.now)};
}

}  // namespace quorvane
