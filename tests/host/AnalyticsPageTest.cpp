#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneHost/html/AnalyticsPage.h"
#include "tests/host/GeneratedYear.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/ScratchHome.h"

namespace quorvane::testing {
namespace {

using host::analyticsPage;
using host::AnalyticsPageData;
using ::testing::HasSubstr;
using ::testing::Not;

/// The faults that the checker finds in a page; empty if there are none.
std::string faultsOf(const std::string& page, const std::vector<std::string>& options = {}) {
    const ScratchHome home;
    std::vector<std::string> command{"python3", std::string{QUORVANE_SOURCE} + "/tests/host/check_page.py",
                                     home.write("page.html", page)};
    command.insert(command.end(), options.begin(), options.end());
    const ProgramRun run = ProgramRun::of(command);
    return run.status == 0 ? run.output : run.error;
}

UsageEvent callOf(ProviderID provider, const std::string& model, const std::string& project, double ago = 0) {
    static int number = 0;
    return UsageEvent{.messageId = "m" + std::to_string(++number),
                      .requestId = "r",
                      .provider = provider,
                      .model = model,
                      .timestamp = Date{static_cast<double>(GeneratedYear::end) - ago},
                      .usage = {.input = 1000, .output = 500, .cacheRead = 20000},
                      .project = project};
}

AnalyticsPageData pageOf(const std::vector<UsageEvent>& events, std::int64_t days = 30) {
    return GeneratedYear::of(events, days, Calendar{"UTC"});
}

struct WindowCase {
    const char* name;
    std::int64_t days;
    const char* zone;
    const char* locale;
};

class AnalyticsPageOf : public ::testing::TestWithParam<WindowCase> {};

TEST_P(AnalyticsPageOf, isWellFormedAndAddsUp) {
    const WindowCase& row = GetParam();
    const std::string page = analyticsPage(GeneratedYear::page(row.days, row.zone, row.locale));
    const bool isEnglish = std::string{row.locale}.starts_with("en");
    EXPECT_EQ(faultsOf(page, isEnglish ? std::vector<std::string>{"--sums"} : std::vector<std::string>{}), "");
}

INSTANTIATE_TEST_SUITE_P(Windows, AnalyticsPageOf,
                         ::testing::Values(WindowCase{"aDay", 1, "UTC", "en_US"},
                                           WindowCase{"aWeek", 7, "Asia/Tokyo", "en_US"},
                                           WindowCase{"aMonth", 30, "America/New_York", "en_US"},
                                           WindowCase{"aQuarter", 90, "Europe/Berlin", "en_US"},
                                           WindowCase{"aYear", 365, "Europe/Berlin", "en_US"},
                                           WindowCase{"fourYears", 1500, "UTC", "en_US"},
                                           WindowCase{"aYearInGerman", 365, "Europe/Berlin", "de_DE"},
                                           WindowCase{"aMonthInArabic", 30, "Africa/Cairo", "ar_EG"},
                                           WindowCase{"aMonthInJapanese", 30, "Asia/Tokyo", "ja_JP"}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(AnalyticsPage, aYearOfManyModelsStaysSmall) {
    constexpr std::size_t most = 400'000;
    const AnalyticsPageData data = GeneratedYear::page(365);
    std::set<std::string> models;
    for (const ModelDaySummary& row : data.rows)
        models.insert(row.model);
    ASSERT_GT(models.size(), 36U);
    EXPECT_LT(analyticsPage(data).size(), most);
    EXPECT_LT(analyticsPage(GeneratedYear::page(365, "Europe/Berlin", "de_DE")).size(), most);
    EXPECT_LT(analyticsPage(GeneratedYear::page(365, "Europe/Berlin", "ar_EG")).size(), most);
}

TEST(AnalyticsPage, theSameDataGiveTheSamePage) {
    EXPECT_EQ(analyticsPage(GeneratedYear::page(90)), analyticsPage(GeneratedYear::page(90)));
}

TEST(AnalyticsPage, anEmptyWindowSaysSo) {
    const std::string page = analyticsPage(pageOf({}));
    EXPECT_THAT(page, HasSubstr("No model calls in these days."));
    EXPECT_THAT(page, Not(HasSubstr("<svg viewBox=\"0 0 300")));
    EXPECT_EQ(faultsOf(page), "");
}

TEST(AnalyticsPage, estimatesAreListedAndInNoSum) {
    const std::string page = analyticsPage(pageOf(
        {callOf(ProviderID::Claude, "claude-opus-4-8", "a"), callOf(ProviderID::Cursor, "claude-opus-4-8", "b")}));
    const std::string alone = analyticsPage(pageOf({callOf(ProviderID::Claude, "claude-opus-4-8", "a")}));
    EXPECT_THAT(page, HasSubstr("Cursor ~ <small>estimate</small>"));
    EXPECT_THAT(page, HasSubstr("~ an estimate, not in the totals"));
    EXPECT_THAT(alone, Not(HasSubstr("estimate")));
    const auto total = [](const std::string& text) { return text.substr(text.find("<tfoot>"), 200); };
    EXPECT_EQ(total(page).substr(0, total(page).find("</tr>")), total(alone).substr(0, total(alone).find("</tr>")));
}

TEST(AnalyticsPage, aWindowOfEstimatesAloneListsThem) {
    const std::string page = analyticsPage(pageOf({callOf(ProviderID::Cursor, "claude-opus-4-8", "b")}));
    EXPECT_THAT(page, HasSubstr("No model calls in these days."));
    EXPECT_THAT(page, HasSubstr("Cursor ~ <small>estimate</small>"));
    EXPECT_EQ(faultsOf(page), "");
}

TEST(AnalyticsPage, aModelWithoutAPriceIsNamed) {
    const std::string page = analyticsPage(pageOf({callOf(ProviderID::Claude, "claude-nimbus", "a")}));
    EXPECT_THAT(page, HasSubstr("No price for <bdi>claude-nimbus</bdi>: 21.5K tokens in 1 call are not in the costs."));
    EXPECT_THAT(page, HasSubstr("<td>no price</td>"));
    EXPECT_EQ(faultsOf(page), "");
}

TEST(AnalyticsPage, notionalMoneyIsCalledSo) {
    const std::string page = analyticsPage(pageOf({callOf(ProviderID::Codex, "gpt-5.6-sol", "a")}));
    EXPECT_THAT(page, HasSubstr("of it is notional: list prices of what a subscription covers."));
    EXPECT_THAT(page, HasSubstr("Codex: notional"));
    const std::string real = analyticsPage(pageOf({callOf(ProviderID::Claude, "claude-opus-4-8", "a")}));
    EXPECT_THAT(real, Not(HasSubstr("notional")));
}

TEST(AnalyticsPage, hostileNamesAreTextAlone) {
    const std::vector<std::string> names{"</script><script>alert(1)</script>",
                                         "\"><img src=http://203.0.113.1/x onerror=alert(1)>",
                                         "' onmouseover='alert(1)",
                                         "\u202Egnp.exe",
                                         "نموذج <b>",
                                         std::string{"nul\0and\x1b[31m", 12},
                                         "bytes \xff\xfe\xc3",
                                         "<!-- -->",
                                         "]]>",
                                         "{}{0}",
                                         std::string(5000, 'x'),
                                         ""};
    std::vector<UsageEvent> events;
    for (const std::string& name : names)
        events.push_back(callOf(ProviderID::Claude, name, name));
    const std::string page = analyticsPage(pageOf(events));
    EXPECT_EQ(faultsOf(page), "");
    EXPECT_THAT(page, Not(HasSubstr("<script>alert")));
    EXPECT_THAT(page, Not(HasSubstr("<img")));
    EXPECT_THAT(page, Not(HasSubstr("\u202E")));
    EXPECT_THAT(page, Not(HasSubstr("\xff")));
    EXPECT_THAT(page, Not(HasSubstr(std::string(100, 'x'))));
    EXPECT_THAT(page, HasSubstr("(no name)"));
    EXPECT_THAT(page, HasSubstr("(unattributed)"));
    constexpr char nul = '\0';
    EXPECT_EQ(page.find(nul), std::string::npos);
}

TEST(AnalyticsPage, modelsOfOneShortNameAreToldApart) {
    const std::string page = analyticsPage(pageOf({callOf(ProviderID::Claude, "claude-opus-4-8", "a"),
                                                   callOf(ProviderID::Claude, "claude-opus-4-8-20260101", "a"),
                                                   callOf(ProviderID::Claude, "claude-sonnet-5", "a")}));
    const std::string top = page.substr(page.find("class=\"figures tops\""));
    EXPECT_THAT(top.substr(0, top.find("</table>")), HasSubstr("<bdi>claude-opus-4-8</bdi>"));
    EXPECT_THAT(top.substr(0, top.find("</table>")), HasSubstr("<bdi>claude-opus-4-8-20260101</bdi>"));
    EXPECT_THAT(top.substr(0, top.find("</table>")), HasSubstr("<bdi>sonnet-5</bdi>"));
}

TEST(AnalyticsPage, emptyYearsAheadOfTheDataAreNotDrawn) {
    constexpr double day = 86400;
    const std::string page =
        analyticsPage(pageOf({callOf(ProviderID::Claude, "claude-opus-4-8", "a", 500 * day)}, 20000));
    EXPECT_THAT(page, HasSubstr("Nothing was recorded before Sep 16, 2025, where the charts begin."));
    EXPECT_LT(page.size(), 200'000U);
    EXPECT_EQ(faultsOf(page), "");
}

TEST(AnalyticsPage, rowsOutsideTheWindowCountNowhere) {
    constexpr double day = 86400;
    AnalyticsPageData data = pageOf({callOf(ProviderID::Claude, "claude-opus-4-8", "a")}, 7);
    const std::string page = analyticsPage(data);
    const AnalyticsPageData older = pageOf({callOf(ProviderID::Claude, "claude-opus-4-8", "a", 7 * day)}, 7);
    data.rows.insert(data.rows.begin(), older.rows.begin(), older.rows.end());
    EXPECT_EQ(analyticsPage(data), page);
}

TEST(AnalyticsPage, aDayWithAClockChangeHasItsPlace) {
    // The hour from 02:00 was left out in Berlin on 2026-03-29, and came twice on 2026-10-25.
    const std::string page = analyticsPage(GeneratedYear::page(365, "Europe/Berlin"));
    EXPECT_THAT(page, HasSubstr("<th scope=\"row\">Mar 29, 2026</th>"));
    EXPECT_THAT(page, HasSubstr("<th scope=\"row\">Oct 25, 2026</th>"));
}

TEST(AnalyticsPage, manyProjectsAreFoldedIntoOneRow) {
    std::vector<UsageEvent> events;
    constexpr int count = 1000;
    for (int at = 0; at < count; ++at)
        events.push_back(callOf(ProviderID::Claude, "claude-opus-4-8", "project " + std::to_string(at)));
    const std::string page = analyticsPage(pageOf(events));
    EXPECT_THAT(page, HasSubstr("988 more projects"));
    EXPECT_THAT(page, HasSubstr("900 more projects"));
    EXPECT_LT(page.size(), 200'000U);
    EXPECT_EQ(faultsOf(page, {"--sums"}), "");
}

/// The checker itself: a page with a fault of each kind is not let through.
TEST(AnalyticsPage, theCheckerFindsFaults) {
    const std::string page = analyticsPage(GeneratedYear::page(30));
    const auto with = [&](const std::string& old, const std::string& replacement) {
        std::string changed = page;
        changed.replace(changed.find(old), old.size(), replacement);
        return faultsOf(changed, {"--sums"});
    };
    EXPECT_THAT(with("</section>", ""), HasSubstr("closes"));
    EXPECT_THAT(with("id=\"calendar\"", "id=\"daily\""), HasSubstr("twice"));
    EXPECT_THAT(with("href=\"data:,\"", "href=\"https://example.org/\""), HasSubstr("leads to"));
    EXPECT_THAT(with("id=\"daily-title\"", "id=\"other\""), HasSubstr("names daily-title"));
    EXPECT_THAT(with("<tfoot>\n<tr><th scope=\"row\">Total</th><td class=\"wide\">$",
                     "<tfoot>\n<tr><th scope=\"row\">Total</th><td class=\"wide\">$9"),
                HasSubstr("adds up to"));
}

}  // namespace
}  // namespace quorvane::testing
