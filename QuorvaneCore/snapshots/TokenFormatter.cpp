#include "QuorvaneCore/snapshots/TokenFormatter.h"

#include <cmath>
#include <optional>

#include <fmt/format.h>

#include "QuorvaneCore/platform/CheckedArithmetic.h"

namespace quorvane {
namespace {

/// The text in thousands or millions; absent below a thousand.
std::optional<std::string> shortened(double value) {
    const double magnitude = std::fabs(value);
    if (magnitude >= 1e6) return fmt::format("{:.1f}M", value / 1e6);
    if (magnitude >= 1e3) return fmt::format("{:.1f}K", value / 1e3);
    return std::nullopt;
}

}  // namespace

std::string TokenFormatter::compact(std::int64_t value, std::string_view suffix) {
    std::string text = shortened(static_cast<double>(value)).value_or(std::to_string(value));
    return text.append(suffix);
}

std::string TokenFormatter::compact(double value, std::string_view suffix) {
    if (!std::isfinite(value)) detail::arithmeticFailure("integer conversion");
    if (std::optional<std::string> text = shortened(value)) return text->append(suffix);
    return std::to_string(checkedInt64(std::round(value))).append(suffix);
}

}  // namespace quorvane
