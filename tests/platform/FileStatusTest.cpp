#include <filesystem>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "QuorvaneCore/platform/FileStatus.h"
#include "QuorvaneCore/platform/VolumeCapacity.h"
#include "tests/support/ScratchHome.h"

namespace quorvane {
namespace {

class FileStatuses : public ::testing::Test {
protected:
    testing::ScratchHome home_;
};

TEST_F(FileStatuses, fileIsDescribed) {
    const std::string path = home_.write("file", "12345");
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
    const std::optional<FileStatus> status = FileStatus::of(path);
    ASSERT_TRUE(status);
    EXPECT_EQ(status->size, 5);
    EXPECT_TRUE(status->isRegular);
    EXPECT_FALSE(status->isDirectory);
    EXPECT_EQ(status->mode & 07777U, 0640U);
}

TEST_F(FileStatuses, folderIsDescribed) {
    const std::optional<FileStatus> status = FileStatus::of(home_.path());
    ASSERT_TRUE(status);
    EXPECT_TRUE(status->isDirectory);
    EXPECT_FALSE(status->isRegular);
}

TEST_F(FileStatuses, timesAreExactToTheNanosecond) {
    const std::string path = home_.write("file", "x");
    const timespec times[2] = {{.tv_sec = 1, .tv_nsec = 2}, {.tv_sec = 1700000000, .tv_nsec = 123456789}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    const std::optional<FileStatus> status = FileStatus::of(path);
    ASSERT_TRUE(status);
    EXPECT_EQ(status->modified.seconds, 1700000000);
    EXPECT_EQ(status->modified.nanoseconds, 123456789);
    // Setting the times is itself a change of the status, made now.
    EXPECT_GT(status->changed.seconds, status->modified.seconds);
}

TEST_F(FileStatuses, linksAreFollowed) {
    home_.write("file", "12345");
    std::filesystem::create_symlink("file", home_.path("link"));
    std::filesystem::create_symlink("nowhere", home_.path("dangling"));
    EXPECT_EQ(FileStatus::of(home_.path("link"))->size, 5);
    EXPECT_TRUE(FileStatus::of(home_.path("link"))->isRegular);
    EXPECT_FALSE(FileStatus::of(home_.path("dangling")));
}

TEST_F(FileStatuses, ownerAndGroupAreThoseOfTheFile) {
    const std::string path = home_.write("file", "x");
    EXPECT_EQ(FileStatus::of(path)->owner, ::geteuid());
    EXPECT_EQ(FileStatus::of(path)->group, ::getegid());
}

TEST_F(FileStatuses, executableIsAFileThatMayBeExecuted) {
    const std::string path = home_.write("file", "x");
    ASSERT_EQ(::chmod(path.c_str(), 0644), 0);
    std::filesystem::create_symlink("file", home_.path("link"));
    EXPECT_FALSE(FileStatus::isExecutableFile(path));
    EXPECT_FALSE(FileStatus::isExecutableFile(home_.path("link")));
    ASSERT_EQ(::chmod(path.c_str(), 0755), 0);
    EXPECT_TRUE(FileStatus::isExecutableFile(path));
    EXPECT_TRUE(FileStatus::isExecutableFile(home_.path("link")));
    EXPECT_FALSE(FileStatus::isExecutableFile(home_.path()));
    EXPECT_FALSE(FileStatus::isExecutableFile(home_.path("missing")));
}

TEST_F(FileStatuses, nothingThereIsAbsent) {
    EXPECT_FALSE(FileStatus::of(home_.path("missing")));
    EXPECT_FALSE(FileStatus::of(""));
}

TEST_F(FileStatuses, volumeOfAFolderHasACapacity) {
    const std::optional<std::int64_t> capacity = availableVolumeCapacity(home_.path());
    ASSERT_TRUE(capacity);
    EXPECT_GT(*capacity, 0);
    EXPECT_FALSE(availableVolumeCapacity(home_.path("missing")));
}

}  // namespace
}  // namespace quorvane
