#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetTimelineProvider.h"

#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/snapshots/WidgetSnapshotStore.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/WidgetPreviewData.h"

namespace quorvane {

QuorvaneWidgetEntry QuorvaneWidgetTimelineProvider::entry(const QuorvaneWidgetConfigurationIntent& configuration,
                                                          bool isPreview) {
    const std::optional<WidgetSnapshot> stored = WidgetSnapshotStore{}.readIfAvailable();
    const WidgetSnapshot& base = stored ? *stored : WidgetPreviewData::snapshot();
    // The timeframe first: narrowing to a provider drops the timeframes of the others.
    return {.date = Clock::now(),
            .configuration = configuration,
            .snapshot = base.selectingWindow(days(configuration.timeframe)).focused(providerID(configuration.provider)),
            .isPreview = isPreview || !stored};
}

QuorvaneWidgetTimeline QuorvaneWidgetTimelineProvider::timeline(const QuorvaneWidgetConfigurationIntent& configuration,
                                                                const QuorvaneWidgetContext& context) const {
    QuorvaneWidgetTimeline timeline;
    timeline.entries.push_back(entry(configuration, context.isPreview));
    timeline.reloadAfter = timeline.entries.front().date + reloadSeconds;
    return timeline;
}

QuorvaneWidgetEntry QuorvaneWidgetTimelineProvider::snapshot(const QuorvaneWidgetConfigurationIntent& configuration,
                                                             const QuorvaneWidgetContext& context) const {
    return entry(configuration, context.isPreview);
}

QuorvaneWidgetEntry QuorvaneWidgetTimelineProvider::placeholder(const QuorvaneWidgetContext& /*context*/) const {
    return {.date = Clock::now(), .configuration = {}, .snapshot = WidgetPreviewData::snapshot(), .isPreview = true};
}

}  // namespace quorvane
