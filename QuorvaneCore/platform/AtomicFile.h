#pragma once
#include <string>
#include <string_view>

namespace quorvane {

/// Replaces the file at `path` by `bytes`, so that a reader sees the old content or the new one and nothing between:
/// a temporary file in the same folder, flushed to the disk, then a rename. The mode of a file that was there is kept,
/// a new one gets `newMode`; where `path` is a link, the file that it leads to is replaced.
/// Throws `std::system_error` with the path; the old file is then as it was, and no temporary file is left.
void replaceFile(const std::string& path, std::string_view bytes, unsigned newMode = 0644);

}  // namespace quorvane
