#pragma once
#include <cstdint>
#include <optional>
#include <string_view>

namespace quorvane {

/// How real the values of a snapshot are. Serialised by raw name.
enum class WidgetCostBasis : std::uint8_t { RealSpend, NotionalListPrice, RealAndNotionalListPrice };

/// The name in files; the view lives for ever.
[[nodiscard]] std::string_view rawName(WidgetCostBasis basis) noexcept;

/// The exact inverse of `rawName`; absent for any other text.
[[nodiscard]] std::optional<WidgetCostBasis> widgetCostBasisFromRawName(std::string_view text) noexcept;

/// The words to show; the view lives for ever.
[[nodiscard]] std::string_view shortLabel(WidgetCostBasis basis) noexcept;

}  // namespace quorvane
