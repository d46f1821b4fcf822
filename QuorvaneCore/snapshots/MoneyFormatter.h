#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "QuorvaneCore/platform/Locale.h"

namespace quorvane {

/// Writes amounts of money for display. Number formatters are made once per style, currency, fraction digits and locale
/// and kept for the life of the process; the keys in use are few.
/// Nothing here fails: an amount that cannot be formatted by the locale (a code that is no currency code, say) is
/// written plainly, with a point, without grouping and without a currency sign. Any thread may call any operation.
class MoneyFormatter {
public:
    MoneyFormatter() = delete;

    /// All stored costs are in this currency.
    static constexpr std::string_view baseCurrencyCode = "USD";

    /// The amount with its currency sign and exactly `decimals` fraction digits.
    [[nodiscard]] static std::string dollars(double value, std::int64_t decimals, std::string_view code,
                                             const Locale& locale);

    /// The same; without `decimals` with the fraction digits usual for the currency (2 in the plain form).
    [[nodiscard]] static std::string currency(double value, std::string_view code, std::optional<std::int64_t> decimals,
                                              const Locale& locale);

    /// A plain grouped number, without a currency sign.
    [[nodiscard]] static std::string amount(double value, std::int64_t decimals, const Locale& locale);

    /// For narrow places. From 1000 up in thousands or millions with one fraction digit, in a form that is the same in
    /// all locales: "$1.5K", "EUR 1.5K", "$-2.5M". Below, as `dollars` with two fraction digits.
    [[nodiscard]] static std::string compactDollars(double value, std::string_view code, const Locale& locale);

    /// How many number formatters this process has made.
    [[nodiscard]] static std::int64_t formatterCount();
};

}  // namespace quorvane
