#pragma once
#include <string>
#include <string_view>

#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/snapshots/LocalAutomationSnapshot.h"

namespace quorvane {

/// The text of "latest-snapshot.json": one pretty-printed object, sorted keys in snake case, absent values left out.
/// Pure; any thread.
class LocalAutomationSnapshotEncoder {
public:
    LocalAutomationSnapshotEncoder() = delete;

    /// Throws `SnapshotCodingError` for a number or date that is not finite.
    [[nodiscard]] static std::string encode(const LocalAutomationSnapshot& snapshot);

    /// The inverse. Every key must be there with its type but for those that may be absent; other keys are ignored.
    /// Throws `SnapshotCodingError`.
    [[nodiscard]] static LocalAutomationSnapshot decode(std::string_view text);

    /// A date as the file has it: UTC, whole seconds.
    [[nodiscard]] static std::string string(Date date);
};

}  // namespace quorvane
