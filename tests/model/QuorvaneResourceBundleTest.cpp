#include <filesystem>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "QuorvaneCore/model/QuorvaneResourceBundle.h"
#include "QuorvaneCore/platform/FileContents.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/ScratchHome.h"

namespace quorvane {
namespace {

namespace fs = std::filesystem;

TEST(QuorvaneResourceBundle, libraryFindsItsOwnInTheBuildTree) {
    const std::optional<std::string> bundle = QuorvaneResourceBundle::bundle("QuorvaneCore");
    ASSERT_TRUE(bundle);
    EXPECT_TRUE(fs::equivalent(*bundle, QUORVANE_BUILD_BUNDLE));
    const auto prices = QuorvaneResourceBundle::url("pricing-default", "json", "QuorvaneCore");
    ASSERT_TRUE(prices);
    EXPECT_EQ(readFile(*prices), readFile(QUORVANE_PRICE_LIST));
}

TEST(QuorvaneResourceBundle, secondLookUpOfAFoundBundleWalksNoMore) {
    const auto first = QuorvaneResourceBundle::bundle("QuorvaneCore");
    const std::int64_t walks = QuorvaneResourceBundle::candidateWalkCount();
    EXPECT_EQ(QuorvaneResourceBundle::bundle("QuorvaneCore"), first);
    EXPECT_TRUE(QuorvaneResourceBundle::url("pricing-default", "json", "QuorvaneCore"));
    EXPECT_FALSE(QuorvaneResourceBundle::url("no such resource", "json", "QuorvaneCore"));
    EXPECT_EQ(QuorvaneResourceBundle::candidateWalkCount(), walks);
}

TEST(QuorvaneResourceBundle, everyLookUpOfAnUnknownBundleWalksAgain) {
    const std::int64_t walks = QuorvaneResourceBundle::candidateWalkCount();
    EXPECT_FALSE(QuorvaneResourceBundle::bundle("NoSuchBundle"));
    EXPECT_EQ(QuorvaneResourceBundle::candidateWalkCount(), walks + 1);
    EXPECT_FALSE(QuorvaneResourceBundle::bundle("NoSuchBundle"));
    EXPECT_FALSE(QuorvaneResourceBundle::url("x", "json", "NoSuchBundle"));
    EXPECT_EQ(QuorvaneResourceBundle::candidateWalkCount(), walks + 3);
}

TEST(QuorvaneResourceBundle, nameIsExact) {
    EXPECT_FALSE(QuorvaneResourceBundle::bundle("quorvanecore"));
    EXPECT_FALSE(QuorvaneResourceBundle::bundle("Quorvane_QuorvaneCore.bundle"));
    EXPECT_FALSE(QuorvaneResourceBundle::bundle(""));
}

TEST(QuorvaneResourceBundle, resourceIsFoundWithItsExtensionSplitOffOrNot) {
    const auto split = QuorvaneResourceBundle::url("pricing-default", "json", "QuorvaneCore");
    ASSERT_TRUE(split);
    EXPECT_EQ(QuorvaneResourceBundle::url("pricing-default.json", std::nullopt, "QuorvaneCore"), split);
    EXPECT_EQ(QuorvaneResourceBundle::url("pricing-default.json", "", "QuorvaneCore"), split);
    EXPECT_FALSE(QuorvaneResourceBundle::url("pricing-default", std::nullopt, "QuorvaneCore"));
    EXPECT_FALSE(QuorvaneResourceBundle::url("pricing-default", "plist", "QuorvaneCore"));
}

TEST(QuorvaneResourceBundle, threadsFindTheSameBundle) {
    std::vector<std::optional<std::string>> found(4);
    std::vector<std::thread> threads;
    for (std::optional<std::string>& one : found)
        threads.emplace_back([&one] { one = QuorvaneResourceBundle::bundle("QuorvaneCore"); });
    for (std::thread& thread : threads)
        thread.join();
    for (const std::optional<std::string>& one : found)
        EXPECT_EQ(one, QuorvaneResourceBundle::bundle("QuorvaneCore"));
}

/// A program that was copied to a folder of the scratch home, and bundles put in places around it.
class BundleFinder : public ::testing::Test {
protected:
    /// Copies the program to `path`.
    void installProgram(const std::string& path) {
        program_ = home_.path(path);
        fs::create_directories(fs::path{program_}.parent_path());
        fs::copy_file(QUORVANE_BUNDLE_FINDER, program_);
    }

    /// Makes the bundle "Scratch" in `folder`. Returns its absolute path.
    [[nodiscard]] std::string putBundle(const std::string& folder) const {
        const std::string bundle = (fs::path{folder} / "Quorvane_Scratch.bundle").string();
        home_.write(bundle + "/data.json", folder);
        return home_.path(bundle);
    }

    /// What the program, started in `folder`, prints.
    [[nodiscard]] std::string output(std::vector<std::string> arguments, const std::string& folder) const {
        arguments.insert(arguments.begin(), program_);
        const testing::ProgramRun run = testing::ProgramRun::of(arguments, {.folder = folder});
        EXPECT_EQ(run.status, 0) << run.error;
        return run.output;
    }

    /// The bundle "Scratch" that the program finds, or a resource of it; empty if there is none.
    [[nodiscard]] std::string found(std::vector<std::string> arguments = {}, const std::string& folder = "/") const {
        arguments.insert(arguments.begin(), "Scratch");
        const std::string output = this->output(arguments, folder);
        const std::size_t end = output.find('\n');
        EXPECT_EQ(output.substr(end), "\n1\n") << "one walk";
        const std::string path = output.substr(0, end);
        return path.empty() ? "" : fs::path{path}.lexically_normal().string();
    }

