#pragma once
#include <QColor>
#include <QList>
#include <QQuickPaintedItem>

namespace quorvane::desktop {

/// Draws a series of days. The points are `MiniSparkline`'s.
class SparklineItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QList<qreal> values READ values WRITE setValues NOTIFY changed)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY changed)

public:
    explicit SparklineItem(QQuickItem* parent = nullptr);

    [[nodiscard]] const QList<qreal>& values() const noexcept { return values_; }
    void setValues(const QList<qreal>& values);
    [[nodiscard]] const QColor& color() const noexcept { return color_; }
    void setColor(const QColor& color);

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void changed();

private:
    QList<qreal> values_;
    QColor color_;
};

}  // namespace quorvane::desktop
