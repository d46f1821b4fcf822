#pragma once
#include <optional>
#include <string_view>

namespace quorvane {

/// Colours written as six hexadecimal digits. Pure; any thread.
class HexColor {
public:
    HexColor() = delete;

    /// Each component from 0 to 1.
    struct Components {
        double red = 0;
        double green = 0;
        double blue = 0;

        friend bool operator==(const Components&, const Components&) = default;
    };

    /// A warm grey, wherever a text is no colour.
    static constexpr Components fallback{.red = 0.424, .green = 0.384, .blue = 0.325};

    /// The colour of six digits in either case, with or without one "#" before them; absent for any other text.
    [[nodiscard]] static std::optional<Components> components(std::string_view text) noexcept;

    /// The same, with `fallback` for any other text.
    [[nodiscard]] static Components componentsOrFallback(std::string_view text) noexcept;
};

}  // namespace quorvane
