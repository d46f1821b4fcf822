// The agent's log, read by the library itself.

#include <cmath>
#include <filesystem>
#include <limits>
#include <ostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/FileStatus.h"
#include "QuorvaneCore/ratelimits/GrokBillingScrapeCache.h"
#include "QuorvaneCore/ratelimits/GrokRateLimitCapture.h"
#include "QuorvaneCore/ratelimits/GrokRateLimitStore.h"
#include "tests/grok/GrokTestSupport.h"
#include "tests/ingest/IngestTestSupport.h"

namespace quorvane::testing {
namespace {

/// The record of `billingLine(percent)`, on one line.
std::string recordOf(std::string_view percent, std::string_view capturedAt = "1789387140") {
    return R"({"capturedAt":)" + std::string{capturedAt} +
           R"(,"period_type":"USAGE_PERIOD_TYPE_WEEKLY","plan_type":"SuperGrok Heavy","source":"unified.jsonl",)"
           R"("weekly":{"resets_at":1789819200,"used_percentage":)" +
           std::string{percent} + "}}";
}

// One line

struct LineCase {
    const char* name;
    std::string line;
    std::string expected = "none";
};
void PrintTo(const LineCase& row, std::ostream* stream) {
    *stream << row.name;
}
class GrokBillingLine : public ::testing::TestWithParam<LineCase> {};

TEST_P(GrokBillingLine, givesItsRecord) {
    EXPECT_EQ(told(GrokRateLimitCapture::parseBillingLogLine(GetParam().line, testNow)), GetParam().expected);
}

/// A line with that percentage, which is JSON, and the record of it.
LineCase percent(const char* name, const std::string& json, const std::string& used) {
    return {name, logLine(R"({"config":{"creditUsagePercent":)" + json + "}}"),
            R"({"capturedAt":1789387140,"source":"unified.jsonl","weekly":{"used_percentage":)" + used + "}}"};
}
LineCase noPercent(const char* name, const std::string& json) {
    return {name, logLine(R"({"config":{"creditUsagePercent":)" + json + "}}")};
}

/// A line with that further member of the configuration, and the record with those members ahead of the weekly ones.
LineCase config(const char* name, const std::string& members, const std::string& before = "",
                const std::string& inWeekly = "") {
    return {name, logLine(R"({"config":{"creditUsagePercent":5,)" + members + "}}"),
            R"({"capturedAt":1789387140,)" + before + R"("source":"unified.jsonl","weekly":{)" + inWeekly +
                R"("used_percentage":5}})"};
}

INSTANTIATE_TEST_SUITE_P(
    Percentages, GrokBillingLine,
    ::testing::Values(percent("fraction", "41.5", "41.5"), percent("integer", "41", "41"),
                      percent("beyondAHundred", "120", "100"), percent("belowZero", "-3", "0"),
                      percent("zero", "0", "0"), percent("hundred", "100", "100"), percent("text", R"("41.5")", "41.5"),
                      percent("textBeyondAHundred", R"("1e9")", "100"), percent("infinityAsText", R"("inf")", "100"),
                      noPercent("textWithABlankInFront", R"(" 41")"), noPercent("textWithABlankBehind", R"("41 ")"),
                      noPercent("textWithASign", R"("41%")"), noPercent("textEmpty", R"("")"),
                      noPercent("boolean", "true"), noPercent("null", "null"), noPercent("object", R"({"value":41})"),
                      LineCase{"missing", logLine(R"({"config":{}})")}, LineCase{"configMissing", logLine("{}")},
                      LineCase{"configANumber", logLine(R"({"config":41})")}, LineCase{"contextNull", logLine("null")},
                      LineCase{"inTheContextOnly", logLine(R"({"creditUsagePercent":41})")}),
    [](const auto& row) { return std::string{row.param.name}; });

INSTANTIATE_TEST_SUITE_P(
    Members, GrokBillingLine,
    ::testing::Values(
        LineCase{"all", billingLine(41.5), recordOf("41.5")},
        config("endWithMilliseconds", R"("currentPeriod":{"end":"2026-09-19T00:00:00.250Z"})", "",
               R"("resets_at":1789776000.25,)"),
        config("endWithAZone", R"("currentPeriod":{"end":"2026-09-19T02:00:00+02:00"})", "",
               R"("resets_at":1789776000,)"),
        config("endUnreadable", R"("currentPeriod":{"end":"next week"})"),
        config("endWithoutATime", R"("currentPeriod":{"end":"2026-09-19"})"),
        config("endANumber", R"("currentPeriod":{"end":1789776000})"),
        config("periodWithoutAnEnd", R"("currentPeriod":{"type":"DAILY"})", R"("period_type":"DAILY",)"),
        config("periodNull", R"("currentPeriod":null)"), config("periodAText", R"("currentPeriod":"weekly")"),
        config("typeEmpty", R"("currentPeriod":{"type":""})"), config("typeANumber", R"("currentPeriod":{"type":2})"),
        config("planOfTheConfig", R"("subscriptionTier":"Heavy")", R"("plan_type":"Heavy",)"),
        config("planEmpty", R"("subscriptionTier":"")"), config("planANumber", R"("subscriptionTier":4)"),
        LineCase{
            "planOfTheContextIsPreferred",
            logLine(R"({"subscriptionTier":"A","config":{"creditUsagePercent":5,"subscriptionTier":"B"}})"),
            R"({"capturedAt":1789387140,"plan_type":"A","source":"unified.jsonl","weekly":{"used_percentage":5}})"},
        LineCase{
            "planOfTheContextIsEmpty",
            logLine(R"({"subscriptionTier":"","config":{"creditUsagePercent":5,"subscriptionTier":"B"}})"),
            R"({"capturedAt":1789387140,"plan_type":"B","source":"unified.jsonl","weekly":{"used_percentage":5}})"},
        LineCase{"timeMissing",
                 R"({"msg":"billing: fetched credits config","ctx":{"config":{"creditUsagePercent":5}}})",
                 R"({"capturedAt":1789387200,"source":"unified.jsonl","weekly":{"used_percentage":5}})"},
        LineCase{"timeUnreadable",
                 R"({"ts":"now","msg":"billing: fetched credits config","ctx":{"config":{"creditUsagePercent":5}}})",
                 R"({"capturedAt":1789387200,"source":"unified.jsonl","weekly":{"used_percentage":5}})"},
        LineCase{"timeWithAFraction",
                 R"({"ts":"2026-09-14T08:20:01.204Z","msg":"billing: fetched credits config",)"
                 R"("ctx":{"config":{"creditUsagePercent":5}}})",
                 R"({"capturedAt":1789374001.204,"source":"unified.jsonl","weekly":{"used_percentage":5}})"}),
    [](const auto& row) { return std::string{row.param.name}; });

const std::string fetched = "billing: fetched credits config";
const std::string usage = R"("ctx":{"config":{"creditUsagePercent":5}})";

INSTANTIATE_TEST_SUITE_P(
    Messages, GrokBillingLine,
    ::testing::Values(LineCase{"empty", ""},
                      LineCase{"otherMessage", logLine(R"({"config":{"creditUsagePercent":5}})", "ready")},
                      LineCase{"messageInAnotherField", R"({"msg":"other","note":")" + fetched + "\"," + usage + "}"},
                      LineCase{"messageIsLonger", R"({"msg":")" + fetched + " again\"," + usage + "}"},
                      LineCase{"messageIsNoString", R"({"msg":[")" + fetched + "\"]," + usage + "}"},
                      LineCase{"messageWrittenWithEscapes",
                               R"({"msg":"billing\u003a fetched credits config",)" + usage + "}"},
                      LineCase{"half", billingLine(5).substr(0, 150)}, LineCase{"array", "[" + billingLine(5) + "]"},
                      LineCase{"noJSON", fetched},
                      LineCase{"invalidUTF8", R"({"x":")"
                                              "\xff"
                                              R"(","msg":")" +
                                                  fetched + "\"," + usage + "}"}),
    [](const auto& row) { return std::string{row.param.name}; });

