#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/JSONParser.h"
#include "tests/host/ClaudeHome.h"

namespace quorvane::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

void makeClaudeHome(const ScratchHome& home) {
    home.makeFolder(".claude/projects");
}

/// What `limits --json` says of Claude Code. The parser keeps what is returned alive.
JSONValue claudeLimits(JSONParser& parser, std::int64_t secondsLater = 0) {
    const ProgramRun run = runLater(secondsLater, {"limits", "--json"});
    EXPECT_EQ(run.status, 0) << run.error;
    EXPECT_THAT(run.error, IsEmpty());
    return parser.parse(run.output)["providers"]["claude"];
}

TEST(LimitsCommand, theWholeShapeForScripts) {
    const ScratchHome home;
    makeClaudeHome(home);
    writeLimits(home, 95, limitWindow("62.5", hour), limitWindow("41", 50 * hour),
                R"(,"seven_day_sonnet":)" + limitWindow("11", 50 * hour));
    EXPECT_EQ(runNow({"limits", "--json"}).output, R"({
  "providers": {
    "claude": {
      "awaiting_reset": false,
      "captured_at": "2026-03-01T09:28:25Z",
      "headroom": {
        "remaining_percent": 37.5,
        "resets_at": "2026-03-01T10:30:00Z",
        "state": "official",
        "window_minutes": 300
      },
      "model_windows": [
        {
          "key": "seven_day_sonnet",
          "label": "Sonnet",
          "resets_at": "2026-03-03T11:30:00Z",
          "used_percent": 11,
          "window_minutes": 10080
        }
      ],
      "primary": {
        "resets_at": "2026-03-01T10:30:00Z",
        "used_percent": 62.5,
        "window_minutes": 300
      },
      "secondary": {
        "resets_at": "2026-03-03T11:30:00Z",
        "used_percent": 41,
        "window_minutes": 10080
      }
    }
  }
}
)");
}

TEST(LimitsCommand, theTableForPeople) {
    const ScratchHome home;
    makeClaudeHome(home);
    writeLimits(home, 95, limitWindow("62", 85 * minute), limitWindow("41", 50 * hour),
                R"(,"seven_day_sonnet":)" + limitWindow("11", 50 * hour));
    EXPECT_EQ(runNow({"limits"}).output, R"(Provider          Window  Used     Resets  Headroom
Claude Code           5h   62%  in 1h 25m  38% left
                    week   41%   in 2d 2h
             Sonnet week   11%   in 2d 2h
)");
}

TEST(LimitsCommand, theTightestWindowSetsTheHeadroom) {
    const ScratchHome home;
    makeClaudeHome(home);
    writeLimits(home, minute, limitWindow("10", hour), limitWindow("90", 50 * hour));
    JSONParser parser;
    const JSONValue headroom = claudeLimits(parser)["headroom"];
    EXPECT_EQ(headroom["remaining_percent"].integer(), 10);
    EXPECT_EQ(headroom["window_minutes"].integer(), 10080);
    EXPECT_EQ(headroom["resets_at"].string(), "2026-03-03T11:30:00Z");
}

TEST(LimitsCommand, aWindowThatHasResetIsNoMore) {
    const ScratchHome home;
    makeClaudeHome(home);
    writeLimits(home, hour, limitWindow("80", -minute), limitWindow("41", 50 * hour));
    JSONParser parser;
    const JSONValue claude = claudeLimits(parser);
    EXPECT_FALSE(claude["primary"].isPresent());
    EXPECT_EQ(claude["secondary"]["used_percent"].integer(), 41);
    EXPECT_EQ(claude["headroom"]["remaining_percent"].integer(), 59);
    EXPECT_EQ(claude["awaiting_reset"].boolean(), false);
}

