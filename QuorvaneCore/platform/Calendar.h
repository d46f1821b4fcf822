#pragma once
#include <memory>
#include <string>

#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/platform/LocalDay.h"

namespace quorvane {

/// A calendar in a time zone: which local day an instant belongs to, and when a local day begins.
/// An immutable value, cheap to copy; any thread may use it. Days of 23 or 25 hours, days that begin at one o'clock and
/// days that a zone left out altogether are days like any other.
class Calendar {
public:
    /// `timeZoneID` is an IANA identifier; an unknown one counts as UTC. `identifier` names the kind of calendar as
    /// Unicode does ("gregorian", "buddhist", "persian", …).
    explicit Calendar(std::string timeZoneID, std::string identifier = "gregorian");

    /// The Gregorian calendar in the system's current time zone.
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

    /// Seconds east of Greenwich at `date`, daylight saving included.
    [[nodiscard]] int offsetFromGMT(Date date) const;

    /// Whether the zone's rules change its offset at any time after `date`.
    [[nodiscard]] bool hasTransitionAfter(Date date) const;

private:
    struct State;
    std::shared_ptr<const State> state_;
};

}  // namespace quorvane
