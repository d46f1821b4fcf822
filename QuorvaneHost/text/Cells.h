#pragma once
#include <cstddef>
#include <string>
#include <string_view>

namespace quorvane::host {

/// Text from logs, made fit for a terminal: control characters and bytes that are no UTF-8 become U+FFFD.
[[nodiscard]] std::string printable(std::string_view text);

/// The cells that a text takes on a terminal: two for wide East Asian characters, none for combining marks.
/// The text is printable and has no escape sequences.
[[nodiscard]] std::size_t cellWidth(std::string_view text);

/// The text in at most `width` cells, with an ellipsis in its middle where something is left out.
[[nodiscard]] std::string shortened(std::string_view text, std::size_t width);

}  // namespace quorvane::host
