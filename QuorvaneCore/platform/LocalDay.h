#pragma once
#include <compare>
#include <cstdint>
#include <string>

namespace quorvane {

/// A day of the calendar, without a time zone: days since 1970-01-01, proleptic Gregorian. Days are added and
/// subtracted as numbers; which instants belong to a day is the `Calendar`'s business.
struct LocalDay {
    std::int64_t number = 0;

    /// "yyyy-MM-dd" in ASCII digits, as SQLite's date() writes it.
    [[nodiscard]] std::string text() const;

    /// 1 to 7, where 1 is Sunday.
    [[nodiscard]] constexpr int weekday() const noexcept {
        constexpr std::int64_t thursday = 4;  // 1970-01-01, Sunday being 0
        return static_cast<int>(((number + thursday) % 7 + 7) % 7) + 1;
    }

    friend constexpr auto operator<=>(const LocalDay&, const LocalDay&) = default;
};

[[nodiscard]] constexpr LocalDay operator+(LocalDay day, std::int64_t days) noexcept {
    return {day.number + days};
}
[[nodiscard]] constexpr LocalDay operator-(LocalDay day, std::int64_t days) noexcept {
    return {day.number - days};
}
/// The days from `right` to `left`.
[[nodiscard]] constexpr std::int64_t operator-(LocalDay left, LocalDay right) noexcept {
    return left.number - right.number;
}

}  // namespace quorvane
