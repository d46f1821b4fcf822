#pragma once
#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetContext.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetTimeline.h"

namespace quorvane {

/// Answers what a widget shows. The snapshot file is read anew at each call; a file that is missing, damaged or of
/// another version counts as none, and sample data stands in for it. Without state: any thread may call any operation.
class QuorvaneWidgetTimelineProvider {
public:
    static constexpr double reloadSeconds = 1800;  ///< from an entry to the next reading of the file

    /// The user's data as configured, and when to ask again. Exactly one entry.
    [[nodiscard]] QuorvaneWidgetTimeline timeline(const QuorvaneWidgetConfigurationIntent& configuration,
                                                  const QuorvaneWidgetContext& context) const;

    /// The same entry alone.
    [[nodiscard]] QuorvaneWidgetEntry snapshot(const QuorvaneWidgetConfigurationIntent& configuration,
                                               const QuorvaneWidgetContext& context) const;

    /// Something to show until there is an entry: the whole sample, with no look at the file.
    [[nodiscard]] QuorvaneWidgetEntry placeholder(const QuorvaneWidgetContext& context) const;

private:
    [[nodiscard]] static QuorvaneWidgetEntry entry(const QuorvaneWidgetConfigurationIntent& configuration,
                                                   bool isPreview);
};

}  // namespace quorvane
