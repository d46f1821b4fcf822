#include <filesystem>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/providers/CopilotCandidateCache.h"
#include "tests/copilot/CopilotTestSupport.h"
#include "tests/ingest/IngestTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::SizeIs;

struct CacheHome : TelemetryHome {
    [[nodiscard]] std::size_t calls(const std::string& of) { return cache.candidates(of, reader)->size(); }

    CopilotCandidateCache cache;
    JSONLStreamReader reader;
    std::string file = write("otel.jsonl", chatSpan({.trace = "T"}));
};

/// Changes the mode until the change time moves, which it does with the system's tick.
void changeMode(const std::string& file) {
    namespace fs = std::filesystem;
    const std::optional<FileCursor::Status> before = FileCursor::state(file);
    for (bool isPrivate = true; FileCursor::state(file) == before; isPrivate = !isPrivate)
        fs::permissions(file, isPrivate ? fs::perms{0600} : fs::perms{0644});
}

TEST(CopilotCandidateCache, unchangedFileIsNotReadAgain) {
    CacheHome home;
    const CopilotCandidateCache::Candidates first = home.cache.candidates(home.file, home.reader);
    const OpenWatch watch{{home.file}};
    EXPECT_EQ(home.cache.candidates(home.file, home.reader), first);
    EXPECT_FALSE(watch.hasSeenAnOpen());
    EXPECT_EQ(home.cache.traversalCount(), 1);
    EXPECT_EQ(home.cache.count(), 1);
    EXPECT_EQ(*first, CopilotOTelParser::candidates(home.file, home.reader));
}

TEST(CopilotCandidateCache, grownFileIsReadAgain) {
    CacheHome home;
    EXPECT_EQ(home.calls(home.file), 1);
    home.append("otel.jsonl", chatSpan({.trace = "U"}));
    EXPECT_EQ(home.calls(home.file), 2);
    EXPECT_EQ(home.cache.traversalCount(), 2);
    EXPECT_EQ(home.cache.count(), 1);
}

TEST(CopilotCandidateCache, touchedFileIsReadAgain) {
    CacheHome home;
    EXPECT_EQ(home.calls(home.file), 1);
    home.home.touch(home.file, 1);
    EXPECT_EQ(home.calls(home.file), 1);
    EXPECT_EQ(home.cache.traversalCount(), 2);
}

TEST(CopilotCandidateCache, fileOfWhichOnlyTheChangeTimeMovedIsReadAgain) {
    CacheHome home;
    EXPECT_EQ(home.calls(home.file), 1);
    const std::optional<FileCursor::Status> before = FileCursor::state(home.file);
    changeMode(home.file);
    const std::optional<FileCursor::Status> after = FileCursor::state(home.file);
    ASSERT_TRUE(before && after);
    ASSERT_EQ(before->size, after->size);
    ASSERT_EQ(before->mtime, after->mtime);
    EXPECT_EQ(home.calls(home.file), 1);
    EXPECT_EQ(home.cache.traversalCount(), 2);
}

TEST(CopilotCandidateCache, fileWithoutACallIsKeptToo) {
    CacheHome home;
    const std::string empty = home.write("empty.jsonl", "");
    EXPECT_EQ(home.calls(empty), 0);
    EXPECT_EQ(home.calls(empty), 0);
    EXPECT_EQ(home.cache.traversalCount(), 1);
}

TEST(CopilotCandidateCache, fileThatCannotBeQueriedIsNotKept) {
    CacheHome home;
    EXPECT_EQ(home.calls(home.path("missing.jsonl")), 0);
    EXPECT_EQ(home.cache.count(), 0);
    EXPECT_EQ(home.cache.traversalCount(), 0);
}

TEST(CopilotCandidateCache, forgetsGoneFilesOnlyWhenItKnowsMoreThanThereAre) {
    CacheHome home;
    const std::string gone = home.write("gone.jsonl", "");
    const std::string other = home.write("other.jsonl", "");
    EXPECT_EQ(home.calls(home.file), 1);
    EXPECT_EQ(home.calls(gone), 0);
    home.cache.prune({home.file, other});
    EXPECT_EQ(home.cache.count(), 2);
    EXPECT_EQ(home.calls(other), 0);
    home.cache.prune({home.file, other});
    EXPECT_EQ(home.cache.count(), 2);
    EXPECT_EQ(home.calls(home.file), 1);
    EXPECT_EQ(home.calls(other), 0);
    EXPECT_EQ(home.cache.traversalCount(), 3) << "these two are still known";
    home.cache.prune({});
    EXPECT_EQ(home.cache.count(), 0);
}

/// What was given out lives on when the file is parsed again or forgotten.
TEST(CopilotCandidateCache, candidatesOutliveTheirEntry) {
    CacheHome home;
    const CopilotCandidateCache::Candidates first = home.cache.candidates(home.file, home.reader);
    home.append("otel.jsonl", chatSpan({.trace = "U"}));
    EXPECT_EQ(home.calls(home.file), 2);
    home.cache.prune({});
    ASSERT_THAT(*first, SizeIs(1));
    EXPECT_EQ(first->front().traceID, "T");
}

TEST(CopilotCandidateCache, manyThreadsGetTheSame) {
    CacheHome home;
    std::vector<std::thread> threads;
    std::vector<std::size_t> found(8);
    for (std::size_t& calls : found)
        threads.emplace_back([&] { calls = home.calls(home.file); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(found, std::vector<std::size_t>(8, 1));
    EXPECT_GE(home.cache.traversalCount(), 1);
    EXPECT_LE(home.cache.traversalCount(), 8);
}

TEST(CopilotCandidateCache, isOneForTheProcess) {
    EXPECT_EQ(&CopilotCandidateCache::shared(), &CopilotCandidateCache::shared());
}

}  // namespace
}  // namespace quorvane::testing
