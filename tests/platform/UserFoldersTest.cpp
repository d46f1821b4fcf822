#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "QuorvaneCore/platform/FileStatus.h"
#include "QuorvaneCore/platform/UserFolders.h"
#include "tests/support/ScratchHome.h"

namespace quorvane {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class UserFoldersOfAHome : public ::testing::Test {
protected:
    /// What the exception says; empty if the folder can be made.
    static std::string failure() {
        try {
            static_cast<void>(UserFolders::createQuorvaneSupport());
        } catch (const std::system_error& error) {
            EXPECT_TRUE(error.code());
            return error.what();
        }
        return {};
    }

    [[nodiscard]] unsigned mode(std::string_view folder) const {
        return FileStatus::of(home_.path(folder))->mode & 07777U;
    }

    static std::string homeOfThePasswordDatabase() {
        const passwd* entry = ::getpwuid(::getuid());
        return entry != nullptr && *entry->pw_dir != '\0' ? entry->pw_dir : "/";
    }

    testing::ScratchHome home_;
};

TEST_F(UserFoldersOfAHome, homeIsTheEnvironments) {
    EXPECT_EQ(UserFolders::home(), home_.path());
    ::setenv("HOME", "/somewhere/else", 1);
    EXPECT_EQ(UserFolders::home(), "/somewhere/else");
}

TEST_F(UserFoldersOfAHome, withoutHOMEThePasswordDatabaseCounts) {
    ::unsetenv("HOME");
    EXPECT_EQ(UserFolders::home(), homeOfThePasswordDatabase());
    ::setenv("HOME", "", 1);
    EXPECT_EQ(UserFolders::home(), homeOfThePasswordDatabase());
}

TEST_F(UserFoldersOfAHome, foldersLieUnderTheHome) {
    EXPECT_EQ(UserFolders::applicationSupport(), home_.path("Library/Application Support"));
    EXPECT_EQ(UserFolders::quorvaneSupport(), home_.path("Library/Application Support/Quorvane"));
    EXPECT_FALSE(home_.exists("Library"));
    ::setenv("HOME", "/", 1);
    EXPECT_EQ(UserFolders::applicationSupport(), "/Library/Application Support");
}

TEST_F(UserFoldersOfAHome, newFolderIsForItsUserAlone) {
    const ::mode_t before = ::umask(0);
    EXPECT_EQ(UserFolders::createQuorvaneSupport(), home_.path("Library/Application Support/Quorvane"));
    ::umask(before);
    EXPECT_EQ(mode("Library/Application Support/Quorvane"), 0700U);
}

TEST_F(UserFoldersOfAHome, folderThatIsThereStaysAsItIs) {
    home_.write("Library/Application Support/Quorvane/usage.sqlite", "kept");
    ASSERT_EQ(::chmod(UserFolders::quorvaneSupport().c_str(), 0750), 0);
    EXPECT_EQ(UserFolders::createQuorvaneSupport(), UserFolders::quorvaneSupport());
    EXPECT_EQ(mode("Library/Application Support/Quorvane"), 0750U);
    EXPECT_EQ(home_.read("Library/Application Support/Quorvane/usage.sqlite"), "kept");
}

TEST_F(UserFoldersOfAHome, linkToAFolderIsAFolder) {
    home_.makeFolder("elsewhere");
    home_.makeFolder("Library/Application Support");
    std::filesystem::create_directory_symlink(home_.path("elsewhere"), UserFolders::quorvaneSupport());
    EXPECT_EQ(failure(), "");
}

TEST_F(UserFoldersOfAHome, fileInTheWayIsNamed) {
    home_.write("Library/Application Support/Quorvane", "a file");
    EXPECT_THAT(failure(), HasSubstr(home_.path("Library/Application Support/Quorvane")));
    EXPECT_EQ(home_.read("Library/Application Support/Quorvane"), "a file");
}

TEST_F(UserFoldersOfAHome, danglingLinkInTheWayIsNamed) {
    home_.makeFolder("Library/Application Support");
    std::filesystem::create_directory_symlink(home_.path("nowhere"), UserFolders::quorvaneSupport());
    EXPECT_THAT(failure(), HasSubstr(UserFolders::quorvaneSupport()));
}

TEST_F(UserFoldersOfAHome, fileInThePlaceOfAFolderAboveIsNamed) {
    home_.write("Library/Application Support", "a file");
    EXPECT_THAT(failure(), HasSubstr(home_.path("Library/Application Support")));
    EXPECT_THAT(failure(), Not(HasSubstr("Quorvane")));
    home_.remove("Library");
    home_.write("Library", "a file");
    EXPECT_THAT(failure(), HasSubstr(home_.path("Library")));
    EXPECT_EQ(home_.read("Library"), "a file");
}

}  // namespace
}  // namespace quorvane
