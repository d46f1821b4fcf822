#include "QuorvaneWidgetExtension/WidgetComponents/WidgetValueText.h"

#include "QuorvaneCore/snapshots/MoneyFormatter.h"
#include "QuorvaneCore/snapshots/TokenFormatter.h"

namespace quorvane {

std::string WidgetValueText::text(double value, WidgetValueMetric metric, std::string_view currencyCode,
                                  const Locale& locale) {
    switch (metric) {
        case WidgetValueMetric::Tokens: return TokenFormatter::compact(value, " tok");
        case WidgetValueMetric::Dollars: break;
    }
    return MoneyFormatter::dollars(value, 2, currencyCode, locale);
}

std::string WidgetValueText::totalToday(const WidgetSnapshot& snapshot, const Locale& locale) {
    return text(snapshot.totalToday, snapshot.metric, snapshot.currencyCode, locale);
}

std::string WidgetValueText::totalWindow(const WidgetSnapshot& snapshot, const Locale& locale) {
    return text(snapshot.totalWindow, snapshot.metric, snapshot.currencyCode, locale);
}

std::string WidgetValueText::today(const WidgetProviderSnapshot& provider, const Locale& locale) {
    return text(provider.today, provider.metric, provider.currencyCode, locale);
}

}  // namespace quorvane
