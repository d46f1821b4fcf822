#pragma once
#include <QColor>
#include <QList>
#include <QString>
#include <QVariantList>

#include <QtQml/qqmlregistration.h>

#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetEntryView.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetPalette.h"

namespace quorvane::desktop {

// What the drawing files see of an entry: finished texts, colours and lengths in points, and nothing left to decide.
// Plain values; an empty text stands for what is not shown.

[[nodiscard]] QColor qColor(const WidgetColor& color);

/// The colours that do not depend on the data.
struct WidgetTheme {
    Q_GADGET
    QML_VALUE_TYPE(widgetTheme)
    Q_PROPERTY(QColor primaryText MEMBER primaryText CONSTANT)
    Q_PROPERTY(QColor mutedText MEMBER mutedText CONSTANT)
    Q_PROPERTY(QColor warningText MEMBER warningText CONSTANT)
    Q_PROPERTY(QColor hairline MEMBER hairline CONSTANT)
    Q_PROPERTY(QColor badgeFill MEMBER badgeFill CONSTANT)
    Q_PROPERTY(QList<QColor> background MEMBER background CONSTANT)
    Q_PROPERTY(QColor honeyWash MEMBER honeyWash CONSTANT)
    Q_PROPERTY(QColor markRim MEMBER markRim CONSTANT)
    Q_PROPERTY(QColor mascotBadge MEMBER mascotBadge CONSTANT)
    Q_PROPERTY(QColor markInk MEMBER markInk CONSTANT)
    Q_PROPERTY(QColor gaugeTrack MEMBER gaugeTrack CONSTANT)

public:
    QColor primaryText, mutedText, warningText;
    QColor hairline;   ///< around the widget and between its parts
    QColor badgeFill;  ///< behind the word of a badge
    QList<QColor> background;
    QColor honeyWash, markRim, mascotBadge;
    QColor markInk;  ///< of the mark on its badge, which is as bright in both schemes
    QColor gaugeTrack;

    [[nodiscard]] static WidgetTheme of(WidgetColorScheme scheme);
    friend bool operator==(const WidgetTheme&, const WidgetTheme&) = default;
};

/// A remark in its colour.
struct WidgetRemark {
    Q_GADGET
    QML_VALUE_TYPE(widgetRemark)
    Q_PROPERTY(QString text MEMBER text CONSTANT)
    Q_PROPERTY(QColor color MEMBER color CONSTANT)

public:
    QString text;
    QColor color;

    friend bool operator==(const WidgetRemark&, const WidgetRemark&) = default;
};

/// A provider's glyph on its chip.
struct WidgetChip {
    Q_GADGET
    QML_VALUE_TYPE(widgetChip)
    Q_PROPERTY(QString picture MEMBER picture CONSTANT)
    Q_PROPERTY(QColor color MEMBER color CONSTANT)
    Q_PROPERTY(QColor glyphColor MEMBER glyphColor CONSTANT)
    Q_PROPERTY(qreal container MEMBER container CONSTANT)
    Q_PROPERTY(qreal glyph MEMBER glyph CONSTANT)

public:
    QString picture;  ///< a resource's path
    QColor color, glyphColor;
    qreal container = 0;
    qreal glyph = 0;