TEST(LimitsCommand, awaitsAReadingForSixHoursAfterTheReset) {
    const ScratchHome home;
    makeClaudeHome(home);
    writeLimits(home, hour, limitWindow("80", 0), limitWindow("41", 0));
    for (const auto& [secondsLater, awaits] :
         {std::pair{std::int64_t{0}, true}, {6 * hour, true}, {6 * hour + 1, false}}) {
        JSONParser parser;
        const JSONValue claude = claudeLimits(parser, secondsLater);
        EXPECT_EQ(claude["awaiting_reset"].boolean(), awaits) << secondsLater;
        EXPECT_EQ(claude["headroom"]["state"].string(), "unknown");
        EXPECT_FALSE(claude["primary"].isPresent());
        EXPECT_FALSE(claude["captured_at"].isPresent());
        EXPECT_THAT(runLater(secondsLater, {"limits"}).output,
                    awaits ? HasSubstr("just reset") : HasSubstr("No limits are known of Claude Code"));
    }
}

TEST(LimitsCommand, silenceAfterAHighReadingIsLikelyExhaustion) {
    const ScratchHome home;
    makeClaudeHome(home);
    writeLimits(home, 10 * minute, limitWindow("85", hour), limitWindow("41", 50 * hour));
    JSONParser parser;
    EXPECT_EQ(claudeLimits(parser)["headroom"]["state"].string(), "official");
    const JSONValue later = claudeLimits(parser, 1);
    EXPECT_EQ(later["headroom"]["state"].string(), "likely_exhausted");
    EXPECT_FALSE(later["headroom"]["remaining_percent"].isPresent());
    EXPECT_EQ(later["primary"]["used_percent"].integer(), 85) << "the reading itself stays";
    EXPECT_THAT(runLater(1, {"limits"}).output, HasSubstr("likely exhausted"));
}

TEST(LimitsCommand, aReadingOfHalfADayAgoIsNone) {
    const ScratchHome home;
    makeClaudeHome(home);
    writeLimits(home, 12 * hour, limitWindow("50", hour), limitWindow("41", 50 * hour));
    JSONParser parser;
    EXPECT_TRUE(claudeLimits(parser)["primary"].isPresent());
    EXPECT_FALSE(claudeLimits(parser, 1)["primary"].isPresent());
}

TEST(LimitsCommand, withoutAnyReadingTellsHowToGetOne) {
    const ScratchHome home;
    makeClaudeHome(home);
    EXPECT_EQ(runNow({"limits"}).output, "No limits are known of Claude Code; see quorvane capture.\n");
    EXPECT_EQ(runNow({"limits", "--json"}).output, R"({
  "providers": {
    "claude": {
      "awaiting_reset": false,
      "headroom": {
        "state": "unknown"
      }
    }
  }
}
)");
}

TEST(LimitsCommand, withoutAgentsThereAreNone) {
    const ScratchHome home;
    EXPECT_EQ(runNow({"limits"}).output, "No coding agent has left data on this machine yet.\n");
    EXPECT_EQ(runNow({"limits", "--json"}).output, "{\n  \"providers\": {}\n}\n");
    EXPECT_FALSE(home.exists("Library")) << "asking leaves nothing behind";
}

TEST(LimitsCommand, namesFromCapturesCannotSteerTheTerminal) {
    const ScratchHome home;
    makeClaudeHome(home);
    writeLimits(home, minute, limitWindow("10", hour), limitWindow("41", 50 * hour),
                R"(,"seven_day_\u001b[2Jclear":)" + limitWindow("11", 50 * hour));
    const ProgramRun run = runNow({"limits"}, {.environment = {{"TERM", "xterm"}}, .terminalColumns = 100});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.output, AllOf(HasSubstr("11%"), HasSubstr("clear"), Not(HasSubstr("\x1b[2J"))));
}

TEST(LimitsCommand, optionsItDoesNotHaveAreUsageErrors) {
    const ScratchHome home;
    const ProgramRun run = runHost({"limits", "--days", "3"});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.output, IsEmpty());
    EXPECT_EQ(lineCount(run.error), 1);
}

