#include <array>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/model/Deduplicator.h"
#include "tests/index/IndexTestSupport.h"

namespace quorvane {
namespace {

using testing::column;
using ::testing::ElementsAre;
using testing::event;
using testing::EventFields;
using testing::IndexFile;
using ::testing::IsEmpty;
using testing::legacyRow;
using testing::legacySchema;
using testing::storedEvents;
using testing::storedLegacyEvents;

using Events = std::vector<UsageEvent>;

class UsageIndexStorage : public ::testing::Test {
protected:
    void ingest(const Events& events, const std::optional<std::string>& path = "/log") { index.ingest(events, path); }
    [[nodiscard]] std::vector<std::string> rows() const { return storedEvents(file.path); }

    IndexFile file;
    UsageIndex index{file.path};
};

TEST_F(UsageIndexStorage, anEventIsStoredWithAllItsColumns) {
    ingest({event({.message = "m",
                   .request = "r",
                   .provider = ProviderID::MuseSpark,
                   .model = "muse-spark-1.1",
                   .when = Date{1767225600.125},
                   .usage = {.input = 1, .output = 2, .cacheCreate5m = 3, .cacheCreate1h = 4, .cacheRead = 5},
                   .project = "it's"})},
           "/log/a");
    EXPECT_THAT(rows(), ElementsAre("muse_spark 'm' 'r' 'muse-spark-1.1' 1767225600.125 'it''s' 1 2 3 4 5 '/log/a'"));
}

TEST_F(UsageIndexStorage, anAbsentProjectAndAnAbsentPathAreNull) {
    ingest({event({.when = Date{-5}})}, std::nullopt);
    EXPECT_THAT(rows(), ElementsAre("claude 'message' 'request' 'model' -5.0 NULL 0 0 0 0 0 NULL"));
    EXPECT_THAT(column(file.path, "SELECT path FROM paths;"), IsEmpty());
}

TEST_F(UsageIndexStorage, theSameEventsAgainChangeNoRowAndRaiseTheGeneration) {
    const Events events{event({.message = "a", .usage = {.output = 1}}),
                        event({.message = "b", .usage = {.input = 1}})};
    ingest(events);
    const std::vector<std::string> once = rows();
    EXPECT_EQ(index.generation(), 1);
    ingest(events);
    EXPECT_EQ(rows(), once);
    EXPECT_EQ(index.generation(), 2);
}

TEST_F(UsageIndexStorage, noEventsDoNotRaiseTheGenerationAndInternNoPath) {
    ingest({});
    EXPECT_EQ(index.generation(), 0);
    EXPECT_THAT(column(file.path, "SELECT path FROM paths;"), IsEmpty());
}

/// A stored call, one offered for the same key, and whether the offered one takes its place.
struct KeepBestCase {
    const char* name;
    TokenUsage stored;
    TokenUsage offered;
    bool isReplaced;
};
class UsageIndexKeepBest : public ::testing::TestWithParam<KeepBestCase> {};

TEST_P(UsageIndexKeepBest, theBetterOfTwoStays) {
    const KeepBestCase& row = GetParam();
    const UsageEvent stored = event({.model = "old", .when = Date{1}, .usage = row.stored, .project = "old project"});
    const UsageEvent offered = event({.model = "new", .when = Date{2}, .usage = row.offered, .project = std::nullopt});
    // In two calls, and in one.
    for (const bool isOneCall : {false, true}) {
        const IndexFile file;
        UsageIndex index{file.path};
        if (isOneCall) {
            index.ingest(Events{stored, offered}, "/new");
        } else {
            index.ingest(Events{stored}, "/old");
            index.ingest(Events{offered}, "/new");
        }
        const auto text = [](const TokenUsage& usage) {
            return std::to_string(usage.input) + " " + std::to_string(usage.output) + " " +
                   std::to_string(usage.cacheCreate5m) + " " + std::to_string(usage.cacheCreate1h) + " " +
                   std::to_string(usage.cacheRead);
        };
        const std::string expected = row.isReplaced
                                         ? "claude 'message' 'request' 'new' 2.0 NULL " + text(row.offered) + " '/new'"
                                         : "claude 'message' 'request' 'old' 1.0 'old project' " + text(row.stored) +
                                               (isOneCall ? " '/new'" : " '/old'");
        EXPECT_THAT(storedEvents(file.path), ElementsAre(expected));
        EXPECT_EQ(Deduplicator::isBetter(row.offered, row.stored), row.isReplaced);
    }
}
INSTANTIATE_TEST_SUITE_P(
    ByUsage, UsageIndexKeepBest,
    ::testing::Values(
        KeepBestCase{"largerOutput", {.output = 5}, {.output = 6}, true},
        KeepBestCase{"largerOutputAndSmallerTotal", {.input = 900, .output = 5}, {.output = 6}, true},
        KeepBestCase{"smallerOutputAndLargerTotal", {.output = 5}, {.input = 900, .output = 4}, false},
        KeepBestCase{"equalOutputAndLargerInput", {.input = 1, .output = 5}, {.input = 2, .output = 5}, true},
        KeepBestCase{
            "equalOutputAndLargerFiveMinuteWrite", {.input = 1, .output = 5}, {.output = 5, .cacheCreate5m = 2}, true},
        KeepBestCase{
            "equalOutputAndLargerOneHourWrite", {.input = 1, .output = 5}, {.output = 5, .cacheCreate1h = 2}, true},
        KeepBestCase{"equalOutputAndLargerRead", {.input = 1, .output = 5}, {.output = 5, .cacheRead = 2}, true},
        KeepBestCase{"equalOutputAndSmallerTotal", {.input = 2, .output = 5}, {.output = 5}, false},
        KeepBestCase{"fullTie", {.input = 3, .output = 5}, {.output = 5, .cacheRead = 3}, false},
        KeepBestCase{"nothingAtAll", {}, {}, false}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST_F(UsageIndexStorage, oneKeyUnderTwoProvidersIsTwoRows) {
    ingest({event({.provider = ProviderID::Opencode}), event({.provider = ProviderID::MuseSpark})});
    EXPECT_EQ(index.eventCount(std::nullopt), 2);
    EXPECT_EQ(index.eventCount(ProviderID::Opencode), 1);
    EXPECT_EQ(index.eventCount(ProviderID::MuseSpark), 1);
    EXPECT_EQ(index.eventCount(ProviderID::Claude), 0);
}

TEST_F(UsageIndexStorage, messageAndRequestMakeTheKeyTogether) {
    ingest({event({.message = "a", .request = "b"}), event({.message = "ab", .request = ""}),
            event({.message = "", .request = "ab"}), event({.message = "a", .request = "B"})});
    EXPECT_EQ(index.eventCount(std::nullopt), 4);
}

TEST_F(UsageIndexStorage, aReplacingEventWithoutAFileKeepsTheStoredFile) {
    ingest({event({.usage = {.output = 1}})}, "/one");
    ingest({event({.usage = {.output = 2}})}, std::nullopt);
    EXPECT_THAT(rows(), ElementsAre("claude 'message' 'request' 'model' 1000.0 NULL 0 2 0 0 0 '/one'"));
}

TEST_F(UsageIndexStorage, pathsAreInternedOnceAndStayWhenTheirEventsGo) {
    ingest({event({.message = "a"})}, "/one");
    ingest({event({.message = "b"})}, "/one");
    ingest({event({.message = "c"})}, "/two");
    EXPECT_THAT(column(file.path, "SELECT path FROM paths ORDER BY id;"), ElementsAre("/one", "/two"));
    EXPECT_THAT(index.sourcePaths(ProviderID::Claude), ElementsAre("/one", "/two"));
    index.deleteEvents("/one", std::nullopt);
    EXPECT_THAT(column(file.path, "SELECT path FROM paths ORDER BY id;"), ElementsAre("/one", "/two"));
    EXPECT_THAT(index.sourcePaths(ProviderID::Claude), ElementsAre("/two"));
    EXPECT_THAT(index.sourcePaths(ProviderID::Codex), IsEmpty());
}

TEST_F(UsageIndexStorage, deleteEventsTakesTheFilesEventsAlone) {
    ingest({event({.message = "a"}), event({.message = "b"})}, "/one");
    ingest({event({.message = "c"})}, "/one/more");
    ingest({event({.message = "d"})}, std::nullopt);
    EXPECT_EQ(index.generation(), 3);
    index.deleteEvents("/one", std::nullopt);
    EXPECT_THAT(column(file.path, "SELECT msg_id FROM events ORDER BY msg_id;"), ElementsAre("c", "d"));
    EXPECT_EQ(index.generation(), 4);
}

TEST_F(UsageIndexStorage, deleteEventsWithADateKeepsWhatIsOlder) {
    ingest({event({.message = "a", .when = Date{99.999}}), event({.message = "b", .when = Date{100}}),
            event({.message = "c", .when = Date{100.001}})});
    index.deleteEvents("/log", Date{100});
    EXPECT_THAT(column(file.path, "SELECT msg_id FROM events;"), ElementsAre("a"));
    index.deleteEvents("/log", Date{99});
    EXPECT_EQ(index.eventCount(std::nullopt), 0);
}

TEST_F(UsageIndexStorage, deleteEventsOfAnUnknownPathRemovesNothingAndRaisesTheGeneration) {
    ingest({event({.message = "a"})}, "/one");
    ingest({event({.message = "b"})}, std::nullopt);
    index.deleteEvents("/unknown", std::nullopt);
    index.deleteEvents("/unknown", Date{0});
    EXPECT_EQ(index.eventCount(std::nullopt), 2);
    EXPECT_EQ(index.generation(), 4);
}

TEST_F(UsageIndexStorage, theEventCountIsZeroWhereItCannotBeRead) {
    ingest({event({})});
    EXPECT_EQ(index.eventCount(std::nullopt), 1);
    testing::execute(file.path, "DROP TABLE events;");
    EXPECT_EQ(index.eventCount(std::nullopt), 0);
    EXPECT_EQ(index.eventCount(ProviderID::Claude), 0);
}

TEST_F(UsageIndexStorage, everyProviderIsStoredByItsRawName) {
    Events events;
    for (const ProviderID provider : allProviderIDs())
        events.push_back(event({.provider = provider}));
    ingest(events);
    for (const ProviderID provider : allProviderIDs()) {
        EXPECT_EQ(index.eventCount(provider), 1) << rawName(provider);
        EXPECT_EQ(testing::number(file.path, "SELECT count(*) FROM events WHERE provider = '" +
                                                 std::string{rawName(provider)} + "';"),
                  1);
    }
}

// Files of an old version that has rows

class UsageIndexLegacyStorage : public ::testing::Test {
protected:
    UsageIndexLegacyStorage() {
        testing::execute(file.path, legacySchema + legacyRow("a", 10, "'/one'") + legacyRow("b", 20, "'/one'") +
                                        legacyRow("c", 30, "'/two'") + legacyRow("d", 40, "NULL"));
        index.emplace(file.path);
    }

    [[nodiscard]] std::vector<std::string> messages() const {
        return column(file.path, "SELECT msg_id FROM events ORDER BY msg_id;");
    }

    IndexFile file;
    std::optional<UsageIndex> index;
};

TEST_F(UsageIndexLegacyStorage, ingestWritesTheReferenceAndTheColumn) {
    index->ingest(Events{event({.message = "e", .usage = {.output = 1}})}, "/three");
    EXPECT_EQ(storedLegacyEvents(file.path).back(),
              "claude 'e' 'request' 'model' 1000.0 NULL 0 1 0 0 0 '/three' '/three'");
}

TEST_F(UsageIndexLegacyStorage, aReplacingEventTakesBothOrKeepsBoth) {
    index->ingest(Events{event({.message = "a", .request = "r", .usage = {.output = 3}})}, "/new");
    EXPECT_EQ(storedLegacyEvents(file.path).front(), "claude 'a' 'r' 'model' 1000.0 NULL 0 3 0 0 0 '/new' '/new'");
    index->ingest(Events{event({.message = "a", .request = "r", .usage = {.output = 4}})}, std::nullopt);
    EXPECT_EQ(storedLegacyEvents(file.path).front(), "claude 'a' 'r' 'model' 1000.0 NULL 0 4 0 0 0 '/new' '/new'");
    // A row of the old version has the column alone, and keeps it.
    index->ingest(Events{event({.message = "b", .request = "r", .usage = {.output = 4}})}, std::nullopt);
    EXPECT_EQ(storedLegacyEvents(file.path)[1], "claude 'b' 'r' 'model' 1000.0 NULL 0 4 0 0 0 NULL '/one'");
}

TEST_F(UsageIndexLegacyStorage, aWorseEventChangesNothing) {
    const std::vector<std::string> before = storedLegacyEvents(file.path);
    index->ingest(Events{event({.message = "a", .request = "r", .usage = {.input = 900, .output = 1}})}, "/new");
    EXPECT_EQ(storedLegacyEvents(file.path), before);
    EXPECT_EQ(index->generation(), 1);
}

TEST_F(UsageIndexLegacyStorage, deleteEventsGoesByTheColumn) {
    index->deleteEvents("/one", std::nullopt);
    EXPECT_THAT(messages(), ElementsAre("c", "d"));
    EXPECT_EQ(index->generation(), 1);
    index->deleteEvents("/unknown", std::nullopt);
    EXPECT_THAT(messages(), ElementsAre("c", "d"));
    EXPECT_EQ(index->generation(), 2);
}

TEST_F(UsageIndexLegacyStorage, deleteEventsWithADateKeepsWhatIsOlder) {
    index->deleteEvents("/one", Date{20});
    EXPECT_THAT(messages(), ElementsAre("a", "c", "d"));
}

TEST_F(UsageIndexLegacyStorage, pathsWithOneTailAreToldApart) {
    const std::string tail = "/the/last/24/characters.jsonl";
    index->ingest(Events{event({.message = "x"})}, "/one" + tail);
    index->ingest(Events{event({.message = "y"})}, "/two" + tail);
    index->deleteEvents("/one" + tail, std::nullopt);
    EXPECT_THAT(messages(), ElementsAre("a", "b", "c", "d", "y"));
}

TEST_F(UsageIndexLegacyStorage, sourcePathsAreThoseOfTheColumn) {
    EXPECT_THAT(index->sourcePaths(ProviderID::Claude), ElementsAre("/one", "/two"));
    index->ingest(Events{event({.message = "e", .provider = ProviderID::Codex})}, "/three");
    EXPECT_THAT(index->sourcePaths(ProviderID::Claude), ElementsAre("/one", "/two"));
    EXPECT_THAT(index->sourcePaths(ProviderID::Codex), ElementsAre("/three"));
}

TEST_F(UsageIndexLegacyStorage, nothingElseDependsOnTheShape) {
    const auto play = [&] {
        index->ingest(Events{event({.message = "e", .usage = {.output = 1}})}, "/one");
        index->deleteEvents("/two", std::nullopt);
        return column(file.path, "SELECT msg_id || ' ' || ts || ' ' || output FROM events ORDER BY msg_id;");
    };
    const std::vector<std::string> inTheOldShape = play();
    index->migrateSourcePathIndexIfNeeded();
    EXPECT_EQ(play(), inTheOldShape);
    EXPECT_THAT(index->sourcePaths(ProviderID::Claude), ElementsAre("/one"));
}

// Properties

/// Few keys, few token values and few dates, so that all kinds of ties come up; identities with NUL bytes among them,
/// which SQLite takes as the text before the NUL.
class RandomEvents {
public:
    explicit RandomEvents(unsigned seed) : generator_{seed} {}

    UsageEvent next() {
        static const std::array<std::string, 5> identities{"a", "b", std::string{"a\0x", 3}, std::string{"a\0y", 3},
                                                           std::string{"\0", 1}};
        static const std::array<ProviderID, 2> providers{ProviderID::Claude, ProviderID::Codex};
        EventFields fields;
        fields.message = identities[below(identities.size())];
        fields.request = identities[below(3)];
        fields.provider = providers[below(providers.size())];
        fields.model = "model-" + std::to_string(serial_);
        fields.when = Date{static_cast<double>(serial_)};
        fields.usage = {.input = small(),
                        .output = small(),
                        .cacheCreate5m = small(),
                        .cacheCreate1h = small(),
                        .cacheRead = small()};
        if (below(2) == 0) fields.project = "project-" + std::to_string(serial_);
        ++serial_;
        return event(std::move(fields));
    }
    Events batch(std::size_t most) {
        Events events;
        for (std::size_t count = below(most + 1); count > 0; --count)
            events.push_back(next());
        return events;
    }
    std::optional<std::string> path() {
        const std::size_t choice = below(4);
        return choice == 0 ? std::nullopt : std::optional{"/log/" + std::to_string(choice)};
    }
    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>{0, limit - 1}(generator_);
    }

private:
    std::int64_t small() { return static_cast<std::int64_t>(below(2)); }
    std::mt19937 generator_;
    int serial_ = 0;
};

class UsageIndexIngestProperty : public ::testing::TestWithParam<unsigned> {};

// What is filtered in memory before it reaches SQLite would have lost there as well.
TEST_P(UsageIndexIngestProperty, aBatchEqualsItsEventsOneByOne) {
    const IndexFile file;
    const std::string otherPath = file.home.path("other.sqlite");
    if (GetParam() % 2 == 1) {
        testing::execute(file.path, legacySchema + legacyRow("a", 1, "'/log/1'"));
        testing::execute(otherPath, legacySchema + legacyRow("a", 1, "'/log/1'"));
    }
    UsageIndex atOnce{file.path};
    UsageIndex oneByOne{otherPath};
    RandomEvents random{GetParam()};
    const auto rowsOf = [&](const std::string& path) {
        return atOnce.hasLegacySourcePathColumn() ? storedLegacyEvents(path) : storedEvents(path);
    };
    for (int round = 0; round < 6; ++round) {
        const Events events = random.batch(40);
        const std::optional<std::string> path = random.path();
        atOnce.ingest(events, path);
        for (const UsageEvent& single : events)
            oneByOne.ingest({&single, 1}, path);
        ASSERT_EQ(rowsOf(file.path), rowsOf(otherPath));
        if (random.below(3) == 0) {
            const std::optional<Date> date = random.below(2) == 0 ? std::nullopt : std::optional{Date{50}};
            atOnce.deleteEvents("/log/1", date);
            oneByOne.deleteEvents("/log/1", date);
        }
    }
    EXPECT_EQ(rowsOf(file.path), rowsOf(otherPath));
}
INSTANTIATE_TEST_SUITE_P(Seeds, UsageIndexIngestProperty, ::testing::Range(1U, 13U));

class UsageIndexDeduplication : public ::testing::TestWithParam<unsigned> {};

TEST_P(UsageIndexDeduplication, keepsWhatTheDeduplicatorKeeps) {
    RandomEvents random{GetParam() + 1000};
    Events events;
    for (int count = 0; count < 80; ++count) {
        UsageEvent made = random.next();
        made.provider = ProviderID::Claude;
        std::erase(made.messageId, '\0');
        std::erase(made.requestId, '\0');
        events.push_back(std::move(made));
    }
    const IndexFile file;
    UsageIndex all{file.path};
    all.ingest(events, "/log");
    UsageIndex kept{file.home.path("kept.sqlite")};
    kept.ingest(Deduplicator::dedupe(events), "/log");
    EXPECT_EQ(storedEvents(file.path), storedEvents(kept.path()));
    EXPECT_LT(all.eventCount(std::nullopt), 80);
}
INSTANTIATE_TEST_SUITE_P(Seeds, UsageIndexDeduplication, ::testing::Range(1U, 5U));

// A tie between two spellings that are one text to SQLite: the first stays, whatever the filter thinks of them.
TEST_F(UsageIndexStorage, identitiesThatDifferBehindANulByteAreOneKey) {
    ingest({event({.message = std::string{"a\0x", 3}, .model = "first", .usage = {.output = 1}}),
            event({.message = std::string{"a\0y", 3}, .model = "second", .usage = {.output = 5}}),
            event({.message = std::string{"a\0x", 3}, .model = "third", .usage = {.output = 5}})});
    EXPECT_THAT(rows(), ElementsAre("claude 'a' 'request' 'second' 1000.0 NULL 0 5 0 0 0 '/log'"));
}

// The totals of these calls do not fit into 64 bits; SQLite adds them up as floats, and no process ends over it.
TEST_F(UsageIndexStorage, totalsBeyond64BitsAreComparedWithoutEndingTheProcess) {
    const std::int64_t most = std::numeric_limits<std::int64_t>::max();
    ingest({event({.model = "small", .usage = {.input = most, .output = 1}}),
            event({.model = "large", .usage = {.input = most, .output = 1, .cacheRead = most}})});
    EXPECT_THAT(column(file.path, "SELECT model FROM events;"), ElementsAre("large"));
}

}  // namespace
}  // namespace quorvane
