#include "QuorvaneCore/snapshots/ProviderTintLegibility.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "QuorvaneCore/snapshots/HexColor.h"

namespace quorvane {
namespace {

using Color = HexColor::Components;

constexpr std::string_view codexTintOnDark = "A6A6A8";
constexpr double firstMix = 0.15;
constexpr double mixStep = 0.1;
constexpr int mixCount = 9;

double linear(double channel) noexcept {
    return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const Color& color) noexcept {
    return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

double contrast(const Color& one, const Color& other) noexcept {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

Color mixed(const Color& tint, const Color& ink, double fraction) noexcept {
    const auto channel = [fraction](double from, double to) { return from + (to - from) * fraction; };
    return {.red = channel(tint.red, ink.red),
            .green = channel(tint.green, ink.green),
            .blue = channel(tint.blue, ink.blue)};
}

int byte(double channel) noexcept {
    return static_cast<int>(std::round(std::clamp(channel, 0.0, 1.0) * 255.0));
}

std::string upperCased(std::string_view text) {
    std::string result{text};
    for (char& character : result) {
        if (character >= 'a' && character <= 'z') character = static_cast<char>(character - 'a' + 'A');
    }
    return result;
}

std::string digitsOf(std::string_view hex) {
    return upperCased(hex.starts_with('#') ? hex.substr(1) : hex);
}

}  // namespace

std::string ProviderTintLegibility::legibleHex(std::string_view tintHex, std::string_view backgroundHex,
                                               std::string_view inkHex, bool isDark, double minContrast) {
    if (isDark && upperCased(tintHex) == codexTintHex) return std::string{codexTintOnDark};
    const Color tint = HexColor::componentsOrFallback(tintHex);
    const Color background = HexColor::componentsOrFallback(backgroundHex);
    const Color ink = HexColor::componentsOrFallback(inkHex);
    if (contrast(tint, background) >= minContrast) return digitsOf(tintHex);
    for (int step = 0; step < mixCount; ++step) {
        const Color candidate = mixed(tint, ink, firstMix + step * mixStep);
        if (contrast(candidate, background) < minContrast) continue;
        return fmt::format("{:02X}{:02X}{:02X}", byte(candidate.red), byte(candidate.green), byte(candidate.blue));
    }
    return digitsOf(inkHex);
}

}  // namespace quorvane
