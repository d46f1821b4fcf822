#pragma once
#include <QPoint>
#include <optional>

#include "QuorvaneWidgetExtension/desktop/WidgetView.h"

namespace quorvane::desktop {

/// The widget on the desktop: below other windows where the window system can, movable with the pointer. A click of
/// the right button, the menu key and Shift+F10 ask for the menu.
class WidgetWindow : public WidgetView {
    Q_OBJECT

public:
    WidgetWindow();

    /// Moves there and gives true if that is on a screen and programs may place their windows (not on Wayland).
    bool place(QPoint position);

Q_SIGNALS:
    void menuRequested(QPoint position);  ///< on the screens
    void moved(QPoint position);
    void closed();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    bool event(QEvent* event) override;

private:
    std::optional<QPoint> pressed_;  ///< where the left button went down, until the window is moved from there
};

}  // namespace quorvane::desktop
