#include "QuorvaneWidgetExtension/WidgetComponents/WidgetFooter.h"

#include "QuorvaneCore/platform/RelativeDateFormat.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetTexts.h"

namespace quorvane {

WidgetNote WidgetFooter::freshnessOf(const WidgetSnapshot& snapshot, bool isPreview, Date now) {
    if (isPreview) return {.text = std::string{WidgetTexts::preview}, .tone = WidgetNote::Tone::Muted};
    if (snapshot.isStale(now)) return {.text = std::string{WidgetTexts::stale}, .tone = WidgetNote::Tone::Warning};
    // In English like the word before it.
    return {.text = "Updated " + RelativeDateFormat::text(snapshot.generatedAt, now, Locale{"en_US"}),
            .tone = WidgetNote::Tone::Muted};
}

WidgetFooter WidgetFooter::of(const WidgetSnapshot& snapshot, bool isPreview, Date now) {
    WidgetFooter footer{.freshness = freshnessOf(snapshot, isPreview, now)};
    if (std::optional<std::string> notice = snapshot.disclosureNotice()) {
        footer.notice = WidgetNote{.text = *std::move(notice), .tone = WidgetNote::Tone::Warning};
    }
    return footer;
}

}  // namespace quorvane
