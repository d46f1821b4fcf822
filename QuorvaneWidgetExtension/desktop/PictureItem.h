#pragma once
#include <QColor>
#include <QQuickPaintedItem>
#include <QString>

namespace quorvane::desktop {

/// Draws a picture of lines and areas (SVG) in one colour, sharp at any scale.
class PictureItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString source READ source WRITE setSource NOTIFY changed)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY changed)

public:
    explicit PictureItem(QQuickItem* parent = nullptr);

    /// A resource's path.
    [[nodiscard]] const QString& source() const noexcept { return source_; }
    void setSource(const QString& source);
    /// Of all that the picture fills or strokes, whatever its own colours.
    [[nodiscard]] const QColor& color() const noexcept { return color_; }
    void setColor(const QColor& color);

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void changed();

private:
    QString source_;
    QColor color_;
};

}  // namespace quorvane::desktop
