// The reader's limits, by way of the capture.

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/providers/GrokProvider.h"
#include "QuorvaneCore/ratelimits/GrokRateLimitCapture.h"
#include "QuorvaneCore/ratelimits/GrokRateLimitStore.h"
#include "tests/grok/GrokTestSupport.h"
#include "tests/ingest/IngestTestSupport.h"

namespace quorvane::testing {
namespace {

class GrokProviderLimits : public ::testing::Test {
protected:
    GrokProviderLimits() {
        Clock::pin(testNow);
        home_.makeAgent();
    }
    ~GrokProviderLimits() override { Clock::unpin(); }

    [[nodiscard]] std::optional<double> usedPercent() const {
        const std::optional<RateLimitSnapshot> snapshot = provider_.latestRateLimits();
        return snapshot && snapshot->secondary ? std::optional{snapshot->secondary->usedPercent} : std::nullopt;
    }

    GrokScratchHome home_;
    GrokProvider provider_;
};

TEST_F(GrokProviderLimits, areNoneWithoutACapture) {
    home_.write(GrokScratchHome::logFile, billingLine(10) + "\n");
    EXPECT_EQ(provider_.latestRateLimits(), std::nullopt);
    EXPECT_FALSE(provider_.latestRateLimitAwaitingReset(testNow));
    EXPECT_FALSE(home_.exists(GrokScratchHome::captureFile)) << "the log is left alone";
}

TEST_F(GrokProviderLimits, comeFromTheLogOnceTheCaptureIsInstalled) {
    GrokRateLimitCapture::install();
    EXPECT_EQ(usedPercent(), std::nullopt) << "there is no log yet";
    home_.write(GrokScratchHome::logFile, billingLine(10) + "\n");
    EXPECT_EQ(usedPercent(), 10);
    home_.append(GrokScratchHome::logFile, billingLine(20) + "\n");
    EXPECT_EQ(usedPercent(), 20);
    EXPECT_EQ(provider_.latestRateLimits(), GrokRateLimitStore::load(testNow));
}

TEST_F(GrokProviderLimits, doNotReadAnUnchangedLog) {
    GrokRateLimitCapture::install();
    const std::string log = home_.write(GrokScratchHome::logFile, billingLine(10) + "\n");
    ASSERT_EQ(usedPercent(), 10);
    const OpenWatch watch{{log}};
    EXPECT_EQ(usedPercent(), 10);
    EXPECT_FALSE(provider_.latestRateLimitAwaitingReset(testNow));
    EXPECT_FALSE(watch.hasSeenAnOpen());
}

TEST_F(GrokProviderLimits, ofACaptureThatWasTakenOutLastUntilTheyAreTooOld) {
    home_.write(GrokScratchHome::logFile, billingLine(10) + "\n");
    GrokRateLimitCapture::install();
    GrokRateLimitCapture::uninstall();
    home_.append(GrokScratchHome::logFile, billingLine(20) + "\n");
    EXPECT_EQ(usedPercent(), 10);
    Clock::pin(testNow - 60 + 43200);
    EXPECT_EQ(usedPercent(), 10);
    Clock::pin(testNow - 59 + 43200);
    EXPECT_EQ(usedPercent(), std::nullopt);
}

TEST_F(GrokProviderLimits, areThoseOfTheReadersOwnHome) {
    home_.makeProgram("agent/bin/grok");
    GrokRateLimitCapture::install(home_.path("agent"));
    home_.write(GrokScratchHome::logFile, billingLine(10) + "\n");
    home_.write("agent/logs/unified.jsonl", billingLine(70) + "\n");
    EXPECT_EQ(usedPercent(), std::nullopt) << "there is no hook in this home";
    const std::optional<RateLimitSnapshot> snapshot = GrokProvider{home_.path("agent")}.latestRateLimits();
    ASSERT_TRUE(snapshot && snapshot->secondary);
    EXPECT_EQ(snapshot->secondary->usedPercent, 70);
}

TEST_F(GrokProviderLimits, awaitTheResetAsOfTheMomentGiven) {
    GrokRateLimitCapture::install();
    home_.write(GrokScratchHome::logFile, billingLine(10, 60, hour) + "\n");
    EXPECT_FALSE(provider_.latestRateLimitAwaitingReset(testNow));
    EXPECT_TRUE(provider_.latestRateLimitAwaitingReset(testNow + hour));
    EXPECT_TRUE(provider_.latestRateLimitAwaitingReset(testNow + 7 * hour));
    EXPECT_FALSE(provider_.latestRateLimitAwaitingReset(testNow + 7 * hour + 1));
    Clock::pin(testNow + hour);
    EXPECT_EQ(provider_.latestRateLimits(), std::nullopt);
}

TEST_F(GrokProviderLimits, awaitNoResetOnceTheLogHasFreshFigures) {
    GrokRateLimitCapture::install();
    home_.write(GrokScratchHome::logFile, billingLine(10, 2 * hour, -hour) + "\n");
    EXPECT_TRUE(provider_.latestRateLimitAwaitingReset(testNow));
    home_.append(GrokScratchHome::logFile, billingLine(1) + "\n");
    EXPECT_FALSE(provider_.latestRateLimitAwaitingReset(testNow)) << "the question looks at the log too";
    EXPECT_EQ(usedPercent(), 1);
}

}  // namespace
}  // namespace quorvane::testing
