#include <gtest/gtest.h>

#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneWidgetExtension/desktop/WidgetOptions.h"

namespace quorvane::desktop {
namespace {

struct RefusedCase {
    const char* name;
    std::vector<std::string> arguments;
};

class RefusedOptions : public ::testing::TestWithParam<RefusedCase> {};

TEST_P(RefusedOptions, areAUsageErrorInOneLine) {
    ::testing::internal::CaptureStderr();
    const std::variant<WidgetOptions, int> parsed = WidgetOptions::parse(GetParam().arguments);
    const std::string said = ::testing::internal::GetCapturedStderr();
    ASSERT_TRUE(std::holds_alternative<int>(parsed));
    EXPECT_EQ(std::get<int>(parsed), 2);
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    EXPECT_TRUE(said.starts_with("quorvane-widget: ")) << said;
    Clock::unpin();
}

INSTANTIATE_TEST_SUITE_P(
    Usage, RefusedOptions,
    ::testing::Values(RefusedCase{"unknownOption", {"--frame"}}, RefusedCase{"unknownWord", {"render"}},
                      RefusedCase{"unknownFamily", {"--describe", "--family", "huge"}},
                      RefusedCase{"providersIDInPlaceOfTheWord", {"--describe", "--provider", "muse_spark"}},
                      RefusedCase{"daysInPlaceOfTheWord", {"--describe", "--timeframe", "14"}},
                      RefusedCase{"unknownScheme", {"--describe", "--scheme", "pink"}},
                      RefusedCase{"scaleOfNothing", {"--render", "a.png", "--scale", "0"}},
                      RefusedCase{"scaleThatIsNoNumber", {"--render", "a.png", "--scale", "big"}},
                      RefusedCase{"renderWithoutAFile", {"--render"}},
                      RefusedCase{"renderAndDescribe", {"--render", "a.png", "--describe"}},
                      RefusedCase{"familyForTheWindows", {"--family", "small"}},
                      RefusedCase{"noLimitsForTheWindows", {"--no-limits"}},
                      RefusedCase{"badTime", {"--describe", "--now", "yesterday"}}),
    [](const auto& row) { return std::string{row.param.name}; });

WidgetOptions accepted(std::vector<std::string> arguments) {
    const std::variant<WidgetOptions, int> parsed = WidgetOptions::parse(std::move(arguments));
    EXPECT_TRUE(std::holds_alternative<WidgetOptions>(parsed));
    return std::get<WidgetOptions>(parsed);
}

TEST(WidgetOptionsTest, openTheWindowsUnlessTold) {
    EXPECT_EQ(accepted({}).task, WidgetOptions::Task::openWindows);
}

TEST(WidgetOptionsTest, drawOneEntryAsAsked) {
    const WidgetOptions options =
        accepted({"--render", "a.png", "--family", "large", "--provider", "museSpark", "--timeframe", "ninetyDays",
                  "--scheme", "dark", "--no-limits", "--scale", "1.5", "--now", "2026-03-01T09:30:00Z"});
    EXPECT_EQ(options.task, WidgetOptions::Task::render);
    EXPECT_EQ(options.picture, "a.png");
    EXPECT_EQ(options.family, QuorvaneWidgetFamily::large);
    EXPECT_EQ(options.configuration,
              (QuorvaneWidgetConfigurationIntent{.provider = QuorvaneWidgetProviderChoice::museSpark,
                                                 .showLimits = false,
                                                 .timeframe = QuorvaneWidgetTimeframeChoice::ninetyDays}));
    EXPECT_EQ(options.colorScheme, WidgetColorScheme::Dark);
    EXPECT_EQ(options.scale, 1.5);
    EXPECT_EQ(Clock::now(), Date{1772357400});
    Clock::unpin();
}

TEST(WidgetOptionsTest, describeWithTheDefaults) {
    const WidgetOptions options = accepted({"--describe"});
    EXPECT_EQ(options.task, WidgetOptions::Task::describe);
    EXPECT_EQ(options.family, QuorvaneWidgetFamily::medium);
    EXPECT_EQ(options.configuration, QuorvaneWidgetConfigurationIntent{});
    EXPECT_EQ(options.colorScheme, WidgetColorScheme::Light);
    EXPECT_EQ(options.scale, 1);
}

}  // namespace
}  // namespace quorvane::desktop
