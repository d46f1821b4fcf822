#include "QuorvaneHost/text/HeatCells.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <string_view>

#include <fmt/format.h>

#include "QuorvaneCore/analytics/HeatmapRamp.h"
#include "QuorvaneHost/text/Terminal.h"

namespace quorvane::host {
namespace {

constexpr std::string_view accent = "DF7A2E";
constexpr std::string_view trackOnDark = "33302C";
constexpr std::string_view trackOnLight = "E9E4DA";
constexpr std::array<std::string_view, 5> shades{" ·", "░░", "▒▒", "▓▓", "██"};

std::string_view environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string_view{} : std::string_view{value};
}

/// "15;0" and the like: the colours of the text and of the ground, as some terminals tell them.
bool isGroundLight() {
    const std::string_view colours = environment("COLORFGBG");
    const std::string_view ground = colours.substr(std::min(colours.rfind(';') + 1, colours.size()));
    return ground == "7" || ground == "15";
}

/// From 0 to 1.
double strengthOf(double value, double peak) {
    if (!(value > 0) || !(peak > 0)) return 0;
    return std::sqrt(std::min(value / peak, 1.0));
}

}  // namespace

HeatCells HeatCells::forOutput() {
    if (!Terminal{Terminal::Stream::Output}.hasColour()) return {Palette::Plain, false};
    const std::string_view depth = environment("COLORTERM");
    const bool isTrue = depth == "truecolor" || depth == "24bit";
    return {isTrue ? Palette::TrueColour : Palette::SixteenColours, isGroundLight()};
}

std::string HeatCells::cell(double value, double peak) const {
    const double strength = strengthOf(value, peak);
    return palette_ == Palette::TrueColour ? block(strength) : shade(strength);
}

std::string HeatCells::legend() const {
    std::string text = "less";
    for (const double value : {0.0, 0.03, 0.14, 0.39, 1.0})
        text += " " + cell(value, 1);
    return text + " more";
}

std::string HeatCells::block(double strength) const {
    constexpr double weakest = 0.18;  // what is not nothing is never drawn as nothing
    constexpr double full = 1;
    const HexColor::Components colour = HeatmapRamp::cellComponents(
        strength > 0 ? weakest + (1 - weakest) * strength : 0, accent, onLight_ ? trackOnLight : trackOnDark, full);
    const auto level = [](double component) { return static_cast<int>(std::lround(component * 255)); };
    return fmt::format("\x1b[38;2;{};{};{}m██\x1b[0m", level(colour.red), level(colour.green), level(colour.blue));
}

std::string HeatCells::shade(double strength) const {
    constexpr std::size_t strongest = shades.size() - 1;
    const auto step = static_cast<std::size_t>(strength * strongest);
    const std::string_view text = shades[strength > 0 ? std::min(step + 1, strongest) : 0];
    const bool isColoured = palette_ == Palette::SixteenColours && strength > 0;
    return isColoured ? fmt::format("\x1b[33m{}\x1b[0m", text) : std::string{text};
}

}  // namespace quorvane::host
