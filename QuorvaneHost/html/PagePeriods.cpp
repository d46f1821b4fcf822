#include "QuorvaneHost/html/PagePeriods.h"

#include <algorithm>
#include <iterator>

namespace quorvane::host {
namespace {

bool isSameYear(LocalDay left, LocalDay right) {
    constexpr std::size_t monthAndDay = 6;  // "-11-03"
    const std::string one = left.text();
    const std::string other = right.text();
    return one.substr(0, one.size() - monthAndDay) == other.substr(0, other.size() - monthAndDay);
}

bool beginsPeriod(LocalDay day, PagePeriods::Unit unit, const Calendar& calendar) {
    switch (unit) {
        case PagePeriods::Unit::Day: return true;
        case PagePeriods::Unit::Week: return day.weekday() == calendar.firstWeekday();
        case PagePeriods::Unit::Month: return calendar.firstOfMonth(day) == day;
        case PagePeriods::Unit::Year: return !isSameYear(day, day - 1);
    }
    return true;
}

}  // namespace

PagePeriods::PagePeriods(LocalDay first, LocalDay last, Unit unit, const Calendar& calendar) : unit_{unit} {
    for (LocalDay day = first; day <= last; day = day + 1) {
        if (periods_.empty() || beginsPeriod(day, unit, calendar)) periods_.push_back({day, day});
        periods_.back().last = day;
    }
}

std::size_t PagePeriods::indexOf(LocalDay day) const noexcept {
    const auto behind = std::upper_bound(periods_.begin(), periods_.end(), day,
                                         [](LocalDay wanted, const Period& period) { return wanted < period.first; });
    return static_cast<std::size_t>(std::distance(periods_.begin(), behind)) - 1;
}

const char* PagePeriods::noun() const noexcept {
    switch (unit_) {
        case Unit::Day: return "day";
        case Unit::Week: return "week";
        case Unit::Month: return "month";
        case Unit::Year: return "year";
    }
    return "";
}

}  // namespace quorvane::host
