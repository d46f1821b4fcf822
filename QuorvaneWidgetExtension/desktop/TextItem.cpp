#include "QuorvaneWidgetExtension/desktop/TextItem.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>
#include <QTextLayout>
#include <algorithm>
#include <cmath>

#include "QuorvaneWidgetExtension/desktop/PaintedProperty.h"

namespace quorvane::desktop {
namespace {

/// From one line to the next, in parts of the size.
constexpr qreal lineHeight = 1.25;

}  // namespace

TextItem::TextItem(QQuickItem* parent) : QQuickPaintedItem{parent} {
    setAntialiasing(true);
}

void TextItem::setText(const QString& text) {
    setPainted(*this, text_, text);
}

void TextItem::setSize(qreal size) {
    setPainted(*this, size_, size);
}

void TextItem::setWeight(int weight) {
    setPainted(*this, weight_, weight);
}

void TextItem::setColor(const QColor& color) {
    setPainted(*this, color_, color);
}

void TextItem::setMinimumScale(qreal scale) {
    setPainted(*this, minimumScale_, scale);
}

void TextItem::setFigure(bool isFigure) {
    setPainted(*this, isFigure_, isFigure);
}

void TextItem::setAtTheRight(bool isAtTheRight) {
    setPainted(*this, isAtTheRight_, isAtTheRight);
}

void TextItem::setMaximumLines(int lines) {
    setPainted(*this, maximumLines_, lines);
}

void TextItem::setBleed(qreal bleed) {
    setPainted(*this, bleed_, bleed);
}

void TextItem::geometryChange(const QRectF& geometry, const QRectF& old) {
    QQuickPaintedItem::geometryChange(geometry, old);
    if (geometry.size() != old.size()) update();
    if (maximumLines_ > 1 && !qFuzzyCompare(geometry.width(), old.width())) Q_EMIT changed();
}

QFont TextItem::font() const {
    QFont font = QGuiApplication::font();
    font.setPixelSize(std::max(1, static_cast<int>(std::lround(size_))));
    font.setWeight(static_cast<QFont::Weight>(weight_));
    // Letters fitted to the pixels would be of another width at each scale.
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

qreal TextItem::naturalWidth() const {
    return std::ceil(QFontMetricsF{font()}.horizontalAdvance(text_));
}

qreal TextItem::leastWidth() const {
    return std::ceil(naturalWidth() * minimumScale_);
}

qreal TextItem::naturalHeight() const {
    const qreal one = std::round(size_ * lineHeight);
    return maximumLines_ == 1 ? one : one * static_cast<qreal>(std::max<qsizetype>(1, lines().size()));
}

QStringList TextItem::lines() const {
    const QFont font = this->font();
    const QFontMetricsF metrics{font};
    if (maximumLines_ == 1) {
        const qreal fit = std::max(minimumScale_, std::min<qreal>(1, room() / std::max<qreal>(1, naturalWidth())));
        return {isFigure_ ? text_ : metrics.elidedText(text_, Qt::ElideRight, std::ceil(room() / fit))};
    }
    QStringList result;
    QTextLayout layout{text_, font};
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(std::max<qreal>(1, room()));
        const bool isLast = result.size() + 1 == maximumLines_;
        const QString text = isLast ? text_.mid(line.textStart()) : text_.mid(line.textStart(), line.textLength());
        result.append(isLast ? metrics.elidedText(text, Qt::ElideRight, room()) : text.trimmed());
        if (isLast) break;
    }
    layout.endLayout();
    return result;
}

void TextItem::paint(QPainter* painter) {
    const QFont font = this->font();
    const QFontMetricsF metrics{font};
    const QStringList lines = this->lines();
    painter->setFont(font);
    painter->setPen(color_);
    const qreal step = std::round(size_ * lineHeight);
    const qreal height = step * static_cast<qreal>(lines.size());
    // The letters stand in the middle of their line, and the lines in the middle of the item.
    qreal middle = (this->height() - height + step) / 2;
    for (const QString& line : lines) {
        const qreal width = metrics.horizontalAdvance(line);
        // Beyond the least scale only figures are too long.
        const qreal fit = lines.size() == 1 && width > room() ? std::max(minimumScale_, room() / width) : 1;
        painter->save();
        painter->translate(isAtTheRight_ ? this->width() - bleed_ - width * fit : bleed_, middle);
        painter->scale(fit, fit);
        painter->drawText(QPointF{0, metrics.ascent() - (metrics.ascent() + metrics.descent()) / 2}, line);
        painter->restore();
        middle += step;
    }
}

}  // namespace quorvane::desktop
