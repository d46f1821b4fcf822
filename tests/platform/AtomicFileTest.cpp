#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "QuorvaneCore/platform/AtomicFile.h"
#include "QuorvaneCore/platform/FileContents.h"
#include "QuorvaneCore/platform/FileStatus.h"
#include "tests/support/ScratchHome.h"

namespace quorvane {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

/// The error with which a replacement fails, naming `named` or else `path`; no error if it succeeds.
std::error_code failureOf(const std::string& path, std::string_view bytes, const std::string& named = "") {
    try {
        replaceFile(path, bytes);
    } catch (const std::system_error& failure) {
        EXPECT_THAT(failure.what(), HasSubstr(named.empty() ? path : named));
        return failure.code();
    }
    return {};
}

std::ptrdiff_t entryCount(const std::string& folder) {
    const fs::directory_iterator entries{folder};
    return std::distance(begin(entries), end(entries));
}

class AtomicFiles : public ::testing::Test {
protected:
    void SetUp() override { home_.makeFolder("box"); }

    [[nodiscard]] unsigned mode(std::string_view file) const { return FileStatus::of(home_.path(file))->mode & 07777U; }

    testing::ScratchHome home_;
};

TEST_F(AtomicFiles, newFileHasTheBytesAndTheModeAskedFor) {
    const ::mode_t before = ::umask(077);  // not the process's mask but the caller decides
    const std::string bytes{"a\0b\n\xff", 5};
    replaceFile(home_.path("box/new"), bytes);
    replaceFile(home_.path("box/private"), "p", 0600);
    ::umask(before);
    EXPECT_EQ(home_.read("box/new"), bytes);
    EXPECT_EQ(mode("box/new"), 0644U);
    EXPECT_EQ(mode("box/private"), 0600U);
    EXPECT_EQ(entryCount(home_.path("box")), 2);
}

TEST_F(AtomicFiles, modeOfTheOldFileIsKept) {
    for (const unsigned kept : {0600U, 0755U, 0444U, 04755U}) {
        const std::string path = home_.write("box/file", "old and longer");
        ASSERT_EQ(::chmod(path.c_str(), kept), 0);
        replaceFile(path, "new", 0640);
        EXPECT_EQ(home_.read("box/file"), "new");
        EXPECT_EQ(mode("box/file"), kept);
        home_.remove("box/file");
    }
}

TEST_F(AtomicFiles, ownerAndGroupOfTheOldFileAreKeptWhereTheyMayBe) {
    const std::string path = home_.write("box/file", "old");
    const bool mayGiveAway = ::geteuid() == 0;
    if (mayGiveAway) {
        ASSERT_EQ(::chown(path.c_str(), 12345, 54321), 0);
    }
    ASSERT_EQ(::chmod(path.c_str(), 04755), 0);
    const FileStatus before = FileStatus::of(path).value();
    replaceFile(path, "new");
    const FileStatus after = FileStatus::of(path).value();
    EXPECT_EQ(after.owner, before.owner);
    EXPECT_EQ(after.group, before.group);
    EXPECT_EQ(after.mode, before.mode);
    EXPECT_EQ(home_.read("box/file"), "new");
}

TEST_F(AtomicFiles, fileOfAnotherOwnerLosesTheRightToRunAsItsOwner) {
    ASSERT_EQ(::chmod(home_.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(home_.path("box").c_str(), 0777), 0);
    const std::string path = home_.write("box/file", "old");
    ASSERT_EQ(::chmod(path.c_str(), 04755), 0);
    const auto asNobody = [&] {
        const bool isAnother = ::geteuid() == 0;
        if (isAnother && ::setuid(65534) != 0) std::_Exit(2);
        replaceFile(path, "new");
        std::_Exit((FileStatus::of(path)->mode & 07777U) == (isAnother ? 0755U : 04755U) ? 0 : 1);
    };
    EXPECT_EXIT(asNobody(), ::testing::ExitedWithCode(0), "");
    EXPECT_EQ(home_.read("box/file"), "new");
}

TEST_F(AtomicFiles, emptyContentIsAContent) {
    const std::string path = home_.write("box/file", "old");
    replaceFile(path, "");
    EXPECT_EQ(home_.read("box/file"), "");
}

TEST_F(AtomicFiles, readerThatHasTheOldFileOpenKeepsIt) {
    const std::string path = home_.write("box/file", "old");
    fs::create_hard_link(path, home_.path("second"));
    replaceFile(path, "new");
    EXPECT_EQ(home_.read("box/file"), "new");
    EXPECT_EQ(home_.read("second"), "old");
}

TEST_F(AtomicFiles, linkIsFollowedAndKept) {
    home_.write("elsewhere/target", "old");
    ASSERT_EQ(::chmod(home_.path("elsewhere/target").c_str(), 0600), 0);
    fs::create_symlink("../elsewhere/target", home_.path("box/relative"));
    fs::create_symlink(home_.path("box/relative"), home_.path("chain"));
    replaceFile(home_.path("chain"), "new");
    EXPECT_TRUE(fs::is_symlink(home_.path("chain")));
    EXPECT_TRUE(fs::is_symlink(home_.path("box/relative")));
    EXPECT_FALSE(fs::is_symlink(home_.path("elsewhere/target")));
    EXPECT_EQ(home_.read("elsewhere/target"), "new");
    EXPECT_EQ(mode("elsewhere/target"), 0600U);
    EXPECT_EQ(entryCount(home_.path("box")), 1);
    EXPECT_EQ(entryCount(home_.path("elsewhere")), 1);
}

TEST_F(AtomicFiles, linkInALinkedFolderIsReadFromWhereItLies) {
    home_.write("real/deep/target", "old");
    fs::create_symlink("deep/target", home_.path("real/link"));
    fs::create_directory_symlink("real", home_.path("shortcut"));
    replaceFile(home_.path("shortcut/link"), "new");
    EXPECT_EQ(home_.read("real/deep/target"), "new");
    EXPECT_TRUE(fs::is_symlink(home_.path("real/link")));
}

TEST_F(AtomicFiles, danglingLinkIsKeptAndItsFileCreated) {
    home_.makeFolder("elsewhere");
    fs::create_symlink("../elsewhere/target", home_.path("box/link"));
    replaceFile(home_.path("box/link"), "new", 0600);
    EXPECT_TRUE(fs::is_symlink(home_.path("box/link")));
    EXPECT_EQ(home_.read("elsewhere/target"), "new");
    EXPECT_EQ(mode("elsewhere/target"), 0600U);
    EXPECT_EQ(entryCount(home_.path("box")), 1);
}

TEST_F(AtomicFiles, danglingLinkIntoAMissingFolderFails) {
    fs::create_symlink(home_.path("missing/target"), home_.path("box/link"));
    EXPECT_EQ(failureOf(home_.path("box/link"), "new", home_.path("missing/target")),
              std::errc::no_such_file_or_directory);
    EXPECT_TRUE(fs::is_symlink(home_.path("box/link")));
    EXPECT_FALSE(home_.exists("missing"));
}

TEST_F(AtomicFiles, linksInACircleFail) {
    fs::create_symlink("two", home_.path("box/one"));
    fs::create_symlink("one", home_.path("box/two"));
    EXPECT_EQ(failureOf(home_.path("box/one"), "new"), std::errc::too_many_symbolic_link_levels);
    EXPECT_EQ(entryCount(home_.path("box")), 2);
}

TEST_F(AtomicFiles, folderInTheFilesPlaceFailsAndLeavesNoTemporaryFile) {
    home_.write("box/file/inside", "x");
    EXPECT_EQ(failureOf(home_.path("box/file"), "new"), std::errc::is_a_directory);
    EXPECT_EQ(entryCount(home_.path("box")), 1);
    EXPECT_EQ(home_.read("box/file/inside"), "x");
}

TEST_F(AtomicFiles, missingFolderFailsAndIsNotCreated) {
    EXPECT_EQ(failureOf(home_.path("missing/file"), "new"), std::errc::no_such_file_or_directory);
    EXPECT_FALSE(home_.exists("missing"));
}

TEST_F(AtomicFiles, fileInTheFoldersPlaceFails) {
    const std::string file = home_.write("box/file", "x");
    EXPECT_EQ(failureOf(file + "/below", "new"), std::errc::not_a_directory);
    EXPECT_EQ(home_.read("box/file"), "x");
}

TEST_F(AtomicFiles, readerSeesOneOfTheContentsWhole) {
    const std::string path = home_.path("box/file");
    const std::string first(50000, 'a');
    const std::string second(70000, 'b');
    replaceFile(path, first);
    std::atomic<bool> done{false};
    std::thread writer{[&] {
        for (int round = 0; round < 60; ++round)
            replaceFile(path, round % 2 == 0 ? second : first);
        done = true;
    }};
    int torn = 0;
    while (!done) {
        const std::optional<std::string> seen = readFile(path);
        if (seen != first && seen != second) ++torn;
    }
    writer.join();
    EXPECT_EQ(torn, 0);
}

/// In a process of its own: exits with 0 if the replacement fails for `reason` and leaves all as it was.
[[noreturn]] void failsWithoutATrace(const std::string& folder, std::errc reason) {
    const std::string path = folder + "/file";
    replaceFile(path, "old");
    const std::ptrdiff_t descriptors = entryCount("/proc/self/fd");
    for (int round = 0; round < 3; ++round) {
        if (failureOf(path, std::string(1000000, 'n')) != reason) std::_Exit(1);
        if (readFile(path) != "old") std::_Exit(2);
        if (entryCount(folder) != 1) std::_Exit(3);
        if (entryCount("/proc/self/fd") != descriptors) std::_Exit(4);
    }
    replaceFile(path, "small enough");
    std::_Exit(readFile(path) == "small enough" ? 0 : 5);
}

void limitFileSize() {
    const rlimit limit{.rlim_cur = 65536, .rlim_max = 65536};
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0 || std::signal(SIGXFSZ, SIG_IGN) == SIG_ERR) std::_Exit(10);
}

/// Puts a volume of 64 KiB at `folder`, seen by this process only. False if this user may not.
bool mountSmallVolume(const std::string& folder) {
    return ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=64k") == 0;
}

TEST_F(AtomicFiles, writeBeyondTheLargestFileFailsWithoutATrace) {
    const auto inChild = [this] {
        limitFileSize();
        failsWithoutATrace(home_.path("box"), std::errc::file_too_large);
    };
    EXPECT_EXIT(inChild(), ::testing::ExitedWithCode(0), "");
}

TEST_F(AtomicFiles, fullVolumeFailsWithoutATrace) {
    const auto inChild = [this] {
        if (mountSmallVolume(home_.path("box"))) {
            failsWithoutATrace(home_.path("box"), std::errc::no_space_on_device);
        }
        limitFileSize();  // the next best thing for a user who may not mount
        failsWithoutATrace(home_.path("box"), std::errc::file_too_large);
    };
    EXPECT_EXIT(inChild(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace quorvane
