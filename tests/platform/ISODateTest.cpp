#include <cmath>
#include <limits>
#include <random>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/ISODate.h"

namespace quorvane {
namespace {

constexpr double noon = 1769862645;  // 2026-01-31T12:30:45Z

struct DateCase {
    const char* name;
    const char* text;
    std::optional<double> plain;
    std::optional<double> fractional;
};

class ISODateForms : public ::testing::TestWithParam<DateCase> {};

TEST_P(ISODateForms, areToldApart) {
    const DateCase& row = GetParam();
    const auto seconds = [](std::optional<Date> date) {
        return date ? std::optional<double>{date->secondsSince1970} : std::nullopt;
    };
    EXPECT_EQ(seconds(ISODate::parsePlain(row.text)), row.plain);
    EXPECT_EQ(seconds(ISODate::parseFractional(row.text)), row.fractional);
    EXPECT_EQ(seconds(ISODate::parse(row.text)), row.plain ? row.plain : row.fractional);
}

constexpr std::nullopt_t refused = std::nullopt;

INSTANTIATE_TEST_SUITE_P(
    Accepted, ISODateForms,
    ::testing::Values(DateCase{"plain", "2026-01-31T12:30:45Z", noon, refused},
                      DateCase{"milliseconds", "2026-01-31T12:30:45.123Z", refused, noon + 0.123},
                      DateCase{"epoch", "1970-01-01T00:00:00Z", 0, refused},
                      DateCase{"beforeTheEpoch", "1969-12-31T23:59:59Z", -1, refused},
                      DateCase{"fractionBeforeTheEpoch", "1969-12-31T23:59:59.250Z", refused, -0.75},
                      DateCase{"yearOne", "0001-01-01T00:00:00Z", -62135596800, refused},
                      DateCase{"lastYear", "9999-12-31T23:59:59Z", 253402300799, refused},
                      DateCase{"offsetEast", "2026-01-31T12:30:45+05:30", noon - 19800, refused},
                      DateCase{"offsetWest", "2026-01-31T12:30:45-08:00", noon + 28800, refused},
                      DateCase{"offsetWithFraction", "2026-01-31T12:30:45.5+05:45", refused, noon + 0.5 - 20700},
                      DateCase{"offsetZeroEast", "2026-01-31T12:30:45+00:00", noon, refused},
                      DateCase{"offsetZeroWest", "2026-01-31T12:30:45-00:00", noon, refused},
                      DateCase{"offsetOverMidnight", "2026-01-01T00:30:00+01:00", 1767223800, refused},
                      DateCase{"leapDay", "2024-02-29T00:00:00Z", 1709164800, refused},
                      DateCase{"leapDayOfACentury", "2000-02-29T00:00:00Z", 951782400, refused},
                      DateCase{"oneDigit", "2026-01-31T12:30:45.5Z", refused, noon + 0.5},
                      DateCase{"twoDigits", "2026-01-31T12:30:45.25Z", refused, noon + 0.25},
                      DateCase{"fourDigits", "2026-01-31T12:30:45.1230Z", refused, noon + 0.123},
                      DateCase{"sixDigits", "2026-01-31T12:30:45.123456Z", refused, 1769862645.123456},
                      DateCase{"sevenDigits", "2026-01-31T12:30:45.1234560Z", refused, 1769862645.123456},
                      DateCase{"nineDigits", "2026-01-31T12:30:45.123456789Z", refused, 1769862645.123456789},
                      DateCase{"twelveDigits", "2026-01-31T12:30:45.123000000000Z", refused, noon + 0.123},
                      DateCase{"zeros", "2026-01-31T12:30:45.000Z", refused, noon},
                      DateCase{"thirtyDigits", "2026-01-31T12:30:45.500000000000000000000000000000Z", refused,
                               noon + 0.5}),
    [](const auto& row) { return std::string{row.param.name}; });

INSTANTIATE_TEST_SUITE_P(
    Refused, ISODateForms,
    ::testing::Values(DateCase{"empty", "", refused, refused}, DateCase{"bareDate", "2026-01-31", refused, refused},
                      DateCase{"noZone", "2026-01-31T12:30:45", refused, refused},
                      DateCase{"noZoneWithFraction", "2026-01-31T12:30:45.123", refused, refused},
                      DateCase{"noSeconds", "2026-01-31T12:30Z", refused, refused},
                      DateCase{"blankForT", "2026-01-31 12:30:45Z", refused, refused},
                      DateCase{"lowerCaseT", "2026-01-31t12:30:45Z", refused, refused},
                      DateCase{"lowerCaseZ", "2026-01-31T12:30:45z", refused, refused},
                      DateCase{"compact", "20260131T123045Z", refused, refused},
                      DateCase{"slashes", "2026/01/31T12:30:45Z", refused, refused},
                      DateCase{"offsetWithoutColon", "2026-01-31T12:30:45+0530", refused, refused},
                      DateCase{"offsetOfHoursOnly", "2026-01-31T12:30:45+05", refused, refused},
                      DateCase{"offsetOf24Hours", "2026-01-31T12:30:45+24:00", refused, refused},
                      DateCase{"offsetOf60Minutes", "2026-01-31T12:30:45+05:60", refused, refused},
                      DateCase{"zoneByName", "2026-01-31T12:30:45UTC", refused, refused},
                      DateCase{"dotWithoutDigits", "2026-01-31T12:30:45.Z", refused, refused},
                      DateCase{"commaForDot", "2026-01-31T12:30:45,123Z", refused, refused},
                      DateCase{"signInTheFraction", "2026-01-31T12:30:45.-12Z", refused, refused},
                      DateCase{"monthZero", "2026-00-31T12:30:45Z", refused, refused},
                      DateCase{"month13", "2026-13-01T12:30:45Z", refused, refused},
                      DateCase{"dayZero", "2026-01-00T12:30:45Z", refused, refused},
                      DateCase{"day32", "2026-01-32T12:30:45Z", refused, refused},
                      DateCase{"day31OfApril", "2026-04-31T12:30:45Z", refused, refused},
                      DateCase{"leapDayOfACommonYear", "2026-02-29T12:30:45Z", refused, refused},
                      DateCase{"leapDayOfACommonCentury", "1900-02-29T12:30:45Z", refused, refused},
                      DateCase{"hour24", "2026-01-31T24:00:00Z", refused, refused},
                      DateCase{"minute60", "2026-01-31T12:60:00Z", refused, refused},
                      DateCase{"second60", "2026-01-31T12:30:60Z", refused, refused},
                      DateCase{"fiveDigitYear", "12026-01-31T12:30:45Z", refused, refused},
                      DateCase{"negativeYear", "-026-01-31T12:30:45Z", refused, refused},
                      DateCase{"leadingBlank", " 2026-01-31T12:30:45Z", refused, refused},
                      DateCase{"trailingBlank", "2026-01-31T12:30:45Z ", refused, refused},
                      DateCase{"trailingText", "2026-01-31T12:30:45ZZ", refused, refused},
                      DateCase{"digitsThatAreNotASCII", "2026-01-31T12:30:4\xd9\xa5Z", refused, refused}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(ISODate, nulByteBehindTheTextIsRefused) {
    EXPECT_FALSE(ISODate::parsePlain(std::string_view{"2026-01-31T12:30:45Z\0", 21}));
}

TEST(ISODate, everyBeginningOfADateIsRefused) {
    const std::string_view text = "2026-01-31T12:30:45.123+05:30";
    for (std::size_t length = 0; length < text.size(); ++length) {
        EXPECT_FALSE(ISODate::parsePlain(text.substr(0, length))) << length;
        EXPECT_FALSE(ISODate::parseFractional(text.substr(0, length))) << length;
    }
    EXPECT_TRUE(ISODate::parseFractional(text));
}

TEST(ISODate, everyMillisecondIsTheNearestFloat) {
    // The compiler reads a decimal text as the float nearest to it; so must the parser.
    for (int milliseconds = 0; milliseconds < 1000; ++milliseconds) {
        const std::string text = fmt::format("2026-01-31T12:30:45.{:03}Z", milliseconds);
        const double expected = std::stod(fmt::format("1769862645.{:03}", milliseconds));
        EXPECT_EQ(ISODate::parseFractional(text), Date{expected}) << text;
        // Near the epoch a float has so many digits to spare that a sum of seconds and fraction would be another one.
        for (const int second : {0, 1, 7, 31, 58}) {
            const std::string early = fmt::format("1970-01-01T00:00:{:02}.{:03}Z", second, milliseconds);
            const double earlySeconds = std::stod(fmt::format("{}.{:03}", second, milliseconds));
            EXPECT_EQ(ISODate::parseFractional(early), Date{earlySeconds}) << early;
        }
    }
}

TEST(ISODate, everyLengthOfAFractionIsTheNearestFloat) {
    std::mt19937_64 random{20260131};
    for (int round = 0; round < 2000; ++round) {
        const int length = 1 + round % 9;
        std::string digits = fmt::format("{:09}", random() % 1000000000);
        digits.resize(static_cast<std::size_t>(length));
        const std::optional<Date> date = ISODate::parseFractional("2026-01-31T12:30:45." + digits + "Z");
        ASSERT_TRUE(date);
        const double nearest = std::stod("1769862645." + digits);
        // Above six digits a float has no room for them all, and the last bit may differ.
        const double allowed = length <= 6 ? 0 : std::nextafter(nearest, 1e300) - nearest;
        EXPECT_LE(std::fabs(date->secondsSince1970 - nearest), allowed) << digits;
    }
}

TEST(ISODate, digitsBeyondTheNinthChangeNothing) {
    const std::optional<Date> nine = ISODate::parseFractional("2026-01-31T12:30:45.123456789Z");
    EXPECT_EQ(ISODate::parseFractional("2026-01-31T12:30:45.1234567890Z"), nine);
    EXPECT_EQ(ISODate::parseFractional("2026-01-31T12:30:45.12345678999Z"), nine);
    EXPECT_EQ(ISODate::parseFractional("2026-01-31T12:30:45.123456789999Z"), nine);
}

TEST(ISODate, daysFollowEachOtherThroughAllMonthsAndLeapYears) {
    double expected = ISODate::parsePlain("1999-01-01T00:00:00Z")->secondsSince1970;
    for (int year = 1999; year <= 2009; ++year) {
        for (int month = 1; month <= 12; ++month) {
            for (int day = 1; day <= 31; ++day) {
                const auto date = ISODate::parsePlain(fmt::format("{:04}-{:02}-{:02}T00:00:00Z", year, month, day));
                if (!date) continue;
                EXPECT_EQ(date->secondsSince1970, expected);
                expected += 86400;
            }
        }
    }
    EXPECT_EQ(Date{expected}, ISODate::parsePlain("2010-01-01T00:00:00Z"));
}

}  // namespace
}  // namespace quorvane
