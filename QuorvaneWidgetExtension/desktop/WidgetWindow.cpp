#include "QuorvaneWidgetExtension/desktop/WidgetWindow.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QMoveEvent>
#include <QScreen>
#include <QStyleHints>
#include <algorithm>

namespace quorvane::desktop {
namespace {

bool placesItsWindows() {
    return !QGuiApplication::platformName().startsWith(QStringLiteral("wayland"));
}

bool isOnAScreen(const QRect& area) {
    const QList<QScreen*> screens = QGuiApplication::screens();
    return std::any_of(screens.begin(), screens.end(),
                       [&area](const QScreen* screen) { return screen->geometry().contains(area.center()); });
}

}  // namespace

WidgetWindow::WidgetWindow() {
    // On X11 a utility window, which panels and switchers leave out, below the others.
    setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnBottomHint);
}

bool WidgetWindow::place(QPoint position) {
    if (!placesItsWindows() || !isOnAScreen(QRect{position, size()})) return false;
    setPosition(position);
    return true;
}

void WidgetWindow::mousePressEvent(QMouseEvent* event) {
    WidgetView::mousePressEvent(event);
    if (event->button() == Qt::LeftButton) pressed_ = event->globalPosition().toPoint();
    if (event->button() == Qt::RightButton) Q_EMIT menuRequested(event->globalPosition().toPoint());
}

void WidgetWindow::mouseMoveEvent(QMouseEvent* event) {
    WidgetView::mouseMoveEvent(event);
    if (!(event->buttons() & Qt::LeftButton)) pressed_.reset();
    if (!pressed_) return;
    const QPoint way = event->globalPosition().toPoint() - *pressed_;
    if (way.manhattanLength() < QGuiApplication::styleHints()->startDragDistance()) return;
    // Once a press: from here on the window manager has the pointer.
    pressed_.reset();
    startSystemMove();
}

void WidgetWindow::keyPressEvent(QKeyEvent* event) {
    const bool isMenuKey =
        event->key() == Qt::Key_Menu || (event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier);
    if (!isMenuKey) return WidgetView::keyPressEvent(event);
    Q_EMIT menuRequested(mapToGlobal(QPoint{width() / 2, height() / 2}));
}

void WidgetWindow::moveEvent(QMoveEvent* event) {
    WidgetView::moveEvent(event);
    if (placesItsWindows() && isVisible()) Q_EMIT moved(event->pos());
}

bool WidgetWindow::event(QEvent* event) {
    const bool isTaken = WidgetView::event(event);
    if (event->type() == QEvent::Close) Q_EMIT closed();
    return isTaken;
}

}  // namespace quorvane::desktop
