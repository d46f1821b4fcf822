#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quorvane {

/// Whose figures a widget shows. Stored by raw name.
enum class QuorvaneWidgetProviderChoice : std::uint8_t { all, claude, codex, grok, museSpark, copilot, cursor };

/// All choices in their order.
inline constexpr std::array allQuorvaneWidgetProviderChoices{
    QuorvaneWidgetProviderChoice::all,       QuorvaneWidgetProviderChoice::claude,
    QuorvaneWidgetProviderChoice::codex,     QuorvaneWidgetProviderChoice::grok,
    QuorvaneWidgetProviderChoice::museSpark, QuorvaneWidgetProviderChoice::copilot,
    QuorvaneWidgetProviderChoice::cursor,
};

/// What the choice is called where a user makes it.
inline constexpr std::string_view quorvaneWidgetProviderChoiceTitle = "View";

/// The word that is stored; the view lives for ever.
[[nodiscard]] std::string_view rawName(QuorvaneWidgetProviderChoice choice) noexcept;

/// The exact inverse of `rawName`; absent for any other text.
[[nodiscard]] std::optional<QuorvaneWidgetProviderChoice> quorvaneWidgetProviderChoiceFromRawName(
    std::string_view text) noexcept;

/// The id of the provider's row in a snapshot, which is not always the stored word; absent for all providers.
[[nodiscard]] std::optional<std::string_view> providerID(QuorvaneWidgetProviderChoice choice) noexcept;

/// The words to show; the view lives for ever.
[[nodiscard]] std::string_view displayText(QuorvaneWidgetProviderChoice choice) noexcept;

}  // namespace quorvane
