#pragma once
#include <string>

namespace quorvane {

/// Creates `folder` and what is missing above it; one that is there is left alone. The folder "Quorvane" of the user's
/// application support gets the mode 0700 where it is new, any other one the usual mode. Throws `std::system_error`
/// naming the folder; those above it may have come into being by then.
void createFolders(const std::string& folder);

}  // namespace quorvane
