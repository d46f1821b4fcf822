#pragma once
#include <QQuickView>

#include "QuorvaneWidgetExtension/desktop/WidgetModel.h"

namespace quorvane::desktop {

/// A window without a frame that draws one widget, at the size of its family.
class WidgetView : public QQuickView {
    Q_OBJECT

public:
    /// With a control it draws where that control says, and is never shown itself.
    explicit WidgetView(QQuickRenderControl* control = nullptr);

    void show(const QuorvaneWidgetEntryView& view, const WidgetEnvironment& environment);
    using QQuickView::show;

    [[nodiscard]] const WidgetModel& model() const noexcept { return *model_; }

private:
    WidgetModel* model_;  ///< a child, which outlives what is drawn from it
};

}  // namespace quorvane::desktop
