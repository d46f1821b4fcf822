#include "QuorvaneCore/platform/DateFormat.h"

#include <utility>

#include <unicode/dtptngen.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>
#include <unicode/unistr.h>

#include "QuorvaneCore/platform/detail/ICULocale.h"

namespace quorvane {
namespace {

icu::UnicodeString utf16(std::string_view text) {
    return icu::UnicodeString::fromUTF8(icu::StringPiece{text.data(), static_cast<std::int32_t>(text.size())});
}

}  // namespace

struct DateFormat::State {
    icu::Locale locale;
    icu::UnicodeString pattern;
    std::string zone;  ///< of the calendar that `format` was made for
    std::string kind;
    std::unique_ptr<icu::SimpleDateFormat> format;

    /// The formatter of a calendar, kept for the next date.
    icu::SimpleDateFormat* formatter(const Calendar& calendar) {
        if (format && zone == calendar.timeZoneID() && kind == calendar.identifier()) return format.get();
        UErrorCode status = U_ZERO_ERROR;
        icu::Locale withCalendar{locale};
        withCalendar.setKeywordValue("calendar", calendar.identifier().c_str(), status);
        format = std::make_unique<icu::SimpleDateFormat>(pattern, withCalendar, status);
        if (U_FAILURE(status)) {
            format.reset();
            return nullptr;
        }
        format->adoptTimeZone(icu::TimeZone::createTimeZone(utf16(calendar.timeZoneID())));
        zone = calendar.timeZoneID();
        kind = calendar.identifier();
        return format.get();
    }
};

DateFormat::DateFormat(std::unique_ptr<State> state) noexcept : state_{std::move(state)} {}
DateFormat::DateFormat(DateFormat&&) noexcept = default;
DateFormat& DateFormat::operator=(DateFormat&&) noexcept = default;
DateFormat::~DateFormat() = default;

DateFormat DateFormat::localized(const Locale& locale, std::string_view fields) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Locale icuLocale = detail::icuLocale(locale);
    const std::unique_ptr<icu::DateTimePatternGenerator> generator{
        icu::DateTimePatternGenerator::createInstance(icuLocale, status)};
    icu::UnicodeString pattern = utf16(fields);
    if (U_SUCCESS(status)) pattern = generator->getBestPattern(pattern, status);
    return DateFormat{std::make_unique<State>(State{icuLocale, pattern, {}, {}, nullptr})};
}

DateFormat DateFormat::pattern(const Locale& locale, std::string_view pattern) {
    return DateFormat{std::make_unique<State>(State{detail::icuLocale(locale), utf16(pattern), {}, {}, nullptr})};
}

std::string DateFormat::text(Date date, const Calendar& calendar) const {
    std::string result;
    const icu::SimpleDateFormat* const formatter = state_->formatter(calendar);
    if (formatter == nullptr) return result;
    icu::UnicodeString text;
    formatter->format(date.secondsSince1970 * 1000.0, text);
    text.toUTF8String(result);
    return result;
}

}  // namespace quorvane
