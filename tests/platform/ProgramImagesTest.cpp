#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/ProgramImages.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/ScratchHome.h"

namespace quorvane {
namespace {

namespace fs = std::filesystem;
using testing::ProgramRun;

class ProgramImagesOfAProbe : public ::testing::Test {
protected:
    void SetUp() override {
        home_.makeFolder("pro grams");
        fs::copy_file(QUORVANE_PROGRAM_IMAGES_PROBE, home_.path("pro grams/probe"));
    }

    /// What the probe, a copy in the home, prints when `command` starts it there.
    [[nodiscard]] std::string output(const std::vector<std::string>& command) const {
        const std::string path = home_.path("pro grams") + ":/usr/bin:/bin";
        const ProgramRun run = ProgramRun::of(command, {.environment = {{"PATH", path}}, .folder = home_.path()});
        EXPECT_EQ(run.status, 0) << run.error;
        return run.output;
    }

    testing::ScratchHome home_;
};

TEST(ProgramImages, executableIsThisTestProgram) {
    const std::string path = ProgramImages::executable();
    EXPECT_EQ(FilePath::lastComponent(path), "platform_tests");
    EXPECT_TRUE(fs::equivalent(path, "/proc/self/exe"));
}

TEST(ProgramImages, librariesAreFilesAndTheCLibraryIsAmongThem) {
    const std::vector<std::string> libraries = ProgramImages::libraries();
    EXPECT_FALSE(libraries.empty());
    for (const std::string& library : libraries)
        EXPECT_TRUE(fs::is_regular_file(library)) << library;
    EXPECT_TRUE(std::any_of(libraries.begin(), libraries.end(), [](const std::string& library) {
        return FilePath::lastComponent(library).starts_with("libc.so");
    }));
    EXPECT_THAT(libraries, ::testing::Not(::testing::Contains(ProgramImages::executable())));
}

TEST(ProgramImages, commandLineBeginsWithTheProgram) {
    const std::vector<std::string> arguments = ProgramImages::arguments();
    ASSERT_FALSE(arguments.empty());
    EXPECT_EQ(FilePath::lastComponent(arguments.front()), "platform_tests");
}

TEST_F(ProgramImagesOfAProbe, argumentsAreGivenWholeAndInOrder) {
    EXPECT_EQ(output({"./pro grams/probe", "one", "", "two words", "--three=/x/y", "four\nlines"}),
              home_.path("pro grams/probe") + "\n<./pro grams/probe>\n<one>\n<>\n<two words>\n<--three=/x/y>\n" +
                  "<four\nlines>\n");
}

TEST_F(ProgramImagesOfAProbe, executableBehindALinkIsTheFileItself) {
    fs::create_symlink("pro grams/probe", home_.path("link"));
    EXPECT_EQ(output({"./link"}), home_.path("pro grams/probe") + "\n<./link>\n");
}

TEST_F(ProgramImagesOfAProbe, executableFoundByPATHIsTheFileItself) {
    EXPECT_EQ(output({"sh", "-c", "probe; true"}), home_.path("pro grams/probe") + "\n<probe>\n");
}

}  // namespace
}  // namespace quorvane
