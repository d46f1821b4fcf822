#include <filesystem>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/FilePath.h"

namespace quorvane {
namespace {

struct PathCase {
    const char* name;
    const char* path;
    const char* lastComponent;
    const char* extension;
    const char* parent;
    const char* standardised;
};

class FilePathParts : public ::testing::TestWithParam<PathCase> {};

TEST_P(FilePathParts, areTakenFromTheText) {
    const PathCase& row = GetParam();
    EXPECT_EQ(FilePath::lastComponent(row.path), row.lastComponent);
    EXPECT_EQ(FilePath::extension(row.path), row.extension);
    EXPECT_EQ(FilePath::parent(row.path), row.parent);
    EXPECT_EQ(FilePath::standardised(row.path), row.standardised);
}

INSTANTIATE_TEST_SUITE_P(
    ByShape, FilePathParts,
    ::testing::Values(
        PathCase{"fileInAFolder", "/srv/app/log.jsonl", "log.jsonl", "jsonl", "/srv/app", "/srv/app/log.jsonl"},
        PathCase{"trailingSlash", "/srv/app/", "app", "", "/srv", "/srv/app"},
        PathCase{"trailingSlashes", "/srv/a.b///", "a.b", "b", "/srv", "/srv/a.b"},
        PathCase{"fileAtTheRoot", "/vmlinuz", "vmlinuz", "", "/", "/vmlinuz"},
        PathCase{"root", "/", "/", "", "/", "/"},  //
        PathCase{"slashesAlone", "///", "/", "", "/", "/"}, PathCase{"empty", "", "", "", ".", "."},
        PathCase{"bareName", "notes.txt", "notes.txt", "txt", ".", "notes.txt"},
        PathCase{"hiddenName", "/home/.zshrc", ".zshrc", "", "/home", "/home/.zshrc"},
        PathCase{"hiddenNameWithExtension", ".config.json", ".config.json", "json", ".", ".config.json"},
        PathCase{"severalDots", "a.tar.gz", "a.tar.gz", "gz", ".", "a.tar.gz"},
        PathCase{"dotAtTheEnd", "/a/name.", "name.", "", "/a", "/a/name."},
        PathCase{"dotInTheFolderOnly", "/a.b/c", "c", "", "/a.b", "/a.b/c"},
        PathCase{"upperCaseExtension", "A.JSONL", "A.JSONL", "JSONL", ".", "A.JSONL"},
        PathCase{"doubledSlashes", "/a//b", "b", "", "/a", "/a/b"},
        PathCase{"dotComponents", "/a/./b/.", ".", "", "/a/./b", "/a/b"},
        PathCase{"dotDotInside", "/a/b/../c", "c", "", "/a/b/..", "/a/c"},
        PathCase{"dotDotAboveTheRoot", "/../../a", "a", "", "/../..", "/a"},
        PathCase{"dotDotAboveARelativeStart", "../../a/../b", "b", "", "../../a/..", "../../b"},
        PathCase{"allTakenBack", "a/..", "..", "", "a", "."},
        PathCase{"blanksAndBytes", "/\xff \x01/x y.js on", "x y.js on", "js on", "/\xff \x01", "/\xff \x01/x y.js on"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(FilePath, joinsWithExactlyOneSlash) {
    EXPECT_EQ(FilePath::joining("/a", "b"), "/a/b");
    EXPECT_EQ(FilePath::joining("/a/", "b"), "/a/b");
    EXPECT_EQ(FilePath::joining("/", "b"), "/b");
    EXPECT_EQ(FilePath::joining("", "b"), "b");
    EXPECT_EQ(FilePath::joining("/a", "b/c.d"), "/a/b/c.d");
}

TEST(FilePath, joiningTakesApartAgain) {
    for (const char* folder : {"/", "/a", "/a b/c.d", "x"}) {
        for (const char* name : {"b", ".hidden", "log.jsonl"}) {
            const std::string path = FilePath::joining(folder, name);
            EXPECT_EQ(FilePath::parent(path), folder);
            EXPECT_EQ(FilePath::lastComponent(path), name);
        }
    }
}

TEST(FilePath, standardisingTwiceChangesNothing) {
    for (const char* path : {"", "/", "//a/../..//b/", "../x/./..", "a/b/c/../../..", "/a/./"}) {
        const std::string once = FilePath::standardised(path);
        EXPECT_EQ(FilePath::standardised(once), once);
    }
}

TEST(FilePath, standardisingLooksAtNoLink) {
    // "/proc/self" is a link; as text, its parent is "/proc".
    ASSERT_TRUE(std::filesystem::is_symlink("/proc/self"));
    EXPECT_EQ(FilePath::standardised("/proc/self/../x"), "/proc/x");
    EXPECT_EQ(FilePath::standardised("/proc/self"), "/proc/self");
}

}  // namespace
}  // namespace quorvane
