#pragma once
#include <QObject>

#include "QuorvaneWidgetExtension/desktop/WidgetContent.h"

namespace quorvane::desktop {

/// What one widget shows now. Lives in the thread of the window, like all of this folder.
class WidgetModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the program")
    Q_PROPERTY(QString family READ family NOTIFY changed)
    Q_PROPERTY(quorvane::desktop::WidgetTheme theme READ theme NOTIFY changed)
    Q_PROPERTY(quorvane::desktop::WidgetContent content READ content NOTIFY changed)
    Q_PROPERTY(QString accessibilitySummary READ accessibilitySummary NOTIFY changed)
    Q_PROPERTY(bool isMirrored READ isMirrored NOTIFY changed)

public:
    using QObject::QObject;

    /// From here on shows that entry.
    void show(const QuorvaneWidgetEntryView& view, const WidgetEnvironment& environment);

    [[nodiscard]] const QString& family() const noexcept { return family_; }
    [[nodiscard]] const WidgetTheme& theme() const noexcept { return theme_; }
    [[nodiscard]] const WidgetContent& content() const noexcept { return content_; }
    [[nodiscard]] const QString& accessibilitySummary() const noexcept { return accessibilitySummary_; }
    [[nodiscard]] bool isMirrored() const noexcept { return isMirrored_; }

Q_SIGNALS:
    void changed();

private:
    QString family_;  ///< its raw name
    WidgetTheme theme_;
    WidgetContent content_;
    QString accessibilitySummary_;
    bool isMirrored_ = false;  ///< the locale is written from right to left
};

}  // namespace quorvane::desktop
