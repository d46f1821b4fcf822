#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/ingest/FileCursor.h"
#include "tests/ingest/IngestTestSupport.h"

namespace quorvane {

void PrintTo(const FileChange& change, std::ostream* stream) {
    if (const auto* appended = std::get_if<Appended>(&change)) {
        *stream << "appended from " << appended->from;
    } else {
        *stream << (std::holds_alternative<Unchanged>(change) ? "unchanged" : "reset");
    }
}

namespace {

using testing::ScratchHome;
using testing::setModificationTime;

// The verdict

struct ClassifyCase {
    const char* name;
    std::int64_t size;
    double mtime;
    const char* fingerprint;
    std::optional<FileState> stored;
    bool canTailAppend;
    FileChange expected;
};

class FileCursorClassify : public ::testing::TestWithParam<ClassifyCase> {};

TEST_P(FileCursorClassify, givesTheVerdict) {
    const ClassifyCase& row = GetParam();
    EXPECT_EQ(FileCursor::classify(row.size, row.mtime, row.fingerprint, row.stored, row.canTailAppend), row.expected);
}

const FileState stored{.size = 10, .mtime = 100.25, .offset = 7, .fingerprint = "f", .provider = "claude"};
const FileState storedUnmarked{.size = 10, .mtime = 100.25, .offset = 7, .provider = "claude"};
const FileState storedEmpty{.size = 0, .mtime = 100.25, .offset = 0, .fingerprint = "f"};

INSTANTIATE_TEST_SUITE_P(
    ByStatus, FileCursorClassify,
    ::testing::Values(
        ClassifyCase{"neverReadIsReset", 10, 100.25, "f", std::nullopt, true, Reset{}},
        ClassifyCase{"neverReadIsResetEvenIfItIsEmpty", 0, 0, "", std::nullopt, true, Reset{}},
        ClassifyCase{"neverReadIsResetForAWholeFileReader", 10, 100.25, "f", std::nullopt, false, Reset{}},
        ClassifyCase{"shrunkenIsReset", 9, 100.25, "f", stored, true, Reset{}},
        ClassifyCase{"shrunkenToNothingIsReset", 0, 100.25, "f", stored, true, Reset{}},
        ClassifyCase{"sameInAllIsUnchanged", 10, 100.25, "f", stored, true, Unchanged{}},
        ClassifyCase{"sameInAllIsUnchangedForAWholeFileReader", 10, 100.25, "f", stored, false, Unchanged{}},
        ClassifyCase{"sameEmptyFileIsUnchanged", 0, 100.25, "f", storedEmpty, true, Unchanged{}},
        ClassifyCase{"otherFingerprintIsReset", 10, 100.25, "g", stored, true, Reset{}},
        ClassifyCase{"touchedIsResetThoughTheFingerprintMatches", 10, 100.5, "f", stored, true, Reset{}},
        ClassifyCase{"setBackInTimeIsReset", 10, 100.0, "f", stored, true, Reset{}},
        ClassifyCase{"smallestStepOfTimeIsReset", 10, 100.25000000000001, "f", stored, true, Reset{}},
        ClassifyCase{"storedWithoutFingerprintIsUnchanged", 10, 100.25, "f", storedUnmarked, true, Unchanged{}},
        ClassifyCase{"storedWithoutFingerprintAndTouchedIsReset", 10, 100.5, "f", storedUnmarked, true, Reset{}},
        ClassifyCase{"noFingerprintNowIsUnchanged", 10, 100.25, "", stored, true, Unchanged{}},
        ClassifyCase{"noFingerprintOnEitherSideIsUnchanged", 10, 100.25, "", storedUnmarked, true, Unchanged{}},
        ClassifyCase{"grownIsAppendedFromTheOffsetAndNotTheSize", 11, 101, "g", stored, true, Appended{7}},
        ClassifyCase{"grownWithinTheSameTickIsAppended", 11, 100.25, "f", stored, true, Appended{7}},
        ClassifyCase{"grownFromNothingIsAppended", 1, 101, "g", storedEmpty, true, Appended{0}},
        ClassifyCase{"grownIsResetForAWholeFileReader", 11, 101, "f", stored, false, Reset{}}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(FileChange, isComparedByKindAndOffset) {
    EXPECT_NE(FileChange{Appended{1}}, FileChange{Appended{2}});
    EXPECT_NE(FileChange{Appended{0}}, FileChange{Reset{}});
    EXPECT_NE(FileChange{Unchanged{}}, FileChange{Reset{}});
    EXPECT_EQ(FileChange{Appended{1}}, FileChange{Appended{1}});
}

TEST(FileState, isComparedInEveryField) {
    const FileState state{1, 2, 3, "f", 4, "claude", 5};
    EXPECT_EQ(state, (FileState{1, 2, 3, "f", 4, "claude", 5}));
    EXPECT_NE(state, (FileState{0, 2, 3, "f", 4, "claude", 5}));
    EXPECT_NE(state, (FileState{1, 0, 3, "f", 4, "claude", 5}));
    EXPECT_NE(state, (FileState{1, 2, 0, "f", 4, "claude", 5}));
    EXPECT_NE(state, (FileState{1, 2, 3, "", 4, "claude", 5}));
    EXPECT_NE(state, (FileState{1, 2, 3, "f", 0, "claude", 5}));
    EXPECT_NE(state, (FileState{1, 2, 3, "f", 4, "", 5}));
    EXPECT_NE(state, (FileState{1, 2, 3, "f", 4, "claude", 0}));
}

// The fingerprint

/// The hash of `bytes` by its definition, byte for byte.
std::uint64_t hashOf(std::string_view bytes) {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const char byte : bytes) {
        hash ^= static_cast<unsigned char>(byte);
        hash *= 0x100000001b3;
    }
    return hash;
}

std::string patternOf(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t index = 0; index < size; ++index)
        bytes[index] = static_cast<char>(index * 7 + index / 251);
    return bytes;
}

class FileCursorFingerprint : public ::testing::Test {
protected:
    std::string of(std::string_view content) const {
        return FileCursor::fingerprint(home.write("file", content), static_cast<std::int64_t>(content.size()));
    }

