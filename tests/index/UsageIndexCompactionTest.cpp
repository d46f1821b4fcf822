#include <filesystem>
#include <limits>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/index/IndexTestSupport.h"

namespace quorvane {
namespace {

using testing::event;
using testing::IndexFile;
using testing::number;

/// An index of exactly 1000 pages, of which the test frees as many as it likes.
class UsageIndexCompaction : public ::testing::Test {
protected:
    UsageIndexCompaction() {
        const UsageEvent stored = event({.usage = {.input = 7}});
        index.ingest({&stored, 1}, "/log");
        const auto database = SQLiteDatabase::open(file.path);
        database->execute("CREATE TABLE ballast (id INTEGER PRIMARY KEY, content BLOB); BEGIN;");
        while (number(*database, "PRAGMA page_count;") < 1000)
            database->execute("INSERT INTO ballast (content) VALUES (zeroblob(3000));");
        database->execute("COMMIT;");
    }

    static std::int64_t number(SQLiteDatabase& database, const std::string& sql) {
        return std::stoll(testing::column(database, sql).front());
    }
    [[nodiscard]] std::int64_t pages() const { return testing::number(file.path, "PRAGMA page_count;"); }
    [[nodiscard]] std::int64_t freePages() const { return testing::number(file.path, "PRAGMA freelist_count;"); }

    void free(std::int64_t count) const {
        const auto database = SQLiteDatabase::open(file.path);
        while (number(*database, "PRAGMA freelist_count;") < count)
            database->execute("DELETE FROM ballast WHERE id = (SELECT max(id) FROM ballast);");
    }

    IndexFile file;
    UsageIndex index{file.path};
};

TEST_F(UsageIndexCompaction, ninetyNineFreePagesOfAThousandAreNotTenPercent) {
    free(99);
    ASSERT_EQ(pages(), 1000);
    ASSERT_EQ(freePages(), 99);
    EXPECT_FALSE(index.compactIfNeeded(10));
    EXPECT_EQ(pages(), 1000);
    EXPECT_EQ(freePages(), 99);
    EXPECT_TRUE(index.compactIfNeeded(9));
    EXPECT_LE(pages(), 901);
    EXPECT_EQ(freePages(), 0);
}

TEST_F(UsageIndexCompaction, aHundredFreePagesOfAThousandAreTenPercent) {
    free(100);
    ASSERT_EQ(pages(), 1000);
    ASSERT_EQ(freePages(), 100);
    EXPECT_FALSE(index.compactIfNeeded(11));
    EXPECT_TRUE(index.compactIfNeeded(10));
    EXPECT_LE(pages(), 900);
    EXPECT_EQ(freePages(), 0);
    EXPECT_EQ(index.eventCount(ProviderID::Claude), 1);
    EXPECT_EQ(testing::integrity(file.path), "ok");
}

TEST_F(UsageIndexCompaction, aThresholdOfZeroCompactsAFileWithoutFreePages) {
    ASSERT_EQ(freePages(), 0);
    EXPECT_FALSE(index.compactIfNeeded(1));
    EXPECT_TRUE(index.compactIfNeeded(0));
    EXPECT_TRUE(index.compactIfNeeded(-1));
}

TEST_F(UsageIndexCompaction, noThresholdIsTooLarge) {
    free(900);
    EXPECT_FALSE(index.compactIfNeeded(std::numeric_limits<std::int64_t>::max()));
}

// The free space cannot be told where there is no file any more.
TEST_F(UsageIndexCompaction, withoutAnAnswerAboutFreeSpaceNothingIsDone) {
    free(200);
    std::filesystem::rename(file.path, file.home.path("moved.sqlite"));
    std::filesystem::rename(file.path + "-wal", file.home.path("moved.sqlite-wal"));
    std::filesystem::rename(file.path + "-shm", file.home.path("moved.sqlite-shm"));
    EXPECT_FALSE(index.compactIfNeeded(0));
    EXPECT_EQ(index.eventCount(ProviderID::Claude), 1);
}

TEST_F(UsageIndexCompaction, aVacuumThatFailsIsThrownAndTheIndexGoesOn) {
    free(100);
    {
        const testing::FileSizeLimit limit{4096};
        EXPECT_THROW(index.compactIfNeeded(0), SQLiteError);
    }
    EXPECT_EQ(index.eventCount(ProviderID::Claude), 1);
    EXPECT_EQ(testing::integrity(file.path), "ok");
    EXPECT_TRUE(index.compactIfNeeded(0));
}

TEST_F(UsageIndexCompaction, theKeptCursorLookupDoesNotStandInTheWay) {
    index.setCursor("/log", 1, 2, 3, "f", 4, ProviderID::Claude, 1);
    ASSERT_TRUE(index.cursor("/log"));
    EXPECT_FALSE(index.cursor("/other"));
    EXPECT_TRUE(index.compactIfNeeded(0));
    EXPECT_TRUE(index.cursor("/log"));
    EXPECT_EQ(index.generation(), 1);
}

}  // namespace
}  // namespace quorvane
