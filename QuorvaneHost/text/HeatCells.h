#pragma once
#include <cstdint>
#include <string>

namespace quorvane::host {

/// The cells of a heat map, two columns wide, so that they are about square.
/// Where the terminal has 24-bit colour they are blocks between a neutral track and the accent; elsewhere shades of one
/// character, in the terminal's own accent colour where it has any. What is spent is spread unevenly, so the strength
/// goes with the square root of the share: a tenth of the peak is still seen.
class HeatCells {
public:
    enum class Palette : std::uint8_t { Plain, SixteenColours, TrueColour };

    /// `onLight`: on a light ground, which the track has to suit.
    HeatCells(Palette palette, bool onLight) noexcept : palette_{palette}, onLight_{onLight} {}

    /// What standard output can show, by `NO_COLOR`, `COLORTERM` and `COLORFGBG`.
    [[nodiscard]] static HeatCells forOutput();

    /// The cell of a value that is at least 0, where `peak` is the largest of all.
    [[nodiscard]] std::string cell(double value, double peak) const;

    /// "less ·░▒▓█ more"
    [[nodiscard]] std::string legend() const;

private:
    [[nodiscard]] std::string block(double strength) const;
    [[nodiscard]] std::string shade(double strength) const;

    Palette palette_;
    bool onLight_;
};

}  // namespace quorvane::host
