#pragma once
#include <algorithm>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <utility>
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

/// Finds the local day of instants of a range by table, and by calendar where the range is too long for one.
class DayFinder {
public:
    /// For instants from the start of `first` to the end of `last`.
    DayFinder(const Calendar& calendar, LocalDay first, LocalDay last)
        : calendar_{calendar},
          table_{calendar, last - first < longest ? first : last, last},
          byTable_{last - first < longest} {}

    [[nodiscard]] LocalDay day(Date date) const { return byTable_ ? table_.day(date) : calendar_.day(date); }

private:
    static constexpr std::int64_t longest = 366 * 100;

    Calendar calendar_;
    DayTable table_;
    bool byTable_;
};

/// Finds the hour that a clock shows at many instants: those of a day without a change of the clocks by its midnight.
class HourFinder {
public:
    explicit HourFinder(Calendar calendar) : calendar_{std::move(calendar)} {}

    /// `day` is the local day of `date`.
    [[nodiscard]] int hour(LocalDay day, Date date) {
        const auto [entry, isNew] = midnights_.try_emplace(day.number);
        if (isNew) entry->second = midnight(day);
        if (!entry->second) return calendar_.hour(date);
        return static_cast<int>((date.secondsSince1970 - *entry->second) / secondsPerHour);
    }

private:
    static constexpr double secondsPerHour = 3600;

    /// The instant of 0:00; absent for a day on which the clocks change.
    [[nodiscard]] std::optional<double> midnight(LocalDay day) const {
        const Date start = calendar_.start(day);
        const Date end = calendar_.start(day + 1);
        const bool isPlain =
            end.secondsSince1970 - start.secondsSince1970 == 24 * secondsPerHour &&
            calendar_.offsetFromGMT(start) == calendar_.offsetFromGMT(Date{end.secondsSince1970 - 1}) &&
            calendar_.hour(start) == 0;
        return isPlain ? std::optional{start.secondsSince1970} : std::nullopt;
    }

    Calendar calendar_;
    std::unordered_map<std::int64_t, std::optional<double>> midnights_;
};

}  // namespace quorvane::detail
