#include <functional>
#include <limits>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "QuorvaneCore/snapshots/QuorvaneWidgetContract.h"
#include "QuorvaneCore/snapshots/WidgetSnapshot.h"
#include "tests/snapshots/SampleWidgetSnapshot.h"

namespace quorvane {
namespace {

using testing::sampleWidgetSnapshot;

TEST(WidgetValueMetric, rawNamesLeadBack) {
    EXPECT_EQ(rawName(WidgetValueMetric::Dollars), "dollars");
    EXPECT_EQ(rawName(WidgetValueMetric::Tokens), "tokens");
    EXPECT_EQ(widgetValueMetricFromRawName("dollars"), WidgetValueMetric::Dollars);
    EXPECT_EQ(widgetValueMetricFromRawName("tokens"), WidgetValueMetric::Tokens);
    EXPECT_EQ(widgetValueMetricFromRawName("Tokens"), std::nullopt);
    EXPECT_EQ(widgetValueMetricFromRawName(""), std::nullopt);
}

TEST(WidgetCostBasis, everyCaseHasItsNameAndItsLabel) {
    EXPECT_EQ(rawName(WidgetCostBasis::RealSpend), "realSpend");
    EXPECT_EQ(rawName(WidgetCostBasis::NotionalListPrice), "notionalListPrice");
    EXPECT_EQ(rawName(WidgetCostBasis::RealAndNotionalListPrice), "realAndNotionalListPrice");
    EXPECT_EQ(shortLabel(WidgetCostBasis::RealSpend), "real spend");
    EXPECT_EQ(shortLabel(WidgetCostBasis::NotionalListPrice), "notional");
    EXPECT_EQ(shortLabel(WidgetCostBasis::RealAndNotionalListPrice), "incl notional");
    EXPECT_EQ(widgetCostBasisFromRawName("notionalListPrice"), WidgetCostBasis::NotionalListPrice);
    EXPECT_EQ(widgetCostBasisFromRawName("notional"), std::nullopt);
}

TEST(QuorvaneWidgetContract, namesWhatHostAndWidgetAgreeOn) {
    EXPECT_EQ(QuorvaneWidgetContract::kind, "QuorvaneWidget");
    EXPECT_EQ(QuorvaneWidgetContract::extensionBundleIdentifier, "com.orlanmere.quorvane.widget");
    EXPECT_EQ(WidgetSnapshot::currentSchemaVersion, 4);
}

TEST(WidgetSnapshot, isStaleFromTheInstantOn) {
    WidgetSnapshot snapshot;
    snapshot.staleAfter = Date{1000};
    EXPECT_FALSE(snapshot.isStale(Date{999.999}));
    EXPECT_TRUE(snapshot.isStale(Date{1000}));
    EXPECT_TRUE(snapshot.isStale(Date{1001}));
}

TEST(WidgetSnapshot, disclosesEveryBasisButRealSpend) {
    WidgetSnapshot snapshot;
    EXPECT_FALSE(snapshot.disclosesNotionalBasis());
    snapshot.basis = WidgetCostBasis::NotionalListPrice;
    EXPECT_TRUE(snapshot.disclosesNotionalBasis());
    snapshot.basis = WidgetCostBasis::RealAndNotionalListPrice;
    EXPECT_TRUE(snapshot.disclosesNotionalBasis());
}

TEST(WidgetSnapshot, anErrorIsDisclosedBeforeANotice) {
    WidgetSnapshot snapshot;
    EXPECT_EQ(snapshot.disclosureNotice(), std::nullopt);
    snapshot.availabilityNotice = "notice";
    EXPECT_EQ(snapshot.disclosureNotice(), "notice");
    snapshot.errorMessage = "error";
    EXPECT_EQ(snapshot.disclosureNotice(), "error");
    snapshot.availabilityNotice = std::nullopt;
    EXPECT_EQ(snapshot.disclosureNotice(), "error");
}

TEST(WidgetSnapshotFocused, withoutAChoiceNothingChanges) {
    const WidgetSnapshot snapshot = sampleWidgetSnapshot();
    EXPECT_EQ(snapshot.focused(std::nullopt), snapshot);
    EXPECT_EQ(snapshot.focused("all"), snapshot);
    EXPECT_EQ(snapshot.focused("nobody"), snapshot);
    EXPECT_EQ(snapshot.focused("Claude"), snapshot);
    EXPECT_EQ(snapshot.focused(""), snapshot);
}

TEST(WidgetSnapshotFocused, takesEverythingFromTheRow) {
    const WidgetSnapshot snapshot = sampleWidgetSnapshot();
    const WidgetSnapshot focused = snapshot.focused("copilot");
    const WidgetProviderSnapshot& row = snapshot.providers[1];
    EXPECT_EQ(focused.title, "GitHub Copilot");
    EXPECT_EQ(focused.totalToday, row.today);
    EXPECT_EQ(focused.totalWindow, row.window);
    EXPECT_EQ(focused.currencyCode, row.currencyCode);
    EXPECT_EQ(focused.metric, WidgetValueMetric::Tokens);
    EXPECT_EQ(focused.basis, row.basis);
    EXPECT_EQ(focused.series, row.series);
    EXPECT_EQ(focused.providers, std::vector{row});
    EXPECT_EQ(focused.generatedAt, snapshot.generatedAt);
    EXPECT_EQ(focused.windowDays, snapshot.windowDays);
    EXPECT_EQ(focused.staleAfter, snapshot.staleAfter);
    EXPECT_EQ(focused.windows, snapshot.windows);
}

TEST(WidgetSnapshotFocused, keepsTheErrorAndDropsTheNotice) {
    const WidgetSnapshot snapshot = sampleWidgetSnapshot();
    ASSERT_TRUE(snapshot.errorMessage && snapshot.availabilityNotice);
    EXPECT_EQ(snapshot.focused("claude").errorMessage, snapshot.errorMessage);
    EXPECT_EQ(snapshot.focused("claude").availabilityNotice, std::nullopt);
    EXPECT_EQ(snapshot.focused("all").availabilityNotice, snapshot.availabilityNotice);
}

TEST(WidgetSnapshotFocused, theFirstOfEqualRowsCounts) {
    WidgetSnapshot snapshot = sampleWidgetSnapshot();
    snapshot.providers[1].id = "claude";
    EXPECT_EQ(snapshot.focused("claude").title, snapshot.providers[0].name);
}

TEST(WidgetSnapshotFocused, isAlwaysOfTheCurrentVersion) {
    WidgetSnapshot snapshot = sampleWidgetSnapshot();
    snapshot.schemaVersion = 7;
    EXPECT_EQ(snapshot.focused("claude").schemaVersion, 4);
    EXPECT_EQ(snapshot.focused("all").schemaVersion, 7);
}

TEST(WidgetSnapshotSelectingWindow, anUnknownLengthChangesNothing) {
    WidgetSnapshot snapshot = sampleWidgetSnapshot();
    EXPECT_EQ(snapshot.selectingWindow(8), snapshot);
    snapshot.windows.clear();
    for (const std::int64_t days : {7, 14, 30, 90, 0, -1})
        EXPECT_EQ(snapshot.selectingWindow(days), snapshot);
}

TEST(WidgetSnapshotSelectingWindow, takesTheTotalsAndTheRowsItKnows) {
    const WidgetSnapshot snapshot = sampleWidgetSnapshot();
    const WidgetSnapshot selected = snapshot.selectingWindow(7);
    const WidgetWindowSnapshot& entry = snapshot.windows.at(7);
    WidgetSnapshot expected = snapshot;
    expected.windowDays = 7;
    expected.totalWindow = entry.totalWindow;
    expected.series = entry.series;
    expected.providers[0].window = entry.providerWindows.at("claude").window;
    expected.providers[0].series = entry.providerWindows.at("claude").series;
    EXPECT_EQ(selected, expected);
    EXPECT_EQ(selected.totalToday, snapshot.totalToday);
    EXPECT_EQ(selected.availabilityNotice, snapshot.availabilityNotice);
    EXPECT_EQ(selected.windows, snapshot.windows);
    // The second row stands in no window of seven days.
    EXPECT_EQ(selected.providers[1], snapshot.providers[1]);
    EXPECT_NE(selected.totalWindow, snapshot.totalWindow);
}

TEST(WidgetSnapshotSelectingWindow, theEntrysOwnLengthCounts) {
    WidgetSnapshot snapshot = sampleWidgetSnapshot();
    snapshot.schemaVersion = 3;
    snapshot.windows[8] = {.days = 9};
    EXPECT_EQ(snapshot.selectingWindow(8).windowDays, 9);
    EXPECT_EQ(snapshot.selectingWindow(8).schemaVersion, 4);
}

TEST(WidgetSnapshotSelectingWindow, thenFocusedGivesTheProvidersTimeframe) {
    const WidgetSnapshot snapshot = sampleWidgetSnapshot();
    const WidgetSnapshot narrowed = snapshot.selectingWindow(7).focused("claude");
    EXPECT_EQ(narrowed.totalWindow, snapshot.windows.at(7).providerWindows.at("claude").window);
    EXPECT_EQ(narrowed.windowDays, 7);
    // The other way round the aggregate comes back.
    EXPECT_EQ(snapshot.focused("claude").selectingWindow(7).totalWindow, snapshot.windows.at(7).totalWindow);
}

struct ContentCase {
    const char* name;
    std::function<void(WidgetSnapshot&)> change;
    bool isSame;
};
class WidgetSnapshotContent : public ::testing::TestWithParam<ContentCase> {};

TEST_P(WidgetSnapshotContent, isComparedAsAUserSeesIt) {
    const WidgetSnapshot snapshot = sampleWidgetSnapshot();
    WidgetSnapshot changed = snapshot;
    GetParam().change(changed);
    ASSERT_NE(changed, snapshot);
    EXPECT_EQ(snapshot.hasSameContent(changed), GetParam().isSame);
    EXPECT_EQ(changed.hasSameContent(snapshot), GetParam().isSame);
}
using S = WidgetSnapshot;
INSTANTIATE_TEST_SUITE_P(
    ByChange, WidgetSnapshotContent,
    ::testing::Values(
        ContentCase{"newerIsTheSame", [](S& s) { s.generatedAt = s.staleAfter = Date{9e9}; }, true},
        ContentCase{"version", [](S& s) { s.schemaVersion = 5; }, false},
        ContentCase{"title", [](S& s) { s.title += " "; }, false},
        ContentCase{"currency", [](S& s) { s.currencyCode = "EUR"; }, false},
        ContentCase{"metric", [](S& s) { s.metric = WidgetValueMetric::Tokens; }, false},
        ContentCase{"windowDays", [](S& s) { ++s.windowDays; }, false},
        ContentCase{"basis", [](S& s) { s.basis = WidgetCostBasis::RealSpend; }, false},
        ContentCase{"todayBelowACent", [](S& s) { s.totalToday += 0.001; }, true},
        ContentCase{"todayByACent", [](S& s) { s.totalToday += 0.01; }, false},
        ContentCase{"windowBelowACent", [](S& s) { s.totalWindow -= 0.001; }, true},
        ContentCase{"windowByACent", [](S& s) { s.totalWindow -= 0.01; }, false},
        ContentCase{"seriesBelowACent", [](S& s) { s.series[1] += 0.001; }, true},
        ContentCase{"seriesByACent", [](S& s) { s.series[1] += 0.01; }, false},
        ContentCase{"longerSeries", [](S& s) { s.series.push_back(0); }, false},
        ContentCase{"shorterSeries", [](S& s) { s.series.pop_back(); }, false},
        ContentCase{"noticeGone", [](S& s) { s.availabilityNotice = {}; }, false},
        ContentCase{"noticeChanged", [](S& s) { s.availabilityNotice = "other"; }, false},
        ContentCase{"errorGone", [](S& s) { s.errorMessage = {}; }, false},
        ContentCase{"rowsInAnotherOrder", [](S& s) { std::swap(s.providers[0], s.providers[1]); }, false},
        ContentCase{"rowGone", [](S& s) { s.providers.pop_back(); }, false},
        ContentCase{"rowId", [](S& s) { s.providers[0].id = "x"; }, false},
        ContentCase{"rowName", [](S& s) { s.providers[0].name = "x"; }, false},
        ContentCase{"rowTint", [](S& s) { s.providers[0].tintHex = "x"; }, false},
        ContentCase{"rowCurrency", [](S& s) { s.providers[0].currencyCode = "x"; }, false},
        ContentCase{"rowMetric", [](S& s) { s.providers[0].metric = WidgetValueMetric::Tokens; }, false},
        ContentCase{"rowBasis", [](S& s) { s.providers[0].basis = WidgetCostBasis::NotionalListPrice; }, false},
        ContentCase{"rowOfficial", [](S& s) { s.providers[0].usageOfficial = false; }, false},
        ContentCase{"rowLimitByATrifle", [](S& s) { s.providers[0].usedPercent = 50.0001; }, false},
        ContentCase{"rowLimitGone", [](S& s) { s.providers[0].usedPercent = {}; }, false},
        ContentCase{"rowWeeklyLimitByATrifle", [](S& s) { s.providers[0].weeklyUsedPercent = 20.0001; }, false},
        ContentCase{"rowWeeklyLimitCame", [](S& s) { s.providers[1].weeklyUsedPercent = 0; }, false},
        ContentCase{"rowTodayBelowACent", [](S& s) { s.providers[0].today += 0.003; }, true},
        ContentCase{"rowTodayByACent", [](S& s) { s.providers[0].today += 0.01; }, false},
        ContentCase{"rowWindowBelowACent", [](S& s) { s.providers[0].window += 0.001; }, true},
        ContentCase{"rowWindowByACent", [](S& s) { s.providers[0].window += 0.01; }, false},
        ContentCase{"rowSeriesByACent", [](S& s) { s.providers[0].series[0] += 0.01; }, false},
        ContentCase{"rowSeriesLonger", [](S& s) { s.providers[0].series.push_back(1); }, false},
        ContentCase{"timeframeGone", [](S& s) { s.windows.erase(7); }, false},
        ContentCase{"timeframeUnderAnotherKey",
                    [](S& s) {
                        s.windows[8] = s.windows[7];
                        s.windows.erase(7);
                    },
                    false},
        ContentCase{"timeframeDays", [](S& s) { ++s.windows[7].days; }, false},
        ContentCase{"timeframeTotalBelowACent", [](S& s) { s.windows[7].totalWindow += 0.001; }, true},
        ContentCase{"timeframeTotalByACent", [](S& s) { s.windows[7].totalWindow += 0.01; }, false},
        ContentCase{"timeframeSeriesByACent", [](S& s) { s.windows[7].series[0] += 0.01; }, false},
        ContentCase{"timeframeSeriesLonger", [](S& s) { s.windows[7].series.push_back(1); }, false},
        ContentCase{"timeframeRowGone", [](S& s) { s.windows[7].providerWindows.clear(); }, false},
        ContentCase{"timeframeRowOfAnother",
                    [](S& s) {
                        s.windows[7].providerWindows["codex"] = s.windows[7].providerWindows["claude"];
                        s.windows[7].providerWindows.erase("claude");
                    },
                    false},
        ContentCase{"timeframeRowBelowACent", [](S& s) { s.windows[7].providerWindows["claude"].window += 0.001; },
                    true},
        ContentCase{"timeframeRowByACent", [](S& s) { s.windows[7].providerWindows["claude"].window += 0.01; }, false},
        ContentCase{"timeframeRowSeries", [](S& s) { s.windows[7].providerWindows["claude"].series[0] += 0.01; },
                    false}),
    [](const auto& row) { return std::string{row.param.name}; });

struct CentsCase {
    const char* name;
    double one;
    double other;
    bool isSame;
};
class WidgetSnapshotCents : public ::testing::TestWithParam<CentsCase> {};

TEST_P(WidgetSnapshotCents, areWhatCounts) {
    WidgetSnapshot one;
    one.totalToday = GetParam().one;
    WidgetSnapshot other;
    other.totalToday = GetParam().other;
    EXPECT_EQ(one.hasSameContent(other), GetParam().isSame);
}
INSTANTIATE_TEST_SUITE_P(
    ByAmounts, WidgetSnapshotCents,
    ::testing::Values(CentsCase{"bothRoundDown", 1.004, 1.0049, true}, CentsCase{"halfGoesUp", 1.004, 1.005, false},
                      CentsCase{"halfIsTheNextCent", 1.005, 1.01, true},
                      CentsCase{"negativeHalfGoesAwayFromZero", -1.005, -1.01, true},
                      CentsCase{"everyHalfGoesUp", 0.285, 0.29, true},
                      CentsCase{"justBelowAHalfDoesNot", 0.28499999, 0.28, true},
                      CentsCase{"largeHalf", 1234567.125, 1234567.13, true},
                      CentsCase{"zeroHasNoSign", 0.0, -0.0, true}, CentsCase{"nearlyZero", 0.004, -0.004, true},
                      CentsCase{"halfACentIsACent", 0.005, 0, false}, CentsCase{"floatNoise", 0.1 + 0.2, 0.3, true}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(WidgetSnapshot, everyWholeHundredthIsItsOwnCent) {
    WidgetSnapshot one;
    WidgetSnapshot other;
    for (int cents = 0; cents < 20000; cents += 3) {
        one.totalToday = cents / 100.0;
        other.totalToday = (cents * 10 + 4) / 1000.0;  // four tenths of a cent more
        EXPECT_TRUE(one.hasSameContent(other)) << cents;
        other.totalToday = (cents * 10 + 5) / 1000.0;  // half a cent more
        EXPECT_FALSE(one.hasSameContent(other)) << cents;
    }
}

}  // namespace
}  // namespace quorvane
