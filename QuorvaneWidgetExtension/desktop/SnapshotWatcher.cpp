#include "QuorvaneWidgetExtension/desktop/SnapshotWatcher.h"

#include <QDir>
#include <QFileInfo>
#include <utility>

namespace quorvane::desktop {
namespace {

QString nearestFolder(const QString& file) {
    QString folder = QFileInfo{file}.path();
    while (!QFileInfo::exists(folder)) {
        const QString above = QFileInfo{folder}.path();
        if (above == folder) break;
        folder = above;
    }
    return folder;
}

}  // namespace

SnapshotWatcher::SnapshotWatcher(QString file, QObject* parent) : QObject{parent}, file_{std::move(file)} {
    settled_.setSingleShot(true);
    settled_.setInterval(30);
    const auto begin = [this] { settled_.start(); };
    connect(&watcher_, &QFileSystemWatcher::fileChanged, this, begin);
    connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, begin);
    connect(&settled_, &QTimer::timeout, this, [this] {
        watch();
        Q_EMIT changed();
    });
    watch();
}

void SnapshotWatcher::watch() {
    const QString folder = nearestFolder(file_);
    const QStringList folders = watcher_.directories();
    for (const QString& old : folders) {
        if (old != folder) watcher_.removePath(old);
    }
    if (!folders.contains(folder)) watcher_.addPath(folder);
    // A replaced file is another one, and no longer the one that was watched.
    if (!watcher_.files().isEmpty()) watcher_.removePaths(watcher_.files());
    if (QFileInfo::exists(file_)) watcher_.addPath(file_);
}

}  // namespace quorvane::desktop
