#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include "QuorvaneWidgetExtension/desktop/TextItem.h"

namespace quorvane::desktop {
namespace {

/// What the item draws, on white; a frame of five points is around it, to see what leaves it.
QImage drawn(TextItem& item) {
    QImage picture{QSizeF{item.width() + 10, item.height() + 10}.toSize() * 4, QImage::Format_RGB32};
    picture.fill(Qt::white);
    QPainter painter{&picture};
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(4, 4);
    painter.translate(5, 5);
    item.paint(&painter);
    return picture;
}

/// The points from the left end of the item to its first and its last ink.
std::pair<double, double> inkRange(const QImage& picture) {
    int first = picture.width();
    int last = -1;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (qGray(picture.pixel(x, y)) > 200) continue;
            first = std::min(first, x);
            last = std::max(last, x);
        }
    }
    return {first / 4.0 - 5, (last + 1) / 4.0 - 5};
}

void prepare(TextItem& item, const char* text, double width) {
    item.setText(QString::fromUtf8(text));
    item.setSize(12);
    item.setColor(Qt::black);
    item.setSize(12);
    item.setWidth(width);
    item.setHeight(15);
}

TEST(TextItemTest, keepsItsSizeWhereThereIsRoom) {
    TextItem item;
    prepare(item, "$1,234.56", 200);
    const auto [first, last] = inkRange(drawn(item));
    EXPECT_NEAR(first, 0, 2);
    EXPECT_NEAR(last, item.naturalWidth(), 2);
}

TEST(TextItemTest, shrinksToTheWidthDownToTheLeastScale) {
    TextItem item;
    prepare(item, "$1,234.56", 200);
    item.setMinimumScale(0.5);
    const double natural = item.naturalWidth();
    EXPECT_EQ(item.leastWidth(), std::ceil(natural * 0.5));
    item.setWidth(natural * 0.75);
    const auto [first, last] = inkRange(drawn(item));
    EXPECT_GT(last, natural * 0.68);
    EXPECT_LE(last, natural * 0.75 + 0.25);
}

TEST(TextItemTest, neverLeavesOutAPartOfAFigure) {
    TextItem item;
    prepare(item, "$1,234.56", 20);
    item.setFigure(true);
    item.setMinimumScale(0.85);
    const auto [first, last] = inkRange(drawn(item));
    // Wider than its room, and whole.
    EXPECT_NEAR(last, std::min(item.naturalWidth() * 0.85, 25.0), 2);
}

TEST(TextItemTest, endsAWordInAnEllipsisWithinItsWidth) {
    TextItem item;
    prepare(item, "Donaudampfschifffahrtsgesellschaft", 80);
    item.setMinimumScale(0.85);
    const auto [first, last] = inkRange(drawn(item));
    EXPECT_LE(last, 80.5);
    EXPECT_GT(last, 65);
}

TEST(TextItemTest, standsAtTheRightEndWhereAsked) {
    TextItem item;
    prepare(item, "$42.18", 120);
    item.setAtTheRight(true);
    const auto [first, last] = inkRange(drawn(item));
    EXPECT_NEAR(last, 120, 2);
    EXPECT_NEAR(first, 120 - item.naturalWidth(), 2);
}

TEST(TextItemTest, breaksIntoLinesWithinItsWidthAndNoMoreThanItMay) {
    TextItem item;
    prepare(item, "No price for aurora-9-preview and three more models of another provider", 400);
    item.setMaximumLines(2);
    EXPECT_EQ(item.naturalHeight(), 2 * 15);
    item.setWidth(1000);
    EXPECT_EQ(item.naturalHeight(), 15);
    item.setWidth(120);
    item.setHeight(30);
    EXPECT_EQ(item.naturalHeight(), 2 * 15);
    const auto [first, last] = inkRange(drawn(item));
    EXPECT_LE(last, 120.5);
}

TEST(TextItemTest, drawsTheTopsAndTailsOfAllLetters) {
    TextItem item;
    prepare(item, "QÅgjpqy", 100);
    item.setHeight(15 + 6);
    item.setBleed(3);
    const QImage picture = drawn(item);
    // In an item of the line's own height nothing comes near the edge that would cut it.
    for (int x = 0; x < picture.width(); ++x) {
        EXPECT_GT(qGray(picture.pixel(x, 5 * 4)), 250);
        EXPECT_GT(qGray(picture.pixel(x, (5 + 21) * 4 - 1)), 250);
    }
}

}  // namespace
}  // namespace quorvane::desktop
