#include <gtest/gtest.h>

#include "QuorvaneWidgetExtension/desktop/WidgetSettings.h"
#include "tests/support/ScratchHome.h"

namespace quorvane::desktop {
namespace {

const std::string file = ".config/Quorvane/quorvane-widget.ini";

TEST(WidgetSettingsTest, givesBackWhatWasWritten) {
    const testing::ScratchHome home;
    const InstanceSettings settings{.configuration = {.provider = QuorvaneWidgetProviderChoice::museSpark,
                                                      .showLimits = false,
                                                      .timeframe = QuorvaneWidgetTimeframeChoice::ninetyDays},
                                    .family = QuorvaneWidgetFamily::large,
                                    .colorScheme = ColorSchemeChoice::dark,
                                    .position = QPoint{-40, 300}};
    WidgetSettings{}.write(QStringLiteral("3"), settings);
    EXPECT_EQ(WidgetSettings{}.read(QStringLiteral("3")), settings);
    EXPECT_EQ(WidgetSettings{}.file().toStdString(), home.path(file));
    EXPECT_NE(home.read(file).find("museSpark"), std::string::npos);
}

TEST(WidgetSettingsTest, takesTheDefaultsForWhatIsMissingOrNotUnderstood) {
    const testing::ScratchHome home;
    EXPECT_EQ(WidgetSettings{}.read(QStringLiteral("1")), InstanceSettings{});
    home.write(file,
               "[widgets]\n1\\view=muse_spark\n1\\timeframe=14\n1\\size=huge\n1\\showLimits=perhaps\n"
               "1\\colorScheme=pink\n1\\position=here\n");
    EXPECT_EQ(WidgetSettings{}.read(QStringLiteral("1")), InstanceSettings{});
    home.write(file, std::string{"\0\xff[[[\n=", 8});
    EXPECT_EQ(WidgetSettings{}.read(QStringLiteral("1")), InstanceSettings{});
}

TEST(WidgetSettingsTest, keepsWidgetsApartInTheOrderOfTheirMaking) {
    const testing::ScratchHome home;
    WidgetSettings settings;
    EXPECT_TRUE(settings.instances().isEmpty());
    for (int turn = 0; turn < 11; ++turn) {
        settings.write(settings.newInstance(),
                       {.family = turn == 1 ? QuorvaneWidgetFamily::large : QuorvaneWidgetFamily::small});
    }
    EXPECT_EQ(settings.instances().front(), QStringLiteral("1"));
    EXPECT_EQ(settings.instances().back(), QStringLiteral("11"));
    EXPECT_EQ(settings.read(QStringLiteral("2")).family, QuorvaneWidgetFamily::large);
    EXPECT_EQ(settings.read(QStringLiteral("3")).family, QuorvaneWidgetFamily::small);
    settings.remove(QStringLiteral("2"));
    EXPECT_EQ(settings.instances().size(), 10);
    EXPECT_FALSE(settings.instances().contains(QStringLiteral("2")));
}

TEST(ColorSchemeChoiceTest, isKeptByItsWordAndFollowsTheDesktopOnlyWhereAsked) {
    for (const ColorSchemeChoice choice : allColorSchemeChoices) {
        EXPECT_EQ(colorSchemeChoiceFromRawName(rawName(choice)), choice);
        EXPECT_FALSE(displayText(choice).empty());
    }
    using enum WidgetColorScheme;
    for (const WidgetColorScheme desktop : {Light, Dark}) {
        EXPECT_EQ(resolved(ColorSchemeChoice::desktop, desktop), desktop);
        EXPECT_EQ(resolved(ColorSchemeChoice::light, desktop), Light);
        EXPECT_EQ(resolved(ColorSchemeChoice::dark, desktop), Dark);
    }
}

}  // namespace
}  // namespace quorvane::desktop
