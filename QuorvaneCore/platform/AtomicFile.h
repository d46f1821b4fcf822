#pragma once
#include <string>
#include <string_view>

namespace quorvane {

/// Replaces the file at `path` by `bytes`, so that a reader sees the old content or the new one and nothing between:
/// a temporary file in the same folder, flushed to the disk, then a rename. The mode of a file that was there is kept,
/// and so are its owner and group where the file system and this process's rights allow it; a new one gets `newMode`.
/// Where `path` is a link, it stays, and the file that it leads to is replaced or created.
/// Throws `std::system_error` with the path, or that at the end of the links; the old file is then as it was, and no
/// temporary file is left.
void replaceFile(const std::string& path, std::string_view bytes, unsigned newMode = 0644);

}  // namespace quorvane
