#pragma once
#include <string>

#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/platform/Locale.h"

namespace quorvane {

/// Tells how long ago a moment was, as people of a locale do in few letters. Any thread.
class RelativeDateFormat {
public:
    RelativeDateFormat() = delete;

    /// In whole minutes, hours or days, the largest that fits, not rounded up: "5 min. ago", "in 2 hr."; "now" for less
    /// than a minute.
    [[nodiscard]] static std::string text(Date date, Date now, const Locale& locale);
};

}  // namespace quorvane
