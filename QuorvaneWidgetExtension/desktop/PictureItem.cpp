#include "QuorvaneWidgetExtension/desktop/PictureItem.h"

#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <cmath>

#include "QuorvaneWidgetExtension/desktop/PaintedProperty.h"

namespace quorvane::desktop {

PictureItem::PictureItem(QQuickItem* parent) : QQuickPaintedItem{parent} {
    setAntialiasing(true);
}

void PictureItem::setSource(const QString& source) {
    setPainted(*this, source_, source);
}

void PictureItem::setColor(const QColor& color) {
    setPainted(*this, color_, color);
}

void PictureItem::paint(QPainter* painter) {
    QSvgRenderer picture{source_};
    if (!picture.isValid()) return;
    // Drawn aside at the scale of the screen, since the colour replaces what has been drawn.
    const QTransform& transform = painter->deviceTransform();
    const double scale = std::hypot(transform.m11(), transform.m12());
    QImage drawn{QSizeF{width() * scale, height() * scale}.toSize(), QImage::Format_ARGB32_Premultiplied};
    if (drawn.isNull()) return;
    drawn.fill(Qt::transparent);
    QPainter aside{&drawn};
    aside.setRenderHint(QPainter::Antialiasing);
    picture.render(&aside, QRectF{drawn.rect()});
    aside.setCompositionMode(QPainter::CompositionMode_SourceIn);
    aside.fillRect(drawn.rect(), color_);
    aside.end();
    painter->drawImage(QRectF{0, 0, width(), height()}, drawn);
}

}  // namespace quorvane::desktop
