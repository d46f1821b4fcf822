#pragma once
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "QuorvaneCore/analytics/HeatmapDay.h"
#include "QuorvaneCore/platform/Calendar.h"
#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/platform/DateFormat.h"

namespace quorvane {

/// A day of the month that has no entry in the window.
struct CalendarDayOutOfWindow {
    Date day;

    friend bool operator==(const CalendarDayOutOfWindow&, const CalendarDayOutOfWindow&) = default;
};

/// Padding before the first or after the last day of the month.
struct CalendarBlank {
    friend bool operator==(const CalendarBlank&, const CalendarBlank&) = default;
};

/// One cell of a month: a `HeatmapDay` is a day with data, be it 0.
using CalendarSlot = std::variant<CalendarDayOutOfWindow, HeatmapDay, CalendarBlank>;

struct CalendarMonthBlock {
    Date monthStart;                                 ///< the first instant of the month
    std::string label;                               ///< the month's name
    std::vector<std::vector<CalendarSlot>> columns;  ///< one a week, 7 slots each, the first weekday first

    friend bool operator==(const CalendarMonthBlock&, const CalendarMonthBlock&) = default;
};

/// Lays a window of daily values out as small calendars, one a month. Pure but for the locale; any thread.
class CalendarMonthLayout {
public:
    CalendarMonthLayout() = delete;

    /// The months from the first element's to the last one's. `days` is in ascending order.
    [[nodiscard]] static std::vector<CalendarMonthBlock> months(
        std::span<const HeatmapDay> days, const Calendar& calendar,
        const DateFormat& labelFormatter = defaultLabelFormatter());

    /// The month's short name in the current locale.
    [[nodiscard]] static DateFormat defaultLabelFormatter();
};

}  // namespace quorvane
