#include "QuorvaneWidgetExtension/desktop/WidgetView.h"

#include <QQmlEngine>
#include <QSurfaceFormat>
#include <QUrl>

/// Written by Qt's tools: makes the types of this folder known to the drawing files. Called by name, or the linker
/// leaves it out of a program.
void qml_register_types_Quorvane_Widget();

namespace quorvane::desktop {

WidgetView::WidgetView(QQuickRenderControl* control) : QQuickView{QUrl{}, control}, model_{new WidgetModel{this}} {
    qml_register_types_Quorvane_Widget();
    setFlag(Qt::FramelessWindowHint);
    setColor(Qt::transparent);  // around the round corners
    QSurfaceFormat format = requestedFormat();
    format.setAlphaBufferSize(8);
    setFormat(format);
    setResizeMode(QQuickView::SizeRootObjectToView);
    setTitle(QStringLiteral("Quorvane"));
    engine()->addImportPath(QStringLiteral("qrc:/qt/qml"));
}

void WidgetView::show(const QuorvaneWidgetEntryView& view, const WidgetEnvironment& environment) {
    const QuorvaneWidgetSize points = quorvane::size(view.family);
    const QSize wanted{points.width, points.height};
    setMinimumSize(wanted);
    setMaximumSize(wanted);
    resize(wanted);
    model_->show(view, environment);
    if (source().isEmpty()) {
        setInitialProperties({{QStringLiteral("model"), QVariant::fromValue(model_)}});
        setSource(QUrl{QStringLiteral("qrc:/qt/qml/Quorvane/Widget/QuorvaneWidgetEntryView.qml")});
    }
}

}  // namespace quorvane::desktop
