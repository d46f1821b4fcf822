#include <array>
#include <filesystem>
#include <iterator>
#include <utility>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "QuorvaneCore/platform/FileContents.h"
#include "QuorvaneCore/platform/FileHandle.h"
#include "tests/support/ScratchHome.h"

namespace quorvane {
namespace {

class FileHandles : public ::testing::Test {
protected:
    static std::string readAll(FileHandle& file, std::size_t chunk) {
        std::string content;
        std::string buffer(chunk, '\0');
        for (;;) {
            const std::optional<std::size_t> count = file.read(buffer);
            EXPECT_TRUE(count);
            if (!count || *count == 0) return content;
            content.append(buffer, 0, *count);
        }
    }

    static std::ptrdiff_t openDescriptors() {
        const std::filesystem::directory_iterator descriptors{"/proc/self/fd"};
        return std::distance(begin(descriptors), end(descriptors));
    }

    testing::ScratchHome home_;
};

TEST_F(FileHandles, readingInChunksOfAnySizeGivesTheWholeFile) {
    const std::string content{"0123456789\nabc\0def", 18};
    const std::string path = home_.write("file", content);
    for (const std::size_t chunk : {1U, 3U, 18U, 100U}) {
        std::optional<FileHandle> file = FileHandle::open(path);
        ASSERT_TRUE(file);
        EXPECT_EQ(readAll(*file, chunk), content);
    }
}

TEST_F(FileHandles, missingFileIsAbsent) {
    EXPECT_FALSE(FileHandle::open(home_.path("missing")));
    EXPECT_FALSE(FileHandle::open(""));
    EXPECT_FALSE(FileHandle::open(home_.write("file", "x") + "/below"));
    EXPECT_FALSE(readFile(home_.path("missing")));
}

TEST_F(FileHandles, folderGivesAReadError) {
    std::optional<FileHandle> folder = FileHandle::open(home_.path());
    std::array<char, 8> buffer{};
    EXPECT_TRUE(!folder || !folder->read(buffer));
    EXPECT_FALSE(readFile(home_.path()));
}

TEST_F(FileHandles, namedPipeWithoutAWriterBlocksNeitherOpeningNorReading) {
    const std::string pipe = home_.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    ::alarm(20);  // ends the process if one of them blocks after all
    std::optional<FileHandle> file = FileHandle::open(pipe);
    ASSERT_TRUE(file);
    std::array<char, 8> buffer{};
    EXPECT_EQ(file->read(buffer), 0U);
    EXPECT_FALSE(file->seek(1));
    EXPECT_FALSE(file->seekToEnd());
    ::alarm(0);
}

TEST_F(FileHandles, namedPipeWithASilentWriterGivesAReadError) {
    const std::string pipe = home_.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    ::alarm(20);
    std::optional<FileHandle> file = FileHandle::open(pipe);
    const int writer = ::open(pipe.c_str(), O_WRONLY);
    ASSERT_GE(writer, 0);
    std::array<char, 8> buffer{};
    EXPECT_FALSE(file->read(buffer));
    // What is there is delivered before the error.
    ASSERT_EQ(::write(writer, "abc", 3), 3);
    EXPECT_EQ(file->read(buffer), 3U);
    EXPECT_FALSE(file->read(buffer));
    ::close(writer);
    EXPECT_EQ(file->read(buffer), 0U);
    ::alarm(0);
}

TEST_F(FileHandles, seekingMovesTheReadPosition) {
    std::optional<FileHandle> file = FileHandle::open(home_.write("file", "0123456789"));
    ASSERT_TRUE(file);
    EXPECT_TRUE(file->seek(7));
    EXPECT_EQ(readAll(*file, 4), "789");
    EXPECT_TRUE(file->seek(0));
    EXPECT_EQ(readAll(*file, 4), "0123456789");
    EXPECT_TRUE(file->seek(1000));
    EXPECT_EQ(readAll(*file, 4), "");
    EXPECT_FALSE(file->seek(-1));
}

TEST_F(FileHandles, endIsTheSizeAndMovesWithTheFile) {
    std::optional<FileHandle> file = FileHandle::open(home_.write("file", "0123"));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->seekToEnd(), 4);
    EXPECT_EQ(readAll(*file, 4), "");
    home_.append("file", "56");
    EXPECT_EQ(readAll(*file, 4), "56");
    EXPECT_EQ(file->seekToEnd(), 6);
}

TEST_F(FileHandles, fileThatIsCutShortWhileItIsReadEndsThere) {
    std::optional<FileHandle> file = FileHandle::open(home_.write("file", std::string(10000, 'x')));
    ASSERT_TRUE(file);
    std::array<char, 100> buffer{};
    EXPECT_EQ(file->read(buffer), 100U);
    home_.truncate("file", 120);
    EXPECT_EQ(readAll(*file, 64), std::string(20, 'x'));
}

TEST_F(FileHandles, movingHandsTheFileOver) {
    std::optional<FileHandle> file = FileHandle::open(home_.write("file", "abc"));
    std::optional<FileHandle> other = FileHandle::open(home_.write("other", "xyz"));
    ASSERT_TRUE(file && other);
    FileHandle moved{std::move(*file)};
    EXPECT_EQ(readAll(moved, 2), "abc");
    moved = std::move(*other);
    EXPECT_EQ(readAll(moved, 2), "xyz");
}

TEST_F(FileHandles, everyHandleIsClosed) {
    const std::string path = home_.write("file", "abc");
    const std::ptrdiff_t before = openDescriptors();
    for (int round = 0; round < 10; ++round) {
        std::optional<FileHandle> first = FileHandle::open(path);
        std::optional<FileHandle> second = FileHandle::open(path);
        ASSERT_TRUE(first && second);
        *first = std::move(*second);
        EXPECT_EQ(readFile(path), "abc");
        EXPECT_FALSE(readFile(home_.path()));
    }
    EXPECT_EQ(openDescriptors(), before);
}

}  // namespace
}  // namespace quorvane
