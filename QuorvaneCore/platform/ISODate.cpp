#include "QuorvaneCore/platform/ISODate.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>

#include <fmt/format.h>

#include "QuorvaneCore/platform/LocalDay.h"

namespace quorvane {
namespace {

bool isDigit(char character) noexcept {
    return character >= '0' && character <= '9';
}

/// Takes a text apart from the left; after the first piece that does not fit, nothing fits any more.
class Cursor {
public:
    explicit Cursor(std::string_view text) noexcept : rest_{text} {}

    int digits(std::size_t count) noexcept {
        int value = 0;
        if (rest_.size() < count) return fail();
        for (std::size_t index = 0; index < count; ++index) {
            if (!isDigit(rest_[index])) return fail();
            value = value * 10 + (rest_[index] - '0');
        }
        rest_.remove_prefix(count);
        return value;
    }

    void literal(char expected) noexcept {
        if (rest_.empty() || rest_.front() != expected) {
            fail();
        } else {
            rest_.remove_prefix(1);
        }
    }

    /// All digits from here on, at least one.
    std::string_view digitRun() noexcept {
        std::size_t length = 0;
        while (length < rest_.size() && isDigit(rest_[length]))
            ++length;
        if (length == 0) fail();
        const std::string_view run = rest_.substr(0, length);
        rest_.remove_prefix(length);
        return run;
    }

    /// The zone's offset from UTC in seconds.
    int zone() noexcept {
        if (rest_.empty()) return fail();
        const char sign = rest_.front();
        rest_.remove_prefix(1);
        if (sign == 'Z') return 0;
        if (sign != '+' && sign != '-') return fail();
        const int hours = digits(2);
        literal(':');
        const int minutes = digits(2);
        if (hours > 23 || minutes > 59) return fail();
        const int offset = hours * 3600 + minutes * 60;
        return sign == '-' ? -offset : offset;
    }

    [[nodiscard]] bool isDone() const noexcept { return fits_ && rest_.empty(); }

private:
    int fail() noexcept {
        fits_ = false;
        rest_ = {};
        return 0;
    }

    std::string_view rest_;
    bool fits_ = true;
};

/// `seconds` and the decimal fraction, rounded once wherever a float has room for all digits.
double withFraction(std::int64_t seconds, std::string_view fraction) noexcept {
    std::int64_t digits = 0;
    std::int64_t scale = 1;
    for (const char digit : fraction.substr(0, 9)) {
        digits = digits * 10 + (digit - '0');
        scale *= 10;
    }
    constexpr std::int64_t exactIntegers = 9007199254740992;  // 2^53
    const bool fits = seconds > -exactIntegers / scale && seconds < exactIntegers / scale - 1;
    if (fits) return static_cast<double>(seconds * scale + digits) / static_cast<double>(scale);
    return static_cast<double>(seconds) + static_cast<double>(digits) / static_cast<double>(scale);
}

std::optional<Date> parseForm(std::string_view text, bool fractional) noexcept {
    namespace chrono = std::chrono;
    Cursor cursor{text};
    const int year = cursor.digits(4);
    cursor.literal('-');
    const int month = cursor.digits(2);
    cursor.literal('-');
    const int day = cursor.digits(2);
    cursor.literal('T');
    const int hour = cursor.digits(2);
    cursor.literal(':');
    const int minute = cursor.digits(2);
    cursor.literal(':');
    const int second = cursor.digits(2);
    std::string_view fraction;
    if (fractional) {
        cursor.literal('.');
        fraction = cursor.digitRun();
    }
    const int offset = cursor.zone();
    const chrono::year_month_day date{chrono::year{year}, chrono::month{static_cast<unsigned>(month)},
                                      chrono::day{static_cast<unsigned>(day)}};
    if (!cursor.isDone() || !date.ok() || hour > 23 || minute > 59 || second > 59) return std::nullopt;
    const std::int64_t days = chrono::sys_days{date}.time_since_epoch().count();
    const std::int64_t seconds = days * 86400 + hour * 3600 + minute * 60 + second - offset;
    return Date{withFraction(seconds, fraction)};
}

}  // namespace

std::optional<Date> ISODate::parseFractional(std::string_view text) noexcept {
    return parseForm(text, true);
}

std::optional<Date> ISODate::parsePlain(std::string_view text) noexcept {
    return parseForm(text, false);
}

std::optional<Date> ISODate::parse(std::string_view text) noexcept {
    const std::optional<Date> date = parseFractional(text);
    return date ? date : parsePlain(text);
}

std::string ISODate::text(Date date) {
    constexpr double first = -62167219200.0;  // 0000-01-01T00:00:00Z
    constexpr double last = 253402300799.0;   // 9999-12-31T23:59:59Z
    constexpr std::int64_t secondsPerDay = 86400;
    // Not-a-number fails the comparison and is written as the first date.
    const double held = date.secondsSince1970 > first ? std::min(date.secondsSince1970, last) : first;
    const auto seconds = static_cast<std::int64_t>(std::floor(held));
    const std::int64_t ofDay = (seconds % secondsPerDay + secondsPerDay) % secondsPerDay;
    const LocalDay day{(seconds - ofDay) / secondsPerDay};
    return fmt::format("{}T{:02}:{:02}:{:02}Z", day.text(), ofDay / 3600, ofDay / 60 % 60, ofDay % 60);
}

}  // namespace quorvane
