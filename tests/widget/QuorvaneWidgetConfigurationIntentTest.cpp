#include <cstddef>

#include <gtest/gtest.h>

#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetBundle.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetConfigurationIntent.h"

namespace quorvane {
namespace {

struct ProviderChoiceCase {
    const char* raw;
    std::optional<std::string_view> id;
    const char* text;
};

constexpr ProviderChoiceCase providerChoices[]{
    {"all", std::nullopt, "All providers"},
    {"claude", "claude", "Claude Code"},
    {"codex", "codex", "Codex"},
    {"grok", "grok", "Grok"},
    {"museSpark", "muse_spark", "Muse Spark"},
    {"copilot", "copilot", "GitHub Copilot"},
    {"cursor", "cursor", "Cursor"},
};

TEST(QuorvaneWidgetProviderChoiceTest, hasItsCasesInOrderWithTheirWords) {
    ASSERT_EQ(allQuorvaneWidgetProviderChoices.size(), std::size(providerChoices));
    for (std::size_t place = 0; place < std::size(providerChoices); ++place) {
        const QuorvaneWidgetProviderChoice choice = allQuorvaneWidgetProviderChoices[place];
        EXPECT_EQ(rawName(choice), providerChoices[place].raw);
        EXPECT_EQ(providerID(choice), providerChoices[place].id) << providerChoices[place].raw;
        EXPECT_EQ(displayText(choice), providerChoices[place].text);
        EXPECT_EQ(quorvaneWidgetProviderChoiceFromRawName(rawName(choice)), choice);
    }
    EXPECT_EQ(quorvaneWidgetProviderChoiceTitle, "View");
}

TEST(QuorvaneWidgetProviderChoiceTest, isReadFromTheStoredWordAloneAndNotFromTheID) {
    EXPECT_EQ(quorvaneWidgetProviderChoiceFromRawName("muse_spark"), std::nullopt);
    EXPECT_EQ(quorvaneWidgetProviderChoiceFromRawName("Claude"), std::nullopt);
    EXPECT_EQ(quorvaneWidgetProviderChoiceFromRawName(""), std::nullopt);
}

struct TimeframeChoiceCase {
    const char* raw;
    std::int64_t days;
    const char* text;
};

constexpr TimeframeChoiceCase timeframeChoices[]{{"sevenDays", 7, "7 days"},
                                                 {"fourteenDays", 14, "14 days"},
                                                 {"thirtyDays", 30, "30 days"},
                                                 {"ninetyDays", 90, "90 days"}};

TEST(QuorvaneWidgetTimeframeChoiceTest, hasItsCasesInOrderWithTheirDays) {
    ASSERT_EQ(allQuorvaneWidgetTimeframeChoices.size(), std::size(timeframeChoices));
    for (std::size_t place = 0; place < std::size(timeframeChoices); ++place) {
        const QuorvaneWidgetTimeframeChoice choice = allQuorvaneWidgetTimeframeChoices[place];
        EXPECT_EQ(rawName(choice), timeframeChoices[place].raw);
        EXPECT_EQ(days(choice), timeframeChoices[place].days);
        EXPECT_EQ(displayText(choice), timeframeChoices[place].text);
        EXPECT_EQ(quorvaneWidgetTimeframeChoiceFromRawName(rawName(choice)), choice);
    }
    EXPECT_EQ(quorvaneWidgetTimeframeChoiceTitle, "Timeframe");
    EXPECT_EQ(quorvaneWidgetTimeframeChoiceFromRawName("14"), std::nullopt);
}

TEST(QuorvaneWidgetConfigurationIntentTest, showsAllProvidersWithLimitsOverAFortnightUnlessTold) {
    const QuorvaneWidgetConfigurationIntent configuration;
    EXPECT_EQ(configuration.provider, QuorvaneWidgetProviderChoice::all);
    EXPECT_TRUE(configuration.showLimits);
    EXPECT_EQ(configuration.timeframe, QuorvaneWidgetTimeframeChoice::fourteenDays);
    EXPECT_EQ(QuorvaneWidgetConfigurationIntent::title, "Quorvane");
    EXPECT_EQ(QuorvaneWidgetConfigurationIntent::showLimitsTitle, "Show limits");
}

TEST(QuorvaneWidgetFamilyTest, hasThreeSizesInPoints) {
    EXPECT_EQ(size(QuorvaneWidgetFamily::small), (QuorvaneWidgetSize{170, 170}));
    EXPECT_EQ(size(QuorvaneWidgetFamily::medium), (QuorvaneWidgetSize{364, 170}));
    EXPECT_EQ(size(QuorvaneWidgetFamily::large), (QuorvaneWidgetSize{364, 382}));
    for (const QuorvaneWidgetFamily family : allQuorvaneWidgetFamilies) {
        EXPECT_EQ(quorvaneWidgetFamilyFromRawName(rawName(family)), family);
    }
    EXPECT_EQ(quorvaneWidgetFamilyFromRawName("huge"), std::nullopt);
}

TEST(QuorvaneWidgetBundleTest, declaresOneWidgetUnderTheContractsKind) {
    const QuorvaneWidgetBundle bundle;
    ASSERT_EQ(bundle.widgets.size(), 1U);
    EXPECT_EQ(bundle.widgets[0].kind, "QuorvaneWidget");
    EXPECT_EQ(QuorvaneWidget::displayName, "Quorvane");
    EXPECT_EQ(QuorvaneWidget::description, "Track AI coding spend and provider limits at a glance.");
    EXPECT_FALSE(QuorvaneWidget::usesDefaultContentMargins);
}

}  // namespace
}  // namespace quorvane
