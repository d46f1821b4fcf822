#include <string>

#include <gtest/gtest.h>

#include "QuorvaneCore/model/ISOTimestamp.h"

namespace quorvane {
namespace {

constexpr Date fallback{-1234.5};
constexpr double moment = 1769862645;  // 2026-01-31T12:30:45Z

struct TimestampCase {
    const char* name;
    std::optional<std::string_view> text;
    Date expected;
};

class ISOTimestamps : public ::testing::TestWithParam<TimestampCase> {};

TEST_P(ISOTimestamps, areReadOrReplacedByTheFallback) {
    EXPECT_EQ(ISOTimestamp::parse(GetParam().text, fallback), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    ByText, ISOTimestamps,
    ::testing::Values(TimestampCase{"absent", std::nullopt, fallback}, TimestampCase{"empty", "", fallback},
                      TimestampCase{"plain", "2026-01-31T12:30:45Z", Date{moment}},
                      TimestampCase{"withFraction", "2026-01-31T12:30:45.123Z", Date{moment + 0.123}},
                      TimestampCase{"plainWithOffset", "2026-01-31T13:30:45+01:00", Date{moment}},
                      TimestampCase{"fractionWithOffset", "2026-01-31T04:30:45.500-08:00", Date{moment + 0.5}},
                      TimestampCase{"bareDate", "2026-01-31", fallback},
                      TimestampCase{"noZone", "2026-01-31T12:30:45", fallback},
                      TimestampCase{"badMonth", "2026-13-31T12:30:45Z", fallback},
                      TimestampCase{"noLeapDay", "2026-02-29T12:30:45Z", fallback},
                      TimestampCase{"secondsSinceTheEpoch", "1769862645", fallback},
                      TimestampCase{"words", "yesterday", fallback},
                      TimestampCase{"trailingText", "2026-01-31T12:30:45.123Zx", fallback}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(ISOTimestamp, fallbackMayBeAnyDate) {
    EXPECT_EQ(ISOTimestamp::parse("no date", Date::distantPast()), Date::distantPast());
    EXPECT_EQ(ISOTimestamp::parse(std::nullopt, Date{7}), Date{7});
}

}  // namespace
}  // namespace quorvane
