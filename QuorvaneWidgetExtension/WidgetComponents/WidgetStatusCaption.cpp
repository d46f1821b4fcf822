#include "QuorvaneWidgetExtension/WidgetComponents/WidgetStatusCaption.h"

#include "QuorvaneWidgetExtension/WidgetComponents/WidgetTexts.h"

namespace quorvane {

std::optional<WidgetNote> WidgetStatusCaption::of(const WidgetSnapshot& snapshot, bool isPreview, Date now) {
    using enum WidgetNote::Tone;
    if (snapshot.errorMessage) return WidgetNote{.text = *snapshot.errorMessage, .tone = Warning};
    if (snapshot.availabilityNotice) return WidgetNote{.text = *snapshot.availabilityNotice, .tone = Warning};
    if (isPreview) return WidgetNote{.text = std::string{WidgetTexts::preview}, .tone = Muted};
    if (snapshot.isStale(now)) return WidgetNote{.text = std::string{WidgetTexts::stale}, .tone = Warning};
    return std::nullopt;
}

}  // namespace quorvane
