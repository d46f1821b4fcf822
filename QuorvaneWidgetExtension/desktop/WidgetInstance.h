#pragma once
#include <QObject>
#include <QTimer>

#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetTimeline.h"
#include "QuorvaneWidgetExtension/desktop/DesktopColorScheme.h"
#include "QuorvaneWidgetExtension/desktop/SnapshotWatcher.h"
#include "QuorvaneWidgetExtension/desktop/WidgetMenu.h"
#include "QuorvaneWidgetExtension/desktop/WidgetSettings.h"
#include "QuorvaneWidgetExtension/desktop/WidgetWindow.h"

namespace quorvane::desktop {

/// One widget of the user's: its window, its settings and its entry, brought up to date.
class WidgetInstance : public QObject {
    Q_OBJECT

public:
    /// `settings` and `desktop` must outlive it. `fallback` is where it stands if it never stood on a
    /// screen that there is.
    WidgetInstance(QString id, WidgetSettings& settings, const DesktopColorScheme& desktop, QPoint fallback,
                   QObject* parent = nullptr);
    ~WidgetInstance() override;

    [[nodiscard]] const QString& id() const noexcept { return id_; }
    [[nodiscard]] WidgetWindow& window() noexcept { return window_; }
    [[nodiscard]] const WidgetWindow& window() const noexcept { return window_; }
    [[nodiscard]] const InstanceSettings& current() const noexcept { return current_; }

    /// Shows the window.
    void open();

    /// From here on is as set, and keeps that.
    void apply(const InstanceSettings& settings);

    /// Draws the entry anew as of now, and reads the file first if its time has come.
    void update();

    /// Reads the file and draws it.
    void reload();

    /// Hides the window; from here on writes no settings any more.
    void retire();

Q_SIGNALS:
    void addRequested();
    void removeRequested();
    void quitRequested();

private:
    void showMenu(QPoint position);
    void save();

    QString id_;
    WidgetSettings& settings_;
    const DesktopColorScheme& desktop_;
    InstanceSettings current_;
    QuorvaneWidgetTimeline timeline_;
    WidgetWindow window_;
    SnapshotWatcher watcher_;
    QTimer minute_;
    QTimer settled_;  ///< saves when the window has come to rest
};

}  // namespace quorvane::desktop
