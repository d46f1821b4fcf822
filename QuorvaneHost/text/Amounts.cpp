#include "QuorvaneHost/text/Amounts.h"

#include <cmath>

#include <fmt/format.h>

#include "QuorvaneCore/snapshots/MoneyFormatter.h"
#include "QuorvaneCore/snapshots/TokenFormatter.h"

namespace quorvane::host {

std::string money(double dollars) {
    return MoneyFormatter::dollars(dollars, 2, MoneyFormatter::baseCurrencyCode, Locale::current());
}

std::string compactTokens(std::int64_t tokens) {
    return TokenFormatter::compact(tokens, "");
}

std::string grouped(std::int64_t number) {
    return MoneyFormatter::amount(static_cast<double>(number), 0, Locale::current());
}

std::string percent(double part, double whole) {
    if (!(whole > 0)) return {};
    const double share = part / whole * 100;
    return share > 0 && share < 1 ? "<1%" : wholePercent(share);
}

std::string wholePercent(double value) {
    return fmt::format("{:.0f}%", std::round(value));
}

}  // namespace quorvane::host
