#pragma once
#include <string>

#include "QuorvaneCore/platform/Locale.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetEntryView.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/WidgetPreviewData.h"

namespace quorvane::testing {

/// A moment at which the snapshots below are five minutes old.
inline constexpr Date drawnAt{1790000300};

/// The figures of the sample as a user's own, of the moment 1790000000.
[[nodiscard]] inline WidgetSnapshot ownSnapshot() {
    WidgetSnapshot snapshot = WidgetPreviewData::snapshot();
    snapshot.generatedAt = Date{1790000000};
    snapshot.staleAfter = Date{1790001800};
    return snapshot;
}

[[nodiscard]] inline QuorvaneWidgetEntryView entryView(WidgetSnapshot snapshot, QuorvaneWidgetFamily family) {
    return {.entry = {.date = drawnAt, .snapshot = std::move(snapshot)}, .family = family};
}

[[nodiscard]] inline WidgetEnvironment environmentOf(WidgetColorScheme scheme, std::string_view locale = "en_US") {
    return {.colorScheme = scheme, .locale = Locale{locale}, .now = drawnAt};
}

}  // namespace quorvane::testing
