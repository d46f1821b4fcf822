#pragma once
#include "QuorvaneCore/snapshots/WidgetSnapshot.h"

namespace quorvane {

/// The sample that stands in for a missing file, and that a gallery shows. Any thread.
class WidgetPreviewData {
public:
    WidgetPreviewData() = delete;

    static constexpr double freshSeconds = 1800;  ///< from its making to its `staleAfter`

    /// Made at the first call, whose moment is its `generatedAt`; lives for ever.
    [[nodiscard]] static const WidgetSnapshot& snapshot();
};

}  // namespace quorvane
