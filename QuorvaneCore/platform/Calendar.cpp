#include "QuorvaneCore/platform/Calendar.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <utility>

#include <unicode/basictz.h>
#include <unicode/calendar.h>
#include <unicode/gregocal.h>
#include <unicode/timezone.h>
#include <unicode/tztrans.h>
#include <unicode/ucal.h>

#include "QuorvaneCore/platform/detail/ICULocale.h"

namespace quorvane {
namespace {

constexpr double secondsPerDay = 86400.0;
constexpr double rimMilliseconds = 1e15;

std::string utf8(const icu::UnicodeString& text) {
    std::string result;
    text.toUTF8String(result);
    return result;
}

std::string identifierOf(const icu::TimeZone& zone) {
    icu::UnicodeString identifier;
    zone.getID(identifier);
    return utf8(identifier);
}

/// Whether `zone` is what stands for "no such zone"; its name can come in more than one class of zone.
bool isUnknown(const icu::TimeZone& zone) {
    return identifierOf(zone) == UCAL_UNKNOWN_ZONE_ID;
}

/// The library counts in milliseconds. Dates beyond what any calendar is used for are held at the rim, where every
/// step below stays exact.
double milliseconds(Date date) noexcept {
    if (std::isnan(date.secondsSince1970)) return -rimMilliseconds;
    return std::clamp(std::floor(date.secondsSince1970 * 1000.0), -rimMilliseconds, rimMilliseconds);
}

}  // namespace

struct Calendar::State {
    std::string timeZoneID;
    std::string identifier;
    int firstWeekday = 1;
    std::unique_ptr<const icu::BasicTimeZone> zone;

    /// Seconds east of Greenwich.
    [[nodiscard]] double offset(double millis) const {
        UErrorCode status = U_ZERO_ERROR;
        std::int32_t raw = 0;
        std::int32_t daylight = 0;
        zone->getOffset(millis, 0 /* UTC */, raw, daylight, status);
        return U_FAILURE(status) ? 0.0 : (raw + daylight) / 1000.0;
    }

    /// Where a day lies in its month, and how long that is.
    struct Month {
        int dayOfMonth = 1;
        int length = 1;
    };

    /// Days are told apart by their labels, so noon in UTC stands for each.
    [[nodiscard]] Month monthOf(LocalDay day) const {
        UErrorCode status = U_ZERO_ERROR;
        icu::Locale kind{"en_US"};
        kind.setKeywordValue("calendar", identifier.c_str(), status);
        const std::unique_ptr<icu::Calendar> calendar{
            icu::Calendar::createInstance(*icu::TimeZone::getGMT(), kind, status)};
        if (U_FAILURE(status)) return {};
        // The days are those of the Gregorian calendar also before there was one.
        if (auto* gregorian = dynamic_cast<icu::GregorianCalendar*>(calendar.get()))
            gregorian->setGregorianChange(-rimMilliseconds * 2, status);
        calendar->setTime((static_cast<double>(day.number) + 0.5) * secondsPerDay * 1000.0, status);
        const Month month{.dayOfMonth = calendar->get(UCAL_DATE, status),
                          .length = calendar->getActualMaximum(UCAL_DATE, status)};
        return U_FAILURE(status) ? Month{} : month;
    }

    /// The instant of the last change of the offset before `millis`, itself excluded.
    [[nodiscard]] std::optional<double> transitionBefore(double millis) const {
        icu::TimeZoneTransition transition;
        if (!zone->getPreviousTransition(millis, false, transition)) return std::nullopt;
        return transition.getTime();
    }
};

Calendar::Calendar(std::string timeZoneID, std::string identifier, int firstWeekday) {
    std::unique_ptr<icu::TimeZone> zone{icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(timeZoneID))};
    if (isUnknown(*zone)) {
        zone.reset(icu::TimeZone::createTimeZone("UTC"));
        timeZoneID = "UTC";
    }
    // Every zone that createTimeZone makes is a BasicTimeZone.
    std::unique_ptr<const icu::BasicTimeZone> basic{dynamic_cast<const icu::BasicTimeZone*>(zone.release())};
    state_ = std::make_shared<const State>(State{.timeZoneID = std::move(timeZoneID),
                                                 .identifier = std::move(identifier),
                                                 .firstWeekday = std::clamp(firstWeekday, 1, 7),
                                                 .zone = std::move(basic)});
}

