#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "QuorvaneCore/model/ResetPolicy.h"
#include "QuorvaneCore/model/UsageProvider.h"

namespace quorvane {

/// What `decodeFile` made of a file.
struct DecodedFile {
    std::vector<UsageEvent> events;  ///< in file order, repeated lines of one call included
    std::int64_t consumed = 0;       ///< becomes the cursor's offset
};

/// A reader whose data lies in files that the indexer can follow. Offsets are the reader's own: bytes for a log, a
/// watermark for a database; the indexer only stores them and hands them back.
class IndexableProvider : public UsageProvider {
public:
    /// The files to index, in the order in which they are visited.
    [[nodiscard]] virtual std::vector<std::string> dataFiles() const = 0;

    /// The key under which `file`, one of `dataFiles()`, stands in the store: that of its cursor, and of its events
    /// when they are deleted. The path itself, unless another reader follows the same file: each needs a cursor and
    /// rows of its own, so a reader that shares a file gives a key that no other reader gives, and never another one
    /// for it.
    [[nodiscard]] virtual std::string storeKey(const std::string& file) const { return file; }

    /// Whether a grown file can be read on from the stored offset.
    [[nodiscard]] virtual bool canTailAppend() const = 0;

    /// Raised when the decoder changes, so that every file is read anew.
    [[nodiscard]] virtual std::int64_t parserRevision() const = 0;

    [[nodiscard]] virtual ResetPolicy resetPolicy() const { return ResetPolicy::RereadWhole; }

    /// Decodes `file` from `offset` on. A file that cannot be read gives no events and `offset` again.
    [[nodiscard]] virtual DecodedFile decodeFile(const std::string& file, std::int64_t offset) const = 0;

    /// The time from which stored events go when a file is reset at `offset`; see `ResetPolicy::Watermark`.
    [[nodiscard]] virtual std::optional<Date> watermarkTimestamp(std::int64_t /*offset*/) const { return std::nullopt; }
};

}  // namespace quorvane