    ScratchHome home;
};

TEST_F(FileCursorFingerprint, ofKnownContentsIsAsPublished) {
    EXPECT_EQ(of(""), "0:cbf29ce484222325");
    EXPECT_EQ(of("a"), "1:af63dc4c8601ec8c");
    EXPECT_EQ(of("foobar"), "6:85944171f73967e8");
}

TEST_F(FileCursorFingerprint, coversTheFirstAndTheLastSpanWithTheirOverlapTwice) {
    for (const std::size_t size : {1U, 2U, 4095U, 4096U, 4097U, 6000U, 8191U, 8192U, 8193U, 20000U}) {
        const std::string content = patternOf(size);
        std::string hashed = content.substr(0, 4096);
        if (size > 4096) hashed += content.substr(size - 4096);
        EXPECT_EQ(of(content), fmt::format("{}:{:x}", size, hashOf(hashed)));
    }
}

TEST_F(FileCursorFingerprint, hasNoLeadingZeros) {
    std::string content = "0";
    while (hashOf(content) >> 60 != 0)
        content = std::to_string(std::stoi(content) + 1);
    const std::string fingerprint = of(content);
    EXPECT_EQ(fingerprint, fmt::format("{}:{:x}", content.size(), hashOf(content)));
    EXPECT_LT(fingerprint.size() - fingerprint.find(':') - 1, 16U);
}

TEST_F(FileCursorFingerprint, doesNotSeeTheMiddleOfALargeFile) {
    std::string content = patternOf(20000);
    const std::string fingerprint = of(content);
    for (const std::size_t seen : {0U, 4095U, 15904U, 19999U}) {
        std::string changed = content;
        changed[seen] ^= 1;
        EXPECT_NE(of(changed), fingerprint) << seen;
    }
    for (const std::size_t unseen : {4096U, 10000U, 15903U}) {
        std::string changed = content;
        changed[unseen] ^= 1;
        EXPECT_EQ(of(changed), fingerprint) << unseen;
    }
}

TEST_F(FileCursorFingerprint, takesTheSizeFromTheCaller) {
    const std::string file = home.write("file", "0123456789");
    EXPECT_EQ(FileCursor::fingerprint(file, 4), fmt::format("4:{:x}", hashOf("0123")));
    EXPECT_EQ(FileCursor::fingerprint(file, 0), "0:cbf29ce484222325");
    EXPECT_EQ(FileCursor::fingerprint(file, -5), "-5:cbf29ce484222325");
    // Behind the end there is nothing to hash.
    EXPECT_EQ(FileCursor::fingerprint(file, 20), fmt::format("20:{:x}", hashOf("0123456789")));
    EXPECT_EQ(FileCursor::fingerprint(file, 5000), fmt::format("5000:{:x}", hashOf("0123456789")));
    // Here the last 4096 bytes begin at the fifth.
    EXPECT_EQ(FileCursor::fingerprint(file, 4100), fmt::format("4100:{:x}", hashOf("0123456789456789")));
}

TEST_F(FileCursorFingerprint, isEmptyIfTheFileCannotBeOpened) {
    EXPECT_EQ(FileCursor::fingerprint(home.path("missing"), 0), "");
    EXPECT_EQ(FileCursor::fingerprint(home.path("missing"), 10), "");
}

// A folder can be opened, and every read of it fails.
TEST_F(FileCursorFingerprint, goesOnAfterAFailedReadOfTheHeadAndNotOfTheTail) {
    EXPECT_EQ(FileCursor::fingerprint(home.path(), 4096), "4096:cbf29ce484222325");
    EXPECT_EQ(FileCursor::fingerprint(home.path(), 4097), "");
}

TEST_F(FileCursorFingerprint, closesTheFile) {
    const std::string file = home.write("file", patternOf(9000));
    const std::size_t before = testing::openDescriptors();
    EXPECT_NE(FileCursor::fingerprint(file, 9000), "");
    EXPECT_EQ(FileCursor::fingerprint(home.path(), 9000), "");
    EXPECT_EQ(testing::openDescriptors(), before);
}

// Status

/// The status in the units of the index, straight from the system.
FileCursor::Status statusOf(const std::string& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0) throw std::runtime_error{"no file " + file};
    const double sinceMillennium =
        static_cast<double>(status.st_mtim.tv_sec) - 978307200.0 + static_cast<double>(status.st_mtim.tv_nsec) / 1e9;
    return {.size = status.st_size,
            .mtime = sinceMillennium + 978307200.0,
            .ctime = static_cast<double>(status.st_ctim.tv_nsec) / 1e9 + static_cast<double>(status.st_ctim.tv_sec)};
}

class FileCursorState : public ::testing::Test {
protected:
    /// The modification times under test: before 1970 and 2001, today, far ahead, with fractions of every length.
    template <typename Check>
    void forManyTimes(Check check) const {
        const std::string file = home.write("file", "content");
        for (const std::int64_t seconds : {-86400, 0, 978307199, 978307200, 1767225600, 1769862645, 2147483647}) {
            for (std::int64_t nanoseconds = 0; nanoseconds < 1'000'000'000; nanoseconds += 7'654'321) {
                setModificationTime(file, seconds, nanoseconds);
                check(file, seconds, nanoseconds);
            }
        }
    }

