#pragma once
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "QuorvaneCore/ingest/FileCursor.h"
#include "QuorvaneCore/model/UsageEvent.h"

namespace quorvane {

/// The events of the capture file that was read last, so that a file which has not changed is not read again. It holds
/// one file's events, lives as long as the process, and nothing of it is stored. Any thread may call any operation.
class CursorEventCache {
public:
    struct Entry {
        std::string path;
        std::int64_t size = 0;  ///< in bytes, before it was read
        double mtime = 0;       ///< its modification time then, in seconds since 1970
        double ctime = 0;       ///< its status change time then, in seconds since 1970
        std::vector<UsageEvent> events;
    };

    CursorEventCache() = default;
    CursorEventCache(const CursorEventCache&) = delete;
    CursorEventCache& operator=(const CursorEventCache&) = delete;

    /// The one that all readers of this process share.
    [[nodiscard]] static CursorEventCache& shared();

    /// The stored events if they are of that path and of the very same status.
    [[nodiscard]] std::optional<std::vector<UsageEvent>> events(const std::string& path,
                                                                const FileCursor::Status& status) const;

    /// Replaces what was there, whatever file it was of. Of two threads that read, the last one counts.
    void store(Entry entry);

    /// Notes that a file is about to be read.
    void countTraversal();
    /// How many times a file was read.
    [[nodiscard]] std::int64_t traversalCount() const;

private:
    mutable std::mutex lock_;  ///< guards both fields; a leaf, never held while a file is read
    std::optional<Entry> entry_;
    std::int64_t traversalCount_ = 0;
};

}  // namespace quorvane
