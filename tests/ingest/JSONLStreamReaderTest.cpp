#include <algorithm>
#include <cstring>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "QuorvaneCore/ingest/JSONLStreamReader.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "tests/ingest/IngestTestSupport.h"

namespace quorvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::Lines;
using testing::openDescriptors;
using testing::OpenWatch;
using testing::ScratchHome;
using namespace std::string_literals;

/// What a read from an offset gave.
struct Reading {
    Lines lines;
    std::int64_t consumed = 0;
    friend bool operator==(const Reading&, const Reading&) = default;
};

void PrintTo(const Reading& reading, std::ostream* stream) {
    *stream << reading.consumed << ": " << ::testing::PrintToString(reading.lines);
}

Reading readFrom(const std::string& file, std::int64_t from, std::int64_t chunkSize = 65536) {
    Reading reading;
    reading.consumed = JSONLStreamReader{.chunkSize = chunkSize}.read(
        file, from, [&](std::string_view line) { reading.lines.emplace_back(line); });
    return reading;
}

Lines readWhole(const std::string& file, std::int64_t chunkSize = 65536) {
    Lines lines;
    JSONLStreamReader{.chunkSize = chunkSize}.read(file, [&](std::string_view line) { lines.emplace_back(line); });
    return lines;
}

/// The tail of a file; `seen` is what was offered.
struct Tail {
    Lines values;
    Lines seen;
};

template <typename Accepts>
Tail tailOf(const std::string& file, std::uint64_t maxBytes, std::int64_t limit, Accepts accepts) {
    Tail tail;
    tail.values = JSONLStreamReader::matchingTail(file, maxBytes, limit, [&](std::string_view line) {
        tail.seen.emplace_back(line);
        return accepts(line) ? std::optional{std::string{line}} : std::nullopt;
    });
    return tail;
}

Tail tailOf(const std::string& file, std::uint64_t maxBytes, std::int64_t limit = 100) {
    return tailOf(file, maxBytes, limit, [](std::string_view) { return true; });
}

/// A named pipe that holds some bytes and has a writer: after them a read fails, as it does on a damaged disk.
class FailingPipe {
public:
    FailingPipe(const ScratchHome& home, std::string_view bytes) : path{home.path("pipe")} {
        if (::mkfifo(path.c_str(), 0600) != 0) throw std::runtime_error{"cannot make " + path};
        descriptor_ = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
        if (::write(descriptor_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
            throw std::runtime_error{"cannot fill " + path};
        }
    }
    FailingPipe(const FailingPipe&) = delete;
    FailingPipe& operator=(const FailingPipe&) = delete;
    ~FailingPipe() { ::close(descriptor_); }

    std::string path;

private:
    int descriptor_ = -1;
};

/// Bytes at the end of a mapped file, with a page behind them that the file does not reach: as a file, the memory of
/// this process can be read from `offset` on, up to an error right behind the bytes.
class BytesBeforeAnError {
public:
    explicit BytesBeforeAnError(std::string_view bytes) : pageSize_{static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))} {
        const int descriptor = ::memfd_create("bytes", MFD_CLOEXEC);
        void* const pages = ::ftruncate(descriptor, static_cast<off_t>(pageSize_)) != 0
                                ? MAP_FAILED
                                : ::mmap(nullptr, 2 * pageSize_, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
        ::close(descriptor);
        if (pages == MAP_FAILED) throw std::runtime_error{"cannot map a file in memory"};
        pages_ = static_cast<char*>(pages);
        char* const begin = pages_ + pageSize_ - bytes.size();
        std::memcpy(begin, bytes.data(), bytes.size());
        offset = static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(begin));
    }
    BytesBeforeAnError(const BytesBeforeAnError&) = delete;
    BytesBeforeAnError& operator=(const BytesBeforeAnError&) = delete;
    ~BytesBeforeAnError() { ::munmap(pages_, 2 * pageSize_); }

    const std::string file = "/proc/self/mem";
    std::int64_t offset = 0;

private:
    std::size_t pageSize_;
    char* pages_ = nullptr;
};

// Every chunk size

