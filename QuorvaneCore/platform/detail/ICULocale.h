#pragma once
// Not installed: what the sources that format and compare by locale share of the library for it.
#include <unicode/locid.h>
#include <unicode/ures.h>

#include "QuorvaneCore/platform/Locale.h"

namespace quorvane::detail {

/// A locale without data of its own would be given those of the process's default locale, which no one asked for here;
/// it gets the neutral ones instead.
[[nodiscard]] inline icu::Locale icuLocale(const Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    UResourceBundle* data = ures_open(nullptr, locale.identifier().c_str(), &status);
    ures_close(data);
    const bool hasData = U_SUCCESS(status) && status != U_USING_DEFAULT_WARNING;
    return hasData ? icu::Locale{locale.identifier().c_str()} : icu::Locale::getRoot();
}

}  // namespace quorvane::detail
