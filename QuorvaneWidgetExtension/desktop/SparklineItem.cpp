#include "QuorvaneWidgetExtension/desktop/SparklineItem.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

#include "QuorvaneWidgetExtension/WidgetComponents/MiniSparkline.h"
#include "QuorvaneWidgetExtension/desktop/PaintedProperty.h"

namespace quorvane::desktop {
namespace {

QColor withOpacity(QColor color, double opacity) {
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

}  // namespace

SparklineItem::SparklineItem(QQuickItem* parent) : QQuickPaintedItem{parent} {
    setAntialiasing(true);
}

void SparklineItem::setValues(const QList<qreal>& values) {
    setPainted(*this, values_, values);
}

void SparklineItem::setColor(const QColor& color) {
    setPainted(*this, color_, color);
}

void SparklineItem::paint(QPainter* painter) {
    if (values_.isEmpty()) return;
    const MiniSparkline sparkline{.values = {values_.begin(), values_.end()}, .tintHex = {}};
    // The stroke's round ends lie within the item.
    const double inset = MiniSparkline::strokeWidth / 2;
    const std::vector<MiniSparkline::Point> points =
        sparkline.normalizedPoints({.width = width() - 2 * inset, .height = height()});
    const auto at = [inset](const MiniSparkline::Point& point) { return QPointF{point.x + inset, point.y}; };

    if (points.size() == 1) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(color_);
        painter->drawEllipse(at(points.front()), MiniSparkline::strokeWidth, MiniSparkline::strokeWidth);
        return;
    }
    QPainterPath line{at(points.front())};
    for (const MiniSparkline::Point& point : points)
        line.lineTo(at(point));
    QPainterPath area = line;
    area.lineTo(at(points.back()).x(), height());
    area.lineTo(at(points.front()).x(), height());
    area.closeSubpath();
    QLinearGradient fill{0, 0, 0, height()};
    fill.setColorAt(0, withOpacity(color_, MiniSparkline::fillOpacityTop));
    fill.setColorAt(1, withOpacity(color_, MiniSparkline::fillOpacityBottom));
    painter->fillPath(area, fill);
    painter->strokePath(line, QPen{color_, MiniSparkline::strokeWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin});
}

}  // namespace quorvane::desktop
