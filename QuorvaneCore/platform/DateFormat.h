#pragma once
#include <memory>
#include <string>
#include <string_view>

#include "QuorvaneCore/platform/Calendar.h"
#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/platform/Locale.h"

namespace quorvane {

/// Writes dates as people of a locale do, in UTF-8. The calendar, and with it the time zone, comes with each date.
/// One thread at a time.
class DateFormat {
public:
    /// The fields that Unicode's letters name ("MMM": the month's short name), in the order and with the signs that the
    /// locale has for them.
    [[nodiscard]] static DateFormat localized(const Locale& locale, std::string_view fields);

    /// Exactly this pattern of Unicode's letters ("yyyy-MM-dd"), with the locale's digits and names.
    [[nodiscard]] static DateFormat pattern(const Locale& locale, std::string_view pattern);

    DateFormat(DateFormat&&) noexcept;
    DateFormat& operator=(DateFormat&&) noexcept;
    ~DateFormat();

    [[nodiscard]] std::string text(Date date, const Calendar& calendar) const;

private:
    struct State;
    explicit DateFormat(std::unique_ptr<State> state) noexcept;

    std::unique_ptr<State> state_;
};

}  // namespace quorvane