    testing::ScratchHome home_;
    std::string program_;
};

TEST_F(BundleFinder, nothingThereIsNothingFound) {
    installProgram("bin/finder");
    EXPECT_EQ(found(), "");
}

TEST_F(BundleFinder, bundleBesideTheProgramIsFoundWhereverBothAreMoved) {
    for (const char* folder : {"first", "second/deeper", "name with blanks"}) {
        installProgram(std::string{folder} + "/finder");
        const std::string bundle = putBundle(folder);
        EXPECT_EQ(found(), bundle);
        EXPECT_EQ(found({}, home_.path()), bundle);
        EXPECT_EQ(found({"data", "json"}, "/usr"), bundle + "/data.json");
        EXPECT_EQ(found({"missing", "json"}), "");
        home_.remove(folder);
    }
}

TEST_F(BundleFinder, bundleOfAnInstalledPrefixIsFound) {
    installProgram("prefix/bin/finder");
    const std::string bundle = putBundle("prefix/share/quorvane");
    EXPECT_EQ(found(), bundle);
    EXPECT_EQ(found({}, home_.path()), bundle);
}

TEST_F(BundleFinder, librarysOwnBundleIsFoundInAPrefix) {
    installProgram("prefix/bin/finder");
    const std::string bundle = "prefix/share/quorvane/Quorvane_QuorvaneCore.bundle";
    home_.makeFolder(bundle);
    fs::copy_file(QUORVANE_PRICE_LIST, home_.path(bundle + "/pricing-default.json"));
    EXPECT_EQ(output({"QuorvaneCore", "pricing-default", "json"}, "/"),
              home_.path(bundle + "/pricing-default.json") + "\n1\n");
}

TEST_F(BundleFinder, programIsFoundBehindALink) {
    installProgram("prefix/bin/finder");
    const std::string bundle = putBundle("prefix/share/quorvane");
    home_.makeFolder("elsewhere");
    fs::create_symlink(program_, home_.path("elsewhere/link"));
    program_ = home_.path("elsewhere/link");
    EXPECT_EQ(found(), bundle);
}

TEST_F(BundleFinder, resourceFoldersOfTheProgramsFolderAreSearched) {
    installProgram("app/finder");
    const std::string inContents = putBundle("app/Contents/Resources");
    EXPECT_EQ(found(), inContents);
    const std::string inResources = putBundle("app/Resources");
    EXPECT_EQ(found(), inResources);
    const std::string beside = putBundle("app");
    EXPECT_EQ(found(), beside);
}

TEST_F(BundleFinder, installedPrefixComesBeforeTheProgramsFolder) {
    installProgram("prefix/bin/finder");
    const std::string beside = putBundle("prefix/bin");
    EXPECT_EQ(found(), beside);
    const std::string shared = putBundle("prefix/share/quorvane");
    EXPECT_EQ(found(), shared);
}

TEST_F(BundleFinder, nearerFolderComesFirst) {
    installProgram("a/b/c/finder");
    const std::string far = putBundle("a");
    EXPECT_EQ(found(), far);
    const std::string near = putBundle("a/b/Contents/Resources");
    EXPECT_EQ(found(), near);
}

TEST_F(BundleFinder, eightLevelsAreSearchedAndNoMore) {
    installProgram("1/2/3/4/5/6/7/8/finder");
    const std::string ninth = putBundle(".");
    EXPECT_EQ(found(), "");
    const std::string eighth = putBundle("1");
    EXPECT_EQ(found(), eighth);
}

TEST_F(BundleFinder, argumentThatIsAPathLeadsToABundle) {
    installProgram("programs/finder");
    const std::string bundle = putBundle("data/project");
    home_.write("data/project/sub/file.txt", "x");
    // Two more arguments would name a resource, so it is the bundle's own file that is asked for.
    EXPECT_EQ(found({"data", "json", home_.path("data/project/sub/file.txt")}), bundle + "/data.json");
    EXPECT_EQ(found({"data", "json", home_.path("data/project")}), bundle + "/data.json");
    EXPECT_EQ(found({"data", "json", home_.path("data/project/not/there")}), bundle + "/data.json");
    EXPECT_EQ(found({"data", "json", "./file.txt"}, home_.path("data/project/sub")), bundle + "/data.json");
    // Without a slash it is no path, and the working folder alone does not count.
    EXPECT_EQ(found({"data", "json", "file.txt"}, home_.path("data/project")), "");
}

TEST_F(BundleFinder, programsOwnPlaceComesBeforeTheArguments) {
    installProgram("programs/finder");
    const std::string own = putBundle("programs");
    const std::string other = putBundle("data");
    EXPECT_EQ(found({"data", "json", home_.path("data/x")}), own + "/data.json");
    home_.remove("programs/Quorvane_Scratch.bundle");
    EXPECT_EQ(found({"data", "json", home_.path("data/x")}), other + "/data.json");
}

TEST_F(BundleFinder, fileOfABundlesNameIsNoBundle) {
    installProgram("programs/sub/finder");
    home_.write("programs/sub/Quorvane_Scratch.bundle", "a file");
    const std::string bundle = putBundle("programs");
    EXPECT_EQ(found(), bundle);
}

}  // namespace
}  // namespace quorvane
