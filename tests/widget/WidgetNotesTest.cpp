#include <gtest/gtest.h>

#include "QuorvaneWidgetExtension/WidgetComponents/WidgetFooter.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetPalette.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetStatusCaption.h"
#include "tests/widget/Snapshots.h"

namespace quorvane {
namespace {

using enum WidgetNote::Tone;

constexpr Date fresh{1500};
constexpr Date late{2800};

WidgetSnapshot withNotes(std::optional<std::string> error, std::optional<std::string> notice) {
    WidgetSnapshot snapshot = testing::widgetSnapshot();
    snapshot.errorMessage = std::move(error);
    snapshot.availabilityNotice = std::move(notice);
    return snapshot;
}

const WidgetNote preview{.text = "Preview data", .tone = Muted};
const WidgetNote stale{.text = "Stale — open Quorvane", .tone = Warning};
const WidgetNote error{.text = "Broken", .tone = Warning};
const WidgetNote notice{.text = "No price", .tone = Warning};

TEST(WidgetStatusCaptionTest, picksTheErrorThenTheNoticeThenThePreviewThenStaleness) {
    EXPECT_EQ(WidgetStatusCaption::of(withNotes("Broken", "No price"), true, late), error);
    EXPECT_EQ(WidgetStatusCaption::of(withNotes(std::nullopt, "No price"), true, late), notice);
    EXPECT_EQ(WidgetStatusCaption::of(withNotes(std::nullopt, std::nullopt), true, late), preview);
    EXPECT_EQ(WidgetStatusCaption::of(withNotes(std::nullopt, std::nullopt), false, late), stale);
    EXPECT_EQ(WidgetStatusCaption::of(withNotes(std::nullopt, std::nullopt), false, fresh), std::nullopt);
}

TEST(WidgetFooterTest, tellsThePreviewThenStalenessThenTheAge) {
    const WidgetSnapshot snapshot = testing::widgetSnapshot();
    EXPECT_EQ(WidgetFooter::freshnessOf(snapshot, true, late), preview);
    EXPECT_EQ(WidgetFooter::freshnessOf(snapshot, false, late), stale);
    EXPECT_EQ(WidgetFooter::freshnessOf(snapshot, false, fresh),
              (WidgetNote{.text = "Updated 8 min. ago", .tone = Muted}));
    EXPECT_EQ(WidgetFooter::freshnessOf(snapshot, false, Date{1000}).text, "Updated now");
}

TEST(WidgetFooterTest, tellsPreviewAndNoticeBesideEachOtherWhereACaptionTellsTheNoticeAlone) {
    const WidgetSnapshot snapshot = withNotes(std::nullopt, "No price");
    EXPECT_EQ(WidgetFooter::of(snapshot, true, fresh), (WidgetFooter{.freshness = preview, .notice = notice}));
    EXPECT_EQ(WidgetStatusCaption::of(snapshot, true, fresh), notice);
}

TEST(WidgetFooterTest, tellsTheErrorInPlaceOfTheNotice) {
    EXPECT_EQ(WidgetFooter::of(withNotes("Broken", "No price"), false, fresh).notice, error);
    EXPECT_EQ(WidgetFooter::of(testing::widgetSnapshot(), false, fresh).notice, std::nullopt);
}

TEST(WidgetNoteTest, isDrawnInTheColourOfItsWeight) {
    for (const WidgetColorScheme scheme : {WidgetColorScheme::Light, WidgetColorScheme::Dark}) {
        EXPECT_EQ(preview.color(scheme), WidgetPalette::mutedText(scheme));
        EXPECT_EQ(stale.color(scheme), WidgetPalette::warningText(scheme));
    }
}

}  // namespace
}  // namespace quorvane
