#include "QuorvaneCore/snapshots/LocalAutomationSnapshotStore.h"

#include <utility>

#include "QuorvaneCore/platform/AtomicFile.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/FolderCreation.h"
#include "QuorvaneCore/platform/UserFolders.h"
#include "QuorvaneCore/snapshots/LocalAutomationSnapshotEncoder.h"

namespace quorvane {

std::string LocalAutomationSnapshotStore::defaultRootURL() {
    return UserFolders::quorvaneSupport();
}

LocalAutomationSnapshotStore::LocalAutomationSnapshotStore(std::string rootURL) : rootURL_{std::move(rootURL)} {}

std::string LocalAutomationSnapshotStore::snapshotURL() const {
    return FilePath::joining(rootURL_, fileName);
}

void LocalAutomationSnapshotStore::write(const LocalAutomationSnapshot& snapshot) const {
    createFolders(rootURL_);
    replaceFile(snapshotURL(), LocalAutomationSnapshotEncoder::encode(snapshot));
}

}  // namespace quorvane
