#pragma once
#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <optional>

#include "QuorvaneWidgetExtension/WidgetComponents/WidgetColorScheme.h"

namespace quorvane::desktop {

/// Whether the desktop is light or dark: what its settings portal says (org.freedesktop.appearance, color-scheme), else
/// the brightness of the platform's palette.
class DesktopColorScheme : public QObject {
    Q_OBJECT

public:
    /// Asks the portal without waiting for it.
    explicit DesktopColorScheme(QObject* parent = nullptr);

    [[nodiscard]] WidgetColorScheme current() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void take(std::optional<WidgetColorScheme> scheme);

    std::optional<WidgetColorScheme> ofPortal_;
};

}  // namespace quorvane::desktop
