#pragma once
#include <stdexcept>

namespace quorvane {

/// A text is no snapshot, or a snapshot holds what no text can (a number that is not finite). The message names the
/// member at fault.
class SnapshotCodingError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace quorvane