class JSONLStreamReaderChunks : public ::testing::TestWithParam<std::int64_t> {
protected:
    [[nodiscard]] Reading from(std::int64_t offset) const { return readFrom(log, offset, GetParam()); }
    [[nodiscard]] Lines whole() const { return readWhole(log, GetParam()); }

    void write(std::string_view content) const { home.write(log, content); }
    void append(std::string_view content) const { home.append(log, content); }
    [[nodiscard]] std::int64_t size() const { return static_cast<std::int64_t>(home.read(log).size()); }

    ScratchHome home;
    std::string log = home.path("log.jsonl");
};

TEST_P(JSONLStreamReaderChunks, emptyLinesAreNotDeliveredAndYetConsumed) {
    write("a\n\nb\n");
    EXPECT_THAT(whole(), ElementsAre("a", "b"));
    EXPECT_EQ(from(0), (Reading{{"a", "b"}, 5}));
    write("\n\n\n\n");
    EXPECT_THAT(whole(), IsEmpty());
    EXPECT_EQ(from(0), (Reading{{}, 4}));
}

TEST_P(JSONLStreamReaderChunks, emptyFileHasNoLines) {
    write("");
    EXPECT_THAT(whole(), IsEmpty());
    EXPECT_EQ(from(0), (Reading{{}, 0}));
}

TEST_P(JSONLStreamReaderChunks, readOfTheWholeFileDeliversAnUnfinishedLastLine) {
    write("a\n\nb");
    EXPECT_THAT(whole(), ElementsAre("a", "b"));
    write("{\"half");
    EXPECT_THAT(whole(), ElementsAre("{\"half"));
}

TEST_P(JSONLStreamReaderChunks, unfinishedLastLineIsLeftForTheNextRead) {
    write("{}\n{\"a\":");
    EXPECT_EQ(from(0), (Reading{{"{}"}, 3}));
    append("1}\n");
    EXPECT_EQ(from(3), (Reading{{"{\"a\":1}"}, size()}));
}

TEST_P(JSONLStreamReaderChunks, finishedLastLineWithoutALineFeedIsConsumed) {
    write("{}\n{}");
    EXPECT_EQ(from(0), (Reading{{"{}", "{}"}, 5}));
    append("\n[1]");
    EXPECT_EQ(from(5), (Reading{{"[1]"}, 9}));
}

TEST_P(JSONLStreamReaderChunks, lastLineThatIsNoJSONWaitsAtEveryReadUntilItIsFinished) {
    write("{}\nplain text");
    EXPECT_EQ(from(0), (Reading{{"{}"}, 3}));
    EXPECT_EQ(from(3), (Reading{{}, 3}));
    append(" of some length");
    EXPECT_EQ(from(3), (Reading{{}, 3}));
    append("\n");
    EXPECT_EQ(from(3), (Reading{{"plain text of some length"}, size()}));
}

TEST_P(JSONLStreamReaderChunks, bytesOfALineAreDeliveredAsTheyAre) {
    write("a\r\n\0\x01\n\xff\xfe\xc3\n \t \n"s);
    EXPECT_THAT(whole(), ElementsAre("a\r", "\0\x01"s, "\xff\xfe\xc3", " \t "));
    EXPECT_EQ(from(0), (Reading{whole(), size()}));
}

