#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace quorvane {

/// `text` with each "%" and the two hexadecimal digits behind it (of either case) replaced by the byte that they name.
/// Everything else stays, "+" included. Absent if a "%" has no two such digits behind it, and if the result is no
/// UTF-8. Pure; any thread.
[[nodiscard]] std::optional<std::string> percentDecoded(std::string_view text);

}  // namespace quorvane
