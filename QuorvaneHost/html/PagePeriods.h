#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

#include "QuorvaneCore/platform/Calendar.h"
#include "QuorvaneCore/platform/LocalDay.h"

namespace quorvane::host {

/// Cuts a run of days into days, weeks, months or years of the calendar; the first and the last may be cut short.
class PagePeriods {
public:
    enum class Unit : std::uint8_t { Day, Week, Month, Year };

    struct Period {
        LocalDay first;
        LocalDay last;
    };

    /// `first` is not after `last`.
    PagePeriods(LocalDay first, LocalDay last, Unit unit, const Calendar& calendar);

    [[nodiscard]] Unit unit() const noexcept { return unit_; }
    [[nodiscard]] const std::vector<Period>& all() const noexcept { return periods_; }
    [[nodiscard]] std::size_t size() const noexcept { return periods_.size(); }

    /// The period that a day lies in; the day is one of the run.
    [[nodiscard]] std::size_t indexOf(LocalDay day) const noexcept;

    /// "day", "week", "month" or "year".
    [[nodiscard]] const char* noun() const noexcept;

private:
    Unit unit_;
    std::vector<Period> periods_;
};

}  // namespace quorvane::host
