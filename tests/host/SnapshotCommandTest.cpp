#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "QuorvaneCore/model/ProviderCatalog.h"
#include "QuorvaneCore/snapshots/HexColor.h"
#include "QuorvaneCore/snapshots/LocalAutomationSnapshotEncoder.h"
#include "QuorvaneCore/snapshots/WidgetSnapshotStore.h"
#include "QuorvaneHost/ProviderTints.h"
#include "tests/host/ClaudeHome.h"

namespace quorvane::testing {
namespace {

using ::testing::AllOf;
using ::testing::DoubleNear;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

const std::string automationFile = quorvaneFolder + "/latest-snapshot.json";
const std::string widgetFolder = quorvaneFolder + "/Widget";
const std::string widgetFile = widgetFolder + "/widget-snapshot.json";

LocalAutomationSnapshot automationOf(const ScratchHome& home) {
    return LocalAutomationSnapshotEncoder::decode(home.read(automationFile));
}

/// A file that is replaced becomes another one.
ino_t identityOf(const ScratchHome& home, const std::string& file) {
    struct stat status {};
    EXPECT_EQ(::stat(home.path(file).c_str(), &status), 0) << file;
    return status.st_ino;
}

/// The names of what lies in a folder, but for the index's.
std::vector<std::string> namesIn(const ScratchHome& home, const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator{home.path(folder)}) {
        std::string name = entry.path().filename().string();
        if (!name.starts_with("usage.sqlite")) names.push_back(std::move(name));
    }
    std::sort(names.begin(), names.end());
    return names;
}

void writeUsualLimits(const ScratchHome& home) {
    writeLimits(home, minute, limitWindow("62.5", hour), limitWindow("41", 50 * hour));
}

TEST(SnapshotCommand, printsTheRecordByteForByteAsItIsWritten) {
    const ScratchHome home;
    writeCalls(home);
    writeUsualLimits(home);
    const ProgramRun run = runNow({"snapshot"});
    ASSERT_EQ(run.status, 0) << run.error;
    EXPECT_THAT(run.error, IsEmpty());
    EXPECT_EQ(run.output, home.read(automationFile));
    EXPECT_THAT(run.output, EndsWith("}"));

    const LocalAutomationSnapshot record = automationOf(home);
    EXPECT_EQ(record.source, "quorvane-cli");
    EXPECT_EQ(record.status, "ok");
    EXPECT_EQ(record.generatedAt, Date{static_cast<double>(testNow)});
    EXPECT_EQ(record.windowDays, 30);
    EXPECT_EQ(record.totalToday, 5.0);
    EXPECT_EQ(record.totalWindow, 8.5);
    ASSERT_THAT(record.providers, SizeIs(1));
    EXPECT_EQ(record.providers[0].id, "claude");
    EXPECT_EQ(record.providers[0].headroom.remainingPercent, 37.5);
    EXPECT_EQ(record.rateLimits.at("claude").primary5h->usedPercent, 62.5);
    EXPECT_EQ(record.rateLimits.at("claude").secondaryWeekly->usedPercent, 41);
}

TEST(SnapshotCommand, printsTheMarkdownReportOfTheRecordThatIsWritten) {
    const ScratchHome home;
    writeCalls(home);
    ASSERT_EQ(runNow({"snapshot"}).status, 0);
    const ProgramRun run = runLater(10 * minute, {"snapshot", "--format", "markdown"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, R"(# Quorvane Local Snapshot

Generated: 2026-03-01T09:30:00Z
Window: 30d
Total today: $5.00 USD (real spend)
Total 30d: $8.50 USD

## Providers
- Claude Code: today $5.00, 30d $8.50, real spend
  - headroom: unknown (no official limit signal)
)");
}

TEST(SnapshotCommand, bringsTheWindowToALengthThatTheFilesAreWrittenFor) {
    const ScratchHome home;
    writeCalls(home);
    for (const auto& [asked, written] : {std::pair{"10", 7}, {"11", 14}, {"31", 30}, {"1000", 90}}) {
        ASSERT_EQ(runNow({"snapshot", "--days", asked}).status, 0);
        EXPECT_EQ(automationOf(home).windowDays, written) << asked;
        EXPECT_EQ(WidgetSnapshotStore{}.read().windowDays, written) << asked;
    }
}

TEST(SnapshotCommand, theWidgetsFileHasEveryWindow) {
    const ScratchHome home;
    writeCalls(home);
    ASSERT_EQ(runNow({"snapshot"}).status, 0);
    const WidgetSnapshot widget = WidgetSnapshotStore{}.read();
    EXPECT_EQ(widget.title, "All providers");
    EXPECT_EQ(widget.windowDays, 30);
    EXPECT_EQ(widget.totalToday, 5.0);
    ASSERT_THAT(widget.windows, SizeIs(4));
    for (const auto& [days, total] : {std::pair{7, 5.0}, {14, 7.5}, {30, 8.5}, {90, 8.7}}) {
        const WidgetWindowSnapshot& window = widget.windows.at(days);
        EXPECT_EQ(window.days, days);
        EXPECT_THAT(window.totalWindow, DoubleNear(total, 1e-9)) << days;
        EXPECT_THAT(window.series, SizeIs(days));
        ASSERT_THAT(window.providerWindows, SizeIs(1));
        EXPECT_EQ(window.providerWindows.at("claude").window, window.totalWindow) << "it is the only one";
        EXPECT_EQ(window.providerWindows.at("claude").series, window.series);
    }
    EXPECT_EQ(widget.totalWindow, widget.windows.at(30).totalWindow);
    EXPECT_EQ(widget.series, widget.windows.at(30).series);
}

TEST(SnapshotCommand, theWidgetsFileIsStaleAfterHalfAnHour) {
    const ScratchHome home;
    writeCalls(home);
    ASSERT_EQ(runNow({"snapshot"}).status, 0);
    const WidgetSnapshot widget = WidgetSnapshotStore{}.read();
    EXPECT_EQ(widget.generatedAt, Date{static_cast<double>(testNow)});
    EXPECT_EQ(widget.staleAfter - widget.generatedAt, 30.0 * minute);
}

TEST(SnapshotCommand, theWidgetsRowsHaveTintAndLimits) {
    const ScratchHome home;
    writeCalls(home);
    writeUsualLimits(home);
    ASSERT_EQ(runNow({"snapshot"}).status, 0);
    const WidgetSnapshot widget = WidgetSnapshotStore{}.read();
    ASSERT_THAT(widget.providers, SizeIs(1));
    const WidgetProviderSnapshot& row = widget.providers[0];
    EXPECT_EQ(row.id, "claude");
    EXPECT_EQ(row.name, "Claude Code");
    EXPECT_EQ(row.tintHex, "#D6783F");
    EXPECT_EQ(row.usedPercent, 62.5);
    EXPECT_EQ(row.weeklyUsedPercent, 41);
    EXPECT_TRUE(row.usageOfficial);

    home.remove(limitsFile);
    ASSERT_EQ(runNow({"snapshot"}).status, 0);
    const WidgetProviderSnapshot without = WidgetSnapshotStore{}.read().providers.at(0);
    EXPECT_EQ(without.usedPercent, std::nullopt);
    EXPECT_FALSE(without.usageOfficial);
}

TEST(SnapshotCommand, everyProviderHasItsFixedTint) {
    EXPECT_EQ(host::providerTint(ProviderID::Claude), "#D6783F");
    EXPECT_EQ(host::providerTint(ProviderID::Codex), "#2F2F33");
    EXPECT_EQ(host::providerTint(ProviderID::Grok), "#111111");
    EXPECT_EQ(host::providerTint(ProviderID::MuseSpark), "#0866FF");
    EXPECT_EQ(host::providerTint(ProviderID::Copilot), "#6E40C9");
    EXPECT_EQ(host::providerTint(ProviderID::Cursor), "#4A4A52");
    for (const ProviderDescriptor& descriptor : ProviderCatalog::all()) {
        const std::string_view tint = host::providerTint(descriptor.id);
        EXPECT_THAT(tint, StartsWith("#")) << descriptor.name;
        EXPECT_TRUE(HexColor::components(tint)) << descriptor.name;
    }
}

struct NoticeCase {
    const char* name;
    std::vector<const char*> models;
    std::optional<std::string> notice;
};

class SnapshotCommandNotice : public ::testing::TestWithParam<NoticeCase> {};

TEST_P(SnapshotCommandNotice, tellsOfModelsWithoutAPrice) {
    const ScratchHome home;
    writeCalls(home);
    for (const char* model : GetParam().models) {
        home.append(claudeLog, claudeCall(model, model, "2026-02-28T08:00:00Z", 10, 10));
    }
    ASSERT_EQ(runNow({"snapshot"}).status, 0);
    EXPECT_EQ(WidgetSnapshotStore{}.read().availabilityNotice, GetParam().notice);
    EXPECT_THAT(automationOf(home).providers.at(0).unpricedModels, SizeIs(GetParam().models.size()));
}

INSTANTIATE_TEST_SUITE_P(
    ByModels, SnapshotCommandNotice,
    ::testing::Values(NoticeCase{"none", {}, std::nullopt}, NoticeCase{"one", {"zephyr-1"}, "No price for zephyr-1"},
                      NoticeCase{"several", {"zephyr-1", "nimbus-1", "mist-1"}, "No price for mist-1 and 2 more"}),
    [](const auto& row) { return std::string{row.param.name}; });

struct RewriteCase {
    const char* name;
    void (*change)(const ScratchHome&);
    std::int64_t secondsLater;
    std::vector<std::string> arguments;
    bool rewritesAutomation;
    bool rewritesWidget;
};

class SnapshotCommandRewrite : public ::testing::TestWithParam<RewriteCase> {};

TEST_P(SnapshotCommandRewrite, happensOnlyWhereSomethingIsToBeSaid) {
    const RewriteCase& row = GetParam();
    const ScratchHome home;
    writeCalls(home);
    writeUsualLimits(home);
    ASSERT_EQ(runNow({"snapshot"}).status, 0);
    row.change(home);
    const ino_t automation = identityOf(home, automationFile);
    const ino_t widget = identityOf(home, widgetFile);
    const std::string before = home.read(automationFile);

    std::vector<std::string> arguments = row.arguments;
    arguments.insert(arguments.begin(), "snapshot");
    const ProgramRun run = runLater(row.secondsLater, arguments);
    ASSERT_EQ(run.status, 0) << run.error;
    EXPECT_EQ(identityOf(home, automationFile) != automation, row.rewritesAutomation);
    EXPECT_EQ(identityOf(home, widgetFile) != widget, row.rewritesWidget);
    EXPECT_EQ(run.output, home.read(automationFile));
    EXPECT_EQ(run.output != before, row.rewritesAutomation || before.empty());

    const Date then{static_cast<double>(testNow + row.secondsLater)};
    const Date first{static_cast<double>(testNow)};
    EXPECT_EQ(automationOf(home).generatedAt, row.rewritesAutomation ? then : first);
    EXPECT_EQ(WidgetSnapshotStore{}.read().generatedAt, row.rewritesWidget ? then : first);
}

void nothing(const ScratchHome& /*home*/) {}

void replaceText(const ScratchHome& home, const std::string& file, const std::string& from, const std::string& to) {
    std::string text = home.read(file);
    const std::size_t place = text.find(from);
    ASSERT_NE(place, std::string::npos);
    home.write(file, text.replace(place, from.size(), to));
}

INSTANTIATE_TEST_SUITE_P(
    ByChange, SnapshotCommandRewrite,
    ::testing::Values(RewriteCase{"notForNothing", nothing, minute, {}, false, false},
                      RewriteCase{"notUntilItIsStale", nothing, 30 * minute - 1, {}, false, false},
                      RewriteCase{"whenItIsStale", nothing, 30 * minute, {}, true, true},
                      RewriteCase{"whenTheClockWasSetBack", nothing, -hour, {}, true, true},
                      RewriteCase{"byForce", nothing, minute, {"--force"}, true, true},
                      RewriteCase{"forAnotherWindow", nothing, minute, {"--days", "7"}, true, true},
                      RewriteCase{
                          "notForTheSameWindowByAnotherLength", nothing, minute, {"--days", "33"}, false, false},
                      RewriteCase{"forACall",
                                  [](const ScratchHome& home) {
                                      home.append(claudeLog, claudeCall("e", "claude-opus-4-8",
                                                                        "2026-03-01T09:00:00.000Z", 1000000, 0));
                                  },
                                  minute,
                                  {},
                                  true,
                                  true},
                      RewriteCase{"forALimit",
                                  [](const ScratchHome& home) {
                                      writeLimits(home, 0, limitWindow("63", hour), limitWindow("41", 50 * hour));
                                  },
                                  minute,
                                  {},
                                  true,
                                  true},
                      RewriteCase{"forARecordCutShort",
                                  [](const ScratchHome& home) { home.truncate(automationFile, 200); },
                                  minute,
                                  {},
                                  true,
                                  false},
                      RewriteCase{"forARecordOfAnotherVersion",
                                  [](const ScratchHome& home) {
                                      replaceText(home, automationFile, R"("schema_version": 4)",
                                                  R"("schema_version": 3)");
                                  },
                                  minute,
                                  {},
                                  true,
                                  false},
                      RewriteCase{"forAWidgetsFileCutShort",
                                  [](const ScratchHome& home) { home.truncate(widgetFile, 0); },
                                  minute,
                                  {},
                                  false,
                                  true},
                      RewriteCase{"forAWidgetsFileOfAnotherVersion",
                                  [](const ScratchHome& home) {
                                      replaceText(home, widgetFile, R"("schemaVersion": 4)", R"("schemaVersion": 5)");
                                  },
                                  minute,
                                  {},
                                  false,
                                  true}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(SnapshotCommand, missingFilesAreWrittenEachByItself) {
    const ScratchHome home;
    writeCalls(home);
    ASSERT_EQ(runNow({"snapshot"}).status, 0);
    for (const auto& [gone, kept] : {std::pair{automationFile, widgetFile}, {widgetFile, automationFile}}) {
        home.remove(gone);
        const ino_t before = identityOf(home, kept);
        ASSERT_EQ(runNow({"snapshot"}).status, 0);
        EXPECT_TRUE(home.exists(gone));
        EXPECT_EQ(identityOf(home, kept), before);
    }
}

/// The file has whole seconds, the source need not.
TEST(SnapshotCommand, aResetWithinASecondIsNoChange) {
    const ScratchHome home;
    writeCalls(home);
    const std::string window = R"({"used_percentage":62.123456789,"resets_at":1772361000.75})";
    writeLimits(home, minute, window, window);
    ASSERT_EQ(runNow({"snapshot"}).status, 0);
    const ino_t automation = identityOf(home, automationFile);
    const ino_t widget = identityOf(home, widgetFile);
    ASSERT_EQ(runLater(minute, {"snapshot"}).status, 0);
    EXPECT_EQ(identityOf(home, automationFile), automation);
    EXPECT_EQ(identityOf(home, widgetFile), widget);
}

struct ObstacleCase {
    const char* name;
    std::string obstacle;
    std::string names;
    std::string whole;
};

class SnapshotCommandObstacle : public ::testing::TestWithParam<ObstacleCase> {};

TEST_P(SnapshotCommandObstacle, failsInOneLineAndLeavesWholeFiles) {
    const ObstacleCase& row = GetParam();
    const ScratchHome home;
    writeCalls(home);
    ASSERT_EQ(runNow({"snapshot"}).status, 0);
    home.remove(row.names);
    home.write(row.obstacle, "mine");
    const std::vector<std::string> before = namesIn(home, quorvaneFolder);
    home.append(claudeLog, claudeCall("e", "claude-opus-4-8", "2026-03-01T09:00:00.000Z", 1000000, 0));

    const ProgramRun run = runLater(minute, {"snapshot"});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.output, IsEmpty());
    EXPECT_THAT(run.error, AllOf(StartsWith("quorvane: "), HasSubstr(home.path(row.names) + ": ")));
    EXPECT_EQ(lineCount(run.error), 1) << run.error;

    EXPECT_EQ(home.read(row.obstacle), "mine");
    EXPECT_EQ(namesIn(home, quorvaneFolder), before);
    if (row.whole == automationFile) {
        EXPECT_EQ(automationOf(home).totalToday, 10.0);
    } else {
        EXPECT_EQ(WidgetSnapshotStore{}.read().totalToday, 5.0) << "as it was";
        EXPECT_THAT(namesIn(home, widgetFolder), ElementsAre("widget-snapshot.json"));
    }
    if (row.names == widgetFile) {
        EXPECT_THAT(namesIn(home, widgetFolder), ElementsAre("widget-snapshot.json"));
    }
}

INSTANTIATE_TEST_SUITE_P(
    ByPlace, SnapshotCommandObstacle,
    ::testing::Values(ObstacleCase{"aFolderInTheRecordsPlace", automationFile + "/inside", automationFile, widgetFile},
                      ObstacleCase{"aFolderInTheWidgetsPlace", widgetFile + "/inside", widgetFile, automationFile},
                      ObstacleCase{"aFileInTheWidgetsFoldersPlace", widgetFolder, widgetFolder, automationFile}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(SnapshotCommand, withoutAgentsSaysSoInBothFiles) {
    const ScratchHome home;
    const ProgramRun run = runNow({"snapshot"});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.error, IsEmpty());
    EXPECT_EQ(run.output, home.read(automationFile));
    const LocalAutomationSnapshot record = automationOf(home);
    EXPECT_EQ(record.status, "no_sources");
    EXPECT_TRUE(record.notice);
    EXPECT_THAT(record.providers, IsEmpty());
    EXPECT_EQ(record.totalWindow, 0);
    const WidgetSnapshot widget = WidgetSnapshotStore{}.read();
    EXPECT_THAT(widget.providers, IsEmpty());
    EXPECT_THAT(widget.windows, SizeIs(4));
}

TEST(SnapshotCommand, anAgentThatIsGoneLeavesTheRecord) {
    const ScratchHome home;
    writeCalls(home);
    ASSERT_EQ(runNow({"snapshot"}).status, 0);
    home.remove(".claude");
    ASSERT_EQ(runLater(minute, {"snapshot"}).status, 0);
    EXPECT_EQ(automationOf(home).status, "no_sources");
    EXPECT_EQ(automationOf(home).totalWindow, 0);
}

TEST(SnapshotCommand, aBrokenIndexIsAFailureAndLeavesTheFiles) {
    const ScratchHome home;
    writeCalls(home);
    ASSERT_EQ(runNow({"snapshot"}).status, 0);
    const std::string before = home.read(automationFile);
    for (const char* part : {"", "-wal", "-shm"})
        home.remove(indexFile + part);
    home.makeFolder(indexFile);
    const ProgramRun run = runLater(hour, {"snapshot"});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.output, IsEmpty());
    EXPECT_THAT(run.error, HasSubstr(home.path(indexFile)));
    EXPECT_EQ(lineCount(run.error), 1);
    EXPECT_EQ(home.read(automationFile), before);
}

}  // namespace
}  // namespace quorvane::testing
