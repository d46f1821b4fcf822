#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "QuorvaneCore/ingest/FileCursor.h"
#include "QuorvaneCore/ingest/UsageIndexer.h"
#include "tests/ingest/IngestTestSupport.h"

namespace quorvane {
namespace {

using ::testing::ElementsAre;
using testing::FakeProvider;
using testing::IndexedHome;
using ::testing::IsEmpty;
using testing::Lines;
using testing::logLine;
using testing::OpenWatch;
using testing::setModificationTime;
using Stats = UsageIndexer::Stats;

std::int64_t length(std::string_view text) {
    return static_cast<std::int64_t>(text.size());
}

class UsageIndexerTest : public ::testing::Test, protected IndexedHome {
protected:
    /// The log with these lines, already indexed.
    void indexLog(const std::string& content) {
        home.write(log, content);
        static_cast<void>(refresh());
        provider.decodes.clear();
    }

    [[nodiscard]] std::optional<std::int64_t> decodedFrom() const {
        if (provider.decodes.size() != 1) return std::nullopt;
        return provider.decodes.front().offset;
    }
};

TEST_F(UsageIndexerTest, readsANewFileAndKeepsItsCursor) {
    const std::string content = logLine("a", 1) + logLine("b", 2);
    home.write(log, content + "{\"half");
    EXPECT_EQ(refresh(), (Stats{.filesRead = 1, .filesSkipped = 0, .eventsIngested = 2, .fingerprintReads = 1}));
    EXPECT_THAT(rows(), ElementsAre("a 1 log.jsonl", "b 2 log.jsonl"));
    EXPECT_EQ(decodedFrom(), 0);

    const auto status = FileCursor::state(log);
    ASSERT_TRUE(status);
    EXPECT_EQ(cursor(log), (FileState{.size = status->size,
                                      .mtime = status->mtime,
                                      .offset = length(content),
                                      .fingerprint = FileCursor::fingerprint(log, status->size),
                                      .ctime = status->ctime,
                                      .provider = "claude",
                                      .parserRevision = 1}));
}

TEST_F(UsageIndexerTest, countsRepeatedLinesOfACallAndStoresTheBest) {
    home.write(log, logLine("a", 1) + logLine("a", 5) + logLine("a", 3));
    EXPECT_EQ(refresh().eventsIngested, 3);
    EXPECT_THAT(rows(), ElementsAre("a 5 log.jsonl"));
}

TEST_F(UsageIndexerTest, withoutFilesForgetsTheCursorsAndKeepsTheEvents) {
    const std::string other = home.write("other.jsonl", logLine("b", 2));
    provider.files = {log, other};
    indexLog(logLine("a", 1));
    provider.files = {};
    EXPECT_EQ(refresh(), Stats{});
    EXPECT_THAT(index->cursorPaths(ProviderID::Claude), IsEmpty());
    EXPECT_THAT(rows(), ElementsAre("a 1 log.jsonl", "b 2 other.jsonl"));
}

TEST_F(UsageIndexerTest, aFileThatComesBackIsReadAgainThoughItIsTheSame) {
    indexLog(logLine("a", 1));
    provider.files = {};
    EXPECT_EQ(refresh(), Stats{});
    provider.files = {log};
    EXPECT_EQ(refresh(), (Stats{.filesRead = 1, .filesSkipped = 0, .eventsIngested = 1, .fingerprintReads = 1}));
}

TEST_F(UsageIndexerTest, aFileThatIsGoneIsForgottenByTheProcessToo) {
    indexLog(logLine("a", 1));
    provider.files = {};
    EXPECT_EQ(refresh(), Stats{});
    // A cursor that does not answer for the file by itself; what the process remembered would have.
    setCursor(log, [](FileState& state) { state.ctime = 0; });
    provider.files = {log};
    EXPECT_EQ(refresh(), (Stats{.filesRead = 0, .filesSkipped = 1, .eventsIngested = 0, .fingerprintReads = 1}));
}

TEST_F(UsageIndexerTest, cursorsOfOtherProvidersAreLeftAlone) {
    indexLog(logLine("a", 1));
    FakeProvider codex;
    codex.provider = ProviderID::Codex;
    EXPECT_EQ(UsageIndexer{index}.refresh(codex), Stats{});
    EXPECT_EQ(cursor(log).provider, "claude");
}

TEST_F(UsageIndexerTest, visitsTheFilesInTheReadersOrder) {
    provider.files = {home.write("b", logLine("1", 1)), home.write("c", logLine("2", 1)),
                      home.write("a", logLine("3", 1))};
    EXPECT_EQ(refresh().filesRead, 3);
    EXPECT_THAT(provider.decodes,
                ElementsAre(FakeProvider::Decode{home.path("b"), 0}, FakeProvider::Decode{home.path("c"), 0},
                            FakeProvider::Decode{home.path("a"), 0}));
}

TEST_F(UsageIndexerTest, aFileThatIsListedTwiceIsReadOnce) {
    home.write(log, logLine("a", 1));
    provider.files = {log, log};
    EXPECT_EQ(refresh(), (Stats{.filesRead = 1, .filesSkipped = 1, .eventsIngested = 1, .fingerprintReads = 1}));
}

TEST_F(UsageIndexerTest, aListedFileThatIsNotThereMovesNoCounterAndKeepsItsCursor) {
    EXPECT_EQ(refresh(), Stats{});
    EXPECT_EQ(index->cursor(log), std::nullopt);
    indexLog(logLine("a", 1));
    const FileState before = cursor(log);
    home.remove(log);
    EXPECT_EQ(refresh(), Stats{});
    EXPECT_EQ(cursor(log), before);
    EXPECT_THAT(provider.decodes, IsEmpty());
    EXPECT_THAT(rows(), ElementsAre("a 1 log.jsonl"));
}

// What has not changed

TEST_F(UsageIndexerTest, aSecondRefreshSkipsTheFile) {
    indexLog(logLine("a", 1));
    const std::int64_t generation = index->generation();
    EXPECT_EQ(refresh(), (Stats{.filesRead = 0, .filesSkipped = 1, .eventsIngested = 0, .fingerprintReads = 0}));
    EXPECT_THAT(provider.decodes, IsEmpty());
    EXPECT_EQ(index->generation(), generation);
}

TEST_F(UsageIndexerTest, anUnchangedRefreshOpensNoFile) {
    for (int number = 0; number < 50; ++number) {
        const std::string name = std::to_string(number);
        provider.files.push_back(home.write("logs/" + name, logLine(name, 1)));
    }
    indexLog(logLine("a", 1));
    const OpenWatch watch{provider.files};
    EXPECT_EQ(refresh(), (Stats{.filesRead = 0, .filesSkipped = 51, .eventsIngested = 0, .fingerprintReads = 0}));
    EXPECT_FALSE(watch.hasSeenAnOpen());
    home.touch("logs/7", 1);
    EXPECT_EQ(refresh().filesRead, 1);
    EXPECT_TRUE(watch.hasSeenAnOpen());
}

TEST_F(UsageIndexerTest, theCursorOfAnEarlierProcessIsTrustedWithoutALookIntoTheFile) {
    home.write(log, logLine("a", 1));
    setCursor(log, [](FileState&) {});
    const OpenWatch watch{{log}};
    EXPECT_EQ(refresh(), (Stats{.filesRead = 0, .filesSkipped = 1, .eventsIngested = 0, .fingerprintReads = 0}));
    EXPECT_FALSE(watch.hasSeenAnOpen());
}

TEST_F(UsageIndexerTest, aChangeOfModeIsLookedAtOnceAndTheFileIsUnchanged) {
    indexLog(logLine("a", 1));
    FileState expected = cursor(log);
    changeMode(log);
    EXPECT_EQ(refresh(), (Stats{.filesRead = 0, .filesSkipped = 1, .eventsIngested = 0, .fingerprintReads = 1}));
    expected.ctime = FileCursor::changeTime(log).value_or(0);
    EXPECT_EQ(cursor(log), expected);
    EXPECT_EQ(refresh(), (Stats{.filesRead = 0, .filesSkipped = 1, .eventsIngested = 0, .fingerprintReads = 0}));
    EXPECT_THAT(provider.decodes, IsEmpty());
}

TEST_F(UsageIndexerTest, aCursorWithoutAChangeTimeIsLookedAtOnce) {
    home.write(log, logLine("a", 1));
    setCursor(log, [](FileState& state) { state.ctime = 0; });
    EXPECT_EQ(refresh(), (Stats{.filesRead = 0, .filesSkipped = 1, .eventsIngested = 0, .fingerprintReads = 1}));
    EXPECT_EQ(cursor(log).ctime, FileCursor::changeTime(log));
    EXPECT_EQ(refresh(), (Stats{.filesRead = 0, .filesSkipped = 1, .eventsIngested = 0, .fingerprintReads = 0}));
}

TEST_F(UsageIndexerTest, anUnchangedFileKeepsItsStoredFingerprintAndOffset) {
    home.write(log, logLine("a", 1));
    setCursor(log, [](FileState& state) {
        state.ctime = 0;
        state.fingerprint = "";
        state.offset = 3;
        state.provider = "codex";
    });
    EXPECT_EQ(refresh().filesSkipped, 1);
    EXPECT_EQ(cursor(log).fingerprint, "");
    EXPECT_EQ(cursor(log).offset, 3);
    EXPECT_EQ(cursor(log).provider, "claude");
}

TEST_F(UsageIndexerTest, anEmptyProviderIsFilledInWithoutALookIntoTheFile) {
    home.write(log, logLine("a", 1));
    setCursor(log, [](FileState& state) { state.provider = ""; });
    ASSERT_EQ(cursor(log).provider, "");
    EXPECT_EQ(refresh(), (Stats{.filesRead = 0, .filesSkipped = 1, .eventsIngested = 0, .fingerprintReads = 0}));
    EXPECT_EQ(cursor(log).provider, "claude");
}

TEST_F(UsageIndexerTest, anotherProvidersNameStaysWhereTheFileIsNotLookedAt) {
    home.write(log, logLine("a", 1));
    setCursor(log, [](FileState& state) { state.provider = "codex"; });
    EXPECT_EQ(refresh(), (Stats{.filesRead = 0, .filesSkipped = 1, .eventsIngested = 0, .fingerprintReads = 0}));
    EXPECT_EQ(cursor(log).provider, "codex");
}

// What has changed

TEST_F(UsageIndexerTest, aTouchedFileIsReadAnewWithTheSameResult) {
    indexLog(logLine("a", 1) + logLine("b", 2));
    plant("gone");
    home.touch(log, 1);
    EXPECT_EQ(refresh(), (Stats{.filesRead = 1, .filesSkipped = 0, .eventsIngested = 2, .fingerprintReads = 1}));
    EXPECT_EQ(decodedFrom(), 0);
    EXPECT_THAT(rows(), ElementsAre("a 1 log.jsonl", "b 2 log.jsonl"));
    EXPECT_EQ(refresh().filesSkipped, 1);
}

TEST_F(UsageIndexerTest, aRewriteThatKeepsSizeAndTimeIsSeenInTheBytes) {
    home.write(log, logLine("a", 1));
    setModificationTime(log, 1767225600, 0);
    static_cast<void>(refresh());
    home.write(log, logLine("b", 2));
    setModificationTime(log, 1767225600, 0);
    changeMode(log);
    EXPECT_EQ(refresh(), (Stats{.filesRead = 1, .filesSkipped = 0, .eventsIngested = 1, .fingerprintReads = 1}));
    EXPECT_THAT(rows(), ElementsAre("b 2 log.jsonl"));
}

TEST_F(UsageIndexerTest, aGrownFileIsReadOnFromTheOffsetAndNothingIsDeleted) {
    const std::string content = logLine("a", 1);
    indexLog(content);
    plant("kept");
    home.append(log, logLine("b", 2));
    EXPECT_EQ(refresh(), (Stats{.filesRead = 1, .filesSkipped = 0, .eventsIngested = 1, .fingerprintReads = 1}));
    EXPECT_EQ(decodedFrom(), length(content));
    EXPECT_THAT(rows(), ElementsAre("a 1 log.jsonl", "b 2 log.jsonl", "kept 1 log.jsonl"));
}

TEST_F(UsageIndexerTest, anUnfinishedLineWaitsAndIsReadWhole) {
    const std::string first = logLine("a", 1);
    const std::string second = logLine("b", 2);
    indexLog(first + second.substr(0, 10));
    EXPECT_EQ(cursor(log).offset, length(first));
    EXPECT_EQ(refresh().filesSkipped, 1);
    home.append(log, second.substr(10));
    EXPECT_EQ(refresh().eventsIngested, 1);
    EXPECT_EQ(decodedFrom(), length(first));
    EXPECT_THAT(rows(), ElementsAre("a 1 log.jsonl", "b 2 log.jsonl"));
}

TEST_F(UsageIndexerTest, linesThatArriveDuringTheReadAreNotReadTwice) {
    home.write(log, logLine("a", 1));
    provider.beforeDecode = [&] { home.append(log, logLine("b", 2)); };
    EXPECT_EQ(refresh().eventsIngested, 2);
    EXPECT_EQ(cursor(log).size, length(logLine("a", 1)));
    EXPECT_EQ(cursor(log).offset, length(logLine("a", 1) + logLine("b", 2)));
    provider.beforeDecode = [] {};
    EXPECT_EQ(refresh(), (Stats{.filesRead = 1, .filesSkipped = 0, .eventsIngested = 0, .fingerprintReads = 1}));
    EXPECT_THAT(rows(), ElementsAre("a 1 log.jsonl", "b 2 log.jsonl"));
}

TEST_F(UsageIndexerTest, aGrownFileIsReadAnewForAReaderOfWholeFiles) {
    provider.tailAppends = false;
    indexLog(logLine("a", 1));
    plant("gone");
    home.append(log, logLine("b", 2));
    EXPECT_EQ(refresh(), (Stats{.filesRead = 1, .filesSkipped = 0, .eventsIngested = 2, .fingerprintReads = 1}));
    EXPECT_EQ(decodedFrom(), 0);
    EXPECT_THAT(rows(), ElementsAre("a 1 log.jsonl", "b 2 log.jsonl"));
}

TEST_F(UsageIndexerTest, aShrunkenFileIsReadAnewAndItsOldEventsGo) {
    indexLog(logLine("a", 1) + logLine("b", 2));
    home.truncate(log, length(logLine("a", 1)));
    EXPECT_EQ(refresh().filesRead, 1);
    EXPECT_EQ(decodedFrom(), 0);
    EXPECT_THAT(rows(), ElementsAre("a 1 log.jsonl"));
}

TEST_F(UsageIndexerTest, aReadThatYieldsNothingStillDeletes) {
    indexLog(logLine("a", 1));
    home.truncate(log, 0);
    EXPECT_EQ(refresh(), (Stats{.filesRead = 1, .filesSkipped = 0, .eventsIngested = 0, .fingerprintReads = 1}));
    EXPECT_THAT(rows(), IsEmpty());
}

TEST_F(UsageIndexerTest, deletionReachesTheEventsOfThatFileOnly) {
    const std::string other = home.write("other.jsonl", logLine("b", 2));
    provider.files = {log, other};
    indexLog(logLine("a", 1));
    home.truncate(log, 0);
    EXPECT_EQ(refresh().filesSkipped, 1);
    EXPECT_THAT(rows(), ElementsAre("b 2 other.jsonl"));
}

TEST_F(UsageIndexerTest, decodesBeforeItDeletesAndDeletesBeforeItStores) {
    indexLog(logLine("a", 9));
    home.write(log, logLine("a", 4));
    home.touch(log, 1);
    Lines duringTheDecode;
    provider.beforeDecode = [&] { duringTheDecode = rows(); };
    EXPECT_EQ(refresh().filesRead, 1);
    EXPECT_THAT(duringTheDecode, ElementsAre("a 9 log.jsonl"));
    // The weaker row stands only because the better one went first.
    EXPECT_THAT(rows(), ElementsAre("a 4 log.jsonl"));
}

TEST_F(UsageIndexerTest, anotherParserRevisionReadsEveryFileAnew) {
    const std::string other = home.write("other.jsonl", logLine("b", 2));
    provider.files = {log, other};
    indexLog(logLine("a", 1));
    plant("gone");
    for (const std::int64_t revision : {2, 1}) {
        provider.revision = revision;
        provider.decodes.clear();
        EXPECT_EQ(refresh(), (Stats{.filesRead = 2, .filesSkipped = 0, .eventsIngested = 2, .fingerprintReads = 2}));
        EXPECT_THAT(provider.decodes, ElementsAre(FakeProvider::Decode{log, 0}, FakeProvider::Decode{other, 0}));
        EXPECT_THAT(rows(), ElementsAre("a 1 log.jsonl", "b 2 other.jsonl"));
        EXPECT_EQ(cursor(log).parserRevision, revision);
        EXPECT_EQ(refresh().filesSkipped, 2);
    }
}

TEST_F(UsageIndexerTest, anotherParserRevisionReadsAGrownFileFromTheStart) {
    indexLog(logLine("a", 1));
    home.append(log, logLine("b", 2));
    provider.revision = 2;
    EXPECT_EQ(refresh().eventsIngested, 2);
    EXPECT_EQ(decodedFrom(), 0);
}

// Policies of a reset

TEST_F(UsageIndexerTest, retainingReadsAShrunkenFileFromTheStartAndDeletesNothing) {
    provider.policy = ResetPolicy::RereadWholeRetainingIndexedEvents;
    indexLog(logLine("a", 1) + logLine("b", 2));
    home.truncate(log, length(logLine("a", 1)));
    EXPECT_EQ(refresh().eventsIngested, 1);
    EXPECT_EQ(decodedFrom(), 0);
    EXPECT_THAT(rows(), ElementsAre("a 1 log.jsonl", "b 2 log.jsonl"));
}

TEST_F(UsageIndexerTest, retainingDeletesNothingAfterATouchOrWithANewRevisionEither) {
    provider.policy = ResetPolicy::RereadWholeRetainingIndexedEvents;
    indexLog(logLine("a", 1));
    plant("kept");
    home.touch(log, 1);
    EXPECT_EQ(refresh().filesRead, 1);
    provider.revision = 2;
    EXPECT_EQ(refresh().filesRead, 1);
    EXPECT_THAT(rows(), ElementsAre("a 1 log.jsonl", "kept 1 log.jsonl"));
}

class UsageIndexerWatermark : public UsageIndexerTest {
protected:
    UsageIndexerWatermark() {
        provider.policy = ResetPolicy::Watermark;
        indexLog(first);
        plant("before", 1999);
        plant("exactly", 2000);
        plant("behind", 2001);
        home.touch(log, 1);
    }

