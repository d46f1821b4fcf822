#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "tests/host/HostRun.h"

namespace quorvane::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* log = ".claude/projects/-home-ana-shop/s.jsonl";

void writeThreeDays(const ScratchHome& home) {
    home.write(log, claudeCall("a", "claude-opus-4-8", "2026-03-01T08:00:00.000Z", 1000000, 0) +
                        claudeCall("b", "claude-opus-4-8", "2026-02-27T08:00:00.000Z", 0, 100000) +
                        claudeCall("c", "claude-sonnet-5", "2026-02-20T08:00:00.000Z", 500000, 0, 1000000) +
                        claudeCall("d", "who-knows-1", "2026-03-01T07:00:00.000Z", 1200, 34));
}

std::vector<std::string> at(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"--now", "2026-03-01T09:30:00Z"});
    return arguments;
}

TEST(Summary, addsUpTodayAndTheWindow) {
    const ScratchHome home;
    writeThreeDays(home);
    const ProgramRun run = runHost(at({"summary", "--json"}));
    ASSERT_EQ(run.status, 0);
    JSONParser parser;
    const JSONValue report = parser.parse(run.output);
    EXPECT_EQ(JSONNumber::asInt(report["days"]), 30);
    EXPECT_EQ(report["first_day"].string(), "2026-01-31");
    EXPECT_EQ(report["last_day"].string(), "2026-03-01");
    EXPECT_DOUBLE_EQ(JSONNumber::asDouble(report["today"]["cost_usd"]).value(), 5.0);
    EXPECT_EQ(JSONNumber::asInt(report["today"]["events"]), 2);
    EXPECT_DOUBLE_EQ(JSONNumber::asDouble(report["window"]["cost_usd"]).value(), 5.0 + 2.5 + 1.0 + 0.2);
    EXPECT_EQ(JSONNumber::asInt(report["window"]["events"]), 4);
    EXPECT_DOUBLE_EQ(JSONNumber::asDouble(report["cache_savings_usd"]).value(), 1.8);
    std::vector<std::string> models;
    report["models"].forEachElement([&](JSONValue model) { models.emplace_back(model["model"].string().value()); });
    EXPECT_THAT(models, ::testing::ElementsAre("claude-opus-4-8", "claude-sonnet-5", "who-knows-1"));
    std::vector<double> series;
    report["daily_cost_usd"].forEachElement(
        [&](JSONValue day) { series.push_back(JSONNumber::asDouble(day).value()); });
    ASSERT_EQ(series.size(), 30U);
    EXPECT_DOUBLE_EQ(series[29], 5.0);
    EXPECT_DOUBLE_EQ(series[27], 2.5);
    EXPECT_DOUBLE_EQ(series[20], 1.2);
}

TEST(Summary, withoutACommandIsTheSummary) {
    const ScratchHome home;
    writeThreeDays(home);
    EXPECT_EQ(runHost(at({})).output, runHost(at({"summary"})).output);
    EXPECT_EQ(runHost(at({"--days", "3"})).output, runHost(at({"summary", "--days", "3"})).output);
}

TEST(Summary, theScreenForPeople) {
    const ScratchHome home;
    writeThreeDays(home);
    EXPECT_EQ(runHost(at({})).output, R"(
  Quorvane                                            2026-01-31 to 2026-03-01

  Today    $5.00     1.0M tokens        2 calls
  30 days  $8.70     2.6M tokens        4 calls

  ····················▂······▄·█  $0.29 a day, most $5.00 today

  Provider     Today  30 days  Share  Calls  Tokens
  Claude Code  $5.00    $8.70   100%      4    2.6M

  Model            30 days  Share  Calls   Input  Output  Cached
  claude-opus-4-8    $7.50    86%      2    1.0M  100.0K       0
  claude-sonnet-5    $1.20    14%      1  500.0K       0    1.0M

  No price for who-knows-1: 1.2K tokens in 1 call are not in the totals
  Reading from the cache saved $1.80

)");
}

TEST(Summary, theWindowIsOfTheLocalDay) {
    const ScratchHome home{"Pacific/Auckland"};  // 2026-03-01T09:30Z is 22:30 of the first of March there
    home.write(log, claudeCall("a", "claude-opus-4-8", "2026-02-28T10:59:59.900Z", 1000000, 0) +
                        claudeCall("b", "claude-opus-4-8", "2026-02-28T11:00:00.000Z", 2000000, 0));
    JSONParser parser;
    const ProgramRun run = runHost(at({"--json", "--days", "1"}));
    const JSONValue report = parser.parse(run.output);
    EXPECT_EQ(JSONNumber::asInt(report["today"]["input_tokens"]), 2000000);
    EXPECT_EQ(JSONNumber::asInt(report["window"]["input_tokens"]), 2000000);
    EXPECT_EQ(report["first_day"].string(), "2026-03-01");
}

TEST(Summary, callsLaterThanNowAreInNoWindow) {
    const ScratchHome home;
    home.write(log, claudeCall("a", "claude-opus-4-8", "2026-03-01T09:30:01Z", 5, 5));
    EXPECT_THAT(runHost(at({})).output, HasSubstr("No model calls in these days."));
}

TEST(Summary, moneyFollowsTheLocaleOfTheEnvironment) {
    const ScratchHome home;
    writeThreeDays(home);
    const ProgramRun run = runHost(at({}), {.environment = {{"LC_ALL", "de_DE.UTF-8"}}});
    EXPECT_THAT(run.output, HasSubstr("8,70\u00a0$"));
}

TEST(Summary, namesFromLogsCannotSteerTheTerminal) {
    const ScratchHome home;
    home.write(log, claudeCall("a", R"(evil\u001b[2J\u0007model)", "2026-03-01T08:00:00Z", 5, 5));
    const ProgramRun run = runHost(at({}), {.terminalColumns = 80});
    EXPECT_THAT(run.output, AllOf(Not(HasSubstr("\x1b[2J")), Not(HasSubstr("\x07")), HasSubstr("model")));
}

TEST(Summary, usesColourOnATerminalAndNoneWhereItIsUnwanted) {
    const ScratchHome home;
    writeThreeDays(home);
    const auto onTerminal = [&](const char* variable, const char* value) {
        ProgramRun::Options options{.environment = {{"TERM", "xterm"}}, .terminalColumns = 100};
        options.environment[variable] = value;
        return runHost(at({}), options).output;
    };
    EXPECT_THAT(onTerminal("LC_ALL", "C"), HasSubstr("\x1b[1m"));
    EXPECT_THAT(onTerminal("NO_COLOR", "1"), Not(HasSubstr("\x1b[1m")));
    EXPECT_THAT(onTerminal("TERM", "dumb"), Not(HasSubstr("\x1b[1m")));
    EXPECT_THAT(runHost(at({})).output, Not(HasSubstr("\x1b")));
}

}  // namespace
}  // namespace quorvane::testing
