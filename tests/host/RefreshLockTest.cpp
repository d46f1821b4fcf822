#include <chrono>
#include <filesystem>
#include <future>
#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneHost/RefreshLock.h"
#include "tests/host/ClaudeHome.h"

namespace quorvane::testing {
namespace {

using ::testing::IsEmpty;

TEST(RefreshLock, anotherProcessWaitsUntilItIsGivenBack) {
    const ScratchHome home;
    writeCalls(home);
    ASSERT_EQ(runNow({"refresh"}).status, 0);
    std::optional<host::RefreshLock> lock{std::in_place, home.path(indexFile)};
    std::future<ProgramRun> waiting = std::async(std::launch::async, [] { return runNow({"label"}); });
    EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds{300}), std::future_status::timeout);
    lock.reset();
    const ProgramRun run = waiting.get();
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, "$5.00\n");
    EXPECT_THAT(run.error, IsEmpty());
}

TEST(RefreshLock, whoRefreshesNothingDoesNotWait) {
    const ScratchHome home;
    writeCalls(home);
    ASSERT_EQ(runNow({"refresh"}).status, 0);
    const host::RefreshLock lock{home.path(indexFile)};
    EXPECT_EQ(runNow({"limits"}).status, 0);
    EXPECT_EQ(runNow({"capture"}).status, 0);
    EXPECT_EQ(runNow({"prices"}).status, 0);
}

TEST(RefreshLock, leavesNoFile) {
    const ScratchHome home;
    home.makeFolder(quorvaneFolder);
    { const host::RefreshLock lock{home.path(indexFile)}; }
    EXPECT_TRUE(std::filesystem::is_empty(home.path(quorvaneFolder)));
}

TEST(RefreshLock, aFolderThatIsNotThereIsNoReasonToWait) {
    const ScratchHome home;
    const host::RefreshLock first{home.path(indexFile)};
    const host::RefreshLock second{home.path(indexFile)};
    EXPECT_FALSE(home.exists(quorvaneFolder));
}

}  // namespace
}  // namespace quorvane::testing
