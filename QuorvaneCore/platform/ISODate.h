#pragma once
#include <optional>
#include <string>
#include <string_view>

#include "QuorvaneCore/platform/Date.h"

namespace quorvane {

/// Full internet dates and times of ISO 8601: four-digit year, dashes, T, colons, and a zone of Z or of a sign, two
/// digits, a colon and two digits. Upper case only; nothing before or behind. Pure; any thread.
class ISODate {
public:
    ISODate() = delete;

    /// The form with a fraction of the second, of one digit or more: 2026-01-31T12:30:45.123Z.
    [[nodiscard]] static std::optional<Date> parseFractional(std::string_view text) noexcept;

    /// The form without a fraction: 2026-01-31T12:30:45Z.
    [[nodiscard]] static std::optional<Date> parsePlain(std::string_view text) noexcept;

    /// Either form.
    [[nodiscard]] static std::optional<Date> parse(std::string_view text) noexcept;

    /// The form without a fraction, in UTC; a fraction of the second is cut off. Dates outside the years 0 to 9999,
    /// which the form cannot hold, are written as the nearest one that it can.
    [[nodiscard]] static std::string text(Date date);
};

}  // namespace quorvane
