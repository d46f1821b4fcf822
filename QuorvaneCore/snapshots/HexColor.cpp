#include "QuorvaneCore/snapshots/HexColor.h"

#include <charconv>
#include <cstdint>
#include <system_error>

namespace quorvane {

std::optional<HexColor::Components> HexColor::components(std::string_view text) noexcept {
    if (text.starts_with('#')) text.remove_prefix(1);
    if (text.size() != 6) return std::nullopt;
    std::uint32_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, failure] = std::from_chars(text.data(), end, number, 16);
    if (failure != std::errc{} || stop != end) return std::nullopt;
    return Components{
        .red = (number >> 16U) / 255.0, .green = ((number >> 8U) & 0xFFU) / 255.0, .blue = (number & 0xFFU) / 255.0};
}

HexColor::Components HexColor::componentsOrFallback(std::string_view text) noexcept {
    return components(text).value_or(fallback);
}

}  // namespace quorvane
