#pragma once
#include <string>

namespace quorvane::detail {

/// Creates the folder that a snapshot file goes into, with all above it. Where it lies in the system's own folder, that
/// one is made for its owner alone, as everywhere. Throws `std::system_error` with the path.
void createSnapshotFolder(const std::string& folder);

}  // namespace quorvane::detail
