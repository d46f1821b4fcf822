#pragma once
#include <string>
#include <string_view>

#include "QuorvaneCore/snapshots/WidgetSnapshot.h"

namespace quorvane::detail {

/// The text of a snapshot file: one pretty-printed object with sorted keys, named as the fields are; absent values are
/// left out. Throws `SnapshotCodingError` for a number or date that is not finite.
[[nodiscard]] std::string encodeWidgetSnapshot(const WidgetSnapshot& snapshot);

/// The inverse. Every field must be there with its type, but for the four that may be absent; other keys are ignored.
/// Whatever the schema version, it is only decoded. Throws `SnapshotCodingError`.
[[nodiscard]] WidgetSnapshot decodeWidgetSnapshot(std::string_view fileText);

}  // namespace quorvane::detail
