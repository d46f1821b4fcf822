#pragma once
#include "QuorvaneCore/platform/Date.h"

namespace quorvane {

/// The present moment, which a host can pin so that a whole run is told as of one instant.
/// Any thread may call any operation.
class Clock {
public:
    Clock() = delete;

    /// The pinned moment if there is one, else the system's time, to the microsecond.
    [[nodiscard]] static Date now() noexcept;

    /// From here on `now()` is `moment`, until `unpin()`.
    static void pin(Date moment) noexcept;
    static void unpin() noexcept;
};

}  // namespace quorvane
