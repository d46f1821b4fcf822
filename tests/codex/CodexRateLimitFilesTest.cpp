#include <filesystem>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/providers/CodexRateLimits.h"
#include "QuorvaneCore/providers/RateLimitTailCache.h"
#include "tests/codex/CodexTestSupport.h"

namespace quorvane::testing {
namespace {

using State = CodexProvider::RateLimitState;

constexpr double reset = testNow + day;

/// Sees no rollout of another test, and lives at `testNow`.
class CodexRateLimitFiles : public ::testing::Test {
protected:
    CodexRateLimitFiles() {
        Clock::pin(Date{testNow});
        RateLimitTailCache::shared().prune({});
    }
    ~CodexRateLimitFiles() override { Clock::unpin(); }

    std::optional<CodexRateLimitRecord> look(const std::string& file) const {
        return CodexRateLimits::cachedRateLimitEntry(file, {});
    }
    std::optional<double> percent(const std::string& file) const { return percentOf(look(file)); }

    static std::optional<double> percentOf(const std::optional<CodexRateLimitRecord>& record) {
        if (!record) return std::nullopt;
        return record->snapshot.primary->usedPercent;
    }

    /// A rollout that changed two hours ago, with one report.
    std::string quiet(std::string_view file, double usedPercent) const {
        std::string path = home.write(file, limitsLine(weeklyReport(usedPercent, reset)));
        home.setAge(file, 2 * hour);
        return path;
    }

    /// The state at the tests' moment.
    State state() const { return home.provider.latestRateLimitState(Date{testNow}); }
    std::optional<double> weeklyPercent() const {
        const State now = state();
        if (!now.current || !now.current->secondary) return std::nullopt;
        return now.current->secondary->usedPercent;
    }

