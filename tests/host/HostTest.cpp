#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/index/SQLiteDatabase.h"
#include "QuorvaneCore/index/SQLiteStatement.h"
#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/pricing/PricingTable.h"
#include "tests/host/HostRun.h"

namespace quorvane::testing {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

const std::string indexFile = "Library/Application Support/Quorvane/usage.sqlite";

std::size_t lineCount(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

TEST(Host, tellsItsVersion) {
    const ScratchHome home;
    const ProgramRun run = runHost({"--version"});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.output, StartsWith("quorvane "));
    EXPECT_FALSE(home.exists("Library"));
}

TEST(Host, helpNamesEveryCommand) {
    const ScratchHome home;
    const ProgramRun run = runHost({"--help"});
    EXPECT_EQ(run.status, 0);
    for (const char* command : {"summary", "refresh", "prices", "maintain", "--now"}) {
        EXPECT_THAT(run.output, HasSubstr(command));
    }
    EXPECT_EQ(runHost({"refresh", "--help"}).status, 0);
}

struct UsageErrorCase {
    const char* name;
    std::vector<std::string> arguments;
    const char* says;
};

class HostUsageError : public ::testing::TestWithParam<UsageErrorCase> {};

TEST_P(HostUsageError, exitsWithTwoAndOneLine) {
    const ScratchHome home;
    const ProgramRun run = runHost(GetParam().arguments);
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.output, IsEmpty());
    EXPECT_THAT(run.error, AllOf(StartsWith("quorvane: "), HasSubstr(GetParam().says)));
    EXPECT_EQ(lineCount(run.error), 1U);
    EXPECT_FALSE(home.exists("Library"));
}

