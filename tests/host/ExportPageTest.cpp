// The command that writes the page.

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneHost/text/Amounts.h"
#include "tests/host/ClaudeHome.h"

namespace quorvane::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

TEST(ExportPage, isWrittenToTheFileAndNowhereElse) {
    const ScratchHome home;
    writeCalls(home);
    const ProgramRun run = runNow({"export", "--html", home.path("page.html")});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.output, IsEmpty());
    EXPECT_THAT(run.error, IsEmpty());
    EXPECT_THAT(home.read("page.html"), StartsWith("<!DOCTYPE html>\n<html lang=\"en-US\">"));
}

/// Two roads to one sum, which has to be the same wherever a person looks.
TEST(ExportPage, saysTheSummarysTotal) {
    const ScratchHome home;
    const std::string source = QUORVANE_SOURCE;
    ASSERT_EQ(ProgramRun::of({"python3", source + "/tools/sample-home", source + "/resources/sample-home", home.path(),
                              std::to_string(testNow)})
                  .status,
              0);
    ASSERT_EQ(runNow({"export", "--html", home.path("page.html")}).status, 0);
    JSONParser parser;
    const JSONValue report = parser.parse(runNow({"summary", "--json"}).output);
    const std::string page = home.read("page.html");
    const std::string total = host::money(JSONNumber::asDouble(report["window"]["cost_usd"]).value());
    const std::string saved = host::money(JSONNumber::asDouble(report["cache_savings_usd"]).value());
    EXPECT_THAT(page, HasSubstr("<p class=\"big\">" + total + "</p>"));
    EXPECT_THAT(page, HasSubstr("saved " + saved));
    EXPECT_THAT(page, HasSubstr("<dt>Calls</dt><dd>" + host::grouped(JSONNumber::asInt(report["window"]["events"]))));
    EXPECT_THAT(page, HasSubstr("No price for <bdi>claude-nimbus-preview</bdi>"));
    EXPECT_THAT(page, HasSubstr("GitHub Copilot ~ <small>estimate</small>"));
}

TEST(ExportPage, followsTheWindow) {
    const ScratchHome home;
    writeCalls(home);
    ASSERT_EQ(runNow({"export", "--html", home.path("page.html"), "--days", "7"}).status, 0);
    const std::string page = home.read("page.html");
    EXPECT_THAT(page, HasSubstr("Feb 23, 2026 to Mar 1, 2026"));
    EXPECT_THAT(page, HasSubstr("<p class=\"big\">$5.00</p>"));
}

TEST(ExportPage, followsTheLocale) {
    const ScratchHome home;
    writeCalls(home);
    ASSERT_EQ(runNow({"export", "--html", home.path("page.html")}, {.environment = {{"LC_ALL", "de_DE.UTF-8"}}}).status,
              0);
    const std::string page = home.read("page.html");
    EXPECT_THAT(page, HasSubstr("<html lang=\"en-DE\">"));
    EXPECT_THAT(page, HasSubstr("<caption lang=\"de-DE\">März 2026</caption>"));
}

TEST(ExportPage, aHomeWithoutAgentsGivesAPageThatSaysSo) {
    const ScratchHome home;
    ASSERT_EQ(runNow({"export", "--html", home.path("page.html")}).status, 0);
    EXPECT_THAT(home.read("page.html"), HasSubstr("No model calls in these days."));
}

TEST(ExportPage, replacesAFileWhole) {
    const ScratchHome home;
    writeCalls(home);
    const std::string file = home.write("out/page.html", std::string(1'000'000, 'x'));
    ASSERT_EQ(::chmod(file.c_str(), 0600), 0);
    ASSERT_EQ(runNow({"export", "--html", file}).status, 0);
    EXPECT_THAT(home.read("out/page.html"), ::testing::EndsWith("</html>\n"));
    struct stat status {};
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator{home.path("out")})
        ++files;
    EXPECT_EQ(files, 1U);
}

TEST(ExportPage, aFileThatCannotBeWrittenIsAFailureOfOneLine) {
    const ScratchHome home;
    writeCalls(home);
    home.makeFolder("page.html");
    const ProgramRun run = runNow({"export", "--html", home.path("page.html")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(lineCount(run.error), 1);
    EXPECT_THAT(run.error, HasSubstr("page.html"));
    const ProgramRun missing = runNow({"export", "--html", home.path("no/such/folder/page.html")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.error, HasSubstr("no/such/folder"));
}

struct UsageCase {
    const char* name;
    std::vector<std::string> options;
};

class ExportPageUsage : public ::testing::TestWithParam<UsageCase> {};

TEST_P(ExportPageUsage, isAnErrorOfOneLine) {
    const ScratchHome home;
    std::vector<std::string> arguments{"export"};
    arguments.insert(arguments.end(), GetParam().options.begin(), GetParam().options.end());
    const ProgramRun run = runNow(arguments, {.folder = home.path()});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(lineCount(run.error), 1);
    EXPECT_FALSE(home.exists("page.html"));
}

INSTANTIATE_TEST_SUITE_P(Bad, ExportPageUsage,
                         ::testing::Values(UsageCase{"neitherForm", {}},
                                           UsageCase{"bothForms", {"--html", "page.html", "--format", "csv"}},
                                           UsageCase{"outputOfAPage", {"--html", "page.html", "--output", "x.html"}},
                                           UsageCase{"noFile", {"--html"}}, UsageCase{"emptyFile", {"--html", ""}},
                                           UsageCase{"noDays", {"--html", "page.html", "--days", "0"}}),
                         [](const auto& row) { return std::string{row.param.name}; });

}  // namespace
}  // namespace quorvane::testing
