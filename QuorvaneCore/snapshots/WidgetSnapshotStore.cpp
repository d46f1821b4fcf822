#include "QuorvaneCore/snapshots/WidgetSnapshotStore.h"

#include <exception>
#include <utility>

#include "QuorvaneCore/platform/AtomicFile.h"
#include "QuorvaneCore/platform/FileContents.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/FolderCreation.h"
#include "QuorvaneCore/platform/UserFolders.h"
#include "QuorvaneCore/snapshots/WidgetSnapshotStoreError.h"
#include "QuorvaneCore/snapshots/detail/WidgetSnapshotJSON.h"

namespace quorvane {
namespace {

constexpr std::string_view folderName = "Widget";

}  // namespace

std::string WidgetSnapshotStore::defaultRootURL(const SharedContainerLookup& containers) {
    const std::optional<std::string> container = containers(appGroupID);
    return FilePath::joining(container ? *container : UserFolders::quorvaneSupport(), folderName);
}

bool WidgetSnapshotStore::resolvedRootIsAppGroup(const SharedContainerLookup& containers) {
    return containers(appGroupID).has_value();
}

WidgetSnapshotStore::WidgetSnapshotStore(std::string rootURL) : rootURL_{std::move(rootURL)} {}

std::string WidgetSnapshotStore::snapshotURL() const {
    return FilePath::joining(rootURL_, fileName);
}

void WidgetSnapshotStore::write(const WidgetSnapshot& snapshot) const {
    createFolders(rootURL_);
    replaceFile(snapshotURL(), detail::encodeWidgetSnapshot(snapshot));
}

WidgetSnapshot WidgetSnapshotStore::read() const {
    WidgetSnapshot snapshot = detail::decodeWidgetSnapshot(readText(snapshotURL()));
    if (snapshot.schemaVersion != WidgetSnapshot::currentSchemaVersion) {
        throw WidgetSnapshotStoreError{WidgetSnapshotStoreError::Kind::UnsupportedSchemaVersion, snapshot.schemaVersion,
                                       WidgetSnapshot::currentSchemaVersion};
    }
    return snapshot;
}

std::optional<WidgetSnapshot> WidgetSnapshotStore::readIfAvailable() const {
    try {
        return read();
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

}  // namespace quorvane