// The log's end

TEST(GrokBillingLog, newestLineThatTellsCounts) {
    const GrokScratchHome home;
    const std::string log = home.write("log", logLine("{}", "ready") + "\n" + billingLine(10) + "\n" + billingLine(20) +
                                                  "\n" + logLine("{}", "done") + "\n");
    EXPECT_EQ(told(GrokRateLimitCapture::scrapeLatestBilling(log, testNow)), recordOf("20"));
}

TEST(GrokBillingLog, lineWithoutAPercentageGivesWayToTheOneBefore) {
    const GrokScratchHome home;
    const std::string log =
        home.write("log", billingLine(10) + "\n" + logLine(R"({"config":{}})") + "\n" + logLine("null") + "\n");
    EXPECT_EQ(told(GrokRateLimitCapture::scrapeLatestBilling(log, testNow)), recordOf("10"));
}

TEST(GrokBillingLog, tornLastLineGivesWayToTheOneBefore) {
    const GrokScratchHome home;
    const std::string log = home.write("log", billingLine(10) + "\n" + billingLine(20).substr(0, 200));
    EXPECT_EQ(told(GrokRateLimitCapture::scrapeLatestBilling(log, testNow)), recordOf("10"));
    home.append(log, billingLine(20).substr(200));
    EXPECT_EQ(told(GrokRateLimitCapture::scrapeLatestBilling(log, testNow)), recordOf("20")) << "needs no line feed";
}

