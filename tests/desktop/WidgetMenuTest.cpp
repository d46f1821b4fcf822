#include <optional>

#include <gtest/gtest.h>

#include "QuorvaneWidgetExtension/desktop/WidgetMenu.h"

namespace quorvane::desktop {
namespace {

/// The entry at a path like "Size/Large"; null if there is none.
QAction* entryAt(const QMenu& menu, const QString& path) {
    const QString name = path.section(QLatin1Char('/'), 0, 0);
    const QString rest = path.section(QLatin1Char('/'), 1);
    for (QAction* const action : menu.actions()) {
        if (action->text() != name) continue;
        if (rest.isEmpty()) return action;
        return action->menu() != nullptr ? entryAt(*action->menu(), rest) : nullptr;
    }
    return nullptr;
}

/// The settings after that entry was chosen; absent if it is not there or changed nothing.
std::optional<InstanceSettings> after(const char* path, const InstanceSettings& before = {}) {
    WidgetMenu menu{before};
    std::optional<InstanceSettings> result;
    QObject::connect(&menu, &WidgetMenu::chosen, [&result](const InstanceSettings& settings) { result = settings; });
    if (QAction* const action = entryAt(menu, QString::fromUtf8(path))) action->trigger();
    return result;
}

TEST(WidgetMenuTest, editsEachSetting) {
    EXPECT_EQ(after("View/Muse Spark")->configuration.provider, QuorvaneWidgetProviderChoice::museSpark);
    EXPECT_EQ(after("Timeframe/90 days")->configuration.timeframe, QuorvaneWidgetTimeframeChoice::ninetyDays);
    EXPECT_EQ(after("Show limits")->configuration.showLimits, false);
    EXPECT_EQ(after("Show limits", {.configuration = {.showLimits = false}})->configuration.showLimits, true);
    EXPECT_EQ(after("Size/Large")->family, QuorvaneWidgetFamily::large);
    EXPECT_EQ(after("Appearance/Dark")->colorScheme, ColorSchemeChoice::dark);
    EXPECT_EQ(after("Appearance/Pink"), std::nullopt);
}

TEST(WidgetMenuTest, leavesTheOtherSettingsAsTheyAre) {
    const InstanceSettings before{
        .configuration = {.provider = QuorvaneWidgetProviderChoice::grok, .showLimits = false},
        .family = QuorvaneWidgetFamily::large,
        .colorScheme = ColorSchemeChoice::light};
    InstanceSettings expected = before;
    expected.configuration.timeframe = QuorvaneWidgetTimeframeChoice::sevenDays;
    EXPECT_EQ(after("Timeframe/7 days", before), expected);
}

TEST(WidgetMenuTest, checksWhatIsSet) {
    const WidgetMenu menu{{.configuration = {.provider = QuorvaneWidgetProviderChoice::codex}}};
    EXPECT_TRUE(entryAt(menu, QStringLiteral("View/Codex"))->isChecked());
    EXPECT_FALSE(entryAt(menu, QStringLiteral("View/All providers"))->isChecked());
    EXPECT_TRUE(entryAt(menu, QStringLiteral("Timeframe/14 days"))->isChecked());
    EXPECT_TRUE(entryAt(menu, QStringLiteral("Show limits"))->isChecked());
    EXPECT_TRUE(entryAt(menu, QStringLiteral("Size/Medium"))->isChecked());
}

TEST(WidgetMenuTest, asksForAWidgetMoreForOneLessAndForTheEnd) {
    WidgetMenu menu{{}};
    QStringList asked;
    QObject::connect(&menu, &WidgetMenu::addRequested, [&asked] { asked << QStringLiteral("add"); });
    QObject::connect(&menu, &WidgetMenu::removeRequested, [&asked] { asked << QStringLiteral("remove"); });
    QObject::connect(&menu, &WidgetMenu::quitRequested, [&asked] { asked << QStringLiteral("quit"); });
    for (const char* name : {"Add another widget", "Remove this widget", "Quit"}) {
        entryAt(menu, QString::fromUtf8(name))->trigger();
    }
    EXPECT_EQ(asked, (QStringList{QStringLiteral("add"), QStringLiteral("remove"), QStringLiteral("quit")}));
}

}  // namespace
}  // namespace quorvane::desktop
