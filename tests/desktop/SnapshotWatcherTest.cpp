#include <QSignalSpy>
#include <QTest>
#include <cstdio>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/AtomicFile.h"
#include "QuorvaneWidgetExtension/desktop/SnapshotWatcher.h"
#include "tests/support/ScratchHome.h"

namespace quorvane::desktop {
namespace {

class SnapshotWatcherTest : public ::testing::Test {
protected:
    testing::ScratchHome home;
    const std::string file = "Library/Quorvane/Widget/widget-snapshot.json";
    [[nodiscard]] QString path() const { return QString::fromStdString(home.path(file)); }
};

TEST_F(SnapshotWatcherTest, tellsWhenTheFileIsReplacedAgainAndAgain) {
    home.write(file, "one");
    const SnapshotWatcher watcher{path()};
    QSignalSpy spy{&watcher, &SnapshotWatcher::changed};
    for (const char* content : {"two", "three", "four"}) {
        replaceFile(home.path(file), content);
        EXPECT_TRUE(spy.wait(5000)) << content;
    }
}

TEST_F(SnapshotWatcherTest, tellsWhenTheFileAppearsInFoldersThatWereNotThere) {
    const SnapshotWatcher watcher{path()};
    QSignalSpy spy{&watcher, &SnapshotWatcher::changed};
    // Each folder is a change of the one above it, and the file is seen though it came with them or after them.
    for (const char* folder : {"Library", "Library/Quorvane", "Library/Quorvane/Widget"}) {
        home.makeFolder(folder);
        EXPECT_TRUE(spy.wait(5000)) << folder;
    }
    home.write(file, "one");
    EXPECT_TRUE(spy.wait(5000));
    replaceFile(home.path(file), "two");
    EXPECT_TRUE(spy.wait(5000));
}

TEST_F(SnapshotWatcherTest, tellsWhenTheFileIsWrittenInPlaceOrRemoved) {
    home.write(file, "one");
    const SnapshotWatcher watcher{path()};
    QSignalSpy spy{&watcher, &SnapshotWatcher::changed};
    home.append(file, "two");
    EXPECT_TRUE(spy.wait(5000));
    home.remove(file);
    EXPECT_TRUE(spy.wait(5000));
    home.write(file, "three");
    EXPECT_TRUE(spy.wait(5000));
}

TEST_F(SnapshotWatcherTest, tellsManyChangesInARowOnce) {
    home.write(file, "one");
    const SnapshotWatcher watcher{path()};
    QSignalSpy spy{&watcher, &SnapshotWatcher::changed};
    for (int turn = 0; turn < 20; ++turn)
        replaceFile(home.path(file), std::to_string(turn));
    EXPECT_TRUE(spy.wait(5000));
    QTest::qWait(200);
    EXPECT_LE(spy.count(), 2);
}

}  // namespace
}  // namespace quorvane::desktop