TEST(GrokBillingLog, badBytesAreRepaired) {
    const GrokScratchHome home;
    std::string line = billingLine(20);
    line.replace(line.find("SuperGrok"), 5, "S\xff\xC3r");
    const std::string log = home.write("log", line + "\n");
    const auto record = GrokRateLimitCapture::scrapeLatestBilling(log, testNow);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->at("plan_type"), JSONTree{"S\uFFFD\uFFFDrGrok Heavy"});
}

TEST(GrokBillingLog, onlyTheEndOfALongLogIsLookedAt) {
    const GrokScratchHome home;
    const std::string line = billingLine(10) + "\n";
    const std::string log = home.write("log", line + std::string(1000, 'x') + "\n");
    const auto scrape = [&](std::uint64_t bytes) {
        return told(GrokRateLimitCapture::scrapeLatestBilling(log, testNow, bytes));
    };
    EXPECT_EQ(scrape(line.size() + 1001), recordOf("10"));
    EXPECT_EQ(scrape(line.size() + 1000), "none") << "the line's first byte is beyond";
    EXPECT_EQ(scrape(0), "none");
    EXPECT_EQ(scrape(1), "none");
    EXPECT_EQ(GrokRateLimitCapture::tailBytes, 1048576);
}

TEST(GrokBillingLog, logThatCannotBeReadGivesNothing) {
    const GrokScratchHome home;
    EXPECT_EQ(told(GrokRateLimitCapture::scrapeLatestBilling(home.path("none"), testNow)), "none");
    EXPECT_EQ(told(GrokRateLimitCapture::scrapeLatestBilling(home.path(), testNow)), "none");
    EXPECT_EQ(told(GrokRateLimitCapture::scrapeLatestBilling(home.write("empty", ""), testNow)), "none");
}

// Writing

TEST(GrokCaptureWrite, recordReadsBackAsItIs) {
    const GrokScratchHome home;
    const std::optional<JSONTree::Object> record =
        GrokRateLimitCapture::parseBillingLogLine(billingLine(41.5), testNow);
    ASSERT_TRUE(record);
    const std::string file = home.path("a/b/limits.json");
    EXPECT_TRUE(GrokRateLimitCapture::write(*record, file));
    EXPECT_EQ(toldJSON(home.read(file)), told(record));
    EXPECT_TRUE(GrokRateLimitCapture::write({}, file));
    EXPECT_EQ(home.read(file), "{}");
}

TEST(GrokCaptureWrite, folderOfTheSystemIsThePersonsAlone) {
    const GrokScratchHome home;
    EXPECT_TRUE(GrokRateLimitCapture::write({}, home.path(GrokScratchHome::captureFile)));
    const auto folder = FileStatus::of(home.path("Library/Application Support/Quorvane"));
    ASSERT_TRUE(folder);
    EXPECT_EQ(folder->mode & 07777U, 0700);
}

TEST(GrokCaptureWrite, numberThatJSONCannotHoldIsRefused) {
    const GrokScratchHome home;
    const std::string file = home.write("limits.json", "as it was");
    const double inf = std::numeric_limits<double>::infinity();
    for (const double number : {inf, -inf, std::nan("")}) {
        EXPECT_FALSE(GrokRateLimitCapture::write({{"a", number}}, file));
        EXPECT_FALSE(GrokRateLimitCapture::write({{"a", JSONTree::Object{{"b", JSONTree::Array{1, number}}}}}, file));
    }
    EXPECT_EQ(home.read(file), "as it was");
}

TEST(GrokCaptureWrite, failureIsTold) {
    const GrokScratchHome home;
    home.write("file", "");
    home.makeFolder("folder/in-use");
    EXPECT_FALSE(GrokRateLimitCapture::write({}, home.path("file/limits.json")));
    EXPECT_FALSE(GrokRateLimitCapture::write({}, home.path("folder")));
    // The name leaves no room for that of the temporary file.
    EXPECT_FALSE(GrokRateLimitCapture::write({}, home.path(std::string(255, 'x'))));
}

// The whole road

class GrokRefresh : public ::testing::Test {
protected:
    bool refresh() const {
        return GrokRateLimitCapture::refreshFromLogs(std::nullopt, log_, home_.path("out.json"), testNow);
    }
    [[nodiscard]] std::string written() const {
        return home_.exists("out.json") ? toldJSON(home_.read("out.json")) : "none";
    }

