#pragma once
#include <string>

namespace quorvane {

/// Sets the permission bits of the file at `path`, or of the one that it links to. Throws `std::system_error` with the
/// path.
void setFileMode(const std::string& path, unsigned mode);

}  // namespace quorvane
