#pragma once
#include <algorithm>
#include <cstdint>
#include <vector>

#include "QuorvaneCore/platform/Calendar.h"
#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/platform/LocalDay.h"

namespace quorvane::detail {

/// The days that a summary as of `now` speaks of.
struct UsageDays {
    UsageDays(Date moment, const Calendar& zone)
        : now{moment}, calendar{zone}, today{zone.day(moment)}, startOfToday{zone.start(today)} {}

    Date now;
    Calendar calendar;
    LocalDay today;
    Date startOfToday;

    /// The first day of a window of so many days; today for a length below 1.
    [[nodiscard]] LocalDay firstDay(std::int64_t days) const { return days < 1 ? today : today - (days - 1); }

    /// The first instant of such a window.
    [[nodiscard]] Date windowStart(std::int64_t days) const { return calendar.start(firstDay(days)); }
};

/// Looks up the local day of many instants: the starts of all days of a range, made once, instead of a calendar call
/// for each event.
class DayTable {
public:
    /// For instants from the start of `first` to the end of `last`.
    DayTable(const Calendar& calendar, LocalDay first, LocalDay last) : first_{first} {
        for (LocalDay day = first; day <= last; day = day + 1)
            starts_.push_back(calendar.start(day).secondsSince1970);
    }

    /// The day whose start is the last one not after `date`. A date before the range gives the day before it.
    [[nodiscard]] LocalDay day(Date date) const noexcept {
        const auto behind = std::upper_bound(starts_.begin(), starts_.end(), date.secondsSince1970);
        return first_ + (behind - starts_.begin() - 1);
    }

private:
    LocalDay first_;
    std::vector<double> starts_;
};

}  // namespace quorvane::detail
