#include "QuorvaneCore/platform/RelativeDateFormat.h"

#include <cmath>

#include <unicode/reldatefmt.h>
#include <unicode/unistr.h>

#include "QuorvaneCore/platform/detail/ICULocale.h"

namespace quorvane {
namespace {

constexpr double minute = 60;
constexpr double hour = 60 * minute;
constexpr double day = 24 * hour;

/// The text of an age in seconds, without what a locale without data of its own would lack.
icu::UnicodeString format(const icu::RelativeDateTimeFormatter& formatter, double age, UErrorCode& status) {
    const double length = std::fabs(age);
    icu::UnicodeString text;
    if (!(length >= minute)) return formatter.format(UDAT_DIRECTION_PLAIN, UDAT_ABSOLUTE_NOW, text, status);
    const UDateDirection direction = age < 0 ? UDAT_DIRECTION_NEXT : UDAT_DIRECTION_LAST;
    if (length < hour) {
        return formatter.format(std::floor(length / minute), direction, UDAT_RELATIVE_MINUTES, text, status);
    }
    if (length < day) return formatter.format(std::floor(length / hour), direction, UDAT_RELATIVE_HOURS, text, status);
    return formatter.format(std::floor(length / day), direction, UDAT_RELATIVE_DAYS, text, status);
}

}  // namespace

std::string RelativeDateFormat::text(Date date, Date now, const Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::RelativeDateTimeFormatter formatter{detail::icuLocale(locale), nullptr, UDAT_STYLE_SHORT,
                                                   UDISPCTX_CAPITALIZATION_NONE, status};
    std::string result;
    if (U_FAILURE(status)) return result;
    const icu::UnicodeString text = format(formatter, now - date, status);
    if (U_SUCCESS(status)) text.toUTF8String(result);
    return result;
}

}  // namespace quorvane
