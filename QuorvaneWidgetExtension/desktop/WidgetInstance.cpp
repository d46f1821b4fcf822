#include "QuorvaneWidgetExtension/desktop/WidgetInstance.h"

#include <QWindow>
#include <chrono>
#include <utility>

#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/snapshots/WidgetSnapshotStore.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetTimelineProvider.h"

namespace quorvane::desktop {

using namespace std::chrono_literals;

WidgetInstance::WidgetInstance(QString id, WidgetSettings& settings, const DesktopColorScheme& desktop, QPoint fallback,
                               QObject* parent)
    : QObject{parent},
      id_{std::move(id)},
      settings_{settings},
      desktop_{desktop},
      current_{settings.read(id_)},
      watcher_{QString::fromStdString(WidgetSnapshotStore{}.snapshotURL())} {
    connect(&desktop_, &DesktopColorScheme::changed, this, &WidgetInstance::update);
    connect(&watcher_, &SnapshotWatcher::changed, this, &WidgetInstance::reload);
    connect(&window_, &WidgetWindow::menuRequested, this, &WidgetInstance::showMenu);
    connect(&window_, &WidgetWindow::closed, this, &WidgetInstance::quitRequested);
    // Ages are told in minutes. The system's clock is asked at each, since a timer's own stands still in a suspended
    // machine.
    minute_.setTimerType(Qt::VeryCoarseTimer);
    connect(&minute_, &QTimer::timeout, this, &WidgetInstance::update);
    minute_.start(1min);
    settled_.setSingleShot(true);
    settled_.setInterval(400ms);
    connect(&settled_, &QTimer::timeout, this, &WidgetInstance::save);
    connect(&window_, &WidgetWindow::moved, this, [this](QPoint position) {
        current_.position = position;
        settled_.start();
    });
    reload();
    if (!current_.position || !window_.place(*current_.position)) window_.place(fallback);
}

WidgetInstance::~WidgetInstance() {
    if (settled_.isActive()) save();
}

void WidgetInstance::open() {
    window_.show();
}

void WidgetInstance::apply(const InstanceSettings& settings) {
    const std::optional<QPoint> position = current_.position;
    current_ = settings;
    current_.position = position;
    save();
    reload();
}

void WidgetInstance::reload() {
    timeline_ = QuorvaneWidgetTimelineProvider{}.timeline(current_.configuration, {});
    update();
}

void WidgetInstance::update() {
    const Date now = Clock::now();
    if (now >= timeline_.reloadAfter) return reload();
    window_.WidgetView::show(
        {.entry = timeline_.entries.front(), .family = current_.family},
        {.colorScheme = resolved(current_.colorScheme, desktop_.current()), .locale = Locale::current(), .now = now});
}

void WidgetInstance::retire() {
    window_.disconnect(this);
    window_.hide();
    settled_.stop();
}

void WidgetInstance::showMenu(QPoint position) {
    auto* const menu = new WidgetMenu{current_};
    menu->setAttribute(Qt::WA_DeleteOnClose);
    connect(menu, &WidgetMenu::chosen, this, &WidgetInstance::apply);
    connect(menu, &WidgetMenu::addRequested, this, &WidgetInstance::addRequested);
    connect(menu, &WidgetMenu::removeRequested, this, &WidgetInstance::removeRequested);
    connect(menu, &WidgetMenu::quitRequested, this, &WidgetInstance::quitRequested);
    menu->winId();
    menu->windowHandle()->setTransientParent(&window_);
    menu->popup(position);
}

void WidgetInstance::save() {
    settled_.stop();
    settings_.write(id_, current_);
}

}  // namespace quorvane::desktop
