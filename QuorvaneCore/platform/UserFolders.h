#pragma once
#include <string>

namespace quorvane {

/// Where this user's files lie. Read anew at each call, so a changed `HOME` counts at once.
class UserFolders {
public:
    UserFolders() = delete;

    /// The environment's `HOME` if it is set and not empty, else the home directory of the password database,
    /// else "/".
    [[nodiscard]] static std::string home();

    /// "Library/Application Support" under the home directory, on every platform: scripts that are installed into
    /// agents write to that path by name. Nothing is created.
    [[nodiscard]] static std::string applicationSupport();

    /// The folder "Quorvane" in it, created with all folders above it; mode 0700 where it is new.
    /// Throws `std::system_error` naming the folder that cannot be made.
    [[nodiscard]] static std::string createQuorvaneSupport();

    /// The same path, with nothing created.
    [[nodiscard]] static std::string quorvaneSupport();
};

}  // namespace quorvane
