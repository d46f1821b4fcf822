#pragma once
#include <cstddef>

namespace quorvane::host {

/// What standard output or standard error is connected to.
class Terminal {
public:
    enum class Stream { Output, Error };

    explicit Terminal(Stream stream);

    [[nodiscard]] bool isTerminal() const noexcept { return isTerminal_; }
    /// In cells; of `COLUMNS` or 80 where there is no terminal to ask.
    [[nodiscard]] std::size_t width() const noexcept { return width_; }
    /// Whether escape sequences for colour may be written: a terminal that is not "dumb", and no `NO_COLOR`.
    [[nodiscard]] bool hasColour() const noexcept { return hasColour_; }

private:
    bool isTerminal_ = false;
    bool hasColour_ = false;
    std::size_t width_ = 80;
};

}  // namespace quorvane::host
