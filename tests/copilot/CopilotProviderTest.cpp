#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/ingest/FileCursor.h"
#include "QuorvaneCore/providers/CopilotCandidateCache.h"
#include "tests/copilot/CopilotTestSupport.h"
#include "tests/ingest/IngestTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

std::int64_t traversals() {
    return CopilotCandidateCache::shared().traversalCount();
}

TEST(CopilotProvider, isWhatTheIndexerNeedsToKnow) {
    const TelemetryHome home;
    EXPECT_EQ(home.provider.id(), ProviderID::Copilot);
    EXPECT_THAT(home.provider.watchPaths(), ElementsAre(home.home.path(".copilot/otel")));
    EXPECT_FALSE(home.provider.canTailAppend());
    EXPECT_EQ(home.provider.parserRevision(), 1);
    EXPECT_EQ(home.provider.resetPolicy(), ResetPolicy::RereadWhole);
    EXPECT_EQ(home.provider.watermarkTimestamp(5), std::nullopt);
    EXPECT_EQ(home.provider.latestRateLimits(), std::nullopt);
    EXPECT_FALSE(home.provider.latestRateLimitAwaitingReset(Date{0}));
}

TEST(CopilotProvider, takesAnotherRoot) {
    const TelemetryHome home;
    const CopilotProvider provider{home.home.path("elsewhere")};
    home.home.write("elsewhere/a.jsonl", chatSpan({}));
    EXPECT_THAT(provider.watchPaths(), ElementsAre(home.home.path("elsewhere")));
    EXPECT_THAT(provider.loadEvents(), SizeIs(1));
}

TEST(CopilotProvider, filesAreDirectChildrenInOrderOfTheirPaths) {
    const TelemetryHome home;
    for (const char* file : {"b.jsonl", "a.jsonl", "B.jsonl", ".c.jsonl", "a.json", "a.jsonl.old", "jsonl", ".jsonl",
                             "folder/d.jsonl", "a.JSONL"}) {
        home.write(file, "");
    }
    EXPECT_THAT(home.provider.otelFiles(),
                ElementsAre(home.path(".c.jsonl"), home.path("B.jsonl"), home.path("a.jsonl"), home.path("b.jsonl")));
    EXPECT_EQ(home.provider.dataFiles(), home.provider.otelFiles());
}

TEST(CopilotProvider, isAvailableWithAFile) {
    const TelemetryHome home;
    EXPECT_FALSE(home.provider.isAvailable()) << "no folder";
    EXPECT_THAT(home.provider.otelFiles(), IsEmpty());
    EXPECT_THAT(home.provider.loadEvents(), IsEmpty());
    home.home.makeFolder(".copilot/otel");
    EXPECT_FALSE(home.provider.isAvailable()) << "no file";
    home.write("otel.jsonl", "");
    EXPECT_TRUE(home.provider.isAvailable());
}

TEST(CopilotProvider, folderInPlaceOfAFileGivesNoEvents) {
    const TelemetryHome home;
    home.home.makeFolder(".copilot/otel/folder.jsonl");
    home.write("otel.jsonl", chatSpan({}));
    EXPECT_THAT(home.provider.loadEvents(), SizeIs(1));
}

TEST(CopilotProvider, aCallInTwoFilesCountsOnceWithItsBestRecord) {
    const TelemetryHome home;
    home.write("a.jsonl", chatSpan({.trace = "T", .span = "1", .output = 5, .more = R"("session.id":"S")"}) +
                              chatSpan({.trace = "T", .span = "2", .output = 9, .more = R"("session.id":"S")"}));
    home.write("b.jsonl", chatSpan({.trace = "T", .span = "1", .output = 6, .more = R"("session.id":"S")"}) +
                              chatSpan({.trace = "T", .span = "2", .output = 8, .more = R"("session.id":"S")"}));
    EXPECT_THAT(outputs(home.provider.loadEvents()), ElementsAre(6, 9));
}