    friend bool operator==(const WidgetChip&, const WidgetChip&) = default;
};

/// A provider in a row or in a cell.
struct WidgetProviderLine {
    Q_GADGET
    QML_VALUE_TYPE(widgetProviderLine)
    Q_PROPERTY(quorvane::desktop::WidgetChip chip MEMBER chip CONSTANT)
    Q_PROPERTY(QString name MEMBER name CONSTANT)
    Q_PROPERTY(qreal textSize MEMBER textSize CONSTANT)
    Q_PROPERTY(qreal minimumScale MEMBER minimumScale CONSTANT)
    Q_PROPERTY(QString badge MEMBER badge CONSTANT)
    Q_PROPERTY(QString value MEMBER value CONSTANT)
    Q_PROPERTY(qreal valueColumn MEMBER valueColumn CONSTANT)
    Q_PROPERTY(bool hasLimit MEMBER hasLimit CONSTANT)
    Q_PROPERTY(qreal limitFraction MEMBER limitFraction CONSTANT)
    Q_PROPERTY(QColor limitColor MEMBER limitColor CONSTANT)

public:
    WidgetChip chip;
    QString name;
    qreal textSize = 0;
    qreal minimumScale = 1;
    QString badge;
    QString value;
    qreal valueColumn = 0;
    bool hasLimit = false;
    qreal limitFraction = 0;
    QColor limitColor;

    friend bool operator==(const WidgetProviderLine&, const WidgetProviderLine&) = default;
};

/// The list of providers.
struct WidgetGauges {
    Q_GADGET
    QML_VALUE_TYPE(widgetGauges)
    Q_PROPERTY(bool isGrid MEMBER isGrid CONSTANT)
    Q_PROPERTY(QVariantList providers MEMBER providers CONSTANT)
    Q_PROPERTY(qreal spacing MEMBER spacing CONSTANT)
    Q_PROPERTY(qreal limitColumn MEMBER limitColumn CONSTANT)
    Q_PROPERTY(QString more MEMBER more CONSTANT)

public:
    bool isGrid = false;
    QVariantList providers;  ///< of `WidgetProviderLine`
    qreal spacing = 0;
    qreal limitColumn = 0;
    QString more;
};

/// The line of the days.
struct WidgetSeries {
    Q_GADGET
    QML_VALUE_TYPE(widgetSeries)
    Q_PROPERTY(QList<qreal> values MEMBER values CONSTANT)
    Q_PROPERTY(QColor color MEMBER color CONSTANT)

public:
    QList<qreal> values;
    QColor color;

    friend bool operator==(const WidgetSeries&, const WidgetSeries&) = default;
};

/// All of one entry. Each size of widget shows its own part of the fields.
struct WidgetContent {
    Q_GADGET
    QML_VALUE_TYPE(widgetContent)
    Q_PROPERTY(QString productName MEMBER productName CONSTANT)
    Q_PROPERTY(QString title MEMBER title CONSTANT)
    Q_PROPERTY(bool compactHeader MEMBER compactHeader CONSTANT)
    Q_PROPERTY(QString totalToday MEMBER totalToday CONSTANT)
    Q_PROPERTY(QString todayLabel MEMBER todayLabel CONSTANT)
    Q_PROPERTY(QString badge MEMBER badge CONSTANT)
    Q_PROPERTY(QString totalWindow MEMBER totalWindow CONSTANT)
    Q_PROPERTY(QString windowLabel MEMBER windowLabel CONSTANT)
    Q_PROPERTY(quorvane::desktop::WidgetSeries series MEMBER series CONSTANT)
    Q_PROPERTY(quorvane::desktop::WidgetGauges gauges MEMBER gauges CONSTANT)
    Q_PROPERTY(quorvane::desktop::WidgetRemark caption MEMBER caption CONSTANT)
    Q_PROPERTY(quorvane::desktop::WidgetRemark freshness MEMBER freshness CONSTANT)
    Q_PROPERTY(quorvane::desktop::WidgetRemark notice MEMBER notice CONSTANT)

public:
    QString productName;
    QString title;
    bool compactHeader = false;
    QString totalToday;
    QString todayLabel;
    QString badge;
    QString totalWindow;
    QString windowLabel;
    WidgetSeries series;
    WidgetGauges gauges;
    WidgetRemark caption;
    WidgetRemark freshness;
    WidgetRemark notice;

    [[nodiscard]] static WidgetContent of(const QuorvaneWidgetEntryView& view, const WidgetEnvironment& environment);
};

}  // namespace quorvane::desktop
