#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace quorvane {

/// The bytes that `text` is the base64 form of: the usual alphabet with "+" and "/", padded to a multiple of four
/// characters, and nothing else, no line ends either. Absent for any other text; the empty text gives no bytes.
/// Pure; any thread.
[[nodiscard]] std::optional<std::string> base64Decoded(std::string_view text);

}  // namespace quorvane
