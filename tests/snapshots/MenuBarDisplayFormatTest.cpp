#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/snapshots/MenuBarDisplayFormat.h"
#include "QuorvaneCore/snapshots/MenuBarProviderLimit.h"

namespace quorvane {
namespace {

using ::testing::ElementsAre;
using Format = MenuBarDisplayFormat;
using Kind = MenuBarDisplayFormat::Kind;
using Window = MenuBarDisplayWindow;

struct WindowCase {
    const char* name;
    std::optional<std::int64_t> minutes;
    bool isEstimate;
    Window window;
    const char* rawName;
    const char* titleSuffix;
};
class MenuBarDisplayWindowOf : public ::testing::TestWithParam<WindowCase> {};

TEST_P(MenuBarDisplayWindowOf, minutesHasItsNames) {
    const WindowCase& row = GetParam();
    const Window window = menuBarDisplayWindow(row.minutes, row.isEstimate);
    EXPECT_EQ(window, row.window);
    EXPECT_EQ(rawName(window), row.rawName);
    EXPECT_EQ(menuBarDisplayWindowFromRawName(row.rawName), window);
    EXPECT_EQ(titleSuffix(window), row.titleSuffix);
}
INSTANTIATE_TEST_SUITE_P(ByMinutes, MenuBarDisplayWindowOf,
                         ::testing::Values(WindowCase{"fiveHours", 300, false, Window::FiveHour, "fiveHour", "5h"},
                                           WindowCase{"week", 10080, false, Window::Weekly, "weekly", "week"},
                                           WindowCase{"otherLength", 299, false, Window::Other, "other", ""},
                                           WindowCase{"noLength", {}, false, Window::Other, "other", ""},
                                           WindowCase{"estimate", {}, true, Window::Estimate, "estimate", ""},
                                           WindowCase{"estimateOfFiveHours", 300, true, Window::Estimate, "estimate",
                                                      ""}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(MenuBarDisplayWindow, anyOtherTextIsNoWindow) {
    EXPECT_EQ(menuBarDisplayWindowFromRawName("fivehour"), std::nullopt);
    EXPECT_EQ(menuBarDisplayWindowFromRawName(""), std::nullopt);
    EXPECT_EQ(menuBarDisplayWindowFromRawName("weekly "), std::nullopt);
}

struct StoredCase {
    const char* name;
    std::optional<std::string> text;
    Format format;
    const char* rawValue;
};
class MenuBarDisplayFormatStored : public ::testing::TestWithParam<StoredCase> {};

TEST_P(MenuBarDisplayFormatStored, textIsNormalized) {
    const Format format = Format::normalized(GetParam().text);
    EXPECT_EQ(format, GetParam().format);
    EXPECT_EQ(format.providerShortName, std::nullopt);
    EXPECT_EQ(format.rawValue(), GetParam().rawValue);
    EXPECT_EQ(Format::normalized(format.rawValue()), format);
}
Format chosen(Kind kind, const char* provider, std::optional<Window> window = std::nullopt) {
    return {.kind = kind, .providerID = provider, .window = window};
}
INSTANTIATE_TEST_SUITE_P(
    ByText, MenuBarDisplayFormatStored,
    ::testing::Values(
        StoredCase{"absent", {}, {}, "total"}, StoredCase{"empty", "", {}, "total"},
        StoredCase{"total", "total", {}, "total"},
        StoredCase{"bothKinds", "totalAndLimit", {.kind = Kind::TotalAndLimit}, "totalAndLimit"},
        StoredCase{"bothKindsOfOld", "totalAndPrimaryLimit", {.kind = Kind::TotalAndLimit}, "totalAndLimit"},
        StoredCase{"limit", "limit", {.kind = Kind::Limit}, "limit"},
        StoredCase{"limitOfOld", "primaryLimit", {.kind = Kind::Limit}, "limit"},
        StoredCase{"provider", "limit:claude", chosen(Kind::Limit, "claude"), "limit:claude"},
        StoredCase{"window", "limit:claude:weekly", chosen(Kind::Limit, "claude", Window::Weekly),
                   "limit:claude:weekly"},
        StoredCase{"fiveHour", "totalAndLimit:codex:fiveHour", chosen(Kind::TotalAndLimit, "codex", Window::FiveHour),
                   "totalAndLimit:codex:fiveHour"},
        StoredCase{"estimate", "limit:cursor:estimate", chosen(Kind::Limit, "cursor", Window::Estimate),
                   "limit:cursor:estimate"},
        StoredCase{"other", "limit:grok:other", chosen(Kind::Limit, "grok", Window::Other), "limit:grok:other"},
        StoredCase{"unknownWindow", "limit:claude:monthly", {}, "total"},
        StoredCase{"windowInOtherCase", "limit:claude:Weekly", {}, "total"},
        StoredCase{"unknownKind", "share:claude:weekly", {}, "total"},
        StoredCase{"totalWithAProvider", "total:claude", {}, "total"},
        StoredCase{"totalWithAWindow", "total:claude:weekly", {}, "total"},
        StoredCase{"oldKindWithAProvider", "primaryLimit:claude", {}, "total"},
        StoredCase{"unknownWord", "anything", {}, "total"},
        StoredCase{"fourPieces", "limit:claude:weekly:more", {}, "total"},
        StoredCase{"colonAtTheEnd", "limit:claude:", chosen(Kind::Limit, "claude"), "limit:claude"},
        StoredCase{"emptyProvider", "limit::claude", chosen(Kind::Limit, "claude"), "limit:claude"},
        StoredCase{"colonsInFront", "::limit:claude:weekly", chosen(Kind::Limit, "claude", Window::Weekly),
                   "limit:claude:weekly"},
        StoredCase{"kindAndColon", "limit:", {}, "total"}, StoredCase{"colonsAlone", ":::", {}, "total"},
        StoredCase{"kindInOtherCase", "LIMIT:claude", {}, "total"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(MenuBarDisplayFormat, theDefaultIsTheTotal) {
    EXPECT_EQ(Format::defaultFormat(), Format::total());
    EXPECT_EQ(Format::total().kind, Kind::Total);
    EXPECT_EQ(Format::total().providerID, std::nullopt);
    EXPECT_EQ(Format::total().window, std::nullopt);
}

TEST(MenuBarDisplayFormat, theShortNameTakesNoPartInComparisons) {
    Format one = chosen(Kind::Limit, "claude", Window::Weekly);
    Format other = one;
    other.providerShortName = "Claude";
    EXPECT_EQ(one, other);
    other.window = Window::FiveHour;
    EXPECT_NE(one, other);
    EXPECT_NE(one, chosen(Kind::Limit, "codex", Window::Weekly));
    EXPECT_NE(one, chosen(Kind::TotalAndLimit, "claude", Window::Weekly));
}

TEST(MenuBarDisplayFormat, onlyALimitWithoutAProviderRotates) {
    EXPECT_FALSE(Format::total().isRotating());
    EXPECT_TRUE(Format{.kind = Kind::Limit}.isRotating());
    EXPECT_TRUE(Format{.kind = Kind::TotalAndLimit}.isRotating());
    EXPECT_FALSE(chosen(Kind::Limit, "claude").isRotating());
}

struct TitleCase {
    const char* name;
    Format format;
    const char* title;
    const char* subtitle;
};
class MenuBarDisplayFormatTitles : public ::testing::TestWithParam<TitleCase> {};

TEST_P(MenuBarDisplayFormatTitles, areThoseOfTheChoice) {
    EXPECT_EQ(GetParam().format.settingsTitle(), GetParam().title);
    EXPECT_EQ(GetParam().format.settingsSubtitle(), GetParam().subtitle);
}
Format named(Kind kind, std::optional<Window> window) {
    return {.kind = kind, .providerID = "claude", .providerShortName = "Claude Code", .window = window};
}
INSTANTIATE_TEST_SUITE_P(
    ByChoice, MenuBarDisplayFormatTitles,
    ::testing::Values(
        TitleCase{"total", {}, "Total", "Quorvane badge + today total"},
        TitleCase{"totalWithAnEstimate", {.window = Window::Estimate}, "Total", "Quorvane badge + today total"},
        TitleCase{"bothRotating", {.kind = Kind::TotalAndLimit}, "Total + limit", "Today total + Limit %"},
        TitleCase{"limitRotating", {.kind = Kind::Limit}, "Limit", "Limit % only"},
        TitleCase{"bothFiveHour", named(Kind::TotalAndLimit, Window::FiveHour), "Total + Claude Code 5h",
                  "Today total + Limit %"},
        TitleCase{"bothWeekly", named(Kind::TotalAndLimit, Window::Weekly), "Total + Claude Code week",
                  "Today total + Limit %"},
        TitleCase{"bothEstimate", named(Kind::TotalAndLimit, Window::Estimate), "Total + Claude Code",
                  "Today total + tokens"},
        TitleCase{"bothOther", named(Kind::TotalAndLimit, Window::Other), "Total + Claude Code",
                  "Today total + Limit %"},
        TitleCase{"limitFiveHour", named(Kind::Limit, Window::FiveHour), "Claude Code 5h", "Limit % only"},
        TitleCase{"limitWeekly", named(Kind::Limit, Window::Weekly), "Claude Code week", "Limit % only"},
        TitleCase{"limitEstimate", named(Kind::Limit, Window::Estimate), "Claude Code", "Today tokens"},
        TitleCase{"limitOther", named(Kind::Limit, Window::Other), "Claude Code", "Limit % only"},
        TitleCase{"limitWithoutWindow", named(Kind::Limit, {}), "Claude Code", "Limit % only"},
        TitleCase{"idWithACapital", chosen(Kind::Limit, "claude", Window::Weekly), "Claude week", "Limit % only"},
        TitleCase{"bothIdWithACapital", chosen(Kind::TotalAndLimit, "codex"), "Total + Codex", "Today total + Limit %"},
        TitleCase{"emptyId", chosen(Kind::Limit, "", Window::Weekly), "Limit", "Limit % only"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(MenuBarDisplayFormat, displayNamesComeFromTheShortNameOrTheId) {
    EXPECT_EQ(Format{}.providerDisplayName(), std::nullopt);
    EXPECT_EQ(Format{}.windowedProviderDisplayName(), std::nullopt);
    EXPECT_EQ((Format{.window = Window::Weekly}.windowedProviderDisplayName()), std::nullopt);
    EXPECT_EQ(chosen(Kind::Limit, "").providerDisplayName(), std::nullopt);
    EXPECT_EQ(chosen(Kind::Limit, "muse_spark").providerDisplayName(), "Muse_spark");
    EXPECT_EQ(named(Kind::Limit, Window::FiveHour).providerDisplayName(), "Claude Code");
    EXPECT_EQ(named(Kind::Limit, Window::FiveHour).windowedProviderDisplayName(), "Claude Code 5h");
    EXPECT_EQ((Format{.providerShortName = "x"}.providerDisplayName()), "x");
}

std::vector<std::string> rawValues(const std::vector<Format>& formats) {
    std::vector<std::string> texts;
    for (const Format& format : formats)
        texts.push_back(format.rawValue());
    return texts;
}

const std::vector<MenuBarLimitProvider> twoProviders{
    {.id = "claude", .shortName = "Claude", .windows = {Window::FiveHour, Window::Weekly}},
    {.id = "cursor", .shortName = "Cursor", .windows = {Window::Estimate}}};

TEST(MenuBarDisplayFormat, withoutProvidersThereIsTheTotal) {
    EXPECT_THAT(rawValues(Format::selectable({})), ElementsAre("total"));
    const std::vector<MenuBarLimitProvider> without{{.id = "claude", .shortName = "Claude", .windows = {}}};
    EXPECT_THAT(rawValues(Format::selectable(without)), ElementsAre("total"));
}

TEST(MenuBarDisplayFormat, oneWindowDoesNotRotate) {
    const std::vector<MenuBarLimitProvider> one{{.id = "claude", .shortName = "Claude", .windows = {Window::FiveHour}}};
    EXPECT_THAT(rawValues(Format::selectable(one)),
                ElementsAre("total", "totalAndLimit:claude:fiveHour", "limit:claude:fiveHour"));
}

TEST(MenuBarDisplayFormat, twoWindowsRotate) {
    const std::vector<MenuBarLimitProvider> one{
        {.id = "claude", .shortName = "Claude", .windows = {Window::FiveHour, Window::Weekly}}};
    EXPECT_THAT(rawValues(Format::selectable(one)),
                ElementsAre("total", "totalAndLimit:claude:fiveHour", "totalAndLimit:claude:weekly", "totalAndLimit",
                            "limit:claude:fiveHour", "limit:claude:weekly", "limit"));
    const std::vector<MenuBarLimitProvider> two{{.id = "a", .shortName = "A", .windows = {Window::Other}},
                                                {.id = "b", .shortName = "B", .windows = {Window::Other}}};
    EXPECT_THAT(rawValues(Format::selectable(two)),
                ElementsAre("total", "totalAndLimit:a:other", "totalAndLimit:b:other", "totalAndLimit", "limit:a:other",
                            "limit:b:other", "limit"));
}

TEST(MenuBarDisplayFormat, choicesCarryTheShortName) {
    const std::vector<Format> formats = Format::selectable(twoProviders);
    EXPECT_EQ(formats[1].providerShortName, "Claude");
    EXPECT_EQ(formats[3].providerShortName, "Cursor");
    EXPECT_EQ(formats[4].providerShortName, std::nullopt);
}

TEST(MenuBarDisplayFormat, nextGoesOnceRoundAllChoices) {
    const std::vector<Format> formats = Format::selectable(twoProviders);
    ASSERT_EQ(formats.size(), 9U);
    Format format = Format::total();
    for (std::size_t step = 0; step < formats.size(); ++step) {
        EXPECT_EQ(format, formats[step]);
        format = format.next(twoProviders);
    }
    EXPECT_EQ(format, Format::total());
}

struct NextCase {
    const char* name;
    const char* from;
    const char* to;
};
class MenuBarDisplayFormatNext : public ::testing::TestWithParam<NextCase> {};

TEST_P(MenuBarDisplayFormatNext, isTheChoiceBehindIt) {
    EXPECT_EQ(Format::normalized(GetParam().from).next(twoProviders).rawValue(), GetParam().to);
}
INSTANTIATE_TEST_SUITE_P(ByChoice, MenuBarDisplayFormatNext,
                         ::testing::Values(NextCase{"total", "total", "totalAndLimit:claude:fiveHour"},
                                           NextCase{"withinAProvider", "limit:claude:fiveHour", "limit:claude:weekly"},
                                           NextCase{"toTheNextProvider", "limit:claude:weekly",
                                                    "limit:cursor:estimate"},
                                           NextCase{"toTheRotation", "totalAndLimit:cursor:estimate", "totalAndLimit"},
                                           NextCase{"fromTheRotation", "totalAndLimit", "limit:claude:fiveHour"},
                                           NextCase{"fromTheLast", "limit", "total"},
                                           NextCase{"ofOldWithoutAWindow", "limit:claude", "limit:claude:weekly"},
                                           NextCase{"ofOldBoth", "totalAndLimit:cursor", "totalAndLimit"},
                                           NextCase{"providerThatIsGone", "limit:grok", "total"},
                                           NextCase{"providerAndWindowThatAreGone", "limit:grok:weekly", "total"},
                                           NextCase{"windowThatIsGone", "limit:cursor:weekly", "total"}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(MenuBarDisplayFormat, nextOfAnythingWithoutProvidersIsTheTotal) {
    EXPECT_EQ(Format::total().next({}), Format::total());
    EXPECT_EQ(Format::normalized("limit").next({}), Format::total());
    EXPECT_EQ(Format::normalized("limit:claude:weekly").next({}), Format::total());
}

TEST(MenuBarDisplayFormat, nextOfTheRotationThatIsNotOfferedIsTheTotal) {
    const std::vector<MenuBarLimitProvider> one{{.id = "claude", .shortName = "Claude", .windows = {Window::FiveHour}}};
    EXPECT_EQ(Format::normalized("limit").next(one), Format::total());
}

TEST(MenuBarProviderLimit, everyWindowHasItsWords) {
    using Shown = MenuBarProviderLimit::Window;
    EXPECT_EQ(MenuBarProviderLimit{.window = Shown::FiveHour}.windowSuffix(), " (5hr)");
    EXPECT_EQ(MenuBarProviderLimit{.window = Shown::Weekly}.windowSuffix(), " (W)");
    EXPECT_EQ(MenuBarProviderLimit{.window = Shown::Other}.windowSuffix(), "");
    EXPECT_EQ(MenuBarProviderLimit{.window = Shown::FiveHour}.windowSpoken(), " in the 5-hour window");
    EXPECT_EQ(MenuBarProviderLimit{.window = Shown::Weekly}.windowSpoken(), " in the weekly window");
    EXPECT_EQ(MenuBarProviderLimit{.window = Shown::Other}.windowSpoken(), "");
    EXPECT_EQ(MenuBarProviderLimit::windowOf(300), Shown::FiveHour);
    EXPECT_EQ(MenuBarProviderLimit::windowOf(10080), Shown::Weekly);
    EXPECT_EQ(MenuBarProviderLimit::windowOf(301), Shown::Other);
    EXPECT_EQ(MenuBarProviderLimit::windowOf(std::nullopt), Shown::Other);
}

}  // namespace
}  // namespace quorvane
