#include "QuorvaneWidgetExtension/desktop/PictureRenderer.h"

#include <QQuickRenderControl>
#include <QQuickRenderTarget>
#include <cmath>

#include "QuorvaneWidgetExtension/desktop/WidgetView.h"

namespace quorvane::desktop {

QImage renderedPicture(const QuorvaneWidgetEntryView& view, const WidgetEnvironment& environment, double scale) {
    QQuickRenderControl control;
    WidgetView window{&control};
    const QuorvaneWidgetSize points = size(view.family);
    QImage picture{static_cast<int>(std::lround(points.width * scale)),
                   static_cast<int>(std::lround(points.height * scale)), QImage::Format_ARGB32_Premultiplied};
    if (picture.isNull()) return {};
    picture.fill(Qt::transparent);
    picture.setDevicePixelRatio(scale);
    QQuickRenderTarget target = QQuickRenderTarget::fromPaintDevice(&picture);
    target.setDevicePixelRatio(scale);
    window.setRenderTarget(target);
    window.show(view, environment);
    if (window.status() != QQuickView::Ready) return {};
    control.polishItems();
    control.beginFrame();
    control.sync();
    control.render();
    control.endFrame();
    return picture;
}

}  // namespace quorvane::desktop