TEST_P(JSONLStreamReaderChunks, lineLongerThanTheChunkIsDeliveredWhole) {
    const std::string longLine(200'000 / std::max<std::int64_t>(1, 64 / GetParam()), 'x');
    write("first\n" + longLine + "\nlast\n");
    EXPECT_THAT(whole(), ElementsAre("first", longLine, "last"));
    EXPECT_EQ(from(6), (Reading{{longLine, "last"}, size()}));
}

TEST_P(JSONLStreamReaderChunks, offsetWithinALineGivesTheRestOfThatLine) {
    write("first\nsecond\n");
    EXPECT_EQ(from(3), (Reading{{"st", "second"}, 13}));
    EXPECT_EQ(from(5), (Reading{{"second"}, 13}));
    EXPECT_EQ(from(13), (Reading{{}, 13}));
}

TEST_P(JSONLStreamReaderChunks, offsetBeyondTheEndIsGivenBack) {
    write("{}\n");
    EXPECT_EQ(from(4), (Reading{{}, 4}));
    EXPECT_EQ(from(1'000'000), (Reading{{}, 1'000'000}));
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(from(largest), (Reading{{}, largest}));
}

TEST_P(JSONLStreamReaderChunks, negativeOffsetReadsFromTheStartAndCountsFromTheOffset) {
    write("{}\n{}\n[]");
    EXPECT_EQ(from(-3), (Reading{{"{}", "{}", "[]"}, 5}));
    write("{}\n{");
    EXPECT_EQ(from(-1), (Reading{{"{}"}, 2}));
}

TEST_P(JSONLStreamReaderChunks, missingFileGivesNoLinesAndTheOffsetBack) {
    EXPECT_THAT(whole(), IsEmpty());
    EXPECT_EQ(from(7), (Reading{{}, 7}));
    EXPECT_EQ(from(-7), (Reading{{}, -7}));
}

TEST_P(JSONLStreamReaderChunks, folderGivesNoLinesAndTheOffsetBack) {
    home.makeFolder("log.jsonl");
    EXPECT_THAT(whole(), IsEmpty());
    EXPECT_EQ(from(7), (Reading{{}, 7}));
}

TEST_P(JSONLStreamReaderChunks, afterAReadErrorTheReadOfTheWholeFileDeliversTheRest) {
    const FailingPipe pipe{home, "a\nb\n{\"half"};
    EXPECT_THAT(readWhole(pipe.path, GetParam()), ElementsAre("a", "b", "{\"half"));
}

TEST_P(JSONLStreamReaderChunks, afterAReadErrorTheReadFromAnOffsetStopsBehindTheLastLineFeed) {
    const std::string finished = "a\n\n{}\n";
    // A whole document: at the end of a file it would have been delivered.
    const BytesBeforeAnError bytes{finished + "[1]"};
    const Reading expected{{"a", "{}"}, bytes.offset + static_cast<std::int64_t>(finished.size())};
    EXPECT_EQ(readFrom(bytes.file, bytes.offset, GetParam()), expected);
}

TEST_P(JSONLStreamReaderChunks, fileThatCannotBePositionedGivesTheOffsetBack) {
    const FailingPipe pipe{home, "{}\n{}\n"};
    EXPECT_EQ(readFrom(pipe.path, 3, GetParam()), (Reading{{}, 3}));
}

TEST_P(JSONLStreamReaderChunks, bytesThatArriveDuringTheReadAreReadToo) {
    write("{}\n");
    Lines lines;
    const auto collect = [&](std::string_view line) {
        lines.emplace_back(line);
        if (lines.size() < 3) append("[" + std::to_string(lines.size()) + "]\n");
    };
    EXPECT_EQ((JSONLStreamReader{.chunkSize = GetParam()}.read(log, 0, collect)), 11);
    EXPECT_THAT(lines, ElementsAre("{}", "[1]", "[2]"));
}

TEST_P(JSONLStreamReaderChunks, linesCanBeParsedWithoutACopy) {
    write("{\"a\":1}\n[2]\n{\"c\":[3]}");
    JSONParser parser;
    std::size_t parsed = 0;
    const auto parse = [&](std::string_view line) { parsed += parser.parsePadded(line).isPresent() ? 1U : 0U; };
    EXPECT_EQ((JSONLStreamReader{.chunkSize = GetParam()}.read(log, 0, parse)), size());
    JSONLStreamReader{.chunkSize = GetParam()}.read(log, parse);
    const auto firstValue = [&](std::string_view line) {
        parse(line);
        return std::optional<int>{};
    };
    EXPECT_THAT(JSONLStreamReader::matchingTail(log, 100, 100, firstValue), IsEmpty());
    EXPECT_EQ(parsed, 9U);
}

TEST_P(JSONLStreamReaderChunks, readInsideALineLeavesThatLineAlone) {
    const std::string inner = home.path("inner.jsonl");
    const std::string innerLine(3000, 'x');
    home.write(inner, innerLine + "\nyyy\n");
    write("{\"a\":1}\n{\"b\":2}\n");
    Lines lines;
    JSONLStreamReader{.chunkSize = GetParam()}.read(log, [&](std::string_view line) {
        EXPECT_THAT(readWhole(inner, GetParam()), ElementsAre(innerLine, "yyy"));
        lines.emplace_back(line);
    });
    EXPECT_THAT(lines, ElementsAre("{\"a\":1}", "{\"b\":2}"));
}

TEST_P(JSONLStreamReaderChunks, everyFileIsClosedAgain) {
    write("{}\n{");
    const FailingPipe pipe{home, "a"};
    const std::size_t before = openDescriptors();
    for (const std::string& file : {log, pipe.path, home.path(), home.path("missing")}) {
        static_cast<void>(readWhole(file, GetParam()));
        static_cast<void>(readFrom(file, 1, GetParam()));
        static_cast<void>(tailOf(file, 10));
        EXPECT_EQ(openDescriptors(), before) << file;
    }
}

/// A log as agents write it, one whole line at a time, and the odd line of another kind.
std::string randomLog(std::mt19937& random) {
    const auto below = [&](unsigned limit) { return std::uniform_int_distribution<unsigned>{0, limit - 1}(random); };
    std::string log;
    for (unsigned line = below(12); line > 0; --line) {
        switch (below(5)) {
            case 0: log += "\n"; break;
            case 1: log += "[1,[2]]\n"; break;
            case 2: log += std::string(below(40), 'x') + "\r\n"; break;
            case 3:
                log += R"({"text":"brace } and quote \" and \\"})"
                       "\n";
                break;
            default: log += fmt::format("{{\"n\":{}}}\n", below(1'000'000));
        }
    }
    if (below(3) == 0 && !log.empty()) log.pop_back();
    if (below(4) == 0) log += "\n{\"half\":";
    return log;
}

