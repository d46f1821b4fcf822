#include "QuorvaneCore/snapshots/MoneyFormatter.h"

#include <algorithm>
#include <cmath>
#include <compare>
#include <map>
#include <mutex>

#include <fmt/format.h>

#include "QuorvaneCore/platform/NumberFormat.h"

namespace quorvane {
namespace {

enum class Style : std::uint8_t { Currency, Decimal };

struct FormatterKey {
    Style style = Style::Currency;
    std::string code;
    std::optional<std::int64_t> decimals;
    Locale locale;

    friend auto operator<=>(const FormatterKey&, const FormatterKey&) = default;
};

/// `lock` guards `formatters` and is, unlike the other locks of the library, held through the formatting call: the
/// formatters serve one thread at a time. No other lock is taken inside it. A key for which no formatter can be made
/// keeps its absence.
struct Cache {
    std::mutex lock;
    std::map<FormatterKey, std::optional<NumberFormat>> formatters;
};

Cache& cache() {
    static Cache shared;
    return shared;
}

std::optional<NumberFormat> makeFormatter(const FormatterKey& key) {
    if (key.style == Style::Decimal) return NumberFormat::decimal(key.locale, key.decimals);
    return NumberFormat::currency(key.locale, key.code, key.decimals);
}

std::optional<std::string> formatted(double value, const FormatterKey& key) {
    Cache& shared = cache();
    const std::lock_guard guard{shared.lock};
    auto found = shared.formatters.find(key);
    if (found == shared.formatters.end()) found = shared.formatters.emplace(key, makeFormatter(key)).first;
    return found->second ? found->second->format(value) : std::nullopt;
}

std::string plain(double value, std::optional<std::int64_t> decimals) {
    const auto digits = static_cast<int>(std::clamp<std::int64_t>(decimals.value_or(2), 0, 100));
    return fmt::format("{:.{}f}", value, digits);
}

std::string textOf(double value, const FormatterKey& key) {
    std::optional<std::string> text = formatted(value, key);
    return text ? *std::move(text) : plain(value, key.decimals);
}

}  // namespace

std::string MoneyFormatter::dollars(double value, std::int64_t decimals, std::string_view code, const Locale& locale) {
    return currency(value, code, decimals, locale);
}

std::string MoneyFormatter::currency(double value, std::string_view code, std::optional<std::int64_t> decimals,
                                     const Locale& locale) {
    return textOf(value, {.style = Style::Currency, .code = std::string{code}, .decimals = decimals, .locale = locale});
}

std::string MoneyFormatter::amount(double value, std::int64_t decimals, const Locale& locale) {
    return textOf(
        value,
        {.style = Style::Decimal, .code = std::string{baseCurrencyCode}, .decimals = decimals, .locale = locale});
}

std::string MoneyFormatter::compactDollars(double value, std::string_view code, const Locale& locale) {
    const double magnitude = std::fabs(value);
    const std::string prefix = code == baseCurrencyCode ? "$" : std::string{code} + " ";
    if (magnitude >= 1e6) return fmt::format("{}{:.1f}M", prefix, value / 1e6);
    if (magnitude >= 1e3) return fmt::format("{}{:.1f}K", prefix, value / 1e3);
    return dollars(value, 2, code, locale);
}

std::int64_t MoneyFormatter::formatterCount() {
    Cache& shared = cache();
    const std::lock_guard guard{shared.lock};
    return static_cast<std::int64_t>(shared.formatters.size());
}

}  // namespace quorvane
