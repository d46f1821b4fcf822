#include "QuorvaneCore/snapshots/LocalAutomationSnapshotStore.h"

#include <utility>

#include "QuorvaneCore/platform/AtomicFile.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/UserFolders.h"
#include "QuorvaneCore/snapshots/LocalAutomationSnapshotEncoder.h"
#include "QuorvaneCore/snapshots/detail/SnapshotFolder.h"

namespace quorvane {

std::string LocalAutomationSnapshotStore::defaultRootURL() {
    return UserFolders::quorvaneSupport();
}

LocalAutomationSnapshotStore::LocalAutomationSnapshotStore(std::string rootURL) : rootURL_{std::move(rootURL)} {}

std::string LocalAutomationSnapshotStore::snapshotURL() const {
    return FilePath::joining(rootURL_, fileName);
}

void LocalAutomationSnapshotStore::write(const LocalAutomationSnapshot& snapshot) const {
    detail::createSnapshotFolder(rootURL_);
    replaceFile(snapshotURL(), LocalAutomationSnapshotEncoder::encode(snapshot));
}

}  // namespace quorvane
