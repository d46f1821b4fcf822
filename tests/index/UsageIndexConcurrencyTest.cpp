#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/index/IndexTestSupport.h"

namespace quorvane {
namespace {

using testing::at;
using testing::event;
using testing::IndexFile;
using testing::testCalculator;

using Events = std::vector<UsageEvent>;

constexpr int filesPerWriter = 25;
constexpr int eventsPerFile = 10;

std::string logPath(int writer, int file) {
    return "/log/" + std::to_string(writer) + "/" + std::to_string(file);
}

Events fileOf(int writer, int file, Date when) {
    Events events;
    for (int number = 0; number < eventsPerFile; ++number) {
        events.push_back(event({.message = logPath(writer, file) + "#" + std::to_string(number),
                                .model = "plain",
                                .when = when,
                                .usage = {.input = 1}}));
    }
    return events;
}

/// Runs each on a thread of its own and waits for all. What one throws is a failure of the test.
void sideBySide(const std::vector<std::function<void()>>& works) {
    std::vector<std::thread> threads;
    for (const std::function<void()>& work : works) {
        threads.emplace_back([&work] {
            try {
                work();
            } catch (const std::exception& error) {
                ADD_FAILURE() << error.what();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

/// Writers that store and readers that sum up, on as many objects of one file as are given.
class UsageIndexConcurrency : public ::testing::Test {
protected:
    void ingestAndSumUp(UsageIndex& first, UsageIndex& second) {
        std::atomic<int> writersLeft = 2;
        const auto write = [&](UsageIndex& index, int writer) {
            for (int number = 0; number < filesPerWriter; ++number) {
                const std::string path = logPath(writer, number);
                if (!index.cursor(path)) index.ingest(fileOf(writer, number, now), path);
                index.setCursor(path, 1, 2, 3, "f", 4, ProviderID::Claude, 1);
            }
            --writersLeft;
        };
        // A file is there whole or not at all, and none goes away again.
        const auto read = [&](const UsageIndex& index) {
            const Calendar utc{"UTC"};
            std::int64_t before = 0;
            bool isLast = false;
            while (!isLast) {
                isLast = writersLeft == 0;
                const UsageRollup rollup = index.rollup(std::nullopt, 7, calculator, now, utc);
                EXPECT_EQ(rollup.last7d.eventCount % eventsPerFile, 0);
                EXPECT_GE(rollup.last7d.eventCount, before);
                before = rollup.last7d.eventCount;
                const UsageWindowSummaries sums = index.windowSummaries(claude, 7, calculator, now, utc);
                EXPECT_EQ(sums.aggregate.rollup.today.eventCount % eventsPerFile, 0);
                EXPECT_GE(sums.aggregate.rollup.today.eventCount, before);
                EXPECT_EQ(static_cast<double>(sums.aggregate.rollup.today.eventCount),
                          sums.aggregate.dailyCostSeries.back());
            }
            EXPECT_EQ(before, 2 * filesPerWriter * eventsPerFile);
        };
        sideBySide({[&] { write(first, 0); }, [&] { write(second, 1); }, [&] { read(first); }, [&] { read(second); }});
    }

    const Date now = at("2026-03-15T12:00:00Z");
    const CostCalculator calculator = testCalculator();
    const std::vector<ProviderID> claude{ProviderID::Claude};
    IndexFile file;
};

TEST_F(UsageIndexConcurrency, severalThreadsShareOneIndex) {
    UsageIndex index{file.path};
    ingestAndSumUp(index, index);
    EXPECT_EQ(index.generation(), 2 * filesPerWriter);
    EXPECT_EQ(index.cursorPaths(ProviderID::Claude).size(), 2U * filesPerWriter);
    EXPECT_EQ(index.sourcePaths(ProviderID::Claude).size(), 2U * filesPerWriter);
}

TEST_F(UsageIndexConcurrency, twoIndexesShareOneFile) {
    UsageIndex first{file.path};
    UsageIndex second{file.path};
    ingestAndSumUp(first, second);
    EXPECT_EQ(first.generation(), filesPerWriter);
    EXPECT_EQ(second.generation(), filesPerWriter);
    EXPECT_EQ(first.eventCount(std::nullopt), 2 * filesPerWriter * eventsPerFile);
    EXPECT_EQ(testing::integrity(file.path), "ok");
}

TEST_F(UsageIndexConcurrency, twoWritersOfTheSameEventsStoreThemOnce) {
    UsageIndex first{file.path};
    UsageIndex second{file.path};
    const auto write = [&](UsageIndex& index) {
        for (int number = 0; number < filesPerWriter; ++number)
            index.ingest(fileOf(0, number, now), logPath(0, number));
    };
    sideBySide({[&] { write(first); }, [&] { write(second); }});
    EXPECT_EQ(first.eventCount(std::nullopt), filesPerWriter * eventsPerFile);
    EXPECT_EQ(testing::number(file.path, "SELECT count(*) FROM paths;"), filesPerWriter);
}

TEST_F(UsageIndexConcurrency, aFileIsRewrittenWhileOthersAreSummedUp) {
    UsageIndex index{file.path};
    index.ingest(fileOf(0, 0, now), logPath(0, 0));
    std::atomic<bool> isDone = false;
    sideBySide({[&] {
                    for (int round = 0; round < 50; ++round) {
                        index.deleteEvents(logPath(1, 0), std::nullopt);
                        index.ingest(fileOf(1, 0, now), logPath(1, 0));
                    }
                    isDone = true;
                },
                [&] {
                    const Calendar utc{"UTC"};
                    while (!isDone) {
                        const std::int64_t count = index.rollup(std::nullopt, 1, calculator, now, utc).today.eventCount;
                        EXPECT_TRUE(count == eventsPerFile || count == 2 * eventsPerFile) << count;
                    }
                },
                [&] {
                    std::int64_t before = 0;
                    while (!isDone) {
                        const std::int64_t generation = index.generation();
                        EXPECT_GE(generation, before);
                        before = generation;
                    }
                }});
    EXPECT_EQ(index.generation(), 101);
}

TEST_F(UsageIndexConcurrency, maintenanceWaitsForItsTurn) {
    std::string rows = "BEGIN;\n";
    for (int row = 0; row < 300; ++row)
        rows += testing::legacyRow(std::to_string(row), 10, "'/old'");
    testing::execute(file.path, testing::legacySchema + rows + "COMMIT;");
    UsageIndex index{file.path};
    sideBySide({[&] {
                    for (int number = 0; number < filesPerWriter; ++number)
                        index.ingest(fileOf(0, number, now), logPath(0, number));
                },
                [&] {
                    index.migrateScanIndexIfNeeded();
                    index.migrateSourcePathIndexIfNeeded();
                    index.compactIfNeeded(0);
                }});
    EXPECT_FALSE(index.needsMigration());
    EXPECT_EQ(index.eventCount(std::nullopt), 300 + filesPerWriter * eventsPerFile);
    EXPECT_EQ(index.sourcePaths(ProviderID::Claude).size(), filesPerWriter + 1U);
}

TEST_F(UsageIndexConcurrency, aNewFileIsMadeByManyAtOnce) {
    for (int round = 0; round < 5; ++round) {
        const std::string path = file.home.path("new" + std::to_string(round) + ".sqlite");
        std::vector<std::function<void()>> works;
        for (int writer = 0; writer < 4; ++writer) {
            works.emplace_back([this, path, writer] {
                UsageIndex index{path};
                index.ingest(fileOf(writer, 0, now), logPath(writer, 0));
            });
        }
        sideBySide(works);
        EXPECT_EQ(UsageIndex{path}.eventCount(std::nullopt), 4 * eventsPerFile);
    }
}

}  // namespace
}  // namespace quorvane