Calendar Calendar::current() {
    return Calendar{systemTimeZoneID(), "gregorian", firstWeekday(Locale::current())};
}

std::string Calendar::systemTimeZoneID() {
    const std::unique_ptr<icu::TimeZone> zone{icu::TimeZone::detectHostTimeZone()};
    if (!zone || isUnknown(*zone)) return "UTC";
    return identifierOf(*zone);
}

const std::string& Calendar::timeZoneID() const noexcept {
    return state_->timeZoneID;
}
const std::string& Calendar::identifier() const noexcept {
    return state_->identifier;
}
bool Calendar::isGregorian() const noexcept {
    return state_->identifier == "gregorian";
}

LocalDay Calendar::day(Date date) const {
    const double millis = milliseconds(date);
    const double local = std::floor(millis / 1000.0) + state_->offset(millis);
    return LocalDay{static_cast<std::int64_t>(std::floor(local / secondsPerDay))};
}

Date Calendar::start(LocalDay day) const {
    const double midnight = static_cast<double>(day.number) * secondsPerDay;  // as if the zone were UTC
    // Two days on, every zone's clocks show a later day. From there back, one stretch of equal offset after the other,
    // to the one before which the clocks had not passed this midnight: the day begins where that stretch has its
    // midnight, or with the stretch itself where the clocks jumped over it.
    double end = (midnight + 2 * secondsPerDay) * 1000.0;
    for (;;) {
        const double midnightHere = midnight - state_->offset(end - 1);
        const std::optional<double> begin = state_->transitionBefore(end);
        if (!begin) return Date{midnightHere};
        const double beginSeconds = *begin / 1000.0;
        const double clocksBefore = beginSeconds + state_->offset(*begin - 1);
        if (clocksBefore <= midnight) return Date{std::max(beginSeconds, midnightHere)};
        end = *begin;
    }
}

int Calendar::hour(Date date) const {
    const double millis = milliseconds(date);
    const double local = std::floor(millis / 1000.0) + state_->offset(millis);
    return static_cast<int>((local - std::floor(local / secondsPerDay) * secondsPerDay) / 3600.0);
}

int Calendar::firstWeekday() const noexcept {
    return state_->firstWeekday;
}

int Calendar::firstWeekday(const Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::Calendar> calendar{icu::Calendar::createInstance(detail::icuLocale(locale), status)};
    if (U_FAILURE(status)) return 1;
    const UCalendarDaysOfWeek first = calendar->getFirstDayOfWeek(status);
    return U_FAILURE(status) ? 1 : static_cast<int>(first);
}

LocalDay Calendar::firstOfMonth(LocalDay day) const {
    return day - (state_->monthOf(day).dayOfMonth - 1);
}

int Calendar::daysInMonth(LocalDay day) const {
    return state_->monthOf(day).length;
}

bool Calendar::reaches(LocalDay day) noexcept {
    constexpr auto rim = static_cast<std::int64_t>(rimMilliseconds / 1000.0 / secondsPerDay) - 1;
    return day.number > -rim && day.number < rim;
}

int Calendar::offsetFromGMT(Date date) const {
    return static_cast<int>(state_->offset(milliseconds(date)));
}

bool Calendar::hasTransitionAfter(Date date) const {
    icu::TimeZoneTransition transition;
    return state_->zone->getNextTransition(milliseconds(date), false, transition) != 0;
}

}  // namespace quorvane
