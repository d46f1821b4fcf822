#pragma once
#include <optional>
#include <string_view>

namespace quorvane {

/// The floating-point number that the whole of `text` is in the C locale, whatever the process's locale: decimal or
/// hexadecimal, "inf" and "nan" in any case; a number too large for a float is infinity. Absent for an empty text,
/// one that begins with white space, and one with anything behind the number. Any thread.
[[nodiscard]] std::optional<double> parseFloat(std::string_view text);

}  // namespace quorvane
