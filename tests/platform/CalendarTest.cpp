#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/Calendar.h"
#include "QuorvaneCore/platform/ISODate.h"
#include "tests/support/ScratchHome.h"

namespace quorvane {
namespace {

Date utc(std::string_view text) {
    return ISODate::parsePlain(text).value();
}

LocalDay dayNamed(int year, unsigned month, unsigned day) {
    const std::chrono::sys_days days = std::chrono::year{year} / std::chrono::month{month} / std::chrono::day{day};
    return LocalDay{days.time_since_epoch().count()};
}

struct StartCase {
    const char* name;
    const char* zone;
    LocalDay day;
    const char* expected;
};

class CalendarStarts : public ::testing::TestWithParam<StartCase> {};

TEST_P(CalendarStarts, areTheFirstInstantOfTheDay) {
    const StartCase& row = GetParam();
    const Calendar calendar{row.zone};
    const Date expected = utc(row.expected);
    EXPECT_EQ(calendar.start(row.day), expected);
    EXPECT_EQ(calendar.day(expected), row.day);
    EXPECT_LT(calendar.day(expected - 1), row.day);
    EXPECT_EQ(calendar.startOfDay(expected), expected);
    EXPECT_EQ(calendar.startOfDay(expected + 3 * 3600), expected);
}

INSTANTIATE_TEST_SUITE_P(
    ByZone, CalendarStarts,
    ::testing::Values(
        StartCase{"utc", "UTC", dayNamed(2026, 1, 31), "2026-01-31T00:00:00Z"},
        StartCase{"utcBeforeTheEpoch", "UTC", dayNamed(1969, 12, 31), "1969-12-31T00:00:00Z"},
        StartCase{"berlinInWinter", "Europe/Berlin", dayNamed(2024, 1, 15), "2024-01-14T23:00:00Z"},
        StartCase{"berlinDayOf23Hours", "Europe/Berlin", dayNamed(2024, 3, 31), "2024-03-30T23:00:00Z"},
        StartCase{"berlinDayBehindIt", "Europe/Berlin", dayNamed(2024, 4, 1), "2024-03-31T22:00:00Z"},
        StartCase{"berlinDayOf25Hours", "Europe/Berlin", dayNamed(2024, 10, 27), "2024-10-26T22:00:00Z"},
        StartCase{"berlinDayBehindThat", "Europe/Berlin", dayNamed(2024, 10, 28), "2024-10-27T23:00:00Z"},
        StartCase{"newYorkDayOf23Hours", "America/New_York", dayNamed(2024, 3, 10), "2024-03-10T05:00:00Z"},
        StartCase{"newYorkDayBehindIt", "America/New_York", dayNamed(2024, 3, 11), "2024-03-11T04:00:00Z"},
        StartCase{"newYorkDayOf25Hours", "America/New_York", dayNamed(2024, 11, 3), "2024-11-03T04:00:00Z"},
        StartCase{"newYorkDayBehindThat", "America/New_York", dayNamed(2024, 11, 4), "2024-11-04T05:00:00Z"},
        StartCase{"lordHoweDayLongerByHalfAnHour", "Australia/Lord_Howe", dayNamed(2024, 4, 7), "2024-04-06T13:00:00Z"},
        StartCase{"lordHoweDayBehindIt", "Australia/Lord_Howe", dayNamed(2024, 4, 8), "2024-04-07T13:30:00Z"},
        StartCase{"lordHoweDayShorterByHalfAnHour", "Australia/Lord_Howe", dayNamed(2024, 10, 6),
                  "2024-10-05T13:30:00Z"},
        StartCase{"lordHoweDayBehindThat", "Australia/Lord_Howe", dayNamed(2024, 10, 7), "2024-10-06T13:00:00Z"},
        StartCase{"kathmandu", "Asia/Kathmandu", dayNamed(2024, 1, 2), "2024-01-01T18:15:00Z"},
        StartCase{"apiaDayBeforeTheLeftOutOne", "Pacific/Apia", dayNamed(2011, 12, 29), "2011-12-29T10:00:00Z"},
        StartCase{"apiaDayBehindTheLeftOutOne", "Pacific/Apia", dayNamed(2011, 12, 31), "2011-12-30T10:00:00Z"},
        StartCase{"beirutMidnightThatDoesNotExist", "Asia/Beirut", dayNamed(2022, 3, 27), "2022-03-26T22:00:00Z"},
        StartCase{"beirutMidnightReachedTwice", "Asia/Beirut", dayNamed(2022, 10, 30), "2022-10-29T22:00:00Z"},
        StartCase{"saoPauloMidnightThatDoesNotExist", "America/Sao_Paulo", dayNamed(2018, 11, 4),
                  "2018-11-04T03:00:00Z"},
        StartCase{"saoPauloMidnightReachedTwice", "America/Sao_Paulo", dayNamed(2018, 2, 18), "2018-02-18T03:00:00Z"},
        StartCase{"havanaMidnightThatDoesNotExist", "America/Havana", dayNamed(2018, 3, 11), "2018-03-11T05:00:00Z"},
        StartCase{"havanaMidnightThatRepeats", "America/Havana", dayNamed(2018, 11, 4), "2018-11-04T04:00:00Z"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(Calendar, dayThatAZoneLeftOutStartsWithTheNextOne) {
    const Calendar apia{"Pacific/Apia"};
    EXPECT_EQ(apia.start(dayNamed(2011, 12, 30)), utc("2011-12-30T10:00:00Z"));
    EXPECT_EQ(apia.start(dayNamed(2011, 12, 30)), apia.start(dayNamed(2011, 12, 31)));
    EXPECT_EQ(apia.day(utc("2011-12-30T09:59:59Z")), dayNamed(2011, 12, 29));
    EXPECT_EQ(apia.day(utc("2011-12-30T10:00:00Z")), dayNamed(2011, 12, 31));
    const Calendar kwajalein{"Pacific/Kwajalein"};
    EXPECT_EQ(kwajalein.start(dayNamed(1993, 8, 21)), kwajalein.start(dayNamed(1993, 8, 22)));
}

TEST(Calendar, instantsOfARepeatedHourBelongToTheDayThatTheClocksShow) {
    const Calendar havana{"America/Havana"};  // 00:00 to 01:00 of 2018-11-04 twice
    EXPECT_EQ(havana.day(utc("2018-11-04T04:30:00Z")), dayNamed(2018, 11, 4));
    EXPECT_EQ(havana.day(utc("2018-11-04T05:30:00Z")), dayNamed(2018, 11, 4));
    const Calendar saoPaulo{"America/Sao_Paulo"};  // 23:00 to 24:00 of 2018-02-17 twice
    EXPECT_EQ(saoPaulo.day(utc("2018-02-18T01:30:00Z")), dayNamed(2018, 2, 17));
    EXPECT_EQ(saoPaulo.day(utc("2018-02-18T02:30:00Z")), dayNamed(2018, 2, 17));
}

TEST(Calendar, fractionsOfASecondBelongToTheirSecond) {
    const Calendar calendar{"UTC"};
    EXPECT_EQ(calendar.day(Date{-0.25}).number, -1);
    EXPECT_EQ(calendar.day(Date{86399.999}).number, 0);
    EXPECT_EQ(calendar.day(Date{86400}).number, 1);
}

TEST(Calendar, distantDatesHaveADay) {
    const Calendar calendar{"UTC"};
    EXPECT_EQ(calendar.day(Date::distantPast()).text(), "0000-12-30");
    EXPECT_EQ(calendar.start(calendar.day(Date::distantPast())), Date::distantPast());
    EXPECT_EQ(calendar.day(utc("9999-12-31T23:59:59Z")).text(), "9999-12-31");
    const double infinity = std::numeric_limits<double>::infinity();
    for (const char* zone : {"UTC", "Europe/Berlin", "Pacific/Apia"}) {
        const Calendar local{zone};
        EXPECT_GT(local.day(Date{infinity}), local.day(utc("3000-01-01T00:00:00Z")));
        EXPECT_LT(local.day(Date{-infinity}), local.day(utc("0001-01-01T00:00:00Z")));
        EXPECT_LT(local.day(Date{std::numeric_limits<double>::quiet_NaN()}), local.day(utc("0001-01-01T00:00:00Z")));
    }
}

TEST(Calendar, offsetIsThatOfTheInstant) {
    EXPECT_EQ(Calendar{"UTC"}.offsetFromGMT(Date{0}), 0);
    EXPECT_EQ(Calendar{"Asia/Kathmandu"}.offsetFromGMT(utc("2024-01-01T00:00:00Z")), 20700);
    const Calendar berlin{"Europe/Berlin"};
    EXPECT_EQ(berlin.offsetFromGMT(utc("2024-03-31T00:59:59Z")), 3600);
    EXPECT_EQ(berlin.offsetFromGMT(utc("2024-03-31T01:00:00Z")), 7200);
    const Calendar lordHowe{"Australia/Lord_Howe"};
    EXPECT_EQ(lordHowe.offsetFromGMT(utc("2024-01-01T00:00:00Z")), 39600);
    EXPECT_EQ(lordHowe.offsetFromGMT(utc("2024-07-01T00:00:00Z")), 37800);
    EXPECT_EQ(Calendar{"America/New_York"}.offsetFromGMT(utc("2024-01-01T00:00:00Z")), -18000);
}

TEST(Calendar, tellsWhetherTheClocksWillChange) {
    EXPECT_TRUE(Calendar{"Europe/Berlin"}.hasTransitionAfter(utc("2024-01-01T00:00:00Z")));
    EXPECT_FALSE(Calendar{"UTC"}.hasTransitionAfter(utc("1980-01-01T00:00:00Z")));
    const Calendar kathmandu{"Asia/Kathmandu"};  // changed for the last time in 1986
    EXPECT_TRUE(kathmandu.hasTransitionAfter(utc("1980-01-01T00:00:00Z")));
    EXPECT_FALSE(kathmandu.hasTransitionAfter(utc("1990-01-01T00:00:00Z")));
}

TEST(Calendar, hourAndWeekdayAreThoseThatTheClocksShow) {
    const Calendar berlin{"Europe/Berlin"};
    EXPECT_EQ(berlin.hour(Date{1774745999}), 1);  // 2026-03-29T00:59:59Z, a second before the jump to three
    EXPECT_EQ(berlin.hour(Date{1774746000}), 3);
    EXPECT_EQ(berlin.weekday(Date{1774746000}), 1);
    EXPECT_EQ(Calendar{"Asia/Kathmandu"}.hour(Date{0}), 5);
    EXPECT_EQ(Calendar{"UTC"}.hour(Date{-0.5}), 23);
    EXPECT_EQ(Calendar{"UTC"}.weekday(Date{-0.5}), 4);
    EXPECT_EQ(Calendar{"UTC"}.hour(Date{86399.999}), 23);
}

TEST(Calendar, weekBeginsAsInTheLocale) {
    EXPECT_EQ(Calendar::firstWeekday(Locale{"en_US"}), 1);
    EXPECT_EQ(Calendar::firstWeekday(Locale{"C"}), 1);
    EXPECT_EQ(Calendar::firstWeekday(Locale{"de_DE.UTF-8"}), 2);
    EXPECT_EQ(Calendar::firstWeekday(Locale{"ar_EG"}), 7);
    EXPECT_EQ(Calendar{"UTC"}.firstWeekday(), 1);
    EXPECT_EQ((Calendar{"UTC", "gregorian", 2}.firstWeekday()), 2);
    EXPECT_EQ((Calendar{"UTC", "gregorian", 0}.firstWeekday()), 1);
}

TEST(Calendar, monthsAreThoseOfItsKind) {
    const LocalDay leapDay{19782};  // 2024-02-29
    EXPECT_EQ(leapDay.text(), "2024-02-29");
    const Calendar gregorian{"UTC"};
    EXPECT_EQ(gregorian.daysInMonth(leapDay), 29);
    EXPECT_EQ(gregorian.firstOfMonth(leapDay).text(), "2024-02-01");
    EXPECT_EQ(gregorian.daysInMonth(leapDay + 366), 31);
    EXPECT_EQ(gregorian.daysInMonth(leapDay + 365), 28);
    EXPECT_EQ((Calendar{"UTC", "buddhist"}.daysInMonth(leapDay)), 29);
    EXPECT_EQ((Calendar{"UTC", "persian"}.firstOfMonth(leapDay).text()), "2024-02-20");
    EXPECT_EQ((Calendar{"UTC", "persian"}.daysInMonth(leapDay)), 29);
    // Before 1582 the days are still counted as if there had always been this calendar.
    EXPECT_EQ(gregorian.firstOfMonth(LocalDay{-200000}).text(), LocalDay{-200000}.text().substr(0, 8) + "01");
}

TEST(Calendar, reachesSoFarAndNoFarther) {
    EXPECT_TRUE(Calendar::reaches(LocalDay{0}));
    EXPECT_TRUE(Calendar::reaches(LocalDay{-11'000'000}));
    EXPECT_TRUE(Calendar::reaches(LocalDay{11'000'000}));
    EXPECT_FALSE(Calendar::reaches(LocalDay{-12'000'000}));
    EXPECT_FALSE(Calendar::reaches(LocalDay{std::numeric_limits<std::int64_t>::max()}));
}

TEST(Calendar, remembersWhatItWasMadeFrom) {
    const Calendar plain{"Europe/Berlin"};
    EXPECT_EQ(plain.timeZoneID(), "Europe/Berlin");
    EXPECT_EQ(plain.identifier(), "gregorian");
    EXPECT_TRUE(plain.isGregorian());
    const Calendar buddhist{"Asia/Bangkok", "buddhist"};
    EXPECT_EQ(buddhist.identifier(), "buddhist");
    EXPECT_FALSE(buddhist.isGregorian());
    const Calendar copy = buddhist;
    EXPECT_EQ(copy.timeZoneID(), "Asia/Bangkok");
}

TEST(Calendar, unknownZoneCountsAsUTC) {
    for (const char* zone : {"Nowhere/Land", "", "Etc/Unknown", "Europe/", "\xff"}) {
        const Calendar calendar{zone};
        EXPECT_EQ(calendar.timeZoneID(), "UTC") << zone;
        EXPECT_EQ(calendar.offsetFromGMT(utc("2024-07-01T00:00:00Z")), 0) << zone;
    }
}

TEST(Calendar, zoneOfTheSystemIsThatOfTZ) {
    const testing::ScratchHome home{"America/Havana"};
    EXPECT_EQ(Calendar::systemTimeZoneID(), "America/Havana");
    EXPECT_EQ(Calendar::current().timeZoneID(), "America/Havana");
    EXPECT_TRUE(Calendar::current().isGregorian());
    // A changed variable counts at once.
    testing::ScratchHome::setTimeZone("Asia/Kathmandu");
    EXPECT_EQ(Calendar::systemTimeZoneID(), "Asia/Kathmandu");
    testing::ScratchHome::setTimeZone(":Europe/Berlin");
    EXPECT_EQ(Calendar::systemTimeZoneID(), "Europe/Berlin");
    testing::ScratchHome::setTimeZone("UTC");
    EXPECT_EQ(Calendar::systemTimeZoneID(), "UTC");
}

TEST(Calendar, emptyOrUnknownTZMeansUTC) {
    const testing::ScratchHome home{""};
    EXPECT_EQ(Calendar::systemTimeZoneID(), "UTC");
    EXPECT_EQ(Calendar::current().timeZoneID(), "UTC");
    testing::ScratchHome::setTimeZone("Nowhere/Land");
    EXPECT_EQ(Calendar::current().timeZoneID(), "UTC");
}

TEST(Calendar, withoutTZThereIsAZoneAllTheSame) {
    const testing::ScratchHome home;
    ::unsetenv("TZ");
    ::tzset();
    const std::string zone = Calendar::systemTimeZoneID();
    EXPECT_NE(zone, "");
    EXPECT_NE(zone, "Etc/Unknown");
    std::time_t now = 1700000000;
    std::tm local{};
    ASSERT_NE(::localtime_r(&now, &local), nullptr);
    EXPECT_EQ(Calendar{zone}.offsetFromGMT(Date{1700000000}), local.tm_gmtoff) << zone;
}

/// Zones whose rules have been odd in one way or another.
constexpr std::array oddZones{"UTC",
                              "Europe/Berlin",
                              "Europe/London",
                              "Europe/Dublin",
                              "America/New_York",
                              "America/St_Johns",
                              "America/Havana",
                              "America/Sao_Paulo",
                              "America/Asuncion",
                              "Atlantic/Azores",
                              "Africa/Cairo",
                              "Africa/Monrovia",
                              "Asia/Beirut",
                              "Asia/Gaza",
                              "Asia/Kathmandu",
                              "Asia/Pyongyang",
                              "Asia/Tehran",
                              "Australia/Lord_Howe",
                              "Antarctica/Troll",
                              "Pacific/Apia",
                              "Pacific/Chatham",
                              "Pacific/Kiritimati",
                              "Pacific/Kwajalein"};

/// What a scan minute by minute says of the time around an instant.
class MinuteScan {
public:
    static constexpr double reach = 54 * 3600;

    MinuteScan(const Calendar& calendar, Date around) : begin_{std::floor(around.secondsSince1970 / 60) * 60 - reach} {
        for (double offset = 0; offset <= 2 * reach; offset += 60)
            days_.push_back(calendar.day(Date{begin_ + offset}));
    }

    /// The first minute that shows `day`.
    [[nodiscard]] std::optional<Date> first(LocalDay day) const {
        for (std::size_t minute = 0; minute < days_.size(); ++minute) {
            if (days_[minute] == day) return Date{begin_ + 60.0 * static_cast<double>(minute)};
        }
        return std::nullopt;
    }

    /// Whether the clocks were set back across a midnight.
    [[nodiscard]] bool goesBack() const {
        return std::adjacent_find(days_.begin(), days_.end(), std::greater<>{}) != days_.end();
    }

private:
    double begin_;
    std::vector<LocalDay> days_;
};

/// Instants at which something happens in one of the zones, and random ones from 1972 to 2037, when all offsets were
/// whole minutes.
std::vector<Date> instants() {
    std::vector<Date> all;
    for (const char* text :
         {"2018-11-04T03:00:00Z", "2018-02-18T02:30:00Z", "2018-11-04T05:30:00Z", "2011-12-30T10:00:00Z",
          "2022-03-26T22:00:00Z", "2022-10-29T21:30:00Z", "1993-08-21T12:00:00Z", "1994-12-31T12:00:00Z",
          "2005-10-30T02:45:00Z", "2024-04-06T15:10:00Z", "2024-03-31T01:00:00Z", "2024-10-27T01:00:00Z"}) {
        all.push_back(utc(text));
    }
    std::mt19937_64 random{9};
    std::uniform_int_distribution<std::int64_t> seconds{70000000, 2140000000};
    for (int count = 0; count < 18; ++count)
        all.push_back(Date{static_cast<double>(seconds(random))});
    return all;
}

class CalendarOfAZone : public ::testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(In, CalendarOfAZone, ::testing::ValuesIn(oddZones), [](const auto& row) {
    std::string name = row.param;
    std::erase_if(name, [](char character) { return character == '/' || character == '_'; });
    return name;
});

TEST_P(CalendarOfAZone, startIsTheFirstInstantThatShowsTheDay) {
    const Calendar calendar{GetParam()};
    for (const Date instant : instants()) {
        SCOPED_TRACE(fmt::format("{:.0f}", instant.secondsSince1970));
        const MinuteScan scan{calendar, instant};
        const LocalDay day = calendar.day(instant);
        const Date start = calendar.start(day);
        ASSERT_EQ(scan.first(day), start);
        EXPECT_EQ(calendar.day(start), day);
        EXPECT_NE(calendar.day(start - 0.001), day);
        EXPECT_EQ(calendar.startOfDay(instant), start);
        EXPECT_LE(start, instant);
        if (!scan.goesBack()) {
            EXPECT_LT(instant, calendar.start(day + 1));
        }
        for (const LocalDay next : {day + 1, day - 1}) {
            // The day that a zone left out starts with the one behind it.
            const std::optional<Date> first = scan.first(next);
            EXPECT_EQ(calendar.start(next), first ? *first : scan.first(next + 1));
        }
    }
}

TEST_P(CalendarOfAZone, startsNeverGoBack) {
    const Calendar calendar{GetParam()};
    for (LocalDay day = dayNamed(1985, 1, 1); day < dayNamed(2030, 1, 1); day = day + 1) {
        const double length = calendar.start(day + 1) - calendar.start(day);
        ASSERT_GE(length, 0) << day.text();
        ASSERT_LE(length, 49 * 3600) << day.text();
    }
}

TEST_P(CalendarOfAZone, daysAgreeWithTheCLibrary) {
    // The index groups by the C library's local days. In these years both know the same history; about earlier ones
    // scholars differ, about later ones lawmakers.
    const testing::ScratchHome home{GetParam()};
    const Calendar calendar{GetParam()};
    std::mt19937_64 random{10};
    std::uniform_int_distribution<std::time_t> seconds{788918400, 1640995200};  // 1995 to 2021
    for (int count = 0; count < 3000; ++count) {
        const std::time_t instant = seconds(random);
        std::tm local{};
        ASSERT_NE(::localtime_r(&instant, &local), nullptr);
        const LocalDay day = dayNamed(local.tm_year + 1900, static_cast<unsigned>(local.tm_mon + 1),
                                      static_cast<unsigned>(local.tm_mday));
        ASSERT_EQ(calendar.day(Date{static_cast<double>(instant)}), day) << instant;
        ASSERT_EQ(calendar.offsetFromGMT(Date{static_cast<double>(instant)}), local.tm_gmtoff) << instant;
    }
}

TEST(Calendar, clocksSetBackAcrossMidnightAreAmongTheTestedInstants) {
    const auto goesBack = [](const char* zone, const char* text) {
        return MinuteScan{Calendar{zone}, utc(text)}.goesBack();
    };
    EXPECT_TRUE(goesBack("America/St_Johns", "2005-10-30T02:45:00Z"));    // at one minute past midnight
    EXPECT_FALSE(goesBack("America/Sao_Paulo", "2018-02-18T02:30:00Z"));  // at midnight, to the day not yet left
    EXPECT_FALSE(goesBack("America/Havana", "2018-11-04T05:30:00Z"));
}

}  // namespace
}  // namespace quorvane
