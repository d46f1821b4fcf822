#include <filesystem>
#include <string>
#include <system_error>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/FileContents.h"
#include "tests/support/ScratchHome.h"

namespace quorvane {
namespace {

class FileContents : public ::testing::Test {
protected:
    /// The error with which reading as a text fails; no error if it does not.
    static std::error_code failureOfText(const std::string& path) {
        try {
            static_cast<void>(readText(path));
        } catch (const std::system_error& failure) {
            EXPECT_THAT(failure.what(), ::testing::HasSubstr(path));
            return failure.code();
        }
        return {};
    }

    testing::ScratchHome home_;
};

TEST_F(FileContents, filesOfAnySizeAreReadWhole) {
    for (const std::size_t size : {0U, 1U, 65535U, 65536U, 65537U, 300000U}) {
        std::string content(size, 'a');
        for (std::size_t index = 0; index < size; ++index)
            content[index] = static_cast<char>(index * 7 % 251);
        EXPECT_EQ(readFile(home_.write("file", content)), content);
    }
}

TEST_F(FileContents, fileThatGrowsWithoutAKnownSizeIsReadToItsEnd) {
    // Files of the system's own say that they are empty.
    ASSERT_EQ(std::filesystem::file_size("/proc/self/status"), 0U);
    EXPECT_THAT(readFile("/proc/self/status").value_or(""), ::testing::HasSubstr("Pid:"));
}

TEST_F(FileContents, whatCannotBeReadIsAbsent) {
    EXPECT_FALSE(readFile(home_.path("missing")));
    EXPECT_FALSE(readFile(home_.path()));
    EXPECT_FALSE(readFile(""));
}

TEST_F(FileContents, textIsReadAsItIs) {
    const std::string text{"\xef\xbb\xbfline\r\n\xc3\xa9\0\xf0\x9f\x98\x80", 16};
    EXPECT_EQ(readText(home_.write("file", text)), text);
    EXPECT_EQ(readText(home_.write("file", "")), "");
}

TEST_F(FileContents, textThatCannotBeReadNamesThePathAndTheReason) {
    EXPECT_EQ(failureOfText(home_.path("missing")), std::errc::no_such_file_or_directory);
    EXPECT_EQ(failureOfText(home_.path()), std::errc::is_a_directory);
    EXPECT_EQ(failureOfText(home_.write("file", "a\xff")), std::errc::illegal_byte_sequence);
    EXPECT_EQ(failureOfText(home_.write("file", "cut \xe2\x82")), std::errc::illegal_byte_sequence);
}

TEST_F(FileContents, removingTakesAFileOrALinkAndNoFolder) {
    const std::string file = home_.write("file", "x");
    std::filesystem::create_symlink("file", home_.path("link"));
    EXPECT_TRUE(removeFile(home_.path("link")));
    EXPECT_FALSE(home_.exists("link"));
    EXPECT_TRUE(home_.exists("file"));
    EXPECT_TRUE(removeFile(file));
    EXPECT_FALSE(removeFile(file));
    home_.makeFolder("folder");
    EXPECT_FALSE(removeFile(home_.path("folder")));
    EXPECT_TRUE(home_.exists("folder"));
}

}  // namespace
}  // namespace quorvane
