#include "QuorvaneWidgetExtension/desktop/DesktopColorScheme.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

namespace quorvane::desktop {
namespace {

const QString portal = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString portalSettings = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString colorScheme = QStringLiteral("color-scheme");

/// 1 asks for dark, 2 for light, anything else for neither. Older portals wrap the value once more.
std::optional<WidgetColorScheme> read(QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    bool isNumber = false;
    const uint number = value.toUInt(&isNumber);
    if (!isNumber) return std::nullopt;
    if (number == 1) return WidgetColorScheme::Dark;
    if (number == 2) return WidgetColorScheme::Light;
    return std::nullopt;
}

WidgetColorScheme ofPalette() {
    const QPalette palette = QGuiApplication::palette();
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness()
               ? WidgetColorScheme::Dark
               : WidgetColorScheme::Light;
}

}  // namespace

DesktopColorScheme::DesktopColorScheme(QObject* parent) : QObject{parent} {
    qGuiApp->installEventFilter(this);
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    // The slot is found by the names of its types, and this one's is not known before it is used for the first time.
    qRegisterMetaType<QDBusVariant>();
    bus.connect(portal, portalPath, portalSettings, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    QDBusMessage question = QDBusMessage::createMethodCall(portal, portalPath, portalSettings, QStringLiteral("Read"));
    question << appearance << colorScheme;
    auto* const answer = new QDBusPendingCallWatcher{bus.asyncCall(question), this};
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* call) {
        const QDBusPendingReply<QDBusVariant> reply = *call;
        if (reply.isValid()) take(read(QVariant::fromValue(reply.value())));
        call->deleteLater();
    });
}

WidgetColorScheme DesktopColorScheme::current() const {
    return ofPortal_.value_or(ofPalette());
}

bool DesktopColorScheme::eventFilter(QObject* watched, QEvent* event) {
    if (watched == qGuiApp && event->type() == QEvent::ApplicationPaletteChange) Q_EMIT changed();
    return QObject::eventFilter(watched, event);
}

void DesktopColorScheme::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    if (group == appearance && key == colorScheme) take(read(value.variant()));
}

void DesktopColorScheme::take(std::optional<WidgetColorScheme> scheme) {
    if (scheme == ofPortal_) return;
    ofPortal_ = scheme;
    Q_EMIT changed();
}

}  // namespace quorvane::desktop
