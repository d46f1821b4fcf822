#pragma once
#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "QuorvaneCore/platform/Calendar.h"
#include "tests/index/IndexTestSupport.h"

namespace quorvane::testing {

/// Who made the random events; the third made none.
inline constexpr std::array randomProviders{ProviderID::Claude, ProviderID::Codex, ProviderID::MuseSpark};

/// Moments at which one of the zones is, was or will be changing its clocks or its offset, or at which a window reaches
/// beyond what the C library knows of local times.
inline constexpr std::array moments{"2026-06-15T09:30:00Z",  // an ordinary day
                                    "2026-03-08T16:45:00Z",  // New York, forward
                                    "2026-11-01T20:00:00Z",  // New York, back
                                    "2026-03-29T11:11:11Z",  // Berlin, forward
                                    "2026-10-25T22:30:00Z",  // Berlin, back
                                    "2026-10-03T16:00:00Z",  // Lord Howe, half an hour forward
                                    "2026-04-04T20:00:00Z",  // Lord Howe, half an hour back
                                    "2011-12-30T23:00:00Z",  // Apia, the day after the day that it left out
                                    "2012-01-04T12:00:00Z",  // Apia, some days later
                                    "1986-01-02T00:00:00Z",  // Kathmandu, a quarter of an hour forward
                                    "2024-02-29T23:59:59Z",  // a leap day
                                    "1970-03-01T12:00:00Z",  // windows that begin before 1970
                                    "1969-07-20T20:17:40Z",  // before 1970
                                    "2038-01-19T03:14:08Z",  // one second beyond 32 bits
                                    "2041-05-05T05:05:05Z"};

/// std::vector<UsageEvent> around `now`, in whole milliseconds, with the moments among them on which a day turns.
class RandomEvents {
public:
    explicit RandomEvents(unsigned seed) : generator_{seed} {}

    std::vector<UsageEvent> around(Date now, const Calendar& calendar) {
        const LocalDay today = calendar.day(now);
        std::vector<Date> dates{now, now + 0.001, now + 1, now - 0.001, Date::distantPast(), Date{-0.001}, Date{0}};
        for (const std::int64_t back : {-1, 0, 1, 2, 6, 7, 29, 30, 89, 90, 399, 400}) {
            const Date start = calendar.start(today - back);
            dates.insert(dates.end(), {start, start - 0.001, start + 0.001});
        }
        for (int count = 0; count < 40; ++count)
            dates.push_back(now - millisecondsWithin(3));
        for (int count = 0; count < 60; ++count)
            dates.push_back(now + 86400.0 - millisecondsWithin(410));
        std::vector<UsageEvent> events;
        for (const Date date : dates)
            events.push_back(next(date));
        return events;
    }

private:
    double millisecondsWithin(int days) {
        return static_cast<double>(std::uniform_int_distribution<std::int64_t>{0, days * 86400000LL}(generator_)) /
               1000.0;
    }
    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>{0, limit - 1}(generator_);
    }
    std::int64_t tokens() {
        const auto some = static_cast<std::int64_t>(below(3000));
        switch (below(8)) {
            case 0: return 200000;
            case 1: return 198500 + some;
            case 2: return 0;
            default: return some;
        }
    }
    UsageEvent next(Date date) {
        static const std::array<std::string, 7> models{"plain", "tiered",     "cached", "cached-20260101",
                                                       "tenth", "unheard-of", "strange"};
        EventFields fields;
        fields.message = "m" + std::to_string(serial_++);
        fields.provider = randomProviders[below(2)];  // the third has no events
        fields.model = models[below(models.size())];
        // A sum of milliseconds is not always a millisecond; the index is asked about those that are.
        fields.when = Date{std::round(date.secondsSince1970 * 1000.0) / 1000.0};
        fields.usage = {.input = tokens(),
                        .output = tokens(),
                        .cacheCreate5m = tokens(),
                        .cacheCreate1h = tokens(),
                        .cacheRead = tokens()};
        return event(std::move(fields));
    }

    std::mt19937 generator_;
    int serial_ = 0;
};

}  // namespace quorvane::testing
