#pragma once
#include <optional>
#include <string_view>

#include "QuorvaneCore/platform/Date.h"

namespace quorvane {

/// Dates of logs whose quality is unknown. Pure; any thread.
class ISOTimestamp {
public:
    ISOTimestamp() = delete;

    /// The date that `text` holds, with a fraction of the second or without one; `fallback` for anything else.
    [[nodiscard]] static Date parse(std::optional<std::string_view> text, Date fallback) noexcept;
};

}  // namespace quorvane
