#include <algorithm>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "QuorvaneCore/platform/DirectoryWalk.h"
#include "tests/support/ScratchHome.h"

namespace quorvane {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class DirectoryWalks : public ::testing::Test {
protected:
    void put(const std::string& file) { home_.write("logs/" + file, "x"); }

    /// The entries below "logs", relative to it.
    [[nodiscard]] std::vector<std::string> entries(std::string_view extension = "jsonl") const {
        return relative(DirectoryWalk::entries(home_.path("logs"), extension), "logs");
    }

    [[nodiscard]] std::vector<std::string> relative(std::vector<std::string> paths, const std::string& root) const {
        const std::string prefix = home_.path(root) + "/";
        for (std::string& path : paths) {
            EXPECT_TRUE(path.starts_with(prefix)) << path;
            path.erase(0, prefix.size());
        }
        return paths;
    }

    testing::ScratchHome home_;
};

TEST_F(DirectoryWalks, findsFilesInNestedFolders) {
    put("a.jsonl");
    put("one/b.jsonl");
    put("one/two/three/four/c.jsonl");
    home_.makeFolder("logs/empty");
    EXPECT_THAT(entries(), UnorderedElementsAre("a.jsonl", "one/b.jsonl", "one/two/three/four/c.jsonl"));
}

TEST_F(DirectoryWalks, extensionMustBeExactlyTheSame) {
    put("a.jsonl");
    put("b.JSONL");
    put("c.json");
    put("d.jsonl2");
    put("e.jsonl.bak");
    put("jsonl");
    put("f.tar.jsonl");
    EXPECT_THAT(entries(), UnorderedElementsAre("a.jsonl", "f.tar.jsonl"));
    EXPECT_THAT(entries("JSONL"), ElementsAre("b.JSONL"));
}

TEST_F(DirectoryWalks, hiddenFilesAndHiddenFoldersArePassedOver) {
    put(".a.jsonl");
    put(".jsonl");
    put(".hidden/b.jsonl");
    put("seen/.git/objects/c.jsonl");
    put("seen/d.jsonl");
    EXPECT_THAT(entries(), ElementsAre("seen/d.jsonl"));
}

TEST_F(DirectoryWalks, rootItselfMayBeHidden) {
    home_.write(".agent/a.jsonl", "x");
    EXPECT_THAT(relative(DirectoryWalk::entries(home_.path(".agent"), "jsonl"), ".agent"), ElementsAre("a.jsonl"));
}

TEST_F(DirectoryWalks, linksToFoldersAreNotEntered) {
    home_.write("elsewhere/a.jsonl", "x");
    put("b.jsonl");
    put("sub/c.jsonl");
    fs::create_directory_symlink(home_.path("elsewhere"), home_.path("logs/link"));
    fs::create_directory_symlink(home_.path("logs"), home_.path("logs/sub/loop"));
    EXPECT_THAT(entries(), UnorderedElementsAre("b.jsonl", "sub/c.jsonl"));
    // Not even one whose name makes it an entry itself.
    fs::create_directory_symlink(home_.path("elsewhere"), home_.path("logs/link.jsonl"));
    EXPECT_THAT(entries(), UnorderedElementsAre("b.jsonl", "sub/c.jsonl", "link.jsonl"));
}

TEST_F(DirectoryWalks, linksToFilesAreEntriesLikeOthers) {
    const std::string file = home_.write("elsewhere/a.txt", "x");
    home_.makeFolder("logs");
    fs::create_symlink(file, home_.path("logs/a.jsonl"));
    fs::create_symlink(home_.path("nowhere"), home_.path("logs/dangling.jsonl"));
    EXPECT_THAT(entries(), UnorderedElementsAre("a.jsonl", "dangling.jsonl"));
}

TEST_F(DirectoryWalks, folderWithTheExtensionIsAnEntryAndIsEnteredToo) {
    put("box.jsonl/inner.jsonl");
    EXPECT_THAT(entries(), UnorderedElementsAre("box.jsonl", "box.jsonl/inner.jsonl"));
}

TEST_F(DirectoryWalks, rootMayBeALink) {
    put("sub/a.jsonl");
    fs::create_directory_symlink(home_.path("logs"), home_.path("link"));
    EXPECT_THAT(relative(DirectoryWalk::entries(home_.path("link"), "jsonl"), "link"), ElementsAre("sub/a.jsonl"));
}

TEST_F(DirectoryWalks, rootWithASlashAtItsEndGivesPathsWithoutDoubledSlashes) {
    put("a.jsonl");
    EXPECT_THAT(DirectoryWalk::entries(home_.path("logs") + "/", "jsonl"), ElementsAre(home_.path("logs/a.jsonl")));
}

TEST_F(DirectoryWalks, visitOffersTheSameUntilItIsToldToStop) {
    for (const char* file : {"a.jsonl", "one/b.jsonl", "one/two/c.jsonl", "three/d.jsonl", "three/e.txt"})
        put(file);
    const std::vector<std::string> all = DirectoryWalk::entries(home_.path("logs"), "jsonl");
    ASSERT_EQ(all.size(), 4);
    for (std::size_t wanted = 1; wanted <= all.size() + 1; ++wanted) {
        std::vector<std::string> visited;
        DirectoryWalk::visit(home_.path("logs"), "jsonl", [&](const std::string& path) {
            visited.push_back(path);
            return visited.size() < wanted;
        });
        EXPECT_EQ(visited, (std::vector<std::string>{
                               all.begin(), all.begin() + static_cast<std::ptrdiff_t>(std::min(wanted, all.size()))}));
    }
}

TEST_F(DirectoryWalks, missingRootGivesNothing) {
    EXPECT_THAT(DirectoryWalk::entries(home_.path("nowhere"), "jsonl"), IsEmpty());
    EXPECT_THAT(DirectoryWalk::entries("", "jsonl"), IsEmpty());
}

TEST_F(DirectoryWalks, rootThatIsAFileGivesNothing) {
    const std::string file = home_.write("file.jsonl", "x");
    EXPECT_THAT(DirectoryWalk::entries(file, "jsonl"), IsEmpty());
}

TEST_F(DirectoryWalks, folderThatCannotBeReadAddsNothing) {
    put("a.jsonl");
    put("locked/b.jsonl");
    put("open/c.jsonl");
    // Mode bits bind everyone but root, so the walk is done by another user in a process of its own.
    const auto asNobody = [this] {
        if (::geteuid() == 0 && ::setuid(65534) != 0) std::_Exit(2);
        std::vector<std::string> found = entries();
        std::sort(found.begin(), found.end());
        const bool lockedRootIsEmpty = DirectoryWalk::entries(home_.path("logs/locked"), "jsonl").empty();
        std::_Exit(found == std::vector<std::string>{"a.jsonl", "open/c.jsonl"} && lockedRootIsEmpty ? 0 : 1);
    };
    ASSERT_EQ(::chmod(home_.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(home_.path("logs/locked").c_str(), 0), 0);
    EXPECT_EXIT(asNobody(), ::testing::ExitedWithCode(0), "");
    ASSERT_EQ(::chmod(home_.path("logs/locked").c_str(), 0755), 0);
}

TEST_F(DirectoryWalks, depthCostsNoOpenDescriptors) {
    std::string folder = "logs";
    for (int level = 0; level < 200; ++level)
        folder += "/d";
    home_.write(folder + "/deep.jsonl", "x");
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit few{.rlim_cur = 50, .rlim_max = before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    EXPECT_EQ(entries().size(), 1U);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
}

TEST_F(DirectoryWalks, namesAreBytesAndNeedNotBeUTF8) {
    put("\xff\xfe.jsonl");
    put("a b\n.jsonl");
    EXPECT_THAT(entries(), UnorderedElementsAre("\xff\xfe.jsonl", "a b\n.jsonl"));
}

TEST_F(DirectoryWalks, childrenAreThoseOfTheFolderItselfHiddenOnesIncluded) {
    for (const char* name : {"a.jsonl", ".b.jsonl", "c.json", ".jsonl", "folder/d.jsonl", "e.jsonl/f.jsonl"})
        put(name);
    EXPECT_THAT(
        DirectoryWalk::children(home_.path("logs"), "jsonl"),
        UnorderedElementsAre(home_.path("logs/a.jsonl"), home_.path("logs/.b.jsonl"), home_.path("logs/e.jsonl")));
    EXPECT_THAT(DirectoryWalk::children(home_.path("missing"), "jsonl"), IsEmpty());
    EXPECT_THAT(DirectoryWalk::children(home_.path("logs/folder"), ""), IsEmpty());
}

}  // namespace
}  // namespace quorvane
