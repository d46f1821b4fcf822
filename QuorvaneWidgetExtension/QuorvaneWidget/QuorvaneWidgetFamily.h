#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quorvane {

/// The sizes of widget.
enum class QuorvaneWidgetFamily : std::uint8_t { small, medium, large };

inline constexpr std::array allQuorvaneWidgetFamilies{QuorvaneWidgetFamily::small, QuorvaneWidgetFamily::medium,
                                                      QuorvaneWidgetFamily::large};

/// "small", "medium" or "large"; the view lives for ever.
[[nodiscard]] std::string_view rawName(QuorvaneWidgetFamily family) noexcept;

/// The exact inverse of `rawName`; absent for any other text.
[[nodiscard]] std::optional<QuorvaneWidgetFamily> quorvaneWidgetFamilyFromRawName(std::string_view text) noexcept;

/// The words to show; the view lives for ever.
[[nodiscard]] std::string_view displayText(QuorvaneWidgetFamily family) noexcept;

/// In points: pixels at a scale of 100 %.
struct QuorvaneWidgetSize {
    int width = 0;
    int height = 0;

    friend bool operator==(const QuorvaneWidgetSize&, const QuorvaneWidgetSize&) = default;
};

[[nodiscard]] QuorvaneWidgetSize size(QuorvaneWidgetFamily family) noexcept;

}  // namespace quorvane
