#pragma once
#include <string>
#include <string_view>

namespace quorvane {

/// Keeps a provider's colour readable on its background. Pure; any thread.
class ProviderTintLegibility {
public:
    ProviderTintLegibility() = delete;

    /// The near-black mark that has a fixed light variant for dark appearances.
    static constexpr std::string_view codexTintHex = "#2F2F33";

    /// The tint if its contrast with the background is at least `minContrast` (WCAG 2.0), else the first of nine mixes
    /// towards the ink that has it, else the ink. Six hexadecimal digits in upper case without "#"; a tint or ink that
    /// is no colour is judged as `HexColor::fallback` and comes back as it is, in upper case.
    [[nodiscard]] static std::string legibleHex(std::string_view tintHex, std::string_view backgroundHex,
                                                std::string_view inkHex, bool isDark, double minContrast);
};

}  // namespace quorvane