TEST(CopilotProvider, ofEqualOutputsTheLargerTotalCountsThenTheFirst) {
    const TelemetryHome home;
    const std::string_view more = R"("gen_ai.usage.input_tokens":100,"gen_ai.request.model":"more")";
    const std::string_view first = R"("gen_ai.request.model":"first")";
    const std::string_view second = R"("gen_ai.request.model":"second")";
    home.write("a.jsonl", chatSpan({.trace = "T", .span = "1", .more = first}));
    home.write("b.jsonl", chatSpan({.trace = "T", .span = "1", .more = second}));
    ASSERT_THAT(home.provider.loadEvents(), SizeIs(1));
    EXPECT_EQ(home.provider.loadEvents()[0].model, "first");
    home.append("b.jsonl", chatSpan({.trace = "T", .span = "1", .more = more}));
    ASSERT_THAT(home.provider.loadEvents(), SizeIs(1));
    EXPECT_EQ(home.provider.loadEvents()[0].model, "more");
}

/// A record covers those of its own file only; of AIU it covers all.
TEST(CopilotProvider, kindsCoverEachOtherWithinAFileForEventsAndAcrossFilesForAIU) {
    const TelemetryHome home;
    const std::string_view nano = R"("github.copilot.nano_aiu":5)";
    home.write("a.jsonl", inferenceLog({.trace = "T", .span = "1", .output = 1, .more = nano}));
    home.write("b.jsonl", chatSpan({.trace = "T", .span = "2", .output = 2, .more = nano, .when = 77}));
    EXPECT_THAT(outputs(home.provider.loadEvents()), ElementsAre(1, 2));
    EXPECT_THAT(home.provider.aiuSamples(), ElementsAre(CopilotOTelParser::AIUSample{Date{77}, 5}));
}

TEST(CopilotProvider, decodesAFileWholeWhateverTheOffset) {
    const TelemetryHome home;
    const std::string file =
        home.write("otel.jsonl", inferenceLog({.trace = "T", .output = 1}) + chatSpan({.trace = "T", .output = 2}) +
                                     chatSpan({.trace = "U", .output = 3}));
    for (const std::int64_t offset : {0, 50, 100000, -1}) {
        const DecodedFile decoded = home.provider.decodeFile(file, offset);
        EXPECT_THAT(outputs(decoded.events), ElementsAre(2, 3));
        EXPECT_EQ(decoded.consumed, FileCursor::state(file)->size);
    }
}

TEST(CopilotProvider, decodingKeepsTheBestOfEqualKeys) {
    const TelemetryHome home;
    const std::string file = home.write("otel.jsonl", chatSpan({.trace = "T", .span = "1", .output = 5}) +
                                                          chatSpan({.trace = "T", .span = "1", .output = 7}));
    EXPECT_THAT(outputs(home.provider.decodeFile(file, 0).events), ElementsAre(7));
    EXPECT_THAT(outputs(home.provider.loadEvents()), ElementsAre(7));
}

TEST(CopilotProvider, decodingAMissingFileGivesNothing) {
    const TelemetryHome home;
    const DecodedFile decoded = home.provider.decodeFile(home.path("missing.jsonl"), 40);
    EXPECT_THAT(decoded.events, IsEmpty());
    EXPECT_EQ(decoded.consumed, 0);
}

TEST(CopilotProvider, decodingDoesNotUseTheCache) {
    const TelemetryHome home;
    const std::string file = home.write("otel.jsonl", chatSpan({}));
    static_cast<void>(home.provider.loadEvents());
    const std::int64_t before = traversals();
    const OpenWatch watch{{file}};
    EXPECT_THAT(home.provider.decodeFile(file, 0).events, SizeIs(1));
    EXPECT_TRUE(watch.hasSeenAnOpen());
    EXPECT_EQ(traversals(), before);
}

TEST(CopilotProvider, eventsAndAIUOfUnchangedFilesReadNothing) {
    const TelemetryHome home;
    const std::vector<std::string> files{home.write("a.jsonl", chatSpan({.trace = "T"})),
                                         home.write("b.jsonl", chatSpan({.trace = "U"}))};
    const std::int64_t before = traversals();
    EXPECT_THAT(home.provider.loadEvents(), SizeIs(2));
    EXPECT_EQ(traversals(), before + 2);
    const OpenWatch watch{files};
    EXPECT_THAT(home.provider.loadEvents(), SizeIs(2));
    EXPECT_THAT(home.provider.aiuSamples(), IsEmpty());
    EXPECT_FALSE(watch.hasSeenAnOpen());
    EXPECT_EQ(traversals(), before + 2);

    home.append("b.jsonl", chatSpan({.trace = "V"}));
    EXPECT_THAT(home.provider.loadEvents(), SizeIs(3));
    EXPECT_EQ(traversals(), before + 3) << "only the one that changed";
}

