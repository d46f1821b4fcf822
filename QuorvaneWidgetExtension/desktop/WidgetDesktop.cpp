#include "QuorvaneWidgetExtension/desktop/WidgetDesktop.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>

namespace quorvane::desktop {
namespace {

/// Down from the top right of the screen, each a little further in.
QPoint freePlace(std::size_t taken) {
    constexpr int margin = 24;
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    const int step = margin * static_cast<int>(1 + taken % 8);
    return {screen.right() - 364 - step, screen.top() + step};
}

}  // namespace

WidgetDesktop::WidgetDesktop(QObject* parent) : QObject{parent} {
    if (settings_.instances().isEmpty()) settings_.write(settings_.newInstance(), {});
    const QStringList stored = settings_.instances();
    for (const QString& id : stored)
        make(id);
}

void WidgetDesktop::open() {
    for (const std::unique_ptr<WidgetInstance>& instance : instances_)
        instance->open();
}

void WidgetDesktop::add() {
    const QString id = settings_.newInstance();
    settings_.write(id, {});
    make(id).open();
}

void WidgetDesktop::remove(WidgetInstance& instance) {
    if (instances_.size() == 1) {
        Q_EMIT quitRequested();
        return;
    }
    const auto place = std::find_if(instances_.begin(), instances_.end(),
                                    [&instance](const auto& candidate) { return candidate.get() == &instance; });
    if (place == instances_.end()) return;
    const QString id = instance.id();
    instance.retire();
    // Its menu is still at work, so it goes with the next turn of the event loop, or with the desktop.
    WidgetInstance* const removed = place->release();
    instances_.erase(place);
    removed->setParent(this);
    removed->deleteLater();
    settings_.remove(id);
}

WidgetInstance& WidgetDesktop::make(const QString& id) {
    instances_.push_back(std::make_unique<WidgetInstance>(id, settings_, colorScheme_, freePlace(instances_.size())));
    WidgetInstance& instance = *instances_.back();
    connect(&instance, &WidgetInstance::addRequested, this, &WidgetDesktop::add);
    connect(&instance, &WidgetInstance::removeRequested, this, [this, &instance] { remove(instance); });
    connect(&instance, &WidgetInstance::quitRequested, this, &WidgetDesktop::quitRequested);
    return instance;
}

}  // namespace quorvane::desktop
