#pragma once
#include <compare>

namespace quorvane {

/// An instant, in seconds since 1970-01-01 UTC without leap seconds, as a 64-bit float.
/// Compared exactly: the index stores this number and compares it again after a restart.
struct Date {
    double secondsSince1970 = 0;

    /// The start of the year 1: the date of a record whose log names none. It lies in no window.
    [[nodiscard]] static constexpr Date distantPast() noexcept { return Date{-62135769600.0}; }

    friend constexpr auto operator<=>(const Date&, const Date&) = default;
};

[[nodiscard]] constexpr Date operator+(Date date, double seconds) noexcept {
    return Date{date.secondsSince1970 + seconds};
}
[[nodiscard]] constexpr Date operator-(Date date, double seconds) noexcept {
    return Date{date.secondsSince1970 - seconds};
}
/// The seconds from `right` to `left`.
[[nodiscard]] constexpr double operator-(Date left, Date right) noexcept {
    return left.secondsSince1970 - right.secondsSince1970;
}

}  // namespace quorvane