    const std::string first = logLine("a", 1);
};

TEST_F(UsageIndexerWatermark, readsFromTheOffsetAndDeletesFromTheDateOn) {
    provider.watermark = Date{2000};
    EXPECT_EQ(refresh(), (Stats{.filesRead = 1, .filesSkipped = 0, .eventsIngested = 0, .fingerprintReads = 1}));
    EXPECT_EQ(decodedFrom(), length(first));
    EXPECT_THAT(provider.watermarksAsked, ElementsAre(length(first)));
    EXPECT_THAT(rows(), ElementsAre("a 1 log.jsonl", "before 1 log.jsonl"));
}

TEST_F(UsageIndexerWatermark, withoutADateDeletesNothing) {
    EXPECT_EQ(refresh().filesRead, 1);
    EXPECT_EQ(decodedFrom(), length(first));
    EXPECT_THAT(provider.watermarksAsked, ElementsAre(length(first)));
    EXPECT_THAT(rows(),
                ElementsAre("a 1 log.jsonl", "before 1 log.jsonl", "behind 1 log.jsonl", "exactly 1 log.jsonl"));
}

TEST_F(UsageIndexerWatermark, atOffset0DeletesAllWithoutAskingForADate) {
    provider.watermark = Date{2000};
    setCursor(log, [](FileState& state) {
        state.offset = 0;
        state.mtime -= 1;
    });
    EXPECT_EQ(refresh().filesRead, 1);
    EXPECT_EQ(decodedFrom(), 0);
    EXPECT_THAT(provider.watermarksAsked, IsEmpty());
    EXPECT_THAT(rows(), ElementsAre("a 1 log.jsonl"));
}

TEST_F(UsageIndexerWatermark, ofAnotherParserRevisionIsNotUsed) {
    provider.watermark = Date{2000};
    provider.revision = 2;
    EXPECT_EQ(refresh().filesRead, 1);
    EXPECT_EQ(decodedFrom(), 0);
    EXPECT_THAT(provider.watermarksAsked, IsEmpty());
    EXPECT_THAT(rows(), ElementsAre("a 1 log.jsonl"));
}

TEST_F(UsageIndexerWatermark, withoutACursorReadsAllAndDeletesAll) {
    provider.watermark = Date{2000};
    index->deleteCursor(log);
    EXPECT_EQ(refresh().filesRead, 1);
    EXPECT_EQ(decodedFrom(), 0);
    EXPECT_THAT(rows(), ElementsAre("a 1 log.jsonl"));
}

TEST_F(UsageIndexerWatermark, isKeptByAShrunkenFileAndByAGrownOneOfAReaderOfWholeFiles) {
    provider.watermark = Date{2000};
    home.truncate(log, 0);
    EXPECT_EQ(refresh().filesRead, 1);
    EXPECT_EQ(decodedFrom(), length(first));
    provider.decodes.clear();
    provider.tailAppends = false;
    home.append(log, first + first);
    EXPECT_EQ(refresh().filesRead, 1);
    EXPECT_EQ(decodedFrom(), length(first));
    EXPECT_THAT(provider.watermarksAsked, ElementsAre(length(first), length(first)));
}

TEST_F(UsageIndexerWatermark, isNotAskedForWhenTheFileIsReadOn) {
    provider.watermark = Date{2000};
    home.append(log, logLine("b", 2));
    EXPECT_EQ(refresh().filesRead, 1);
    EXPECT_THAT(provider.watermarksAsked, IsEmpty());
    EXPECT_EQ(rows().size(), 5U);
}

// Files that cannot be read

/// A socket: it has a status and cannot be opened.
class Socket {
public:
    explicit Socket(const std::string& path) : descriptor_{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)} {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        if (::bind(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
            throw std::runtime_error{"cannot bind " + path};
        }
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    ~Socket() { ::close(descriptor_); }

private:
    int descriptor_;
};

TEST_F(UsageIndexerTest, aFileThatCannotBeOpenedGetsACursorWithoutAFingerprint) {
    const Socket socket{log};
    EXPECT_EQ(refresh(), (Stats{.filesRead = 1, .filesSkipped = 0, .eventsIngested = 0, .fingerprintReads = 1}));
    EXPECT_EQ(cursor(log).fingerprint, "");
    EXPECT_EQ(cursor(log).offset, 0);
    changeMode(log);
    EXPECT_EQ(refresh(), (Stats{.filesRead = 0, .filesSkipped = 1, .eventsIngested = 0, .fingerprintReads = 1}));
}

// Threads

TEST_F(UsageIndexerTest, severalProvidersCanBeRefreshedAtOnce) {
    constexpr int fileCount = 20;
    FakeProvider codex;
    codex.provider = ProviderID::Codex;
    provider.files.clear();
    Lines expected;
    for (int number = 0; number < fileCount; ++number) {
        const std::string name = std::to_string(100 + number);
        provider.files.push_back(home.write("claude/" + name, logLine("a" + name, 1)));
        codex.files.push_back(home.write("codex/" + name, logLine("b" + name, 1)));
        expected.push_back("a" + name + " 1 " + name);
        expected.push_back("b" + name + " 1 " + name);
    }
    std::sort(expected.begin(), expected.end());
    std::thread other{[&] { static_cast<void>(UsageIndexer{index}.refresh(codex)); }};
    const Stats stats = refresh();
    other.join();
    EXPECT_EQ(stats.filesRead, fileCount);
    EXPECT_EQ(rows(), expected);
    EXPECT_EQ(index->cursorPaths(ProviderID::Codex).size(), codex.files.size());
}

}  // namespace
}  // namespace quorvane
