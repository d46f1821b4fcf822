#pragma once
#include <optional>

#include "QuorvaneCore/snapshots/WidgetSnapshot.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetNote.h"

namespace quorvane {

/// The last line of the large widget: how fresh the data is, and beside it what is wrong with it.
struct WidgetFooter {
    WidgetNote freshness;
    std::optional<WidgetNote> notice;

    /// Sample data is told first, then what is stale, else the age.
    [[nodiscard]] static WidgetNote freshnessOf(const WidgetSnapshot& snapshot, bool isPreview, Date now);

    [[nodiscard]] static WidgetFooter of(const WidgetSnapshot& snapshot, bool isPreview, Date now);

    friend bool operator==(const WidgetFooter&, const WidgetFooter&) = default;
};

}  // namespace quorvane
