#pragma once
#include <string>
#include <string_view>

#include "QuorvaneCore/platform/Locale.h"
#include "QuorvaneCore/snapshots/WidgetSnapshot.h"

namespace quorvane {

/// Amounts as the widget shows and speaks them. Pure; any thread.
class WidgetValueText {
public:
    WidgetValueText() = delete;

    /// Tokens in the compact form ("184.2K tok"), money with two decimals in its currency after the locale. A number
    /// of tokens that is not finite ends the process; no snapshot file can hold one.
    [[nodiscard]] static std::string text(double value, WidgetValueMetric metric, std::string_view currencyCode,
                                          const Locale& locale);

    [[nodiscard]] static std::string totalToday(const WidgetSnapshot& snapshot, const Locale& locale);
    [[nodiscard]] static std::string totalWindow(const WidgetSnapshot& snapshot, const Locale& locale);
    [[nodiscard]] static std::string today(const WidgetProviderSnapshot& provider, const Locale& locale);
};

}  // namespace quorvane
