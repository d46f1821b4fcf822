#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "QuorvaneCore/ingest/FileChange.h"
#include "QuorvaneCore/ingest/FileState.h"

namespace quorvane {

/// Decides how much of a data file must be read again.
/// Stateless: any thread may call any operation. Nothing here throws or reports.
class FileCursor {
public:
    FileCursor() = delete;

    /// What one status call says of a file, in the units of `FileState`.
    struct Status {
        std::int64_t size = 0;
        double mtime = 0;
        double ctime = 0;
        friend bool operator==(const Status&, const Status&) = default;
    };

    /// Judges a file by its status alone, without touching the disk. A file that grew is never compared further: one
    /// that was replaced by a longer one counts as appended. An empty fingerprint on either side never contradicts.
    [[nodiscard]] static FileChange classify(std::int64_t size, double mtime, std::string_view fingerprint,
                                             const std::optional<FileState>& stored, bool canTailAppend) noexcept;

    /// `size`, a colon, and the FNV-1a hash of the first and the last 4096 bytes in hexadecimal, so that the cost does
    /// not grow with the file. `size`, in bytes, is the caller's and is not measured again.
    /// A file that cannot be opened, or whose tail cannot be read, gives the empty text.
    [[nodiscard]] static std::string fingerprint(const std::string& file, std::int64_t size);

    /// Absent if the file cannot be queried.
    [[nodiscard]] static std::optional<double> changeTime(const std::string& file) noexcept;
    [[nodiscard]] static std::optional<Status> state(const std::string& file) noexcept;
};

}  // namespace quorvane
