// Two roads to one file: the hook's script and the library's own look at the log write the same.

#include <ostream>

#include <gtest/gtest.h>

#include "QuorvaneCore/ratelimits/GrokRateLimitCapture.h"
#include "tests/grok/GrokTestSupport.h"

namespace quorvane::testing {
namespace {

struct LogCase {
    const char* name;
    std::string log;
    bool tells = true;
};
void PrintTo(const LogCase& row, std::ostream* stream) {
    *stream << row.name;
}
class GrokCaptureAgreement : public ::testing::TestWithParam<LogCase> {};

TEST_P(GrokCaptureAgreement, scriptAndLibraryWriteTheSame) {
    const GrokScratchHome home;
    home.write(GrokScratchHome::logFile, GetParam().log);
    const std::string script = home.write("script.sh", GrokRateLimitCapture::captureScript());
    const ProgramRun run = ProgramRun::of({"/bin/bash", script});
    ASSERT_EQ(run.status, 0) << run.error;
    const bool isWritten =
        GrokRateLimitCapture::refreshFromLogs(std::nullopt, std::nullopt, home.path("library.json"), testNow);
    ASSERT_EQ(isWritten, GetParam().tells);
    ASSERT_EQ(home.exists(GrokScratchHome::captureFile), GetParam().tells);
    if (!isWritten) return;
    EXPECT_EQ(toldJSON(home.read("library.json")), toldJSON(home.read(GrokScratchHome::captureFile)));
    EXPECT_NE(toldJSON(home.read("library.json")), "");
}

std::string percent(const std::string& json) {
    return logLine(R"({"config":{"creditUsagePercent":)" + json + "}}") + "\n";
}

INSTANTIATE_TEST_SUITE_P(
    ByLog, GrokCaptureAgreement,
    ::testing::Values(
        LogCase{"asTheAgentWritesIt",
                logLine("{}", "ready") + "\n" + billingLine(41.5) + "\n" + logLine("{}", "x") + "\n"},
        LogCase{"newestOfSeveral", billingLine(1) + "\n" + billingLine(2) + "\n" + billingLine(3)},
        LogCase{"tornEnd", billingLine(1) + "\n" + billingLine(2).substr(0, 220)},
        LogCase{"olderLineForOneWithoutFigures",
                billingLine(1) + "\n" + logLine(R"({"config":{}})") + "\n" + percent("null")},
        LogCase{"beyondAHundredAsText", percent(R"("120.5")")}, LogCase{"belowZero", percent("-3")},
        LogCase{"notANumberAsText", percent(R"("nan")")}, LogCase{"infinityAsText", percent(R"("-inf")")},
        LogCase{"noNumberAsText", percent(R"("much")"), false},
        LogCase{"messageElsewhere",
                R"({"msg":"x","note":"billing: fetched credits config","ctx":{"config":{"creditUsagePercent":5}}})"
                "\n",
                false},
        LogCase{"periodWithZonesAndFractions",
                logLine(R"({"subscriptionTier":"","config":{"creditUsagePercent":7,"subscriptionTier":"Héavy",)"
                        R"("currentPeriod":{"type":"DAILY","end":"2026-09-19T02:00:00.250+02:00"}}})") +
                    "\n"},
        LogCase{"unreadablePeriod",
                logLine(R"({"config":{"creditUsagePercent":7,"currentPeriod":{"type":"","end":"soon"}}})") + "\n"},
        LogCase{"badBytes", "\xff\xfe\n" + billingLine(9).insert(billingLine(9).find("SuperGrok"), "\xff") + "\n"},
        LogCase{"nothing", "", false}),
    [](const auto& row) { return std::string{row.param.name}; });

}  // namespace
}  // namespace quorvane::testing
