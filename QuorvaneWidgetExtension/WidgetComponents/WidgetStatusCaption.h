#pragma once
#include <optional>

#include "QuorvaneCore/snapshots/WidgetSnapshot.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetNote.h"

namespace quorvane {

/// The last line of the small and the medium widget. With room for one remark it tells what is wrong before it tells
/// that the data is a sample, where the footer of the large one has room for both.
class WidgetStatusCaption {
public:
    WidgetStatusCaption() = delete;

    static constexpr double minimumScale = 0.85;  ///< how far the text may shrink

    /// The error, else the notice, else that the data is a sample, else that it is stale; absent if nothing is to say.
    [[nodiscard]] static std::optional<WidgetNote> of(const WidgetSnapshot& snapshot, bool isPreview, Date now);
};

}  // namespace quorvane
