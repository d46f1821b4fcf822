#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetEntryView.h"

#include <cmath>

#include <fmt/format.h>

#include "QuorvaneWidgetExtension/WidgetComponents/WidgetValueText.h"

namespace quorvane {
namespace {

std::string totals(const WidgetSnapshot& snapshot, const Locale& locale) {
    return fmt::format("{}, today {}, {}, last {} days", snapshot.title, WidgetValueText::totalToday(snapshot, locale),
                       shortLabel(snapshot.basis), snapshot.windowDays);
}

std::string row(const WidgetProviderSnapshot& provider, const Locale& locale) {
    std::string phrase = provider.name + ' ' + WidgetValueText::today(provider, locale);
    if (provider.usedPercent && provider.usageOfficial) {
        phrase += fmt::format(", {:.0f}% used", std::round(*provider.usedPercent) + 0.0);
    }
    if (const std::optional<std::string_view> word = ProviderBasisBadge::word(provider)) {
        phrase += ", ";
        phrase += *word;
    }
    return phrase;
}

}  // namespace

std::variant<SmallSpendWidget, MediumSpendWidget, LargeSpendWidget> QuorvaneWidgetEntryView::body(
    const WidgetEnvironment& environment) const {
    switch (family) {
        case QuorvaneWidgetFamily::small: return SmallSpendWidget::of(entry, environment);
        case QuorvaneWidgetFamily::medium: return MediumSpendWidget::of(entry, environment);
        case QuorvaneWidgetFamily::large: break;
    }
    return LargeSpendWidget::of(entry, environment);
}

std::string QuorvaneWidgetEntryView::accessibilitySummary(const WidgetEnvironment& environment) const {
    const WidgetSnapshot& snapshot = entry.snapshot;
    std::string summary = totals(snapshot, environment.locale);
    const auto add = [&summary](std::string_view phrase) { summary.append(", ").append(phrase); };
    if (family != QuorvaneWidgetFamily::small) {
        for (const WidgetProviderSnapshot& provider : snapshot.providers)
            add(row(provider, environment.locale));
    }
    if (snapshot.isStale(environment.now)) add("data may be stale, open Quorvane to refresh");
    if (const std::optional<std::string> notice = snapshot.disclosureNotice()) add(*notice);
    return summary;
}

}  // namespace quorvane