    GrokScratchHome home_;
    std::string log_ = home_.write("unified.jsonl", billingLine(10) + "\n");
};

TEST_F(GrokRefresh, writesTheNewestRecord) {
    EXPECT_TRUE(refresh());
    EXPECT_EQ(written(), recordOf("10"));
    home_.append(log_, billingLine(20) + "\n");
    EXPECT_TRUE(refresh());
    EXPECT_EQ(written(), recordOf("20"));
}

TEST_F(GrokRefresh, unchangedLogIsNotReadAgain) {
    EXPECT_TRUE(refresh());
    const OpenWatch watch{{log_}};
    home_.remove("out.json");
    for (int time = 0; time < 3; ++time)
        EXPECT_FALSE(refresh());
    EXPECT_FALSE(watch.hasSeenAnOpen());
    EXPECT_EQ(written(), "none");
}

TEST_F(GrokRefresh, changeOfTimeOrSizeAloneIsAChange) {
    setModificationTime(log_, 1'700'000'000, 500);
    EXPECT_TRUE(refresh());
    setModificationTime(log_, 1'700'000'001, 500);
    EXPECT_TRUE(refresh()) << "a new time";
    home_.append(log_, "\n");
    setModificationTime(log_, 1'700'000'001, 500);
    EXPECT_TRUE(refresh()) << "a new size";
    EXPECT_FALSE(refresh());
}

TEST_F(GrokRefresh, logWithoutFiguresIsReadOnce) {
    home_.write(log_, logLine("{}", "ready") + "\n");
    EXPECT_FALSE(refresh());
    const OpenWatch watch{{log_}};
    EXPECT_FALSE(refresh());
    EXPECT_FALSE(watch.hasSeenAnOpen());
    EXPECT_EQ(written(), "none");
    home_.append(log_, billingLine(30) + "\n");
    EXPECT_TRUE(refresh());
}

TEST_F(GrokRefresh, failedWriteCountsAsDone) {
    home_.makeFolder("out.json/in-use");
    EXPECT_FALSE(refresh());
    home_.remove("out.json");
    EXPECT_FALSE(refresh()) << "until the log changes";
    home_.append(log_, billingLine(30) + "\n");
    EXPECT_TRUE(refresh());
    EXPECT_EQ(written(), recordOf("30"));
}

TEST_F(GrokRefresh, missingLogGivesNothingUntilItAppears) {
    home_.remove(log_);
    EXPECT_FALSE(refresh());
    EXPECT_FALSE(refresh());
    EXPECT_EQ(GrokBillingScrapeCache::shared().entry(log_), std::nullopt);
    home_.write(log_, billingLine(10) + "\n");
    EXPECT_TRUE(refresh());
}

TEST_F(GrokRefresh, eachLogIsRememberedByItself) {
    EXPECT_TRUE(refresh());
    const std::string other = home_.write("other.jsonl", billingLine(40) + "\n");
    EXPECT_TRUE(GrokRateLimitCapture::refreshFromLogs(std::nullopt, other, home_.path("out.json"), testNow));
    EXPECT_FALSE(refresh());
    EXPECT_EQ(written(), recordOf("40"));
    const auto entry = GrokBillingScrapeCache::shared().entry(other);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->size, static_cast<std::int64_t>(billingLine(40).size() + 1));
}

TEST_F(GrokRefresh, defaultsAreTheAgentsLogAndTheFileOfTheStore) {
    home_.write(GrokScratchHome::logFile, billingLine(50) + "\n");
    EXPECT_TRUE(GrokRateLimitCapture::refreshFromLogs(std::nullopt, std::nullopt, std::nullopt, testNow));
    EXPECT_EQ(toldJSON(home_.read(GrokScratchHome::captureFile)), recordOf("50"));
    home_.write("agent/logs/unified.jsonl", billingLine(60) + "\n");
    EXPECT_TRUE(GrokRateLimitCapture::refreshFromLogs(home_.path("agent"), std::nullopt, std::nullopt, testNow));
    EXPECT_EQ(toldJSON(home_.read(GrokScratchHome::captureFile)), recordOf("60"));
}

TEST_F(GrokRefresh, fileIsReplacedAndNothingIsLeftBeside) {
    ASSERT_TRUE(refresh());
    const std::size_t before = openDescriptors();
    home_.append(log_, billingLine(20) + "\n");
    EXPECT_TRUE(refresh());
    EXPECT_EQ(openDescriptors(), before);
    std::size_t entries = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator{home_.path()})
        ++entries;
    EXPECT_EQ(entries, 2) << "the log and the file";
}

}  // namespace
}  // namespace quorvane::testing
