#pragma once
#include <cstdint>
#include <string>

namespace quorvane {

/// What the system remembers of a data file between two refreshes; a row of the index's `cursors` table.
struct FileState {
    std::int64_t size = 0;            ///< bytes at the last read
    double mtime = 0;                 ///< modification time, seconds since 1970 UTC; compared for exact equality
    std::int64_t offset = 0;          ///< consumed so far, in the reader's own measure; may stop short of `size`
    std::string fingerprint;          ///< of `FileCursor::fingerprint`; empty if none could be made
    double ctime = 0;                 ///< status change time, seconds since 1970 UTC; 0 if unknown
    std::string provider;             ///< raw name of the provider; empty in a row of an old version
    std::int64_t parserRevision = 0;  ///< of the reader that wrote it

    friend bool operator==(const FileState&, const FileState&) = default;
};

}  // namespace quorvane
