// The comparison can fail: what a person would see is more than it tolerates.
#include <gtest/gtest.h>

#include "QuorvaneWidgetExtension/desktop/PictureRenderer.h"
#include "tests/desktop/Entries.h"
#include "tests/desktop/PictureComparison.h"

namespace quorvane::testing {
namespace {

QImage pictureOf(const WidgetSnapshot& snapshot, WidgetColorScheme scheme = WidgetColorScheme::Light) {
    return desktop::renderedPicture(entryView(snapshot, QuorvaneWidgetFamily::large), environmentOf(scheme), 1);
}

TEST(PictureComparisonTest, takesAPictureForLikeItself) {
    EXPECT_TRUE(difference(pictureOf(ownSnapshot()), pictureOf(ownSnapshot())).isTolerable());
}

TEST(PictureComparisonTest, seesOneOtherDigitInTheSmallestFigure) {
    WidgetSnapshot other = ownSnapshot();
    other.providers[3].today = 18.4;
    EXPECT_FALSE(difference(pictureOf(ownSnapshot()), pictureOf(other)).isTolerable());
}

TEST(PictureComparisonTest, seesAnotherColourAndAnotherScheme) {
    WidgetSnapshot other = ownSnapshot();
    other.providers[0].tintHex = "#1A7F5A";
    EXPECT_FALSE(difference(pictureOf(ownSnapshot()), pictureOf(other)).isTolerable());
    EXPECT_FALSE(difference(pictureOf(ownSnapshot()), pictureOf(ownSnapshot(), WidgetColorScheme::Dark)).isTolerable());
}

TEST(PictureComparisonTest, seesWhatMovedByAPixelAndAnotherSize) {
    const QImage picture = pictureOf(ownSnapshot());
    EXPECT_FALSE(difference(picture, picture.copy(1, 0, picture.width(), picture.height())).isTolerable());
    EXPECT_FALSE(difference(picture, picture.copy(0, 0, 10, 10)).isTolerable());
    EXPECT_FALSE(difference(picture, QImage{}).isTolerable());
}

}  // namespace
}  // namespace quorvane::testing
