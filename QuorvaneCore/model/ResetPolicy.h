#pragma once
#include <cstdint>

namespace quorvane {

/// What the indexer does with a file's stored events when the file must be read anew.
enum class ResetPolicy : std::uint8_t {
    RereadWhole,                        ///< reads from 0 and deletes all events of the file
    RereadWholeRetainingIndexedEvents,  ///< reads from 0 and deletes nothing
    /// Reads from the stored offset. At offset 0 deletes all events of the file, else those at or after
    /// `watermarkTimestamp(offset)`, and none if that is absent.
    Watermark,
};

}  // namespace quorvane
