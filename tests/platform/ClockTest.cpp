#include <chrono>
#include <cmath>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/Clock.h"

namespace quorvane {
namespace {

double systemSeconds() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

class Clocks : public ::testing::Test {
protected:
    ~Clocks() override { Clock::unpin(); }
};

TEST_F(Clocks, unpinnedClockTellsTheSystemsTime) {
    const double before = systemSeconds();
    const double now = Clock::now().secondsSince1970;
    const double after = systemSeconds();
    EXPECT_GE(now, before - 1e-5);
    EXPECT_LE(now, after + 1e-5);
}

TEST_F(Clocks, pinnedClockStandsStill) {
    Clock::pin(Date{1700000000.25});
    EXPECT_EQ(Clock::now(), Date{1700000000.25});
    EXPECT_EQ(Clock::now(), Date{1700000000.25});
}

TEST_F(Clocks, laterPinReplacesTheFormer) {
    Clock::pin(Date{5});
    Clock::pin(Date::distantPast());
    EXPECT_EQ(Clock::now(), Date::distantPast());
}

TEST_F(Clocks, unpinningBringsTheSystemsTimeBack) {
    Clock::pin(Date{5});
    Clock::unpin();
    EXPECT_LT(std::fabs(Clock::now().secondsSince1970 - systemSeconds()), 60);
}

TEST(Dates, distantPastIsTheStartOfTheYearOne) {
    EXPECT_EQ(Date::distantPast().secondsSince1970, -62135769600.0);
}

TEST(Dates, secondsAreAddedAndDatesCompared) {
    const Date date{1000};
    EXPECT_EQ(date + 0.5, Date{1000.5});
    EXPECT_EQ(date - 0.5, Date{999.5});
    EXPECT_EQ((date + 90) - date, 90);
    EXPECT_LT(date, date + 1e-6);
    EXPECT_GT(date, Date::distantPast());
    EXPECT_NE(date, Date{});
}

}  // namespace
}  // namespace quorvane
