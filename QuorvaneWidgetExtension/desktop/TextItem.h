#pragma once
#include <QColor>
#include <QFont>
#include <QQuickPaintedItem>
#include <QString>

namespace quorvane::desktop {

/// Draws a text in its width. One line shrinks as far as it may; what is too long then ends in an ellipsis, unless it
/// is a figure, of which nothing is ever left out. Several lines do not shrink. Lengths are in points.
/// The toolkit's own text element cuts the tops of round letters where the processor draws.
class TextItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY changed)
    Q_PROPERTY(qreal size READ size WRITE setSize NOTIFY changed)
    Q_PROPERTY(int weight READ weight WRITE setWeight NOTIFY changed)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY changed)
    Q_PROPERTY(qreal minimumScale READ minimumScale WRITE setMinimumScale NOTIFY changed)
    Q_PROPERTY(bool isFigure READ isFigure WRITE setFigure NOTIFY changed)
    Q_PROPERTY(bool isAtTheRight READ isAtTheRight WRITE setAtTheRight NOTIFY changed)
    Q_PROPERTY(int maximumLines READ maximumLines WRITE setMaximumLines NOTIFY changed)
    Q_PROPERTY(qreal bleed READ bleed WRITE setBleed NOTIFY changed)
    Q_PROPERTY(qreal naturalWidth READ naturalWidth NOTIFY changed)
    Q_PROPERTY(qreal leastWidth READ leastWidth NOTIFY changed)
    Q_PROPERTY(qreal naturalHeight READ naturalHeight NOTIFY changed)

public:
    explicit TextItem(QQuickItem* parent = nullptr);

    [[nodiscard]] const QString& text() const noexcept { return text_; }
    void setText(const QString& text);
    [[nodiscard]] qreal size() const noexcept { return size_; }
    void setSize(qreal size);
    [[nodiscard]] int weight() const noexcept { return weight_; }
    void setWeight(int weight);
    [[nodiscard]] const QColor& color() const noexcept { return color_; }
    void setColor(const QColor& color);
    [[nodiscard]] qreal minimumScale() const noexcept { return minimumScale_; }
    void setMinimumScale(qreal scale);
    [[nodiscard]] bool isFigure() const noexcept { return isFigure_; }
    void setFigure(bool isFigure);
    [[nodiscard]] bool isAtTheRight() const noexcept { return isAtTheRight_; }
    void setAtTheRight(bool isAtTheRight);
    [[nodiscard]] int maximumLines() const noexcept { return maximumLines_; }
    void setMaximumLines(int lines);
    /// The margin within the item that letters may reach into.
    [[nodiscard]] qreal bleed() const noexcept { return bleed_; }
    void setBleed(qreal bleed);

    /// Of the whole text in one line; the height is that of the lines in the present width. Without the margin.
    [[nodiscard]] qreal naturalWidth() const;
    [[nodiscard]] qreal leastWidth() const;  ///< at the least scale
    [[nodiscard]] qreal naturalHeight() const;

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void changed();

protected:
    void geometryChange(const QRectF& geometry, const QRectF& old) override;

private:
    [[nodiscard]] QFont font() const;
    [[nodiscard]] qreal room() const { return width() - 2 * bleed_; }
    /// The text as it stands in the lines, the last one cut to its width.
    [[nodiscard]] QStringList lines() const;

    QString text_;
    qreal size_ = 12;
    int weight_ = QFont::Normal;
    QColor color_;
    qreal minimumScale_ = 1;
    bool isFigure_ = false;
    bool isAtTheRight_ = false;
    int maximumLines_ = 1;
    qreal bleed_ = 0;
};

}  // namespace quorvane::desktop
