#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quorvane {

/// What an analytic view counts.
enum class AnalyticsMeasure : std::uint8_t {
    events,  ///< model calls
    tokens,  ///< all five kinds of token together
    cost,    ///< US dollars
};

/// All measures in their order.
inline constexpr std::array allAnalyticsMeasures{AnalyticsMeasure::events, AnalyticsMeasure::tokens,
                                                 AnalyticsMeasure::cost};

/// "events", "tokens" or "cost".
[[nodiscard]] std::string_view rawName(AnalyticsMeasure measure) noexcept;

/// The measure of that name; absent for any other text.
[[nodiscard]] std::optional<AnalyticsMeasure> analyticsMeasureFromRawName(std::string_view name) noexcept;

}  // namespace quorvane
