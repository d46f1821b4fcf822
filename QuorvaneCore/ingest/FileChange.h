#pragma once
#include <cstdint>
#include <variant>

namespace quorvane {

/// The file grew: read on from `from`.
struct Appended {
    std::int64_t from = 0;
    friend bool operator==(const Appended&, const Appended&) = default;
};

/// Nothing to read.
struct Unchanged {
    friend bool operator==(const Unchanged&, const Unchanged&) = default;
};

/// Forget what was read of this file.
struct Reset {
    friend bool operator==(const Reset&, const Reset&) = default;
};

/// The verdict on a file against its cursor.
using FileChange = std::variant<Appended, Unchanged, Reset>;

}  // namespace quorvane
