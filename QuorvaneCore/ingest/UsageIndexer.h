#pragma once
#include <cstdint>
#include <memory>

#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/model/IndexableProvider.h"

namespace quorvane {

/// Brings the store up to date with one reader's data files, reading only what is new: an unchanged file costs one
/// status call and one cursor lookup. Nothing here schedules anything.
struct UsageIndexer {
    /// What a refresh did. Overflow ends the process.
    struct Stats {
        std::int64_t filesRead = 0;         ///< files that were decoded
        std::int64_t filesSkipped = 0;      ///< files found unchanged
        std::int64_t eventsIngested = 0;    ///< events that the decoder returned, repeated ones included
        std::int64_t fingerprintReads = 0;  ///< files of which the first and last bytes were read

        friend bool operator==(const Stats&, const Stats&) = default;
    };

    std::shared_ptr<UsageIndex> index;

    /// Runs on the caller's thread until the whole provider is done. Different providers may be refreshed from
    /// different threads at once. Cursors of files that are gone are removed; their events stay. Throws `SQLiteError`;
    /// the files visited before the failure keep their work.
    Stats refresh(const IndexableProvider& provider) const;
};

}  // namespace quorvane
