#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "QuorvaneCore/ratelimits/ProviderHeadroom.h"

namespace quorvane {
namespace {

constexpr Date noon{1'767'268'800.0};
constexpr Date later = noon + 3600;
constexpr Date nextWeek = noon + 86400;
constexpr Date earlier = noon - 3600;

struct HeadroomCase {
    const char* name;
    std::optional<RateLimitSnapshot> snapshot;
    ProviderHeadroom expected;
};

RateLimitWindow primary(double used, std::optional<Date> resetsAt = later) {
    return {.usedPercent = used, .windowMinutes = 300, .resetsAt = resetsAt};
}
RateLimitWindow secondary(double used, std::optional<Date> resetsAt = nextWeek) {
    return {.usedPercent = used, .windowMinutes = 10080, .resetsAt = resetsAt};
}
ProviderHeadroom official(double remaining, std::int64_t minutes, std::optional<Date> resetsAt) {
    return {ProviderHeadroom::Official{.remainingPercent = remaining, .windowMinutes = minutes, .resetsAt = resetsAt}};
}
const ProviderHeadroom exhausted{ProviderHeadroom::LikelyExhausted{}};
const ProviderHeadroom unknown{ProviderHeadroom::Unknown{}};

class ProviderHeadroomResolve : public testing::TestWithParam<HeadroomCase> {};

TEST_P(ProviderHeadroomResolve, givesTheVerdict) {
    EXPECT_EQ(ProviderHeadroom::resolve(GetParam().snapshot, noon), GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(
    BySnapshot, ProviderHeadroomResolve,
    testing::Values(
        HeadroomCase{"withoutSnapshotUnknown", std::nullopt, unknown},
        HeadroomCase{"emptySnapshotUnknown", RateLimitSnapshot{}, unknown},
        HeadroomCase{"highAndSilentIsExhausted", RateLimitSnapshot{.primary = primary(90), .capturedAt = noon - 660},
                     exhausted},
        HeadroomCase{"exhaustedEvenIfTheWindowHasExpired",
                     RateLimitSnapshot{.primary = primary(90, earlier), .capturedAt = noon - 660}, exhausted},
        HeadroomCase{"tenMinutesAreStillFresh", RateLimitSnapshot{.primary = primary(90), .capturedAt = noon - 600},
                     official(10, 300, later)},
        HeadroomCase{"freshAndExpiredIsUnknown",
                     RateLimitSnapshot{.primary = primary(90, earlier), .capturedAt = noon - 600}, unknown},
        HeadroomCase{"exactlyTheThresholdIsHigh", RateLimitSnapshot{.primary = primary(85), .capturedAt = noon - 601},
                     exhausted},
        HeadroomCase{"stalenessAloneProvesNothing",
                     RateLimitSnapshot{.primary = primary(84.9), .capturedAt = noon - 86400},
                     official(100.0 - 84.9, 300, later)},
        HeadroomCase{"withoutCaptureDateNeverExhausted", RateLimitSnapshot{.primary = primary(100)},
                     official(0, 300, later)},
        HeadroomCase{
            "bothExpiredAndLowIsUnknown",
            RateLimitSnapshot{
                .primary = primary(50, earlier), .secondary = secondary(99, earlier), .capturedAt = noon - 86400},
            unknown},
        HeadroomCase{"theFullerWindowCounts", RateLimitSnapshot{.primary = primary(10), .secondary = secondary(40)},
                     official(60, 10080, nextWeek)},
        HeadroomCase{"theFullerPrimaryCounts", RateLimitSnapshot{.primary = primary(41), .secondary = secondary(40)},
                     official(59, 300, later)},
        HeadroomCase{"equalUseIsThePrimaryWindow",
                     RateLimitSnapshot{.primary = primary(40), .secondary = secondary(40)}, official(60, 300, later)},
        HeadroomCase{"anExpiredWindowDoesNotCount",
                     RateLimitSnapshot{.primary = primary(80, earlier), .secondary = secondary(40)},
                     official(60, 10080, nextWeek)},
        HeadroomCase{"withoutResetTheWindowCounts", RateLimitSnapshot{.primary = primary(25, std::nullopt)},
                     official(75, 300, std::nullopt)},
        HeadroomCase{"moreThanAllUsedLeavesNothing", RateLimitSnapshot{.secondary = secondary(140)},
                     official(0, 10080, nextWeek)},
        HeadroomCase{"lessThanNothingUsedLeavesAll", RateLimitSnapshot{.primary = primary(-5)},
                     official(100, 300, later)},
        HeadroomCase{"modelWindowsHaveNoPart",
                     RateLimitSnapshot{.primary = primary(10),
                                       .modelWindows = {{.key = "seven_day_opus", .window = secondary(99)}}},
                     official(90, 300, later)}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(ProviderHeadroom, everyVerdictHasItsWord) {
    EXPECT_EQ(official(1, 300, {}).stateToken(), "official");
    EXPECT_EQ(exhausted.stateToken(), "likely_exhausted");
    EXPECT_EQ(unknown.stateToken(), "unknown");
}

TEST(ProviderHeadroom, onlyTheOfficialFigureHasAPercentage) {
    EXPECT_EQ(official(12.5, 300, {}).remainingPercent(), 12.5);
    EXPECT_EQ(exhausted.remainingPercent(), std::nullopt);
    EXPECT_EQ(unknown.remainingPercent(), std::nullopt);
}

TEST(ProviderHeadroom, verdictsAreComparedWithTheirFigures) {
    EXPECT_EQ(official(1, 300, later), official(1, 300, later));
    EXPECT_NE(official(1, 300, later), official(2, 300, later));
    EXPECT_NE(official(1, 300, later), official(1, 300, std::nullopt));
    EXPECT_NE(exhausted, unknown);
}

}  // namespace
}  // namespace quorvane
