#pragma once
#include <cstdint>
#include <string>
#include <string_view>

namespace quorvane {

/// Writes token counts for narrow places, the same in all locales. Pure; any thread.
class TokenFormatter {
public:
    TokenFormatter() = delete;

    /// In millions or thousands with one fraction digit from 1000000 and 1000 up ("1.2K"), else as it stands; then
    /// `suffix`. The size decides before it is rounded: 999999 is "1000.0K".
    [[nodiscard]] static std::string compact(std::int64_t value, std::string_view suffix);

    /// The same; below 1000 rounded to the nearest integer, halves away from zero. A number that is not finite ends the
    /// process.
    [[nodiscard]] static std::string compact(double value, std::string_view suffix);
};

}  // namespace quorvane
