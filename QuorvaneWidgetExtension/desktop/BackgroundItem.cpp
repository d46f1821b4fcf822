#include "QuorvaneWidgetExtension/desktop/BackgroundItem.h"

#include <QLinearGradient>
#include <QPainter>

namespace quorvane::desktop {

BackgroundItem::BackgroundItem(QQuickItem* parent) : QQuickPaintedItem{parent} {
    setAntialiasing(true);
}

void BackgroundItem::setColors(const QList<QColor>& colors) {
    if (colors == colors_) return;
    colors_ = colors;
    update();
    Q_EMIT changed();
}

void BackgroundItem::setRim(const QColor& color) {
    if (color == rim_) return;
    rim_ = color;
    update();
    Q_EMIT changed();
}

void BackgroundItem::setRadius(qreal radius) {
    if (qFuzzyCompare(radius, radius_)) return;
    radius_ = radius;
    update();
    Q_EMIT changed();
}

void BackgroundItem::setMirrored(bool isMirrored) {
    if (isMirrored == isMirrored_) return;
    isMirrored_ = isMirrored;
    update();
    Q_EMIT changed();
}

void BackgroundItem::paint(QPainter* painter) {
    if (colors_.size() < 2) return;
    const QRectF area{0, 0, width(), height()};
    QLinearGradient gradient = isMirrored_ ? QLinearGradient{area.topRight(), area.bottomLeft()}
                                           : QLinearGradient{area.topLeft(), area.bottomRight()};
    for (qsizetype place = 0; place < colors_.size(); ++place) {
        gradient.setColorAt(static_cast<qreal>(place) / static_cast<qreal>(colors_.size() - 1), colors_[place]);
    }
    painter->setPen(Qt::NoPen);
    painter->setBrush(gradient);
    painter->drawRoundedRect(area, radius_, radius_);
    painter->setPen(QPen{rim_, 1});
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(area.adjusted(0.5, 0.5, -0.5, -0.5), radius_ - 0.5, radius_ - 0.5);
}

}  // namespace quorvane::desktop
