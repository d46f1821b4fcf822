#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QPalette>
#include <QTest>

#include <gtest/gtest.h>

#include "QuorvaneWidgetExtension/desktop/DesktopColorScheme.h"

namespace quorvane::desktop {
namespace {

/// A settings portal on the tests' own bus, with a connection of its own as another program has.
class Portal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    explicit Portal(uint value) : value_{value} {
        connection().registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), this,
                                    QDBusConnection::ExportAllSlots);
        isThere = connection().registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
    }
    ~Portal() override {
        connection().unregisterService(QStringLiteral("org.freedesktop.portal.Desktop"));
        connection().unregisterObject(QStringLiteral("/org/freedesktop/portal/desktop"));
    }
    Portal(const Portal&) = delete;
    Portal& operator=(const Portal&) = delete;

    void change(uint value) {
        value_ = value;
        QDBusMessage signal = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/portal/desktop"),
                                                         QStringLiteral("org.freedesktop.portal.Settings"),
                                                         QStringLiteral("SettingChanged"));
        signal << QStringLiteral("org.freedesktop.appearance") << QStringLiteral("color-scheme")
               << QVariant::fromValue(QDBusVariant{value});
        connection().send(signal);
    }

    bool isThere = false;

public Q_SLOTS:
    /// Wrapped twice, as this call of the portal does.
    QDBusVariant Read(const QString& group, const QString& key) const {
        if (group != QStringLiteral("org.freedesktop.appearance") || key != QStringLiteral("color-scheme")) return {};
        return QDBusVariant{QVariant::fromValue(QDBusVariant{value_})};
    }

private:
    static QDBusConnection connection() {
        return QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("portal"));
    }

    uint value_;
};

bool becomes(const DesktopColorScheme& desktop, WidgetColorScheme scheme) {
    return QTest::qWaitFor([&] { return desktop.current() == scheme; }, 5000);
}

TEST(DesktopColorSchemeTest, isWhatThePortalSays) {
    const Portal portal{1};
    ASSERT_TRUE(portal.isThere);
    const DesktopColorScheme desktop;
    EXPECT_TRUE(becomes(desktop, WidgetColorScheme::Dark));
}

TEST(DesktopColorSchemeTest, followsThePortalsChanges) {
    Portal portal{1};
    ASSERT_TRUE(portal.isThere);
    const DesktopColorScheme desktop;
    ASSERT_TRUE(becomes(desktop, WidgetColorScheme::Dark));
    portal.change(2);
    EXPECT_TRUE(becomes(desktop, WidgetColorScheme::Light));
    portal.change(1);
    EXPECT_TRUE(becomes(desktop, WidgetColorScheme::Dark));
}

/// The answer to the first question may be under way when the setting changes.
TEST(DesktopColorSchemeTest, followsAChangeAtItsStart) {
    Portal portal{2};
    ASSERT_TRUE(portal.isThere);
    const DesktopColorScheme desktop;
    portal.change(1);
    EXPECT_TRUE(becomes(desktop, WidgetColorScheme::Dark));
}

TEST(DesktopColorSchemeTest, isThePalettesWithoutAPortalOrAWishOfIts) {
    const QPalette old = QGuiApplication::palette();
    const DesktopColorScheme desktop;
    QPalette dark = old;
    dark.setColor(QPalette::Window, Qt::black);
    dark.setColor(QPalette::WindowText, Qt::white);
    int changes = 0;
    QObject::connect(&desktop, &DesktopColorScheme::changed, [&changes] { ++changes; });
    QGuiApplication::setPalette(dark);
    EXPECT_TRUE(becomes(desktop, WidgetColorScheme::Dark));
    EXPECT_TRUE(QTest::qWaitFor([&changes] { return changes > 0; }, 5000));
    QGuiApplication::setPalette(old);
    EXPECT_TRUE(becomes(desktop, WidgetColorScheme::Light));
}

}  // namespace
}  // namespace quorvane::desktop

#include "DesktopColorSchemeTest.moc"
