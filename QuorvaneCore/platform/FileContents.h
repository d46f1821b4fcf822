#pragma once
#include <optional>
#include <string>

namespace quorvane {

/// The whole content of the file at `path`; absent if it cannot be opened or read to its end.
/// For documents that fit in memory; logs go through `JSONLStreamReader`.
[[nodiscard]] std::optional<std::string> readFile(const std::string& path);

/// The same for a text in UTF-8 that is to be changed and written back.
/// Throws `std::system_error` with the path: the system's reason, or EILSEQ for bytes that are no UTF-8.
[[nodiscard]] std::string readText(const std::string& path);

/// Removes the file (or the link) at `path`, no directory. False if there is none or it cannot be removed.
bool removeFile(const std::string& path) noexcept;

}  // namespace quorvane