bool isWholeDocument(std::string_view bytes) {
    JSONParser parser;
    const JSONValue document = parser.parse(bytes);
    return document.isObject() || document.isArray();
}

TEST_P(JSONLStreamReaderChunks, readingAGrowingFileInStepsGivesTheLinesOfReadingItAtOnce) {
    std::mt19937 random{static_cast<unsigned>(GetParam())};
    for (int round = 0; round < 60; ++round) {
        const std::string content = randomLog(random);
        write("");
        Reading stepwise;
        std::size_t written = 0;
        while (written < content.size()) {
            std::size_t end = written + std::uniform_int_distribution<std::size_t>{
                                            1, std::min<std::size_t>(30, content.size() - written)}(random);
            // No writer goes on with a line that it had finished.
            const auto goesOnWithAFinishedLine = [&] {
                if (end == content.size() || content[end] == '\n') return false;
                const std::size_t feed = content.rfind('\n', end - 1);
                const std::size_t begin = feed == std::string::npos ? 0 : feed + 1;
                return begin < end && isWholeDocument(std::string_view{content}.substr(begin, end - begin));
            };
            while (goesOnWithAFinishedLine())
                ++end;
            append(std::string_view{content}.substr(written, end - written));
            written = end;
            const Reading step = from(stepwise.consumed);
            stepwise.lines.insert(stepwise.lines.end(), step.lines.begin(), step.lines.end());
            stepwise.consumed = step.consumed;
        }
        EXPECT_EQ(stepwise, readFrom(log, 0)) << ::testing::PrintToString(content);
        EXPECT_EQ(from(0), readFrom(log, 0)) << ::testing::PrintToString(content);
        EXPECT_EQ(whole(), readWhole(log)) << ::testing::PrintToString(content);
    }
}

INSTANTIATE_TEST_SUITE_P(OfBytes, JSONLStreamReaderChunks, ::testing::Values(1, 2, 3, 4, 5, 6, 7, 65536),
                         [](const auto& chunk) { return "chunksOf" + std::to_string(chunk.param); });

// What counts as a finished last line

struct RemainderCase {
    const char* name;
    std::string remainder;
    bool isFinished;
};

