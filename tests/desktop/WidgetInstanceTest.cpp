#include <QKeyEvent>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/snapshots/WidgetSnapshotStore.h"
#include "QuorvaneWidgetExtension/desktop/WidgetDesktop.h"
#include "QuorvaneWidgetExtension/desktop/WidgetInstance.h"
#include "tests/desktop/Entries.h"
#include "tests/support/ScratchHome.h"

namespace quorvane::desktop {
namespace {

using testing::ownSnapshot;

/// A home of its own, whose present moment stands at that of the drawings.
class WidgetInstanceTest : public ::testing::Test {
protected:
    WidgetInstanceTest() { Clock::pin(testing::drawnAt); }
    ~WidgetInstanceTest() override { Clock::unpin(); }

    static std::string spoken(const WidgetInstance& instance) {
        return instance.window().model().accessibilitySummary().toStdString();
    }
    static bool says(const WidgetInstance& instance, const std::string& text) {
        return spoken(instance).find(text) != std::string::npos;
    }
    static void write(double totalToday) {
        WidgetSnapshot snapshot = ownSnapshot();
        snapshot.totalToday = totalToday;
        WidgetSnapshotStore{}.write(snapshot);
    }

    testing::ScratchHome home;
    WidgetSettings settings;
    DesktopColorScheme colors;
};

TEST_F(WidgetInstanceTest, showsTheFileAsSet) {
    write(77);
    settings.write(QStringLiteral("1"), {.family = QuorvaneWidgetFamily::small});
    WidgetInstance instance{QStringLiteral("1"), settings, colors, {}};
    instance.open();
    EXPECT_EQ(instance.window().size(), QSize(170, 170));
    EXPECT_TRUE(says(instance, "today $77.00")) << spoken(instance);
}

TEST_F(WidgetInstanceTest, readsTheFileAtOnceWhenItIsReplacedOrAppears) {
    WidgetInstance instance{QStringLiteral("1"), settings, colors, {}};
    EXPECT_TRUE(says(instance, "today $1,235.08"));
    write(1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return says(instance, "today $1.00"); }, 5000)) << spoken(instance);
    write(2);
    EXPECT_TRUE(QTest::qWaitFor([&] { return says(instance, "today $2.00"); }, 5000)) << spoken(instance);
}

TEST_F(WidgetInstanceTest, readsTheFileAgainAtTheReloadDateAndNotBefore) {
    write(1);
    WidgetInstance instance{QStringLiteral("1"), settings, colors, {}};
    // No event is handled from here on: its watcher does not hear of the change.
    write(2);
    Clock::pin(testing::drawnAt + 1799);
    instance.update();
    EXPECT_TRUE(says(instance, "today $1.00")) << spoken(instance);
    Clock::pin(testing::drawnAt + 1800);
    instance.update();
    EXPECT_TRUE(says(instance, "today $2.00")) << spoken(instance);
}

TEST_F(WidgetInstanceTest, tellsThatDataBecameStaleWithoutANewFile) {
    write(1);
    WidgetInstance instance{QStringLiteral("1"), settings, colors, {}};
    EXPECT_FALSE(says(instance, "stale"));
    Clock::pin(Date{1790001800});
    instance.update();
    EXPECT_TRUE(says(instance, "data may be stale, open Quorvane to refresh"));
}

TEST_F(WidgetInstanceTest, appliesAndKeepsWhatIsChosen) {
    write(77);
    WidgetInstance instance{QStringLiteral("1"), settings, colors, {}};
    InstanceSettings chosen = instance.current();
    chosen.family = QuorvaneWidgetFamily::large;
    chosen.configuration.provider = QuorvaneWidgetProviderChoice::codex;
    chosen.configuration.timeframe = QuorvaneWidgetTimeframeChoice::ninetyDays;
    instance.apply(chosen);
    EXPECT_EQ(instance.window().size(), QSize(364, 382));
    EXPECT_EQ(spoken(instance), "Codex, today $225.19, notional, last 90 days, Codex $225.19, 83% used, notional");
    EXPECT_EQ(WidgetSettings{}.read(QStringLiteral("1")).configuration, chosen.configuration);
    EXPECT_EQ(WidgetSettings{}.read(QStringLiteral("1")).family, QuorvaneWidgetFamily::large);
}