INSTANTIATE_TEST_SUITE_P(
    ByArguments, HostUsageError,
    ::testing::Values(UsageErrorCase{"unknownCommand", {"sumary"}, "sumary"},
                      UsageErrorCase{"exportWithoutAFormat", {"export"}, "--format"},
                      UsageErrorCase{"exportOfAnUnknownFormat", {"export", "--format", "xml"}, "--format"},
                      UsageErrorCase{"unknownMeasure", {"activity", "--measure", "money"}, "--measure"},
                      UsageErrorCase{"noDaysOfProjects", {"projects", "--days", "0"}, "--days"},
                      UsageErrorCase{"noDays", {"summary", "--days", "0"}, "--days"},
                      UsageErrorCase{"negativeDays", {"--days", "-3"}, "--days"},
                      UsageErrorCase{"daysInWords", {"--days", "many"}, "--days"},
                      UsageErrorCase{"unknownProvider", {"refresh", "--provider", "nobody"}, "nobody"},
                      UsageErrorCase{"knownProviderWithoutReader", {"refresh", "--provider", "amp"}, "amp"},
                      UsageErrorCase{"noTime", {"--now", "yesterday", "summary"}, "yesterday"},
                      UsageErrorCase{"unknownOption", {"maintain", "--faster"}, "--faster"},
                      UsageErrorCase{"captureInstallNobody", {"capture", "install", "nobody"}, "nobody"},
                      UsageErrorCase{"captureUninstallNobody", {"capture", "uninstall", "nobody"}, "nobody"},
                      UsageErrorCase{"captureInstallWithoutAgent", {"capture", "install"}, "AGENT"},
                      UsageErrorCase{"captureAnAgentWithoutACapture", {"capture", "install", "codex"}, "codex"},
                      UsageErrorCase{"captureStatusOfOne", {"capture", "status", "claude"}, "claude"},
                      UsageErrorCase{"captureUnknownDeed", {"capture", "remove"}, "remove"},
                      UsageErrorCase{"labelOtherStyle", {"label", "--style", "fancy"}, "fancy"},
                      UsageErrorCase{"labelNoFormat", {"label", "--format"}, "--format"},
                      UsageErrorCase{"labelAWord", {"label", "total"}, "total"},
                      UsageErrorCase{"snapshotOtherFormat", {"snapshot", "--format", "yaml"}, "yaml"},
                      UsageErrorCase{"snapshotNoDays", {"snapshot", "--days", "0"}, "--days"},
                      UsageErrorCase{"snapshotAProvider", {"snapshot", "claude"}, "claude"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(Host, withoutAgentsSaysWhereItLookedAndOffersTheSample) {
    const ScratchHome home;
    const ProgramRun run = runHost({});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.output, AllOf(HasSubstr("Claude Code: ~/.claude/projects"), HasSubstr("./run --sample")));
    EXPECT_THAT(run.error, IsEmpty());
}

TEST(Host, refreshReportsEachReader) {
    const ScratchHome home;
    home.write(".claude/projects/a/s.jsonl", claudeCall("1", "claude-opus-4-8", "2026-03-01T08:00:00Z", 10, 20) +
                                                 claudeCall("1", "claude-opus-4-8", "2026-03-01T08:00:01Z", 10, 30) +
                                                 claudeCall("2", "claude-opus-4-8", "2026-03-01T08:01:00Z", 10, 20));
    const ProgramRun first = runHost({"refresh", "--json"});
    EXPECT_EQ(first.status, 0);
    JSONParser parser;
    const JSONValue claude = parser.parse(first.output)["providers"]["claude"];
    EXPECT_EQ(claude["available"].boolean(), true);
    EXPECT_EQ(claude["files_read"].number(), JSONNumberValue{std::int64_t{1}});
    EXPECT_EQ(claude["files_skipped"].number(), JSONNumberValue{std::int64_t{0}});
    EXPECT_EQ(claude["events_ingested"].number(), JSONNumberValue{std::int64_t{3}});
    EXPECT_EQ(claude["fingerprint_reads"].number(), JSONNumberValue{std::int64_t{1}});

    const ProgramRun second = runHost({"refresh", "--provider", "claude", "--json"});
    const JSONValue again = parser.parse(second.output)["providers"]["claude"];
    EXPECT_EQ(again["files_read"].number(), JSONNumberValue{std::int64_t{0}});
    EXPECT_EQ(again["files_skipped"].number(), JSONNumberValue{std::int64_t{1}});
    EXPECT_EQ(UsageIndex{home.path(indexFile)}.eventCount(ProviderID::Claude), 2);
}

TEST(Host, refreshVisitsAReaderWhoseAgentIsGone) {
    const ScratchHome home;
    home.write(".claude/projects/a/s.jsonl", claudeCall("1", "claude-opus-4-8", "2026-03-01T08:00:00Z", 10, 20));
    ASSERT_EQ(runHost({"refresh"}).status, 0);
    home.remove(".claude");
    ASSERT_EQ(runHost({"refresh"}).status, 0);
    const UsageIndex index{home.path(indexFile)};
    EXPECT_THAT(index.cursorPaths(ProviderID::Claude), IsEmpty());
    EXPECT_EQ(index.eventCount(std::nullopt), 1);
}

TEST(Host, theIndexFolderIsForItsOwnerAlone) {
    const ScratchHome home;
    ASSERT_EQ(runHost({"refresh"}).status, 0);
    const auto mode = std::filesystem::status(home.path("Library/Application Support/Quorvane")).permissions();
    EXPECT_EQ(mode, std::filesystem::perms::owner_all);
}

struct BrokenIndexCase {
    const char* name;
    void (*breakIt)(const ScratchHome&);
    const char* names;
};

class HostBrokenIndex : public ::testing::TestWithParam<BrokenIndexCase> {};

TEST_P(HostBrokenIndex, failsInOneLineThatNamesTheFile) {
    const ScratchHome home;
    home.write(".claude/projects/a/s.jsonl", claudeCall("1", "claude-opus-4-8", "2026-03-01T08:00:00Z", 10, 20));
    GetParam().breakIt(home);
    for (const char* command : {"summary", "refresh", "maintain"}) {
        const ProgramRun run = runHost({command});
        EXPECT_EQ(run.status, 1) << command;
        EXPECT_THAT(run.output, IsEmpty()) << command;
        EXPECT_THAT(run.error, HasSubstr(home.path(GetParam().names))) << command;
        EXPECT_EQ(lineCount(run.error), 1U) << run.error;
    }
}

INSTANTIATE_TEST_SUITE_P(
    ByKind, HostBrokenIndex,
    ::testing::Values(
        BrokenIndexCase{"aFolderInItsPlace", [](const ScratchHome& home) { home.makeFolder(indexFile); },
                        "Library/Application Support/Quorvane/usage.sqlite"},
        BrokenIndexCase{"noDatabase", [](const ScratchHome& home) { home.write(indexFile, std::string(8192, 'x')); },
                        "Library/Application Support/Quorvane/usage.sqlite"},
        BrokenIndexCase{"aFileInTheFoldersPlace",
                        [](const ScratchHome& home) { home.write("Library/Application Support/Quorvane", "mine"); },
                        "Library/Application Support/Quorvane"},
        BrokenIndexCase{"aFileFurtherUp", [](const ScratchHome& home) { home.write("Library", "mine"); },
                        "Library/Application Support"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(Host, maintainUpgradesAnOldIndex) {
    const ScratchHome home;
    home.makeFolder("Library/Application Support/Quorvane");
    {
        const auto database = SQLiteDatabase::open(home.path(indexFile));
        database->execute(
            "CREATE TABLE events (provider TEXT NOT NULL, msg_id TEXT NOT NULL, req_id TEXT NOT NULL, model TEXT NOT "
            "NULL, ts REAL NOT NULL, project TEXT, input INTEGER NOT NULL, output INTEGER NOT NULL, cache5m INTEGER "
            "NOT "
            "NULL, cache1h INTEGER NOT NULL, cache_read INTEGER NOT NULL, source_path TEXT, PRIMARY KEY (provider, "
            "msg_id, req_id)) WITHOUT ROWID;"
            "INSERT INTO events VALUES ('claude', 'm', 'r', 'claude-opus-4-8', 1, NULL, 1, 2, 0, 0, 0, '/log');");
    }
    const ProgramRun first = runHost({"maintain"});
    EXPECT_EQ(first.status, 0);
    EXPECT_EQ(first.output, "Built the index that summaries scan.\nReplaced the events' file names by references.\n");
    EXPECT_EQ(runHost({"maintain"}).output, "Nothing to do.\n");
    const UsageIndex index{home.path(indexFile)};
    EXPECT_FALSE(index.needsMigration());
    EXPECT_THAT(index.sourcePaths(ProviderID::Claude), ::testing::ElementsAre("/log"));
}

TEST(Host, pricesPrintsAListThatCanBeReadAgain) {
    const ScratchHome home;
    const ProgramRun run = runHost({"prices", "--json"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(PricingTable::fromJSON(run.output), PricingTable::bundledDefault());
}

TEST(Host, pricesResolvesNamesAsTheLogsHaveThem) {
    const ScratchHome home;
    const ProgramRun run = runHost({"prices", "claude-opus-4-8-20260101[1m]"});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.output, AllOf(HasSubstr("claude-opus-4-8-20260101[1m]"), HasSubstr("5.00"), HasSubstr("25.00")));
}

TEST(Host, pricesFailsForAModelWithoutOneAndStillPrintsTheOthers) {
    const ScratchHome home;
    const ProgramRun run = runHost({"prices", "claude-opus-4-8", "nobody-1"});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.output, AllOf(HasSubstr("claude-opus-4-8"), Not(HasSubstr("nobody-1"))));
    EXPECT_EQ(run.error, "quorvane: no price for nobody-1\n");
}

TEST(Host, aFullDeviceIsAFailure) {
    const ScratchHome home;
    const ProgramRun run = ProgramRun::of({"sh", "-c", std::string{QUORVANE_PROGRAM} + " prices > /dev/full"});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.error, HasSubstr("standard output"));
}

TEST(Host, aReaderThatLeavesEarlyIsNone) {
    const ScratchHome home;
    const ProgramRun run = ProgramRun::of(
        {"bash", "-c", std::string{"set -o pipefail; "} + QUORVANE_PROGRAM + " prices --json | head -c 1 >/dev/null"});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.error, IsEmpty());
}

}  // namespace
}  // namespace quorvane::testing
