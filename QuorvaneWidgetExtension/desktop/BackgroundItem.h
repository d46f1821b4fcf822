#pragma once
#include <QColor>
#include <QList>
#include <QQuickPaintedItem>

namespace quorvane::desktop {

/// Fills the widget: a gradient from the top leading to the bottom trailing corner, with round corners.
class BackgroundItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QList<QColor> colors READ colors WRITE setColors NOTIFY changed)
    Q_PROPERTY(QColor rim READ rim WRITE setRim NOTIFY changed)
    Q_PROPERTY(qreal radius READ radius WRITE setRadius NOTIFY changed)
    Q_PROPERTY(bool isMirrored READ isMirrored WRITE setMirrored NOTIFY changed)

public:
    explicit BackgroundItem(QQuickItem* parent = nullptr);

    /// Evenly apart.
    [[nodiscard]] const QList<QColor>& colors() const noexcept { return colors_; }
    void setColors(const QList<QColor>& colors);
    /// Of the hairline around the widget.
    [[nodiscard]] const QColor& rim() const noexcept { return rim_; }
    void setRim(const QColor& color);
    [[nodiscard]] qreal radius() const noexcept { return radius_; }
    void setRadius(qreal radius);
    /// Leading is right.
    [[nodiscard]] bool isMirrored() const noexcept { return isMirrored_; }
    void setMirrored(bool isMirrored);

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void changed();

private:
    QList<QColor> colors_;
    QColor rim_;
    qreal radius_ = 0;
    bool isMirrored_ = false;
};

}  // namespace quorvane::desktop
