// The database of the sample home.

#include <fstream>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/FileContents.h"
#include "tests/opencode/OpenCodeTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::Ge;
using ::testing::SizeIs;

const std::string sample = std::string{QUORVANE_SOURCE} + "/resources/sample-home";

/// What the database says of its messages, by the agent's own sums of its sessions.
TEST(OpenCodeSample, hasCallsOfTheLastTwentyDaysForBothReaders) {
    const OpenCodeHome home;
    const auto script = readFile(sample + "/.local/share/opencode/opencode.db.sql");
    ASSERT_TRUE(script);
    EXPECT_LT(script->size(), 60U * 1024);
    {
        const auto database = SQLiteDatabase::open(home.database);
        database->execute("BEGIN;" + *script + "COMMIT;");
    }
    const std::vector<UsageEvent> opencode = home.opencode.loadEvents();
    const std::vector<UsageEvent> museSpark = home.museSpark.loadEvents();
    EXPECT_TRUE(home.museSpark.isAvailable());
    EXPECT_THAT(opencode, SizeIs(Ge(8U)));
    EXPECT_THAT(museSpark, SizeIs(Ge(20U)));

    double endsAt = 0;
    std::ifstream{sample + "/ends-at"} >> endsAt;
    std::set<std::string> models;
    for (const auto* events : {&opencode, &museSpark}) {
        for (const UsageEvent& event : *events) {
            EXPECT_LT(event.timestamp.secondsSince1970, endsAt);
            EXPECT_GT(event.timestamp.secondsSince1970, endsAt - 20 * 86400.0);
            EXPECT_TRUE(event.project);
            models.insert(event.model);
        }
    }
    EXPECT_THAT(models, ::testing::ElementsAre("claude-sonnet-5", "gpt-5.1-codex", "muse-spark-1.1"));
}

}  // namespace
}  // namespace quorvane::testing
