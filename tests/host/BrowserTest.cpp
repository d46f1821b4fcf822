// The page in a real browser: what it draws, what it asks for, and how it is laid out.

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/Base64.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneHost/html/AnalyticsPage.h"
#include "tests/host/GeneratedYear.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/ScratchHome.h"

namespace quorvane::testing {
namespace {

using ::testing::Each;
using ::testing::Ge;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

/// A browser without a window and without a network, with a profile of its own.
class Browser {
public:
    /// Loads the file and ends; `options` say what it leaves behind.
    [[nodiscard]] ProgramRun load(const std::string& file, const std::vector<std::string>& options) const {
        std::vector<std::string> command{"timeout",
                                         "120",
                                         "chromium",
                                         "--headless",
                                         "--no-sandbox",
                                         "--disable-gpu",
                                         "--disable-dev-shm-usage",
                                         "--disable-quic",
                                         "--no-first-run",
                                         "--disable-background-networking",
                                         "--disable-component-update",
                                         "--disable-sync",
                                         "--hide-scrollbars",
                                         "--host-resolver-rules=MAP * ~NOTFOUND",
                                         "--force-device-scale-factor=1",
                                         "--enable-logging=stderr",
                                         "--user-data-dir=" + home_.path("profile")};
        command.insert(command.end(), options.begin(), options.end());
        command.push_back("file://" + file);
        const ProgramRun run = ProgramRun::of(command);
        EXPECT_EQ(run.status, 0) << run.error;
        return run;
    }

    [[nodiscard]] const ScratchHome& home() const noexcept { return home_; }

private:
    ScratchHome home_;
};

std::string source(const std::string& name) {
    return std::string{QUORVANE_SOURCE} + "/tests/host/" + name;
}

std::string outputOf(const std::vector<std::string>& command) {
    const ProgramRun run = ProgramRun::of(command);
    EXPECT_EQ(run.status, 0) << run.error;
    return run.output;
}

std::string schemeOption(const std::string& scheme) {
    return std::string{"--blink-settings=preferredColorScheme="} + (scheme == "dark" ? "0" : "1");
}

std::string generatedPage(std::int64_t days) {
    return host::analyticsPage(GeneratedYear::page(days));
}

class BrowserDraws : public ::testing::TestWithParam<const char*> {};

TEST_P(BrowserDraws, theWholePageWithoutAnyRequestOrError) {
    const Browser browser;
    const ScratchHome& home = browser.home();
    const std::string scheme = GetParam();
    const std::string picture = home.path("page.png");
    const std::string log = home.path("net.json");
    const ProgramRun run = browser.load(
        home.write("page.html", generatedPage(365)),
        {"--window-size=1280,3000", schemeOption(scheme), "--screenshot=" + picture, "--log-net-log=" + log});
    EXPECT_THAT(run.error, Not(HasSubstr("CONSOLE")));
    EXPECT_EQ(outputOf({"python3", source("check_picture.py"), picture, scheme}), "");
    EXPECT_EQ(outputOf({"python3", source("check_net_log.py"), log}), "");
}

INSTANTIATE_TEST_SUITE_P(InBothSchemes, BrowserDraws, ::testing::Values("light", "dark"),
                         [](const auto& scheme) { return std::string{scheme.param}; });

/// That nothing was asked for means something: of a page that does ask, the same checks tell.
TEST(Browser, aRequestAndAnErrorWouldBeSeen) {
    const Browser browser;
    const ScratchHome& home = browser.home();
    const std::string log = home.path("net.json");
    const std::string page = home.write("page.html",
                                        "<!DOCTYPE html><img src=\"http://asked.invalid/x.png\">"
                                        "<script>throw new Error('said')</script>");
    const ProgramRun run = browser.load(page, {"--screenshot=" + home.path("page.png"), "--log-net-log=" + log});
    EXPECT_THAT(run.error, HasSubstr("CONSOLE"));
    EXPECT_THAT(outputOf({"python3", source("check_net_log.py"), log}), HasSubstr("http://asked.invalid/x.png"));
    EXPECT_NE(outputOf({"python3", source("check_picture.py"), home.path("page.png"), "light"}), "");
}

/// What the browser says of a page at some width. `script` is put before the measuring.
struct Measured {
    Measured(const std::string& page, int width, const std::string& scheme, const std::string& script = "") {
        const Browser browser;
        const ScratchHome& home = browser.home();
        const std::string measuring = "<script>" + script + outputOf({"cat", source("measure_page.js")}) + "</script>";
        home.write("page.html", page + measuring);
        // A window is never as narrow as a hand, a frame is.
        const std::string frame =
            home.write("frame.html",
                       "<!DOCTYPE html><meta name=\"color-scheme\" content=\"light dark\"><iframe src=\"page.html\" "
                       "height=\"900\" width=\"" +
                           std::to_string(width) + "\" style=\"border:0\"></iframe>");
        const ProgramRun run = browser.load(
            frame, {"--window-size=1400,1000", schemeOption(scheme), "--screenshot=" + home.path("frame.png")});
        const std::string mark = "measured:";
        const std::size_t begin = run.error.find(mark);
        if (begin == std::string::npos) throw std::runtime_error{"nothing was measured: " + run.error};
        EXPECT_EQ(run.error.find("CONSOLE"), run.error.rfind("CONSOLE")) << run.error;
        const std::size_t from = begin + mark.size();
        const std::string report = run.error.substr(from, run.error.find(':', from) - from);
        result = parser.parse(base64Decoded(report).value());
    }

