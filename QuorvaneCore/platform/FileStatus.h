#pragma once
#include <cstdint>
#include <optional>
#include <string>

namespace quorvane {

/// What one status call says of a file. Links are followed.
struct FileStatus {
    /// Whole seconds since 1970-01-01 UTC, and the nanoseconds beyond them.
    struct Time {
        std::int64_t seconds = 0;
        std::int64_t nanoseconds = 0;
    };

    std::int64_t size = 0;  ///< in bytes
    Time modified;          ///< last change of the content
    Time changed;           ///< last change of content, mode, owner or links
    std::uint32_t mode = 0;
    std::uint32_t owner = 0;  ///< the user's number
    std::uint32_t group = 0;
    bool isDirectory = false;
    bool isRegular = false;

    /// Absent if there is nothing at `path` or it cannot be queried.
    [[nodiscard]] static std::optional<FileStatus> of(const std::string& path) noexcept;

    /// Whether `path` is a file, or a link to one, that this process may execute. A directory is none.
    [[nodiscard]] static bool isExecutableFile(const std::string& path) noexcept;
};

}  // namespace quorvane
