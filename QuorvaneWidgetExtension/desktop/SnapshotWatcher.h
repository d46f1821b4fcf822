#pragma once
#include <QFileSystemWatcher>
#include <QObject>
#include <QString>
#include <QTimer>

namespace quorvane::desktop {

/// Tells when a file is made, replaced, changed or removed, also while its folders do not exist yet.
class SnapshotWatcher : public QObject {
    Q_OBJECT

public:
    explicit SnapshotWatcher(QString file, QObject* parent = nullptr);

Q_SIGNALS:
    /// A little after the last of several changes in a row. May come without a change of the file itself.
    void changed();

private:
    /// Watches what there is now: the file, and its folder or else the nearest one above it that exists.
    void watch();

    QString file_;
    QFileSystemWatcher watcher_;
    QTimer settled_;
};

}  // namespace quorvane::desktop
