#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/model/ProviderExecutableDetection.h"
#include "tests/support/ScopedVariables.h"
#include "tests/support/ScratchHome.h"

namespace quorvane {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;

class ProviderExecutableDetectionTest : public ::testing::Test {
protected:
    /// Puts a file into the home, with or without the right to execute it.
    void put(const std::string& file, bool executable) const {
        home.write(file, "#!/bin/sh\n");
        fs::permissions(home.path(file), executable ? fs::perms{0755} : fs::perms{0644});
    }

    [[nodiscard]] bool finds(const std::vector<std::string>& names, const std::vector<std::string>& folders) const {
        std::vector<std::string> paths;
        for (const std::string& folder : folders)
            paths.push_back(home.path(folder));
        return ProviderExecutableDetection::containsExecutable(names, paths);
    }

    testing::ScratchHome home;
    testing::ScopedVariables variables{"PATH"};
};

TEST_F(ProviderExecutableDetectionTest, findsAnyNameInAnyFolder) {
    put("two/grok", true);
    EXPECT_TRUE(finds({"grok"}, {"two"}));
    EXPECT_TRUE(finds({"other", "grok"}, {"one", "two"}));
    EXPECT_FALSE(finds({"other"}, {"one", "two"}));
    EXPECT_FALSE(finds({"grok"}, {"one"}));
}

TEST_F(ProviderExecutableDetectionTest, emptyListsFindNothing) {
    put("bin/grok", true);
    EXPECT_FALSE(finds({}, {"bin"}));
    EXPECT_FALSE(finds({"grok"}, {}));
    EXPECT_FALSE(finds({}, {}));
}

TEST_F(ProviderExecutableDetectionTest, aFileThatMayNotBeExecutedDoesNotCount) {
    put("bin/grok", false);
    EXPECT_FALSE(finds({"grok"}, {"bin"}));
}

TEST_F(ProviderExecutableDetectionTest, aFolderOfThatNameDoesNotCount) {
    home.makeFolder("bin/grok");
    EXPECT_FALSE(finds({"grok"}, {"bin"}));
    EXPECT_FALSE(finds({""}, {"bin"}));
}

TEST_F(ProviderExecutableDetectionTest, aLinkCountsAsWhatItLeadsTo) {
    put("real/grok-1.2", true);
    home.makeFolder("bin");
    fs::create_symlink(home.path("real/grok-1.2"), home.path("bin/grok"));
    fs::create_symlink(home.path("real/nothing"), home.path("bin/dangling"));
    EXPECT_TRUE(finds({"grok"}, {"bin"}));
    EXPECT_FALSE(finds({"dangling"}, {"bin"}));
}

TEST_F(ProviderExecutableDetectionTest, theUsualFoldersComeBeforeThoseOfThePath) {
    variables.set("PATH", "/usr/bin:/usr/local/bin");
    EXPECT_THAT(ProviderExecutableDetection::defaultSearchDirectories("/home/ada"),
                ElementsAre("/opt/homebrew/bin", "/usr/local/bin", "/home/ada/.npm-global/bin", "/home/ada/.local/bin",
                            "/usr/bin", "/usr/local/bin"));
}

TEST_F(ProviderExecutableDetectionTest, emptyEntriesOfThePathAreLeftOut) {
    variables.set("PATH", "::/a::/b:");
    EXPECT_THAT(ProviderExecutableDetection::defaultSearchDirectories("/h"),
                ElementsAre("/opt/homebrew/bin", "/usr/local/bin", "/h/.npm-global/bin", "/h/.local/bin", "/a", "/b"));
}

TEST_F(ProviderExecutableDetectionTest, withoutAPathTheUsualFoldersRemain) {
    EXPECT_THAT(ProviderExecutableDetection::defaultSearchDirectories("/h"),
                ElementsAre("/opt/homebrew/bin", "/usr/local/bin", "/h/.npm-global/bin", "/h/.local/bin"));
    variables.set("PATH", "");
    EXPECT_EQ(ProviderExecutableDetection::defaultSearchDirectories("/h").size(), 4U);
}

TEST_F(ProviderExecutableDetectionTest, aCommandUnderTheHomeIsFoundThroughTheDefaults) {
    const std::vector<std::string> names{"quorvane-test-agent"};
    const auto search = [&] {
        return ProviderExecutableDetection::containsExecutable(
            names, ProviderExecutableDetection::defaultSearchDirectories(home.path()));
    };
    EXPECT_FALSE(search());
    put(".local/bin/quorvane-test-agent", true);
    EXPECT_TRUE(search());
}

}  // namespace
}  // namespace quorvane
