#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "tests/ingest/IngestTestSupport.h"

namespace quorvane {
namespace {

using testing::IndexedHome;
using testing::logLine;

/// Writers that do to their logs what happens to logs. Each file has calls of its own: of a call that stands in two
/// files, the index keeps one row, which goes with the file that it came from.
class Writers {
public:
    Writers(const IndexedHome& home, unsigned seed) : home_{home}, random_{seed} {}

    [[nodiscard]] unsigned below(unsigned limit) {
        return std::uniform_int_distribution<unsigned>{0, limit - 1}(random_);
    }

    /// Whole lines, some of them of a call that is in the file already, and sometimes the first half of one more.
    void append(const std::string& file) {
        std::string& unfinished = unfinished_[index(file)];
        std::string bytes = std::exchange(unfinished, {});
        for (unsigned count = below(4); count > 0; --count)
            bytes += line(file);
        if (below(3) == 0) {
            const std::string last = line(file);
            const std::size_t half = 1 + below(static_cast<unsigned>(last.size()) - 3);
            bytes += last.substr(0, half);
            unfinished = last.substr(half);
        }
        home_.home.append(file, bytes);
        moveTime(file);
    }

    void truncate(const std::string& file) {
        const std::string content = home_.home.read(file);
        if (content.empty()) return;
        std::size_t size = below(static_cast<unsigned>(content.size()));
        // A line that lacks only its line feed counts as finished; the cut goes in front of its last brace.
        if (content[size] == '\n' && size > 0) --size;
        home_.home.truncate(file, static_cast<std::int64_t>(size));
        moveTime(file);
        finishTheLineWithNextAppend(file, size == 0 || content[size - 1] == '\n');
    }

    void rewriteInPlace(const std::string& file) {
        std::string content = home_.home.read(file);
        for (char& character : content) {
            if (character >= '1' && character <= '9') character = static_cast<char>('1' + below(9));
        }
        home_.home.write(file, content);
        moveTime(file);
    }

    /// Of any length.
    void replace(const std::string& file) {
        std::string content;
        for (unsigned count = below(6); count > 0; --count)
            content += line(file);
        home_.home.write(file, content);
        moveTime(file);
        finishTheLineWithNextAppend(file, true);
    }

private:
    [[nodiscard]] static std::size_t index(const std::string& file) {
        return static_cast<std::size_t>(file.back() - 'a');
    }

    [[nodiscard]] std::string line(const std::string& file) {
        const std::string message = std::string{file.back()} + "-" + std::to_string(100 + below(20));
        return logLine(message, 1 + below(1000), 1000 + below(1000));
    }

    /// No two changes have the same time, however fast they follow each other.
    void moveTime(const std::string& file) { home_.home.touch(file, ++seconds_); }

    void finishTheLineWithNextAppend(const std::string& file, bool isAtLineStart) {
        unfinished_[index(file)] = isAtLineStart ? "" : "\n";
    }

    const IndexedHome& home_;
    std::mt19937 random_;
    std::array<std::string, 3> unfinished_{};
    double seconds_ = 0;
};

class UsageIndexerSteps : public ::testing::TestWithParam<unsigned> {
protected:
    UsageIndexerSteps() : writers{home, GetParam()} {
        home.provider.files.clear();
        for (const char* name : {"a", "b", "c"})
            home.provider.files.push_back(home.home.write(name, ""));
    }

    [[nodiscard]] std::string anyFile() { return home.provider.files[writers.below(3)]; }

    void expectTheRowsOfARefreshFromScratch() const {
        static_cast<void>(home.refresh());
        // An emptied file is what a new one is, and costs no wait for the disk.
        SQLiteDatabase::open(scratch->path())->execute("DELETE FROM events; DELETE FROM cursors; DELETE FROM paths;");
        static_cast<void>(UsageIndexer{scratch}.refresh(home.provider));
        EXPECT_EQ(IndexedHome::allRows(home.index->path()), IndexedHome::allRows(scratch->path()));
    }

    IndexedHome home;
    std::shared_ptr<UsageIndex> scratch = std::make_shared<UsageIndex>(home.home.path("scratch.sqlite"));
    Writers writers;
};

TEST_P(UsageIndexerSteps, giveTheRowsOfARefreshFromScratch) {
    std::size_t mostRows = 0;
    for (int step = 0; step < 25; ++step) {
        switch (writers.below(8)) {
            case 0: writers.truncate(anyFile()); break;
            case 1: writers.rewriteInPlace(anyFile()); break;
            default:
                // A shrunken file that grew again before anyone looked would count as grown, so other changes are
                // seen one at a time.
                for (unsigned appends = 1 + writers.below(4); appends > 0; --appends)
                    writers.append(anyFile());
        }
        expectTheRowsOfARefreshFromScratch();
        mostRows = std::max(mostRows, IndexedHome::allRows(home.index->path()).size());
    }
    EXPECT_GT(mostRows, 5U);
}

TEST_P(UsageIndexerSteps, giveTheRowsOfARefreshFromScratchForAReaderOfWholeFiles) {
    home.provider.tailAppends = false;
    for (int step = 0; step < 25; ++step) {
        for (unsigned changes = 1 + writers.below(4); changes > 0; --changes) {
            switch (writers.below(4)) {
                case 0: writers.truncate(anyFile()); break;
                case 1: writers.rewriteInPlace(anyFile()); break;
                case 2: writers.replace(anyFile()); break;
                default: writers.append(anyFile());
            }
        }
        expectTheRowsOfARefreshFromScratch();
    }
}

INSTANTIATE_TEST_SUITE_P(OfRandomWriters, UsageIndexerSteps, ::testing::Range(0U, 8U),
                         [](const auto& seed) { return "seed" + std::to_string(seed.param); });

}  // namespace
}  // namespace quorvane
