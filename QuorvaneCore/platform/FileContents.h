#pragma once
#include <optional>
#include <string>

namespace quorvane {

/// The whole content of the file at `path`; absent if it cannot be opened or read to its end.
/// For documents that fit in memory; logs go through `JSONLStreamReader`.
[[nodiscard]] std::optional<std::string> readFile(const std::string& path);

}  // namespace quorvane
