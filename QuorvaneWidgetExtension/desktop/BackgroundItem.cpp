#include "QuorvaneWidgetExtension/desktop/BackgroundItem.h"

#include <QLinearGradient>
#include <QPainter>

#include "QuorvaneWidgetExtension/desktop/PaintedProperty.h"

namespace quorvane::desktop {

BackgroundItem::BackgroundItem(QQuickItem* parent) : QQuickPaintedItem{parent} {
    setAntialiasing(true);
}

void BackgroundItem::setColors(const QList<QColor>& colors) {
    setPainted(*this, colors_, colors);
}

void BackgroundItem::setRim(const QColor& color) {
    setPainted(*this, rim_, color);
}

void BackgroundItem::setRadius(qreal radius) {
    setPainted(*this, radius_, radius);
}

void BackgroundItem::setMirrored(bool isMirrored) {
    setPainted(*this, isMirrored_, isMirrored);
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
