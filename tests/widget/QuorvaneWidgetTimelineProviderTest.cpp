#include <gtest/gtest.h>

#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/snapshots/WidgetSnapshotStore.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetTimelineProvider.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/WidgetPreviewData.h"
#include "tests/support/ScratchHome.h"
#include "tests/widget/Snapshots.h"

namespace quorvane {
namespace {

using testing::providerRow;

constexpr QuorvaneWidgetContext inPlace{.isPreview = false};
constexpr QuorvaneWidgetContext inGallery{.isPreview = true};

/// A home whose present moment stands still, and the file that a host leaves there.
class QuorvaneWidgetTimelineProviderTest : public ::testing::Test {
protected:
    QuorvaneWidgetTimelineProviderTest() { Clock::pin(Date{1500}); }
    ~QuorvaneWidgetTimelineProviderTest() override { Clock::unpin(); }

    static WidgetSnapshot stored() {
        WidgetSnapshot snapshot = testing::widgetSnapshot();
        snapshot.availabilityNotice = "No price for o9";
        snapshot.providers = {providerRow("claude", "Claude Code", 10), providerRow("muse_spark", "Muse Spark", 2.5)};
        snapshot.windows[7] = {.days = 7, .totalWindow = 70, .series = {7, 8}};
        snapshot.windows[7].providerWindows["claude"] = {.window = 60, .series = {6, 6}};
        return snapshot;
    }

    static QuorvaneWidgetEntry entryOf(const QuorvaneWidgetConfigurationIntent& configuration = {},
                                       QuorvaneWidgetContext context = inPlace) {
        return QuorvaneWidgetTimelineProvider{}.snapshot(configuration, context);
    }

    /// The words of the file, whatever a writer made of the values.
    [[nodiscard]] std::string fileText() const { return home.read(file); }

