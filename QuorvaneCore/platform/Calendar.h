#pragma once
#include <memory>
#include <string>

#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/platform/LocalDay.h"
#include "QuorvaneCore/platform/Locale.h"

namespace quorvane {

/// A calendar in a time zone: which local day an instant belongs to, and when a local day begins.
/// An immutable value, cheap to copy; any thread may use it. Days of 23 or 25 hours, days that begin at one o'clock and
/// days that a zone left out altogether are days like any other.
class Calendar {
public:
    /// `timeZoneID` is an IANA identifier; an unknown one counts as UTC. `identifier` names the kind of calendar as
    /// Unicode does ("gregorian", "buddhist", "persian", …). `firstWeekday` is 1, Sunday, to 7.
    explicit Calendar(std::string timeZoneID, std::string identifier = "gregorian", int firstWeekday = 1);

    /// The Gregorian calendar in the system's current time zone, with weeks as in the current locale.
    [[nodiscard]] static Calendar current();

    /// The identifier of the system's current time zone: of `TZ`, else of the system's setting, else "UTC".
    [[nodiscard]] static std::string systemTimeZoneID();

    [[nodiscard]] const std::string& timeZoneID() const noexcept;
    [[nodiscard]] const std::string& identifier() const noexcept;
    [[nodiscard]] bool isGregorian() const noexcept;

    /// The local day that shows on the calendar at `date`.
    [[nodiscard]] LocalDay day(Date date) const;

    /// The first instant of `day`. For a day that the zone left out it is the first instant of the next day there is.
    [[nodiscard]] Date start(LocalDay day) const;

    /// The first instant of the local day of `date`.
    [[nodiscard]] Date startOfDay(Date date) const { return start(day(date)); }

    /// The weekday that shows at `date`: 1 to 7, where 1 is Sunday.
    [[nodiscard]] int weekday(Date date) const { return day(date).weekday(); }

    /// The hour that shows at `date`, 0 to 23.
    [[nodiscard]] int hour(Date date) const;

    /// The weekday that a week begins with, 1 to 7.
    [[nodiscard]] int firstWeekday() const noexcept;

    /// The weekday that a week begins with where `locale` is at home.
    [[nodiscard]] static int firstWeekday(const Locale& locale);

    /// The first day of this kind of calendar's month that `day` lies in.
    [[nodiscard]] LocalDay firstOfMonth(LocalDay day) const;

    /// How many days that month has.
    [[nodiscard]] int daysInMonth(LocalDay day) const;

    /// Whether the calendar can tell the instants of `day`: it knows some 30,000 years on either side of 1970.
    [[nodiscard]] static bool reaches(LocalDay day) noexcept;

    /// Seconds east of Greenwich at `date`, daylight saving included.
    [[nodiscard]] int offsetFromGMT(Date date) const;

    /// Whether the zone's rules change its offset at any time after `date`.
    [[nodiscard]] bool hasTransitionAfter(Date date) const;

private:
    struct State;
    std::shared_ptr<const State> state_;
};

}  // namespace quorvane
