// The program itself, run as its user would.
#include <QImage>
#include <QProcess>
#include <QTest>
#include <csignal>

#include <gtest/gtest.h>

#include "QuorvaneCore/snapshots/WidgetSnapshotStore.h"
#include "tests/desktop/Entries.h"
#include "tests/desktop/PictureComparison.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/ScratchHome.h"

namespace quorvane::testing {
namespace {

const std::string program = QUORVANE_WIDGET_PROGRAM;
const std::string now = "2026-09-21T14:18:20Z";  // five minutes after the snapshots

ProgramRun run(std::vector<std::string> arguments, const std::map<std::string, std::string>& environment = {}) {
    arguments.insert(arguments.begin(), program);
    std::map<std::string, std::string> variables{{"QT_QPA_PLATFORM", ""}, {"LC_ALL", "en_US.UTF-8"}};
    for (const auto& [name, value] : environment)
        variables[name] = value;
    return ProgramRun::of(arguments, {.environment = variables});
}

int lines(const std::string& text) {
    return static_cast<int>(std::count(text.begin(), text.end(), '\n'));
}

TEST(WidgetProgramTest, describesTheUsersData) {
    const ScratchHome home;
    WidgetSnapshotStore{}.write(ownSnapshot());
    const ProgramRun described = run({"--describe", "--family", "small", "--now", now});
    EXPECT_EQ(described.status, 0);
    EXPECT_EQ(described.output, "All providers, today $1,235.08, incl notional, last 14 days\n");
    EXPECT_EQ(described.error, "");
    EXPECT_EQ(run({"--describe", "--provider", "codex", "--timeframe", "sevenDays", "--now", now}).output,
              "Codex, today $225.19, notional, last 7 days, Codex $225.19, 83% used, notional\n");
}

TEST(WidgetProgramTest, describesMoneyAfterTheLocale) {
    const ScratchHome home;
    WidgetSnapshotStore{}.write(ownSnapshot());
    EXPECT_EQ(run({"--describe", "--family", "small", "--now", now}, {{"LC_ALL", "de_DE.UTF-8"}}).output,
              "All providers, today 1.235,08\u00a0$, incl notional, last 14 days\n");
}

TEST(WidgetProgramTest, saysInOneLineThatThereIsNoFileAndShowsTheSample) {
    const ScratchHome home;
    const ProgramRun described = run({"--describe", "--family", "small"});
    EXPECT_EQ(described.status, 0);
    EXPECT_EQ(described.output, "All providers, today $1,235.08, incl notional, last 14 days\n");
    EXPECT_EQ(lines(described.error), 1);
    EXPECT_NE(described.error.find(home.path("Library/Application Support/Quorvane/Widget/widget-snapshot.json")),
              std::string::npos)
        << described.error;
}

TEST(WidgetProgramTest, drawsTheSamePictureAsTheWindow) {
    const ScratchHome home;
    WidgetSnapshotStore{}.write(ownSnapshot());
    const ProgramRun drawn =
        run({"--render", home.path("large.png"), "--family", "large", "--scheme", "dark", "--now", now});
    EXPECT_EQ(drawn.status, 0);
    EXPECT_EQ(drawn.output, "");
    EXPECT_EQ(drawn.error, "");
    EXPECT_EQ(compareWithKept(QImage{QString::fromStdString(home.path("large.png"))}, "all-dark-large"), "");
}

TEST(WidgetProgramTest, drawsAtTheScale) {
    const ScratchHome home;
    for (const auto& [scale, width] : {std::pair{"1.25", 213}, {"1.5", 255}, {"2", 340}}) {
        EXPECT_EQ(run({"--render", home.path("a.png"), "--family", "small", "--scale", scale}).status, 0);
        EXPECT_EQ(QImage{QString::fromStdString(home.path("a.png"))}.width(), width) << scale;
    }
}

TEST(WidgetProgramTest, saysInOneLineWhichPictureItCannotWriteAndLeavesWhatWasThere) {
    const ScratchHome home;
    WidgetSnapshotStore{}.write(ownSnapshot());
    const ProgramRun drawn = run({"--render", home.path("no/such/folder.png"), "--now", now});
    EXPECT_EQ(drawn.status, 1);
    EXPECT_EQ(lines(drawn.error), 1);
    EXPECT_NE(drawn.error.find("no/such/folder.png"), std::string::npos) << drawn.error;
}

TEST(WidgetProgramTest, saysInOneLineThatThereIsNoDisplay) {
    const ScratchHome home;
    const ProgramRun without = run({});
    EXPECT_EQ(without.status, 1);
    EXPECT_EQ(lines(without.error), 1) << without.error;
    EXPECT_NE(without.error.find("no display"), std::string::npos);
    const ProgramRun gone = run({}, {{"DISPLAY", ":4711"}});
    EXPECT_EQ(gone.status, 1);
    EXPECT_EQ(lines(gone.error), 1) << gone.error;
    EXPECT_NE(gone.error.find("cannot open a window"), std::string::npos) << gone.error;
}

TEST(WidgetProgramTest, tellsItsVersionAndItsOptions) {
    EXPECT_EQ(run({"--version"}).status, 0);
    EXPECT_EQ(run({"--version"}).output.rfind("quorvane-widget ", 0), 0U);
    const ProgramRun help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* option : {"--render", "--describe", "--family", "--provider", "--timeframe", "--scheme",
                               "--no-limits", "--scale", "--now"}) {
        EXPECT_NE(help.output.find(option), std::string::npos) << option;
    }
}

/// The program with its windows open on a platform that shows nothing.
class OpenProgram {
public:
    OpenProgram() {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        process_.setProcessEnvironment(environment);
        process_.start(QString::fromStdString(program), QStringList{});
        process_.waitForStarted();
    }

    /// Sends a signal and gives back the exit status; -1 if it did not end by itself.
    int endedBy(int signal) {
        ::kill(static_cast<pid_t>(process_.processId()), signal);
        if (!process_.waitForFinished(20000) || process_.exitStatus() != QProcess::NormalExit) return -1;
        return process_.exitCode();
    }

private:
    QProcess process_;
};

TEST(WidgetProgramTest, runsOnceAndEndsCleanlyWhenAsked) {
    const ScratchHome home;
    WidgetSnapshotStore{}.write(ownSnapshot());
    for (const int signal : {SIGTERM, SIGINT}) {
        OpenProgram first;
        const std::string lock = ".config/Quorvane/quorvane-widget.lock";
        ASSERT_TRUE(QTest::qWaitFor([&] { return home.exists(lock); }, 20000));
        const ProgramRun second = run({}, {{"QT_QPA_PLATFORM", "offscreen"}});
        EXPECT_EQ(second.status, 1);
        EXPECT_EQ(lines(second.error), 1) << second.error;
        EXPECT_NE(second.error.find("already running"), std::string::npos) << second.error;
        EXPECT_EQ(first.endedBy(signal), 0);
        EXPECT_FALSE(home.exists(lock));
    }
}

}  // namespace
}  // namespace quorvane::testing