    [[nodiscard]] std::vector<std::string> texts(const char* name) const {
        std::vector<std::string> texts;
        result[name].forEachElement([&](JSONValue text) { texts.emplace_back(text.string().value()); });
        return texts;
    }
    [[nodiscard]] std::vector<std::int64_t> numbers(const char* name) const {
        std::vector<std::int64_t> numbers;
        result[name].forEachElement([&](JSONValue number) { numbers.push_back(JSONNumber::asInt(number)); });
        return numbers;
    }
    [[nodiscard]] std::int64_t number(const char* name) const { return JSONNumber::asInt(result[name]); }

    JSONParser parser;
    JSONValue result;
};

struct LayoutCase {
    const char* name;
    std::int64_t days;
    int width;
    const char* scheme;
};

class BrowserLayout : public ::testing::TestWithParam<LayoutCase> {};

TEST_P(BrowserLayout, isLegibleAndKeepsToTheWidth) {
    const LayoutCase& row = GetParam();
    const Measured page{generatedPage(row.days), row.width, row.scheme};
    EXPECT_EQ(page.number("width"), row.width);
    EXPECT_EQ(page.number("scrollWidth"), row.width);
    EXPECT_THAT(page.texts("cut"), IsEmpty());
    EXPECT_THAT(page.texts("overlapping"), IsEmpty());
    EXPECT_THAT(page.texts("spilling"), IsEmpty());
    EXPECT_GT(page.number("texts"), 100);
    EXPECT_THAT(page.texts("pale"), IsEmpty());
    EXPECT_EQ(page.result["hasDarkGround"].boolean(), row.scheme == std::string{"dark"});
    EXPECT_THAT(page.numbers("charts"), SizeIs(Ge(10U)));
    EXPECT_THAT(page.numbers("charts"), Each(Ge(8)));
    EXPECT_THAT(page.texts("measures"), ::testing::ElementsAre("c"));
    EXPECT_GT(page.number("heat"), 4);
    EXPECT_EQ(page.number("blanks"), 1);
    EXPECT_LT(page.number("tabStops"), 25);
}

INSTANTIATE_TEST_SUITE_P(Windows, BrowserLayout,
                         ::testing::Values(LayoutCase{"aYearOnADesk", 365, 1280, "light"},
                                           LayoutCase{"aYearInAHand", 365, 400, "dark"},
                                           LayoutCase{"aMonthInAHand", 30, 400, "light"},
                                           LayoutCase{"aQuarterOnATable", 90, 820, "dark"}),
                         [](const auto& row) { return std::string{row.param.name}; });

std::string without(std::string page, const std::string& begin, const std::string& end) {
    const std::size_t from = page.find(begin);
    page.erase(from, page.find(end, from) + end.size() - from);
    return page;
}

std::string replaced(std::string page, const std::string& old, const std::string& replacement) {
    return page.replace(page.find(old), old.size(), replacement);
}

/// The switches are the page's own; the script only remembers them.
TEST(Browser, theSwitchesWorkWithoutTheScript) {
    std::string page = without(generatedPage(30), "<script>", "</script>");
    page = replaced(page, "id=\"m-tokens\"", "id=\"m-tokens\" checked");
    page = replaced(page, "id=\"t-dark\"", "id=\"t-dark\" checked");
    const Measured tokens{page, 1280, "light"};
    EXPECT_THAT(tokens.texts("measures"), ::testing::ElementsAre("t"));
    EXPECT_EQ(tokens.result["hasDarkGround"].boolean(), true);
    EXPECT_THAT(tokens.texts("pale"), IsEmpty());
    EXPECT_EQ(tokens.number("blanks"), 1);
}

TEST(Browser, aChoiceOfLightBeatsADarkSystem) {
    const std::string page = replaced(generatedPage(30), "id=\"t-light\"", "id=\"t-light\" checked");
    EXPECT_EQ(Measured(page, 1280, "dark").result["hasDarkGround"].boolean(), false);
}

/// The arrow keys lead from day to day in the calendar and from bar to bar, and each chart is one stop of the tab key.
TEST(Browser, theKeysReadTheCharts) {
    const std::string script = R"(
        const press = key => document.activeElement.dispatchEvent(new KeyboardEvent('keydown', {key, bubbles: true}));
        const steps = () => {
            const read = [];
            document.querySelector('.cals td[tabindex="0"]').focus();
            for (const key of ['End', 'ArrowUp', 'ArrowLeft', 'ArrowRight', 'ArrowDown', 'Home']) {
                press(key);
                read.push(document.activeElement.querySelector('i').textContent.split(':')[0]);
            }
            const bars = document.querySelector('.zones');
            bars.focus();
            for (const key of ['Home', 'ArrowRight', 'End', 'ArrowLeft', 'PageDown']) {
                press(key);
                read.push(bars.getAttribute('aria-valuetext').split(':')[0]);
            }
            read.push(document.querySelectorAll('.cals [tabindex="0"]').length + ' ' + bars.getAttribute('role'));
            return read;
        };)";
    const Measured page{generatedPage(30), 1280, "light", script};
    EXPECT_THAT(page.texts("steps"), ::testing::ElementsAre("Fri, Jan 29", "Thu, Jan 28", "Thu, Jan 21", "Thu, Jan 28",
                                                            "Fri, Jan 29", "Thu, Dec 31", "Thu, Dec 31", "Fri, Jan 1",
                                                            "Fri, Jan 29", "Thu, Jan 28", "Thu, Jan 21", "1 slider"));
}

TEST(Browser, hostileNamesRunNothing) {
    std::vector<UsageEvent> events = GeneratedYear::events(7);
    for (UsageEvent& event : events) {
        event.model = "</title></script><script>document.title='run'</script><img src=x onerror=document.title='run'>";
        event.project = "\" onmouseover=\"document.title='run'\" \u202E</bdi></td></table>";
    }
    const std::string page = host::analyticsPage(GeneratedYear::of(events, 7, Calendar{"UTC"}));
    const Measured measured{page, 400, "light",
                            "const steps = () => [document.title, String(document.images.length)];"};
    EXPECT_THAT(measured.texts("steps"), ::testing::ElementsAre("Quorvane: Jan 23, 2027 to Jan 29, 2027", "0"));
    EXPECT_EQ(measured.number("scrollWidth"), 400);
}

}  // namespace
}  // namespace quorvane::testing
