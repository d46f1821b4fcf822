#pragma once
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "QuorvaneCore/ingest/FileCursor.h"
#include "QuorvaneCore/ingest/JSONLStreamReader.h"
#include "QuorvaneCore/model/UsageEvent.h"

namespace quorvane {

/// What one pass over OpenCode's log found for its two readers, each deduplicated and in no particular order.
struct OpenCodeLogParse {
    std::vector<UsageEvent> opencode;
    std::vector<UsageEvent> museSpark;
};

/// The last log that was parsed, so that one pass serves both readers. It holds one file and lives as long as the
/// process. Any thread may call any operation.
class OpenCodeLogCache {
public:
    OpenCodeLogCache() = default;
    OpenCodeLogCache(const OpenCodeLogCache&) = delete;
    OpenCodeLogCache& operator=(const OpenCodeLogCache&) = delete;

    /// The one that all readers of this process share.
    [[nodiscard]] static OpenCodeLogCache& shared();

    /// The parse of `file` as it was with this status; absent if it is another file or another status.
    [[nodiscard]] std::optional<OpenCodeLogParse> find(const std::string& file, const FileCursor::Status& status) const;

    /// Replaces what was there. Of two threads that parse at once, the last one counts.
    void store(const std::string& file, const FileCursor::Status& status, OpenCodeLogParse parse);

    /// Counts a pass over a log.
    void countTraversal();

    /// How many passes there were since the process began.
    [[nodiscard]] std::int64_t traversalCount() const;

private:
    mutable std::mutex lock_;  ///< guards the rest; a leaf, never held while a log is read
    std::optional<std::string> path_;
    FileCursor::Status status_;
    OpenCodeLogParse parse_;
    std::int64_t traversalCount_ = 0;
};

/// Reads OpenCode's log for both of its readers.
class OpenCodeLogReader {
public:
    OpenCodeLogReader() = delete;

    /// All calls of the log, a last line without a line feed included; from memory if the log has not changed since it
    /// was last parsed. A line that is no UTF-8 is passed over, and a log that cannot be read gives none.
    [[nodiscard]] static OpenCodeLogParse parse(const std::string& file, const JSONLStreamReader& reader);
};

}  // namespace quorvane