/// The line of a summary that tells the provider's limits; empty if there is none.
std::string limitsLine(const std::string& summary) {
    const std::size_t begin = summary.find("\n  Claude  ");
    if (begin == std::string::npos) return {};
    return summary.substr(begin + 1, summary.find('\n', begin + 1) - begin - 1);
}

TEST(SummaryWithLimits, showsThem) {
    const ScratchHome home;
    writeCalls(home);
    EXPECT_EQ(limitsLine(runNow({"summary"}).output), "");
    writeLimits(home, minute, limitWindow("62.4", 85 * minute), limitWindow("41", 50 * hour));
    EXPECT_EQ(limitsLine(runNow({"summary"}).output),
              "  Claude  5h 62% used, resets in 1h 25m · week 41% used, resets in 2d 2h");
}

struct RemarkCase {
    const char* name;
    std::int64_t age;
    std::string fiveHour;
    std::string remark;
};

class SummaryWithLimitsRemark : public ::testing::TestWithParam<RemarkCase> {};

/// In this home a model's share of the cost is worth a remark too; only the one that matters most is told.
TEST_P(SummaryWithLimitsRemark, isOneAlone) {
    const ScratchHome home;
    std::string calls = claudeCall("a", "claude-opus-4-8", "2026-03-01T08:00:00.000Z", 1000000, 0);
    for (const char* message : {"b", "c", "d"})
        calls += claudeCall(message, "claude-sonnet-5", "2026-03-01T08:00:00.000Z", 100, 100);
    home.write(claudeLog, calls);
    if (!GetParam().fiveHour.empty()) {
        writeLimits(home, GetParam().age, GetParam().fiveHour, limitWindow("41", 50 * hour));
    }
    JSONParser parser;
    const ProgramRun asJSON = runNow({"summary", "--json"});
    EXPECT_EQ(parser.parse(asJSON.output)["remark"].string(), GetParam().remark);

    const std::string text = runNow({"summary"}).output;
    EXPECT_THAT(text, HasSubstr("\n  " + GetParam().remark + "\n"));
    for (const char* other : {" cost of the week in ", " of the limit used in ", "it is likely exhausted"}) {
        if (!GetParam().remark.ends_with(other) && GetParam().remark.find(other) == std::string::npos) {
            EXPECT_THAT(text, Not(HasSubstr(other)));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    ByMatter, SummaryWithLimitsRemark,
    ::testing::Values(RemarkCase{"aModelsShare", 0, "",
                                 "claude-opus-4-8 made 100% of Claude Code's cost of the week in 25% of its calls"},
                      RemarkCase{"aPaceThatWillNotLast", minute, limitWindow("75", 150 * minute),
                                 "Claude Code: 75% of the limit used in 50% of its time, faster than it lasts"},
                      RemarkCase{"aPaceThatFits", minute, limitWindow("50", 150 * minute),
                                 "Claude Code: 50% of the limit used in 50% of its time, on pace"},
                      RemarkCase{"aPaceThatLeavesMuch", minute, limitWindow("10", 150 * minute),
                                 "Claude Code: 10% of the limit used in 50% of its time, well under pace"},
                      RemarkCase{
                          "aLimitThatIsLikelyHit", 11 * minute, limitWindow("90", 150 * minute),
                          "Claude Code: nothing heard since 90% of the limit were used; it is likely exhausted"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(SummaryWithLimits, saysNothingWhereThereIsNothingToRemark) {
    const ScratchHome home;
    home.write(claudeLog, claudeCall("a", "claude-opus-4-8", "2026-03-01T08:00:00.000Z", 1000000, 0));
    JSONParser parser;
    const ProgramRun run = runNow({"summary", "--json"});
    EXPECT_FALSE(parser.parse(run.output)["remark"].isPresent());
}

}  // namespace
}  // namespace quorvane::testing
