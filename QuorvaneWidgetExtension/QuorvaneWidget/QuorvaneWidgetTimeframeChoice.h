#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quorvane {

/// Over how many days a widget tells the spending. Stored by raw name.
enum class QuorvaneWidgetTimeframeChoice : std::uint8_t { sevenDays, fourteenDays, thirtyDays, ninetyDays };

/// All choices in their order.
inline constexpr std::array allQuorvaneWidgetTimeframeChoices{
    QuorvaneWidgetTimeframeChoice::sevenDays, QuorvaneWidgetTimeframeChoice::fourteenDays,
    QuorvaneWidgetTimeframeChoice::thirtyDays, QuorvaneWidgetTimeframeChoice::ninetyDays};

/// What the choice is called where a user makes it.
inline constexpr std::string_view quorvaneWidgetTimeframeChoiceTitle = "Timeframe";

/// The word that is stored; the view lives for ever.
[[nodiscard]] std::string_view rawName(QuorvaneWidgetTimeframeChoice choice) noexcept;

/// The exact inverse of `rawName`; absent for any other text.
[[nodiscard]] std::optional<QuorvaneWidgetTimeframeChoice> quorvaneWidgetTimeframeChoiceFromRawName(
    std::string_view text) noexcept;

[[nodiscard]] std::int64_t days(QuorvaneWidgetTimeframeChoice choice) noexcept;

/// The words to show; the view lives for ever.
[[nodiscard]] std::string_view displayText(QuorvaneWidgetTimeframeChoice choice) noexcept;

}  // namespace quorvane