TEST(JSONLStreamReader, fileBehindAVeryLongLineIsReadAsAnyOther) {
    const ScratchHome home;
    const std::string longLine(3 << 20, 'z');
    home.write("long.jsonl", longLine + "\n");
    home.write("short.jsonl", "a\nb\n");
    EXPECT_THAT(readWhole(home.path("long.jsonl")), ElementsAre(longLine));
    EXPECT_THAT(readWhole(home.path("short.jsonl")), ElementsAre("a", "b"));
}

class JSONLStreamReaderRemainder : public ::testing::TestWithParam<RemainderCase> {};

TEST_P(JSONLStreamReaderRemainder, isConsumedOnlyIfItIsAWholeObjectOrArray) {
    const RemainderCase& row = GetParam();
    const ScratchHome home;
    const std::string log = home.write("log.jsonl", "a\n" + row.remainder);
    const auto size = static_cast<std::int64_t>(row.remainder.size() + 2);
    EXPECT_EQ(readFrom(log, 0), (row.isFinished ? Reading{{"a", row.remainder}, size} : Reading{{"a"}, 2}));
    EXPECT_THAT(readWhole(log), ElementsAre("a", row.remainder));
}

INSTANTIATE_TEST_SUITE_P(
    ByContent, JSONLStreamReaderRemainder,
    ::testing::Values(RemainderCase{"emptyObject", "{}", true}, RemainderCase{"emptyArray", "[]", true},
                      RemainderCase{"blanksAround", " \t{\"a\":[1,2]}\r ", true},
                      RemainderCase{"integerBeyond64Bits", R"({"a":99999999999999999999})", true},
                      RemainderCase{"halfASurrogatePair", R"({"a":"\ud83d"})", true},
                      RemainderCase{"number", "12", false}, RemainderCase{"text", "\"text\"", false},
                      RemainderCase{"null", "null", false}, RemainderCase{"blankOnly", " ", false},
                      RemainderCase{"twoDocuments", "{}{}", false}, RemainderCase{"trailingComma", "{},", false},
                      RemainderCase{"halfAnObject", "{\"a\":{}", false},
                      RemainderCase{"numberBeyondAnyFloat", R"({"a":1e400})", false},
                      RemainderCase{"invalidUTF8", "{\"a\":\"\xff\"}", false},
                      RemainderCase{"nulByteBehind", "{}\0"s, false},
                      RemainderCase{"nulByteBehindALongInteger", "[99999999999999999999]\0]"s, false}),
    [](const auto& row) { return std::string{row.param.name}; });

// The tail

class JSONLStreamReaderTail : public ::testing::Test {
protected:
    std::string write(std::string_view content) const { return home.write("log.jsonl", content); }

    ScratchHome home;
};

TEST_F(JSONLStreamReaderTail, givesTheNewestFirstAndDoesNotLookBehindTheLimit) {
    const Tail tail = tailOf(write("a\nb\nc\n"), 100, 2);
    EXPECT_THAT(tail.values, ElementsAre("c", "b"));
    EXPECT_THAT(tail.seen, ElementsAre("c", "b"));
}

TEST_F(JSONLStreamReaderTail, countsOnlyWhatIsAccepted) {
    const Tail tail = tailOf(write("1 yes\n2 no\n3 yes\n4 no\n5 yes\n6 no\n"), 100, 2,
                             [](std::string_view line) { return line.ends_with("yes"); });
    EXPECT_THAT(tail.values, ElementsAre("5 yes", "3 yes"));
    EXPECT_THAT(tail.seen, ElementsAre("6 no", "5 yes", "4 no", "3 yes"));
}

TEST_F(JSONLStreamReaderTail, reachesTheFirstLineIfTheLimitIsNotFilled) {
    EXPECT_THAT(tailOf(write("a\n\n\nb\nc"), 100).values, ElementsAre("c", "b", "a"));
    EXPECT_THAT(tailOf(write("\n\na\n\n"), 100).values, ElementsAre("a"));
}

TEST_F(JSONLStreamReaderTail, offersAHalfWrittenLastLineLikeAnyOther) {
    EXPECT_THAT(tailOf(write("{}\n{\"half"), 100).seen, ElementsAre("{\"half", "{}"));
}

