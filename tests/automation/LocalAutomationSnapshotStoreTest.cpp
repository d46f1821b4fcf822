#include <filesystem>
#include <limits>
#include <system_error>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/snapshots/LocalAutomationSnapshotEncoder.h"
#include "QuorvaneCore/snapshots/LocalAutomationSnapshotStore.h"
#include "QuorvaneCore/snapshots/SnapshotCodingError.h"
#include "tests/automation/SampleAutomationSnapshot.h"
#include "tests/support/ScratchHome.h"

namespace quorvane::testing {
namespace {

const std::string folder = "Library/Application Support/Quorvane";
const std::string file = folder + "/latest-snapshot.json";

std::size_t entriesIn(const std::string& path) {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator{path}, {}));
}

TEST(LocalAutomationSnapshotStore, writesTheEncodersTextIntoTheSystemsFolder) {
    const ScratchHome home;
    LocalAutomationSnapshotStore{}.write(sampleAutomationSnapshot());
    EXPECT_EQ(home.read(file), LocalAutomationSnapshotEncoder::encode(sampleAutomationSnapshot()));
    EXPECT_EQ(LocalAutomationSnapshotStore{}.snapshotURL(), home.path(file));
    EXPECT_EQ(std::filesystem::status(home.path(folder)).permissions(), std::filesystem::perms::owner_all);
}

TEST(LocalAutomationSnapshotStore, aRecordThatCannotBeEncodedLeavesTheOldFile) {
    const ScratchHome home;
    LocalAutomationSnapshotStore{}.write(sampleAutomationSnapshot());
    const std::string before = home.read(file);
    LocalAutomationSnapshot broken = sampleAutomationSnapshot();
    broken.series = {std::numeric_limits<double>::quiet_NaN()};
    EXPECT_THROW(LocalAutomationSnapshotStore{}.write(broken), SnapshotCodingError);
    EXPECT_EQ(home.read(file), before);
    EXPECT_EQ(entriesIn(home.path(folder)), 1U);
}

TEST(LocalAutomationSnapshotStore, aFolderInTheFilesPlaceIsAnErrorThatNamesIt) {
    const ScratchHome home;
    home.makeFolder(file + "/inside");
    try {
        LocalAutomationSnapshotStore{}.write(sampleAutomationSnapshot());
        FAIL() << "nothing was thrown";
    } catch (const std::system_error& error) {
        EXPECT_THAT(error.what(), ::testing::HasSubstr(home.path(file)));
    }
    EXPECT_EQ(entriesIn(home.path(folder)), 1U);
}

TEST(LocalAutomationSnapshotStore, aFileInTheFoldersPlaceIsAnError) {
    const ScratchHome home;
    home.write(folder, "mine");
    EXPECT_THROW(LocalAutomationSnapshotStore{}.write(sampleAutomationSnapshot()), std::system_error);
    EXPECT_EQ(home.read(folder), "mine");
}

}  // namespace
}  // namespace quorvane::testing