    RolloutHome home;
};

std::string filler(std::size_t bytes) {
    return line("response_item", "{\"text\":\"" + std::string(bytes, 'x') + "\"}");
}

constexpr std::size_t mebibyte = 1 << 20;

// ---- one file ----

TEST_F(CodexRateLimitFiles, theLastReportCounts) {
    const std::string file = home.write("rollout-a.jsonl", limitsLine(weeklyReport(1, reset)) + filler(10) +
                                                               limitsLine(weeklyReport(2, reset)) + filler(10));
    const auto tail = CodexRateLimits::latestRateLimitsFromTail(file, mebibyte);
    EXPECT_TRUE(tail.foundRecord);
    EXPECT_EQ(percentOf(tail.value), 2);
    EXPECT_EQ(percentOf(CodexRateLimits::latestRateLimits(file, {})), 2);
    EXPECT_EQ(percent(file), 2);
}

TEST_F(CodexRateLimitFiles, theReportComesWithItsDate) {
    const std::string file = home.write("rollout-a.jsonl", limitsLine(weeklyReport(1, reset), testNow - 77.5));
    ASSERT_TRUE(look(file));
    EXPECT_EQ(look(file)->date, Date{testNow - 77.5});
}

TEST_F(CodexRateLimitFiles, aReportOfAnotherLimitIsPassedOver) {
    const std::string other = R"({"limit_id":"premium","primary":)" + windowJSON(99, 10080, reset) + "}";
    const std::string file = home.write("rollout-a.jsonl", limitsLine(weeklyReport(2, reset)) + limitsLine(other));
    EXPECT_EQ(percent(file), 2);
}

TEST_F(CodexRateLimitFiles, aFileWithoutReportsGivesNone) {
    const std::string file = home.write("rollout-a.jsonl", tokenCount({.output = 5}) + filler(10));
    EXPECT_EQ(CodexRateLimits::latestRateLimitsFromTail(file, mebibyte), CodexRateLimits::TailRateLimitResult{});
    EXPECT_EQ(look(file), std::nullopt);
    EXPECT_EQ(look(home.path("rollout-missing.jsonl")), std::nullopt);
}

TEST_F(CodexRateLimitFiles, theTailAloneIsLookedAtFirst) {
    // What the tail holds is a placeholder only to those who know the report before it, which lies outside.
    const std::string file =
        home.write("rollout-a.jsonl", limitsLine(weeklyReport(0, reset), testNow - 120) + filler(mebibyte) +
                                          limitsLine(weeklyReport(0, reset + 60), testNow - 60));
    EXPECT_EQ(CodexRateLimits::latestRateLimits(file, {}), std::nullopt);
    EXPECT_EQ(percentOf(CodexRateLimits::latestRateLimitsFromTail(file, mebibyte).value), 0);
    EXPECT_EQ(percent(file), 0);
}

TEST_F(CodexRateLimitFiles, theWholeFileIsReadWhenTheTailHasNoReport) {
    const std::string file =
        home.write("rollout-a.jsonl", limitsLine(weeklyReport(1, reset)) + limitsLine(weeklyReport(3, reset)) +
                                          filler(mebibyte / 2) + filler(mebibyte / 2));
    EXPECT_FALSE(CodexRateLimits::latestRateLimitsFromTail(file, mebibyte).foundRecord);
    EXPECT_EQ(percent(file), 3);
}

TEST_F(CodexRateLimitFiles, theWholeFileIsReadWhenItsLastLineFillsTheTail) {
    const std::string file = home.write("rollout-a.jsonl", limitsLine(weeklyReport(1, reset)) + filler(2 * mebibyte));
    EXPECT_EQ(percent(file), 1);
}

TEST_F(CodexRateLimitFiles, aPlaceholderHidesTheRealReportBeforeIt) {
    const std::string file = home.write("rollout-a.jsonl", limitsLine(weeklyReport(50, reset), testNow - 180) +
                                                               limitsLine(weeklyReport(0, reset), testNow - 120) +
                                                               limitsLine(weeklyReport(0, reset + 61), testNow - 60));
    const CodexRateLimits::TailRateLimitResult found{.foundRecord = true, .value = std::nullopt};
    EXPECT_EQ(CodexRateLimits::latestRateLimitsFromTail(file, mebibyte), found);
    EXPECT_EQ(CodexRateLimits::latestRateLimits(file, {}), std::nullopt);
    EXPECT_EQ(look(file), std::nullopt);
}

TEST_F(CodexRateLimitFiles, aResetThatMovesMoreThanTheClockIsAReading) {
    const std::string file = home.write("rollout-a.jsonl", limitsLine(weeklyReport(0, reset), testNow - 120) +
                                                               limitsLine(weeklyReport(0, reset + 63), testNow - 60));
    EXPECT_EQ(percent(file), 0);
    EXPECT_EQ(percentOf(CodexRateLimits::latestRateLimits(file, {})), 0);
}

TEST_F(CodexRateLimitFiles, anotherLimitsReportInBetweenDoesNotCountAsTheOneBefore) {
    const std::string other = R"({"limit_id":"premium","primary":)" + windowJSON(99, 300, reset) + "}";
    const std::string file =
        home.write("rollout-a.jsonl", limitsLine(weeklyReport(0, reset), testNow - 120) + limitsLine(other) +
                                          limitsLine(weeklyReport(0, reset + 60), testNow - 60));
    EXPECT_EQ(look(file), std::nullopt);
}

TEST_F(CodexRateLimitFiles, aHalfWrittenReportDoesNotCount) {
    const std::string lines = limitsLine(weeklyReport(1, reset)) + limitsLine(weeklyReport(2, reset));
    const std::string file = home.write("rollout-a.jsonl", lines.substr(0, lines.size() - 5));
    EXPECT_EQ(percent(file), 1);
    EXPECT_EQ(percentOf(CodexRateLimits::latestRateLimits(file, {})), 1);
}

// ---- what is not read again ----

TEST_F(CodexRateLimitFiles, unchangedOldFilesAreReadOnce) {
    std::vector<std::string> files;
    for (int index = 0; index < 20; ++index) {
        const std::string name = "rollout-" + std::to_string(index) + ".jsonl";
        if (index % 4 == 0) {
            files.push_back(home.write(name, tokenCount({.output = 1})));  // without a report: that is remembered too
            home.setAge(name, 3 * hour);
        } else {
            files.push_back(quiet(name, index));
        }
    }
    const OpenCount opens{files};
    const State first = state();
    // The five without a report are read a second time, as a whole.
    EXPECT_EQ(opens.take(), 25);
    for (int again = 0; again < 3; ++again)
        EXPECT_EQ(state(), first);
    EXPECT_EQ(opens.take(), 0);
    home.append("rollout-7.jsonl", limitsLine(weeklyReport(70, reset), testNow - minute));
    home.setAge("rollout-7.jsonl", hour);
    EXPECT_EQ(opens.take(), 1);  // the test's own
    EXPECT_EQ(weeklyPercent(), 70);
    EXPECT_EQ(opens.take(), 1);
}

TEST_F(CodexRateLimitFiles, aLiveFileIsReadEachTime) {
    const std::string file = quiet("rollout-a.jsonl", 1);
    home.setAge("rollout-a.jsonl", 899);
    const OpenCount opens{{file}};
    EXPECT_EQ(percent(file), 1);
    EXPECT_EQ(percent(file), 1);
    EXPECT_EQ(opens.take(), 2);
}

TEST_F(CodexRateLimitFiles, aFileIsLiveForLessThan900Seconds) {
    const std::string file = quiet("rollout-a.jsonl", 1);
    home.setAge("rollout-a.jsonl", 900);
    const OpenCount opens{{file}};
    EXPECT_EQ(percent(file), 1);
    EXPECT_EQ(percent(file), 1);
    EXPECT_EQ(opens.take(), 1);
}

TEST_F(CodexRateLimitFiles, aFileOfTheFutureIsLive) {
    const std::string file = quiet("rollout-a.jsonl", 1);
    home.setAge("rollout-a.jsonl", -2 * hour);
    const OpenCount opens{{file}};
    EXPECT_EQ(percent(file), 1);
    EXPECT_EQ(percent(file), 1);
    EXPECT_EQ(opens.take(), 2);
}

TEST_F(CodexRateLimitFiles, whatALiveFileHadCountsOnceItIsQuiet) {
    const std::string file = quiet("rollout-a.jsonl", 1);
    home.setAge("rollout-a.jsonl", 10);
    EXPECT_EQ(percent(file), 1);
    Clock::pin(Date{testNow + hour});
    const OpenCount opens{{file}};
    EXPECT_EQ(percent(file), 1);
    EXPECT_EQ(opens.take(), 0);
}

TEST_F(CodexRateLimitFiles, sizeAndTimeToldAlikeMeanUnchanged) {
    const std::string file = quiet("rollout-a.jsonl", 1);
    EXPECT_EQ(percent(file), 1);
    quiet("rollout-a.jsonl", 2);
    EXPECT_EQ(percent(file), 1);
}

TEST_F(CodexRateLimitFiles, anotherTimeMeansChanged) {
    const std::string file = quiet("rollout-a.jsonl", 1);
    EXPECT_EQ(percent(file), 1);
    quiet("rollout-a.jsonl", 2);
    home.setAge("rollout-a.jsonl", 2 * hour + 0.001);
    EXPECT_EQ(percent(file), 2);
}

TEST_F(CodexRateLimitFiles, anotherSizeMeansChanged) {
    const std::string file = quiet("rollout-a.jsonl", 1);
    EXPECT_EQ(percent(file), 1);
    quiet("rollout-a.jsonl", 20);
    EXPECT_EQ(percent(file), 20);
}

TEST_F(CodexRateLimitFiles, whatWasFoundIsStoredUnderThePath) {
    const std::string file = quiet("rollout-a.jsonl", 1);
    const std::string empty = home.write("rollout-b.jsonl", "");
    home.setAge("rollout-b.jsonl", 2 * hour);
    const auto found = look(file);
    EXPECT_EQ(look(empty), std::nullopt);
    const auto entry = RateLimitTailCache::shared().entry(file);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->result, found);
    EXPECT_EQ(entry->mtime, testNow - 2 * hour);
    EXPECT_EQ(entry->size, static_cast<std::int64_t>(home.home.read(file).size()));
    ASSERT_TRUE(RateLimitTailCache::shared().entry(empty));
    EXPECT_EQ(RateLimitTailCache::shared().entry(empty)->result, std::nullopt);
}

TEST_F(CodexRateLimitFiles, aFileThatCannotBeQueriedIsNotStored) {
    const std::string file = home.path("rollout-missing.jsonl");
    EXPECT_EQ(look(file), std::nullopt);
    EXPECT_EQ(RateLimitTailCache::shared().entry(file), std::nullopt);
}

// ---- all files ----

TEST_F(CodexRateLimitFiles, withoutRolloutsNothingIsKnown) {
    EXPECT_EQ(state(), State{});
    EXPECT_EQ(home.provider.latestRateLimits(), std::nullopt);
    EXPECT_FALSE(home.provider.latestRateLimitAwaitingReset(Date{testNow}));
}

TEST_F(CodexRateLimitFiles, theNewestCurrentReportWins) {
    home.write("2026/rollout-a.jsonl", limitsLine(weeklyReport(10, reset), testNow - 3 * hour));
    home.write("2026/rollout-b.jsonl", limitsLine(weeklyReport(30, reset), testNow - 1 * hour));
    home.write("2026/rollout-c.jsonl", limitsLine(weeklyReport(20, reset), testNow - 2 * hour));
    EXPECT_EQ(weeklyPercent(), 30);
    EXPECT_FALSE(state().awaitingReset);
}

TEST_F(CodexRateLimitFiles, anExpiredReportGivesWayToAnOlderOne) {
    home.write("rollout-new.jsonl", limitsLine(weeklyReport(90, testNow - hour), testNow - 2 * hour));
    home.write("rollout-old.jsonl", limitsLine(weeklyReport(20, reset), testNow - 5 * day));
    EXPECT_EQ(weeklyPercent(), 20);
    EXPECT_FALSE(state().awaitingReset);
}

TEST_F(CodexRateLimitFiles, ofTwoReportsWithOneDateTheFirstFileWins) {
    home.write("rollout-a.jsonl", limitsLine(weeklyReport(10, reset)));
    home.write("rollout-b.jsonl", limitsLine(weeklyReport(20, reset)));
    const bool isFirst = home.provider.rolloutFiles().front() == home.path("rollout-a.jsonl");
    EXPECT_EQ(weeklyPercent(), isFirst ? 10 : 20);
}

TEST_F(CodexRateLimitFiles, whatIsExpiredOfTheBestReportIsLeftOut) {
    const std::string report = R"({"primary":)" + windowJSON(80, 300, testNow) + R"(,"secondary":)" +
                               windowJSON(30, 10080, testNow + 1) + R"(,"plan_type":"pro"})";
    home.write("rollout-a.jsonl", limitsLine(report));
    const State now = state();
    ASSERT_TRUE(now.current);
    EXPECT_EQ(now.current->primary, std::nullopt);
    ASSERT_TRUE(now.current->secondary);
    EXPECT_EQ(now.current->secondary->usedPercent, 30);
    EXPECT_EQ(now.current->planType, "pro");
    EXPECT_EQ(now.current->capturedAt, std::nullopt);
}

TEST_F(CodexRateLimitFiles, aWeeklyWindowUnderTheShortOnesNameIsTheSecondary) {
    home.write("rollout-a.jsonl", limitsLine(weeklyReport(37, reset)));
    const State now = state();
    ASSERT_TRUE(now.current);
    EXPECT_EQ(now.current->primary, std::nullopt);
    EXPECT_EQ(now.current->secondary,
              (RateLimitWindow{.usedPercent = 37, .windowMinutes = 10080, .resetsAt = Date{reset}}));
}

TEST_F(CodexRateLimitFiles, theMomentIsTheCallers) {
    home.write("rollout-a.jsonl", limitsLine(weeklyReport(37, reset)));
    EXPECT_TRUE(home.provider.latestRateLimits());
    EXPECT_TRUE(home.provider.latestRateLimits(Date{reset - 1}));
    EXPECT_FALSE(home.provider.latestRateLimits(Date{reset}));
    EXPECT_FALSE(home.provider.latestRateLimitAwaitingReset(Date{reset - 1}));
    EXPECT_TRUE(home.provider.latestRateLimitAwaitingReset(Date{reset}));
    EXPECT_TRUE(home.provider.latestRateLimitAwaitingReset(Date{reset + 6 * hour}));
    EXPECT_FALSE(home.provider.latestRateLimitAwaitingReset(Date{reset + 6 * hour + 1}));
    Clock::pin(Date{reset});
    EXPECT_FALSE(home.provider.latestRateLimits());
}

TEST_F(CodexRateLimitFiles, awaitingIsToldByTheNewestKnownReport) {
    home.write("rollout-old.jsonl", limitsLine(weeklyReport(90, testNow - hour), testNow - 2 * day));
    EXPECT_TRUE(state().awaitingReset);
    home.write("rollout-new.jsonl", limitsLine(weeklyReport(90, testNow - 10 * hour), testNow - day));
    EXPECT_FALSE(state().awaitingReset);
}

TEST_F(CodexRateLimitFiles, aReportWithoutKnownWindowsIsNeverTheBest) {
    home.write("rollout-old.jsonl", limitsLine(weeklyReport(90, testNow - hour), testNow - 2 * day));
    const std::string hourly = R"({"primary":)" + windowJSON(5, 60, testNow + hour) + "}";
    home.write("rollout-new.jsonl", limitsLine(hourly, testNow - minute));
    EXPECT_EQ(state(), (State{.current = std::nullopt, .awaitingReset = true}));
}

TEST_F(CodexRateLimitFiles, filesThatAreGoneAreForgotten) {
    const std::string gone = quiet("rollout-a.jsonl", 1);
    const std::string kept = quiet("rollout-b.jsonl", 2);
    static_cast<void>(state());
    EXPECT_EQ(RateLimitTailCache::shared().count(), 2);
    home.home.remove(gone);
    static_cast<void>(state());
    EXPECT_EQ(RateLimitTailCache::shared().count(), 1);
    EXPECT_EQ(RateLimitTailCache::shared().entry(gone), std::nullopt);
    EXPECT_TRUE(RateLimitTailCache::shared().entry(kept));
}

TEST_F(CodexRateLimitFiles, nothingIsForgottenWhileThereAreAsManyFiles) {
    const std::string other = "/elsewhere/rollout-x.jsonl";
    RateLimitTailCache::shared().store(other, {.size = 1, .mtime = 1, .result = std::nullopt});
    quiet("rollout-a.jsonl", 1);
    // A link to nowhere is listed, cannot be queried, and so has no entry.
    const std::string link = home.path("rollout-b.jsonl");
    std::filesystem::create_symlink("/nowhere", link);
    EXPECT_EQ(weeklyPercent(), 1);
    EXPECT_TRUE(RateLimitTailCache::shared().entry(other));
    std::filesystem::remove(link);
    EXPECT_EQ(weeklyPercent(), 1);
    EXPECT_FALSE(RateLimitTailCache::shared().entry(other));
}

TEST_F(CodexRateLimitFiles, threadsAgree) {
    for (int index = 0; index < 30; ++index)
        quiet("rollout-" + std::to_string(index) + ".jsonl", index);
    home.write("rollout-newest.jsonl", limitsLine(weeklyReport(77, reset), testNow - minute));
    const State expected = state();
    RateLimitTailCache::shared().prune({});
    std::vector<State> found(4);
    std::vector<std::thread> threads;
    for (State& one : found) {
        threads.emplace_back([&] {
            for (int round = 0; round < 20; ++round)
                one = state();
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const State& one : found)
        EXPECT_EQ(one, expected);
}

}  // namespace
}  // namespace quorvane::testing