TEST(CopilotProvider, listingTheFilesForgetsThoseThatAreGone) {
    const TelemetryHome home;
    home.write("a.jsonl", "");
    home.write("b.jsonl", "");
    CopilotCandidateCache::shared().prune({});
    static_cast<void>(home.provider.loadEvents());
    EXPECT_EQ(CopilotCandidateCache::shared().count(), 2);
    home.home.remove(home.path("b.jsonl"));
    EXPECT_THAT(home.provider.otelFiles(), SizeIs(1));
    EXPECT_EQ(CopilotCandidateCache::shared().count(), 1);
}

// The window of AIU.

constexpr double endOfWinterTime = 1774746000;  // 2026-03-29T01:00:00Z, when Berlin's clocks go forward

struct AIUHome : TelemetryHome {
    void call(double when, std::int64_t nano) const {
        append("otel.jsonl", chatSpan({.more = "\"github.copilot.nano_aiu\":" + std::to_string(nano), .when = when}));
    }
    [[nodiscard]] std::optional<double> window(std::int64_t days, double now, const char* zone = "UTC") const {
        return provider.windowAIU(days, Date{now}, Calendar{zone});
    }
};

constexpr double midday = 1789387200;  // 2026-09-14T12:00:00Z
constexpr double day = 86400;
constexpr std::int64_t oneAIU = 1'000'000'000;

TEST(CopilotWindowAIU, sumsFromTheStartOfTheFirstDayToNow) {
    const AIUHome home;
    home.call(midday - day / 2 - 1, oneAIU);  // the last second of the day before
    home.call(midday - day / 2, 2 * oneAIU);  // the first one of today
    home.call(midday, 4 * oneAIU);            // now
    home.call(midday + 1, 8 * oneAIU);        // later
    home.call(midday - day - day / 2 - 1, oneAIU * 16);
    EXPECT_EQ(home.window(1, midday), 6);
    EXPECT_EQ(home.window(2, midday), 7);
    EXPECT_EQ(home.window(3, midday), 23);
    EXPECT_EQ(home.window(1, midday + 1), 14);
}

TEST(CopilotWindowAIU, isAFractionOfBillionths) {
    const AIUHome home;
    home.call(midday, 41000000);
    home.call(midday - 1, 1);
    EXPECT_DOUBLE_EQ(home.window(1, midday).value_or(-1), 0.041000001);
}

TEST(CopilotWindowAIU, isAbsentBelowOneDay) {
    const AIUHome home;
    home.call(midday, oneAIU);
    EXPECT_EQ(home.window(0, midday), std::nullopt);
    EXPECT_EQ(home.window(-1, midday), std::nullopt);
    EXPECT_EQ(home.window(std::numeric_limits<std::int64_t>::min(), midday), std::nullopt);
}

TEST(CopilotWindowAIU, isAbsentWithoutAnySample) {
    const AIUHome home;
    EXPECT_EQ(home.window(1, midday), std::nullopt);
    home.write("otel.jsonl", chatSpan({.when = midday}));
    EXPECT_EQ(home.window(1, midday), std::nullopt);
}

TEST(CopilotWindowAIU, isZeroWithSamplesOutsideOnly) {
    const AIUHome home;
    home.call(midday - 5 * day, oneAIU);
    EXPECT_EQ(home.window(1, midday), 0);
}

TEST(CopilotWindowAIU, isAbsentWhereNoCalendarReaches) {
    const AIUHome home;
    home.call(midday, oneAIU);
    EXPECT_EQ(home.window(100'000, midday), 1);
    EXPECT_EQ(home.window(std::numeric_limits<std::int64_t>::max(), midday), std::nullopt);
}

TEST(CopilotWindowAIU, daysAreThoseOfTheCalendarAcrossAClockChange) {
    const AIUHome home;
    const double startOfDay = endOfWinterTime - 2 * 3600;  // 2026-03-29T00:00 in Berlin
    const double now = startOfDay + 23 * 3600 + 3600;      // 2026-03-30T01:00 there, after a day of 23 hours
    home.call(startOfDay - 1, oneAIU);
    home.call(startOfDay, 2 * oneAIU);
    EXPECT_EQ(home.window(1, now, "Europe/Berlin"), 0);
    EXPECT_EQ(home.window(2, now, "Europe/Berlin"), 2);
    EXPECT_EQ(home.window(3, now, "Europe/Berlin"), 3);
}

}  // namespace
}  // namespace quorvane::testing