TEST_F(JSONLStreamReaderTail, neverOpensTheFileForALimitBelowOne) {
    const std::string log = write("a\n");
    const OpenWatch watch{{log}};
    EXPECT_THAT(tailOf(log, 100, 0).values, IsEmpty());
    EXPECT_THAT(tailOf(log, 100, -1).values, IsEmpty());
    EXPECT_THAT(tailOf(log, 100, std::numeric_limits<std::int64_t>::min()).values, IsEmpty());
    EXPECT_FALSE(watch.hasSeenAnOpen());
    EXPECT_THAT(tailOf(log, 100, 1).values, ElementsAre("a"));
    EXPECT_TRUE(watch.hasSeenAnOpen());
}

TEST_F(JSONLStreamReaderTail, beginsBehindTheFirstLineFeedOfACutWindow) {
    const std::string log = write("aaa\nbbb\nccc\n");
    EXPECT_THAT(tailOf(log, 12).values, ElementsAre("ccc", "bbb", "aaa"));
    EXPECT_THAT(tailOf(log, 11).values, ElementsAre("ccc", "bbb"));
    EXPECT_THAT(tailOf(log, 9).values, ElementsAre("ccc", "bbb"));
    // The window is cut right behind a line feed, which cannot be told from within it.
    EXPECT_THAT(tailOf(log, 8).values, ElementsAre("ccc"));
    EXPECT_THAT(tailOf(log, 4).values, IsEmpty());
}

TEST_F(JSONLStreamReaderTail, isEmptyIfTheWindowLiesWithinTheLastLine) {
    EXPECT_THAT(tailOf(write("a\nlonger than the window"), 10).seen, IsEmpty());
    EXPECT_THAT(tailOf(write("a\nlonger than the window\n"), 10).seen, IsEmpty());
    EXPECT_THAT(tailOf(write("a\n"), 0).seen, IsEmpty());
}

TEST_F(JSONLStreamReaderTail, ofLineFeedsAloneOffersNothing) {
    EXPECT_THAT(tailOf(write("\n\n\n"), 100).seen, IsEmpty());
    EXPECT_THAT(tailOf(write("\n\n\n"), 2).seen, IsEmpty());
    EXPECT_THAT(tailOf(write(""), 100).seen, IsEmpty());
}

TEST_F(JSONLStreamReaderTail, ofWhatCannotBeReadIsEmpty) {
    constexpr std::uint64_t everything = std::numeric_limits<std::uint64_t>::max();
    const FailingPipe pipe{home, "a\n"};
    for (const std::string& file : {home.path("missing"), home.path(), pipe.path, "/proc/self/mem"s}) {
        EXPECT_THAT(tailOf(file, 100).seen, IsEmpty()) << file;
        EXPECT_THAT(tailOf(file, everything).seen, IsEmpty()) << file;
    }
    EXPECT_THAT(tailOf(write("a\nb\n"), everything).seen, ElementsAre("b", "a"));
}

TEST_F(JSONLStreamReaderTail, firstMatchIsTheNewestLineThatIsAccepted) {
    const std::string log = write("1\n22\n3\n");
    const auto twoLong = [](std::string_view line) {
        return line.size() == 2 ? std::optional{std::string{line}} : std::nullopt;
    };
    const auto threeLong = [](std::string_view line) {
        return line.size() == 3 ? std::optional{std::string{line}} : std::nullopt;
    };
    EXPECT_EQ(JSONLStreamReader::firstMatchingTail(log, 100, twoLong), "22");
    EXPECT_EQ(JSONLStreamReader::firstMatchingTail(log, 100, threeLong), std::nullopt);
    EXPECT_EQ(JSONLStreamReader::firstMatchingTail(home.path("missing"), 100, twoLong), std::nullopt);
}

TEST_F(JSONLStreamReaderTail, isTheReverseOfTheWholeFile) {
    std::mt19937 random{7};
    for (int round = 0; round < 60; ++round) {
        const std::string log = write(randomLog(random));
        Lines lines = readWhole(log);
        std::reverse(lines.begin(), lines.end());
        EXPECT_EQ(tailOf(log, 1 << 20).values, lines) << ::testing::PrintToString(home.read(log));
    }
}

}  // namespace
}  // namespace quorvane
