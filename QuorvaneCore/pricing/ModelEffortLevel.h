#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quorvane {

/// How hard a model thinks.
enum class ModelEffortLevel : std::uint8_t { low, medium, high };

/// All levels in their order.
inline constexpr std::array allModelEffortLevels{ModelEffortLevel::low, ModelEffortLevel::medium,
                                                 ModelEffortLevel::high};

/// "low", "medium" or "high".
[[nodiscard]] std::string_view rawName(ModelEffortLevel level) noexcept;

/// "Low", "Medium" or "High".
[[nodiscard]] std::string_view label(ModelEffortLevel level) noexcept;

/// The level of that raw name; absent for any other text.
[[nodiscard]] std::optional<ModelEffortLevel> modelEffortLevelFromRawName(std::string_view name) noexcept;

}  // namespace quorvane