    testing::ScratchHome home;
    const std::string file = "Library/Application Support/Quorvane/Widget/widget-snapshot.json";
};

TEST_F(QuorvaneWidgetTimelineProviderTest, withoutAFileShowsTheSampleWhateverTheContext) {
    for (const QuorvaneWidgetContext context : {inPlace, inGallery}) {
        const QuorvaneWidgetTimeline timeline = QuorvaneWidgetTimelineProvider{}.timeline({}, context);
        ASSERT_EQ(timeline.entries.size(), 1U);
        EXPECT_TRUE(timeline.entries[0].isPreview);
        EXPECT_EQ(timeline.entries[0].snapshot, WidgetPreviewData::snapshot().selectingWindow(14));
        EXPECT_EQ(timeline.entries[0].date, Date{1500});
        EXPECT_EQ(timeline.reloadAfter, Date{1500 + 1800});
    }
}

TEST_F(QuorvaneWidgetTimelineProviderTest, showsTheUsersOwnDataWithOneEntryForHalfAnHour) {
    WidgetSnapshotStore{}.write(stored());
    const QuorvaneWidgetTimeline timeline = QuorvaneWidgetTimelineProvider{}.timeline({}, inPlace);
    ASSERT_EQ(timeline.entries.size(), 1U);
    EXPECT_FALSE(timeline.entries[0].isPreview);
    EXPECT_EQ(timeline.entries[0].snapshot, stored());
    EXPECT_EQ(timeline.entries[0].configuration, QuorvaneWidgetConfigurationIntent{});
    EXPECT_EQ(timeline.reloadAfter - timeline.entries[0].date, 1800);
    EXPECT_EQ(timeline.entries[0], entryOf());
}

TEST_F(QuorvaneWidgetTimelineProviderTest, showsStaleDataAsTheUsersOwn) {
    WidgetSnapshotStore{}.write(stored());
    Clock::pin(Date{1e9});
    EXPECT_FALSE(entryOf().isPreview);
    EXPECT_TRUE(entryOf().snapshot.isStale(Clock::now()));
    EXPECT_EQ(entryOf().snapshot, stored());
}

TEST_F(QuorvaneWidgetTimelineProviderTest, readsTheFileAnewAtEachCall) {
    WidgetSnapshotStore{}.write(stored());
    EXPECT_EQ(entryOf().snapshot.totalToday, 12.5);
    WidgetSnapshot later = stored();
    later.totalToday = 13;
    WidgetSnapshotStore{}.write(later);
    EXPECT_EQ(entryOf().snapshot.totalToday, 13);
    home.remove(file);
    EXPECT_TRUE(entryOf().isPreview);
}

TEST_F(QuorvaneWidgetTimelineProviderTest, takesAFileOfAnotherVersionOrADamagedOneForNone) {
    WidgetSnapshotStore{}.write(stored());
    std::string text = fileText();
    const std::size_t version = text.find("\"schemaVersion\"");
    ASSERT_NE(version, std::string::npos);
    const std::size_t digit = text.find('4', version);
    ASSERT_NE(digit, std::string::npos);
    text[digit] = '3';
    home.write(file, text);
    EXPECT_TRUE(entryOf().isPreview);
    EXPECT_EQ(entryOf().snapshot, WidgetPreviewData::snapshot().selectingWindow(14));

    home.write(file, "{\"schemaVersion\": 4");
    EXPECT_TRUE(entryOf().isPreview);
}

TEST_F(QuorvaneWidgetTimelineProviderTest, showsTheUsersNumbersAsAPreviewInAGallery) {
    WidgetSnapshotStore{}.write(stored());
    const QuorvaneWidgetEntry entry = entryOf({}, inGallery);
    EXPECT_TRUE(entry.isPreview);
    EXPECT_EQ(entry.snapshot, stored());
}

TEST_F(QuorvaneWidgetTimelineProviderTest, narrowsTheSampleTooAndTakesTheTimeframeFirst) {
    const QuorvaneWidgetEntry entry = entryOf({.provider = QuorvaneWidgetProviderChoice::codex,
                                               .showLimits = false,
                                               .timeframe = QuorvaneWidgetTimeframeChoice::ninetyDays});
    EXPECT_TRUE(entry.isPreview);
    EXPECT_EQ(entry.snapshot.title, "Codex");
    EXPECT_EQ(entry.snapshot.windowDays, 90);
    EXPECT_EQ(entry.snapshot.totalWindow, 24000);
    EXPECT_EQ(entry.snapshot.totalToday, 225.19);
    ASSERT_EQ(entry.snapshot.providers.size(), 1U);
    EXPECT_EQ(entry.snapshot.series.size(), 90U);
    EXPECT_FALSE(entry.configuration.showLimits);
}

TEST_F(QuorvaneWidgetTimelineProviderTest, switchesTheUsersDataToTheTimeframeThenToTheProvider) {
    WidgetSnapshotStore{}.write(stored());
    const QuorvaneWidgetEntry entry = entryOf(
        {.provider = QuorvaneWidgetProviderChoice::claude, .timeframe = QuorvaneWidgetTimeframeChoice::sevenDays});
    EXPECT_EQ(entry.snapshot.title, "Claude Code");
    EXPECT_EQ(entry.snapshot.windowDays, 7);
    EXPECT_EQ(entry.snapshot.totalWindow, 60);
    EXPECT_EQ(entry.snapshot.availabilityNotice, std::nullopt);
}

TEST_F(QuorvaneWidgetTimelineProviderTest, findsMuseSparkByItsID) {
    WidgetSnapshotStore{}.write(stored());
    const QuorvaneWidgetConfigurationIntent museSpark{.provider = QuorvaneWidgetProviderChoice::museSpark};
    EXPECT_EQ(entryOf(museSpark).snapshot.title, "Muse Spark");

    WidgetSnapshot other = stored();
    other.providers[1].id = "museSpark";
    WidgetSnapshotStore{}.write(other);
    EXPECT_EQ(entryOf(museSpark).snapshot.title, "All providers");
    EXPECT_EQ(entryOf(museSpark).snapshot.providers.size(), 2U);
}

TEST_F(QuorvaneWidgetTimelineProviderTest, keepsTheFilesOwnTimeframeWhereItLacksTheChosenOne) {
    WidgetSnapshotStore{}.write(stored());
    EXPECT_EQ(entryOf().snapshot.windowDays, 30);
    EXPECT_EQ(entryOf().snapshot.totalWindow, 125);
}

TEST_F(QuorvaneWidgetTimelineProviderTest, placeholderIsTheWholeSampleWithNoLookAtTheFile) {
    WidgetSnapshotStore{}.write(stored());
    const QuorvaneWidgetEntry entry = QuorvaneWidgetTimelineProvider{}.placeholder(inPlace);
    EXPECT_EQ(entry.snapshot, WidgetPreviewData::snapshot());
    EXPECT_EQ(entry.configuration, QuorvaneWidgetConfigurationIntent{});
    EXPECT_EQ(entry.date, Date{1500});
    EXPECT_TRUE(entry.isPreview);
}

}  // namespace
}  // namespace quorvane
