#pragma once
#include <string>
#include <string_view>

namespace quorvane {

/// `text` with its first character in upper case, by Unicode and independent of the locale; the rest stays as it is.
[[nodiscard]] std::string capitalisingFirst(std::string_view text);

/// `text` without the white space and line ends at its two ends, by Unicode. The view points into `text`.
[[nodiscard]] std::string_view trimmed(std::string_view text) noexcept;

}  // namespace quorvane
