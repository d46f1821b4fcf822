#include "QuorvaneCore/analytics/CalendarMonthLayout.h"

#include <cstdint>
#include <unordered_map>
#include <utility>

#include "QuorvaneCore/platform/LocalDay.h"
#include "QuorvaneCore/platform/Locale.h"

namespace quorvane {
namespace {

constexpr int daysAWeek = 7;

using DaysByNumber = std::unordered_map<std::int64_t, HeatmapDay>;

CalendarSlot slotOf(LocalDay day, const DaysByNumber& byNumber, const Calendar& calendar) {
    if (const auto found = byNumber.find(day.number); found != byNumber.end()) return found->second;
    return CalendarDayOutOfWindow{calendar.start(day)};
}

std::vector<std::vector<CalendarSlot>> columnsOf(LocalDay first, int length, const DaysByNumber& byNumber,
                                                 const Calendar& calendar) {
    const int blanksAhead = (first.weekday() - calendar.firstWeekday() + daysAWeek) % daysAWeek;
    const int weeks = (blanksAhead + length + daysAWeek - 1) / daysAWeek;
    std::vector<std::vector<CalendarSlot>> columns;
    for (int week = 0; week < weeks; ++week) {
        std::vector<CalendarSlot>& column = columns.emplace_back();
        for (int row = 0; row < daysAWeek; ++row) {
            const int offset = week * daysAWeek + row - blanksAhead;
            const bool isDay = offset >= 0 && offset < length;
            column.push_back(isDay ? slotOf(first + offset, byNumber, calendar) : CalendarSlot{CalendarBlank{}});
        }
    }
    return columns;
}

}  // namespace

std::vector<CalendarMonthBlock> CalendarMonthLayout::months(std::span<const HeatmapDay> days, const Calendar& calendar,
                                                            const DateFormat& labelFormatter) {
    std::vector<CalendarMonthBlock> blocks;
    if (days.empty()) return blocks;
    DaysByNumber byNumber;
    for (const HeatmapDay& day : days)
        byNumber.insert_or_assign(calendar.day(day.day).number, day);
    const LocalDay last = calendar.firstOfMonth(calendar.day(days.back().day));
    LocalDay month = calendar.firstOfMonth(calendar.day(days.front().day));
    while (month <= last && Calendar::reaches(month)) {
        const int length = calendar.daysInMonth(month);
        const Date start = calendar.start(month);
        blocks.push_back({.monthStart = start,
                          .label = labelFormatter.text(start, calendar),
                          .columns = columnsOf(month, length, byNumber, calendar)});
        month = month + length;
    }
    return blocks;
}

DateFormat CalendarMonthLayout::defaultLabelFormatter() {
    return DateFormat::localized(Locale::current(), "MMM");
}

}  // namespace quorvane
