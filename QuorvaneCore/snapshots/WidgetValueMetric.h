#pragma once
#include <cstdint>
#include <optional>
#include <string_view>

namespace quorvane {

/// What the numbers of a snapshot count. Serialised by raw name.
enum class WidgetValueMetric : std::uint8_t {
    Dollars,  ///< money, in the currency beside it
    Tokens,   ///< an estimate of tokens
};

/// The name in files; the view lives for ever.
[[nodiscard]] std::string_view rawName(WidgetValueMetric metric) noexcept;

/// The exact inverse of `rawName`; absent for any other text.
[[nodiscard]] std::optional<WidgetValueMetric> widgetValueMetricFromRawName(std::string_view text) noexcept;

}  // namespace quorvane
