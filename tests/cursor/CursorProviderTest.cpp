// The capture file as a whole.

#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/providers/CursorEventCache.h"
#include "QuorvaneCore/providers/CursorProvider.h"
#include "QuorvaneCore/ratelimits/CursorHookSetup.h"
#include "tests/cursor/CursorTestSupport.h"
#include "tests/ingest/IngestTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

std::vector<std::string> identities(const std::vector<UsageEvent>& events) {
    std::vector<std::string> found;
    for (const UsageEvent& event : events)
        found.push_back(event.messageId + " " + std::to_string(event.usage.output));
    return found;
}

TEST(CursorProvider, saysHowItIsIndexed) {
    const CursorProvider provider{"/srv/capture.jsonl"};
    EXPECT_EQ(provider.id(), ProviderID::Cursor);
    EXPECT_TRUE(provider.canTailAppend());
    EXPECT_EQ(provider.parserRevision(), 1);
    EXPECT_EQ(provider.resetPolicy(), ResetPolicy::RereadWholeRetainingIndexedEvents);
    EXPECT_EQ(provider.watermarkTimestamp(7), std::nullopt);
    EXPECT_EQ(provider.latestRateLimits(), std::nullopt);
    EXPECT_FALSE(provider.latestRateLimitAwaitingReset(Date{0}));
    EXPECT_THAT(provider.watchPaths(), ElementsAre("/srv"));
}

TEST(CursorProvider, readsTheHooksCaptureFileUnlessToldAnother) {
    const CursorScratchHome home;
    const CursorProvider provider;
    EXPECT_THAT(provider.watchPaths(), ElementsAre(home.path(CursorScratchHome::folder)));
    home.write(CursorScratchHome::captureFile, "");
    EXPECT_THAT(provider.dataFiles(), ElementsAre(CursorHookSetup::captureURL()));
}

TEST(CursorProvider, isAvailableAsSoonAsThereIsAFile) {
    const CursorScratchHome home;
    const CursorProvider provider;
    EXPECT_FALSE(provider.isAvailable());
    EXPECT_THAT(provider.dataFiles(), IsEmpty());
    EXPECT_THAT(provider.loadEvents(), IsEmpty());
    home.write(CursorScratchHome::captureFile, "");
    EXPECT_TRUE(provider.isAvailable());
    EXPECT_THAT(provider.loadEvents(), IsEmpty());
}

TEST(CursorProvider, passesOverLinesThatTellOfNothing) {
    const CursorScratchHome home;
    home.write(CursorScratchHome::captureFile, captureLine("a", 1) + "\nnonsense\n\n[]\n" + captureLine("none", -1) +
                                                   "\n\xff\xfe\n" + captureLine("b", 2) + "\r\n" + captureLine("c", 3));
    EXPECT_THAT(identities(CursorProvider{}.loadEvents()), ElementsAre("a 1", "b 2", "c 3"));
}

TEST(CursorProvider, keepsALineThatStandsThereTwice) {
    const CursorScratchHome home;
    home.write(CursorScratchHome::captureFile, captureLine("a", 1) + "\n" + captureLine("a", 2) + "\n");
    EXPECT_THAT(identities(CursorProvider{}.loadEvents()), ElementsAre("a 1", "a 2"));
}

TEST(CursorProvider, decodesFromAnOffsetAndLeavesATornLine) {
    const CursorScratchHome home;
    const std::string first = captureLine("a", 1) + "\n";
    const std::string second = captureLine("b", 2) + "\n";
    const std::string file = home.write(CursorScratchHome::captureFile, first + second + R"({"captured_at":1)");
    const CursorProvider provider;
    const DecodedFile rest = provider.decodeFile(file, static_cast<std::int64_t>(first.size()));
    EXPECT_THAT(identities(rest.events), ElementsAre("b 2"));
    EXPECT_EQ(rest.consumed, static_cast<std::int64_t>(first.size() + second.size()));
    const DecodedFile none = provider.decodeFile(home.path("missing"), 5);
    EXPECT_THAT(none.events, IsEmpty());
    EXPECT_EQ(none.consumed, 5);
}

/// Reading in steps equals reading at once, wherever the writer was when it was read.
TEST(CursorProvider, stepsGiveWhatOneReadGives) {
    const CursorScratchHome home;
    const CursorProvider provider;
    std::string content;
    for (int index = 0; index < 6; ++index)
        content += captureLine("g" + std::to_string(index), index + 1) + "\n";
    const std::string whole = home.write("whole.jsonl", content);
    const std::vector<std::string> expected = told(provider.decodeFile(whole, 0).events);
    ASSERT_THAT(expected, SizeIs(6));
    EXPECT_EQ(told(CursorProvider{whole}.loadEvents()), expected);
    const std::string grown = home.write("grown.jsonl", "");
    for (std::size_t step = 1; step < content.size(); step += 37) {
        home.write("grown.jsonl", content.substr(0, step));
        DecodedFile begin = provider.decodeFile(grown, 0);
        home.write("grown.jsonl", content);
        const DecodedFile rest = provider.decodeFile(grown, begin.consumed);
        begin.events.insert(begin.events.end(), rest.events.begin(), rest.events.end());
        EXPECT_EQ(told(begin.events), expected) << step;
        EXPECT_EQ(rest.consumed, static_cast<std::int64_t>(content.size()));
    }
}

