#pragma once
#include <string>
#include <string_view>

namespace quorvane::host {

/// Emphasis in a terminal's own colours; nothing but the text where there is no colour.
class Ink {
public:
    explicit Ink(bool hasColour) noexcept : hasColour_{hasColour} {}

    [[nodiscard]] std::string bold(std::string_view text) const { return wrapped(text, "1"); }
    [[nodiscard]] std::string dim(std::string_view text) const { return wrapped(text, "2"); }
    [[nodiscard]] std::string accent(std::string_view text) const { return wrapped(text, "36"); }
    [[nodiscard]] std::string warning(std::string_view text) const { return wrapped(text, "33"); }

private:
    [[nodiscard]] std::string wrapped(std::string_view text, std::string_view code) const {
        if (!hasColour_ || text.empty()) return std::string{text};
        return std::string{"\x1b["}.append(code).append("m").append(text).append("\x1b[0m");
    }

    bool hasColour_;
};

}  // namespace quorvane::host