    ScratchHome home;
};

TEST_F(FileCursorState, takesTheModificationTimeThroughADateCountedFrom2001) {
    std::size_t otherThanTheDirectSum = 0;
    forManyTimes([&](const std::string& file, std::int64_t seconds, std::int64_t nanoseconds) {
        const auto state = FileCursor::state(file);
        ASSERT_TRUE(state);
        EXPECT_EQ(*state, statusOf(file));
        EXPECT_NEAR(state->mtime, static_cast<double>(seconds) + static_cast<double>(nanoseconds) / 1e9, 1e-6);
        const double directSum = static_cast<double>(seconds) + static_cast<double>(nanoseconds) / 1e9;
        otherThanTheDirectSum += state->mtime == directSum ? 0U : 1U;
    });
    EXPECT_GT(otherThanTheDirectSum, 0U);
}

TEST_F(FileCursorState, timesComeBackFromTheIndexExactlyAsTheyWere) {
    const std::string path = home.path("usage.sqlite");
    UsageIndex index{path};
    std::optional<FileCursor::Status> last;
    forManyTimes([&](const std::string& file, std::int64_t, std::int64_t) {
        const auto state = FileCursor::state(file);
        ASSERT_TRUE(state);
        index.setCursor(file, state->size, state->mtime, 0, "", state->ctime, ProviderID::Claude, 1);
        const auto kept = index.cursor(file);
        ASSERT_TRUE(kept);
        EXPECT_EQ(kept->mtime, state->mtime);
        EXPECT_EQ(kept->ctime, state->ctime);
        EXPECT_EQ(FileCursor::classify(state->size, state->mtime, "", kept, true), FileChange{Unchanged{}});
        last = state;
    });
    ASSERT_TRUE(last);
    EXPECT_EQ(UsageIndex{path}.cursor(home.path("file"))->mtime, last->mtime);
}

TEST_F(FileCursorState, changeTimeIsThatOfTheWholeState) {
    const std::string file = home.write("file", "content");
    EXPECT_EQ(FileCursor::changeTime(file), statusOf(file).ctime);
    EXPECT_EQ(FileCursor::state(file)->size, 7);
}

TEST_F(FileCursorState, ofALinkIsThatOfItsTarget) {
    const std::string file = home.write("file", "content");
    setModificationTime(file, 1767225600, 5);
    std::filesystem::create_symlink(file, home.path("link"));
    EXPECT_EQ(FileCursor::state(home.path("link")), FileCursor::state(file));
}

TEST_F(FileCursorState, ofWhatIsNotThereIsAbsent) {
    home.write("file", "content");
    std::filesystem::create_symlink(home.path("missing"), home.path("dangling"));
    for (const std::string& path : {home.path("missing"), home.path("file/below"), home.path("dangling")}) {
        EXPECT_EQ(FileCursor::state(path), std::nullopt) << path;
        EXPECT_EQ(FileCursor::changeTime(path), std::nullopt) << path;
    }
}

}  // namespace
}  // namespace quorvane
