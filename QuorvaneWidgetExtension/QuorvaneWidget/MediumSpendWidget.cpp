#include "QuorvaneWidgetExtension/QuorvaneWidget/MediumSpendWidget.h"

#include "QuorvaneWidgetExtension/WidgetComponents/WidgetStatusCaption.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetValueText.h"

namespace quorvane {

MediumSpendWidget MediumSpendWidget::of(const QuorvaneWidgetEntry& entry, const WidgetEnvironment& environment) {
    const WidgetSnapshot& snapshot = entry.snapshot;
    return {.header = {.title = snapshot.title},
            .totalToday = WidgetValueText::totalToday(snapshot, environment.locale),
            .gauges = ProviderGaugeList::of(snapshot.providers, entry.configuration.showLimits,
                                            WidgetAllProvidersPresentation::Family::medium, environment),
            .caption = WidgetStatusCaption::of(snapshot, entry.isPreview, environment.now)};
}

}  // namespace quorvane