TEST(CursorEventCache, anUnchangedFileIsNotReadAgain) {
    const CursorScratchHome home;
    const std::string file = home.write(CursorScratchHome::captureFile, captureLine("a", 1) + "\n");
    const CursorEventCache& cache = CursorEventCache::shared();
    const std::vector<std::string> first = told(CursorProvider{}.loadEvents());
    const std::int64_t reads = cache.traversalCount();
    const OpenWatch watch{{file}};
    EXPECT_EQ(told(CursorProvider{}.loadEvents()), first);
    EXPECT_EQ(cache.traversalCount(), reads);
    EXPECT_FALSE(watch.hasSeenAnOpen());

    home.append(CursorScratchHome::captureFile, captureLine("b", 2) + "\n");
    EXPECT_THAT(identities(CursorProvider{}.loadEvents()), ElementsAre("a 1", "b 2"));
    EXPECT_EQ(cache.traversalCount(), reads + 1);
}

TEST(CursorEventCache, anotherFileOfTheSameSizeAndTimeIsRead) {
    const CursorScratchHome home;
    const std::string file = home.write(CursorScratchHome::captureFile, captureLine("a", 1));
    setModificationTime(file, 1789374066, 5);
    EXPECT_THAT(identities(CursorProvider{}.loadEvents()), ElementsAre("a 1"));
    // Only the status change time tells the two apart, and it comes in ticks of the system's clock.
    for (const double before = *FileCursor::changeTime(file); *FileCursor::changeTime(file) == before;) {
        home.write(CursorScratchHome::captureFile, captureLine("b", 2));
        setModificationTime(file, 1789374066, 5);
    }
    EXPECT_THAT(identities(CursorProvider{}.loadEvents()), ElementsAre("b 2"));
}

TEST(CursorEventCache, aMissingFileIsLookedForEachTimeAndNotRemembered) {
    const CursorScratchHome home;
    home.write(CursorScratchHome::captureFile, captureLine("a", 1));
    EXPECT_THAT(CursorProvider{}.loadEvents(), SizeIs(1));
    const std::int64_t reads = CursorEventCache::shared().traversalCount();
    EXPECT_THAT(CursorProvider{home.path("missing")}.loadEvents(), IsEmpty());
    EXPECT_THAT(CursorProvider{home.path("missing")}.loadEvents(), IsEmpty());
    EXPECT_EQ(CursorEventCache::shared().traversalCount(), reads + 2);
    EXPECT_THAT(CursorProvider{}.loadEvents(), SizeIs(1));
    EXPECT_EQ(CursorEventCache::shared().traversalCount(), reads + 2);
}

TEST(CursorEventCache, holdsOneFileOnly) {
    const CursorScratchHome home;
    const CursorProvider one{home.write("one.jsonl", captureLine("a", 1))};
    const CursorProvider two{home.write("two.jsonl", captureLine("b", 2))};
    const std::int64_t reads = CursorEventCache::shared().traversalCount();
    for (int round = 0; round < 2; ++round) {
        EXPECT_THAT(identities(one.loadEvents()), ElementsAre("a 1"));
        EXPECT_THAT(identities(two.loadEvents()), ElementsAre("b 2"));
    }
    EXPECT_EQ(CursorEventCache::shared().traversalCount(), reads + 4);
}

struct StatusCase {
    const char* name;
    std::string path;
    FileCursor::Status status;
    bool isKnown;
};
class CursorEventCacheStatus : public ::testing::TestWithParam<StatusCase> {};

TEST_P(CursorEventCacheStatus, mustBeTheVerySame) {
    CursorEventCache cache;
    EXPECT_FALSE(cache.events("/a", {10, 2.5, 3.5}));
    cache.store({"/a", 10, 2.5, 3.5, {UsageEvent{}}});
    EXPECT_EQ(cache.events(GetParam().path, GetParam().status).has_value(), GetParam().isKnown);
}
INSTANTIATE_TEST_SUITE_P(ByField, CursorEventCacheStatus,
                         ::testing::Values(StatusCase{"same", "/a", {10, 2.5, 3.5}, true},
                                           StatusCase{"otherPath", "/b", {10, 2.5, 3.5}, false},
                                           StatusCase{"otherSize", "/a", {11, 2.5, 3.5}, false},
                                           StatusCase{"otherModification", "/a", {10, 2.25, 3.5}, false},
                                           StatusCase{"otherChange", "/a", {10, 2.5, 3.25}, false}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(CursorEventCache, manyThreadsReadAGrowingFile) {
    const CursorScratchHome home;
    home.write(CursorScratchHome::captureFile, captureLine("first", 1) + "\n");
    std::vector<std::thread> readers;
    for (int count = 0; count < 4; ++count) {
        readers.emplace_back([] {
            for (int round = 0; round < 50; ++round)
                EXPECT_FALSE(CursorProvider{}.loadEvents().empty());
        });
    }
    for (int line = 0; line < 50; ++line)
        home.append(CursorScratchHome::captureFile, captureLine(std::to_string(line), 1) + "\n");
    for (std::thread& reader : readers)
        reader.join();
    EXPECT_THAT(CursorProvider{}.loadEvents(), SizeIs(51));
}

}  // namespace
}  // namespace quorvane::testing
