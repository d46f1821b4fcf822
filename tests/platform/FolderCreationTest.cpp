#include <cerrno>
#include <filesystem>
#include <system_error>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "QuorvaneCore/platform/FileMode.h"
#include "QuorvaneCore/platform/FileStatus.h"
#include "QuorvaneCore/platform/FolderCreation.h"
#include "tests/support/ScratchHome.h"

namespace quorvane {
namespace {

using testing::ScratchHome;

std::uint32_t modeOf(const std::string& path) {
    const std::optional<FileStatus> status = FileStatus::of(path);
    return status ? status->mode & 07777U : 0;
}

int failureOf(const std::string& folder) {
    try {
        createFolders(folder);
    } catch (const std::system_error& error) {
        EXPECT_NE(std::string{error.what()}.find(folder), std::string::npos) << error.what();
        return error.code().value();
    }
    return 0;
}

TEST(FolderCreation, makesWhatIsMissing) {
    const ScratchHome home;
    createFolders(home.path("a/b/c"));
    EXPECT_TRUE(home.exists("a/b/c"));
    home.write("a/b/c/file", "x");
    createFolders(home.path("a/b/c"));
    EXPECT_EQ(home.read("a/b/c/file"), "x");
}

TEST(FolderCreation, folderOfTheSystemIsThePersonsAlone) {
    const ScratchHome home;
    const std::string support = home.path("Library/Application Support/Quorvane");
    createFolders(support + "/deeper");
    EXPECT_EQ(modeOf(support), 0700);
    EXPECT_TRUE(home.exists(support + "/deeper"));
    setFileMode(support, 0750);
    createFolders(support);
    EXPECT_EQ(modeOf(support), 0750) << "one that is there is left alone";
    createFolders(support + "2");
    EXPECT_NE(modeOf(support + "2"), 0700);
}

TEST(FolderCreation, fileInTheWayIsTold) {
    const ScratchHome home;
    home.write("a", "x");
    EXPECT_EQ(failureOf(home.path("a/b")), ENOTDIR);
    EXPECT_EQ(failureOf(home.path("a")), ENOTDIR);
    home.write("Library/Application Support/Quorvane", "x");
    EXPECT_NE(failureOf(home.path("Library/Application Support/Quorvane")), 0);
    EXPECT_EQ(home.read("a"), "x");
}

TEST(FileMode, isSetThroughALinkToo) {
    const ScratchHome home;
    const std::string file = home.write("file", "x");
    setFileMode(file, 0640);
    EXPECT_EQ(modeOf(file), 0640);
    std::filesystem::create_symlink(file, home.path("link"));
    setFileMode(home.path("link"), 0755);
    EXPECT_EQ(modeOf(file), 0755);
}

TEST(FileMode, ofAMissingFileIsTold) {
    const ScratchHome home;
    try {
        setFileMode(home.path("none"), 0755);
        FAIL() << "there is no such file";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code().value(), ENOENT);
        EXPECT_NE(std::string{error.what()}.find(home.path("none")), std::string::npos);
    }
}

}  // namespace
}  // namespace quorvane