TEST_F(WidgetInstanceTest, keepsWhereItWasMovedTo) {
    {
        WidgetInstance instance{QStringLiteral("1"), settings, colors, QPoint{30, 40}};
        instance.open();
        EXPECT_EQ(instance.window().position(), QPoint(30, 40));
        instance.window().setPosition(120, 130);
        EXPECT_TRUE(QTest::qWaitFor([&] { return instance.current().position == QPoint{120, 130}; }, 5000));
    }
    EXPECT_EQ(WidgetSettings{}.read(QStringLiteral("1")).position, QPoint(120, 130));
    WidgetInstance again{QStringLiteral("1"), settings, colors, QPoint{30, 40}};
    EXPECT_EQ(again.window().position(), QPoint(120, 130));
}

TEST_F(WidgetInstanceTest, doesNotGoWhereThereIsNoScreenAnyMore) {
    settings.write(QStringLiteral("1"), {.position = QPoint{90000, 90000}});
    WidgetInstance instance{QStringLiteral("1"), settings, colors, QPoint{30, 40}};
    EXPECT_EQ(instance.window().position(), QPoint(30, 40));
}

TEST_F(WidgetInstanceTest, asksForTheMenuByTheRightButtonAndTheKeys) {
    WidgetWindow window;
    window.show(testing::entryView(ownSnapshot(), QuorvaneWidgetFamily::small),
                testing::environmentOf(WidgetColorScheme::Light));
    window.show();
    QSignalSpy spy{&window, &WidgetWindow::menuRequested};
    QTest::mouseClick(&window, Qt::RightButton);
    EXPECT_EQ(spy.count(), 1);
    QTest::keyClick(&window, Qt::Key_Menu);
    EXPECT_EQ(spy.count(), 2);
    QTest::keyClick(&window, Qt::Key_F10, Qt::ShiftModifier);
    EXPECT_EQ(spy.count(), 3);
    QTest::mouseClick(&window, Qt::LeftButton);
    QTest::keyClick(&window, Qt::Key_F10);
    EXPECT_EQ(spy.count(), 3);
}

TEST_F(WidgetInstanceTest, hasNoFrameAndStaysBelowOtherWindows) {
    const WidgetWindow window;
    EXPECT_TRUE(window.flags() & Qt::FramelessWindowHint);
    EXPECT_TRUE(window.flags() & Qt::WindowStaysOnBottomHint);
    EXPECT_EQ(window.flags() & Qt::WindowType_Mask, Qt::Tool);
}

TEST_F(WidgetInstanceTest, desktopHasOneWidgetAtFirstAndAsManyAsWereAddedLater) {
    write(77);
    {
        WidgetDesktop desktop;
        desktop.open();
        ASSERT_EQ(desktop.instances().size(), 1U);
        desktop.add();
        desktop.add();
        ASSERT_EQ(desktop.instances().size(), 3U);
        InstanceSettings chosen = desktop.instances()[1]->current();
        chosen.configuration.provider = QuorvaneWidgetProviderChoice::grok;
        desktop.instances()[1]->apply(chosen);
        desktop.instances()[0]->apply(desktop.instances()[0]->current());
    }
    WidgetDesktop again;
    ASSERT_EQ(again.instances().size(), 3U);
    EXPECT_TRUE(says(*again.instances()[1], "Grok, today "));
    EXPECT_TRUE(says(*again.instances()[2], "All providers, today "));
    again.remove(*again.instances()[0]);
    ASSERT_EQ(again.instances().size(), 2U);
    EXPECT_EQ(WidgetSettings{}.instances().size(), 2);
    EXPECT_TRUE(says(*again.instances()[0], "Grok, today "));
}

TEST_F(WidgetInstanceTest, removingTheLastWidgetEndsTheProgramAndKeepsItsSettings) {
    WidgetDesktop desktop;
    desktop.instances()[0]->apply({.family = QuorvaneWidgetFamily::large});
    QSignalSpy quit{&desktop, &WidgetDesktop::quitRequested};
    desktop.remove(*desktop.instances()[0]);
    EXPECT_EQ(quit.count(), 1);
    EXPECT_EQ(WidgetSettings{}.instances().size(), 1);
}

}  // namespace
}  // namespace quorvane::desktop
