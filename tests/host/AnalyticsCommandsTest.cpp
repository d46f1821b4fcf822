#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneHost/text/Cells.h"
#include "QuorvaneHost/text/HeatCells.h"
#include "tests/host/HostRun.h"

namespace quorvane::testing {
namespace {

using host::HeatCells;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

std::string call(const std::string& id, const std::string& model, const std::string& time, const std::string& folder,
                 int input, int output) {
    std::string line = claudeCall(id, model, time, input, output);
    const std::string plain = "/home/ana/shop";
    return line.replace(line.find(plain), plain.size(), folder);
}

/// Two projects and three models on three days of one week; 2026-03-01 is a Sunday.
void writeHistory(const ScratchHome& home) {
    home.write(".claude/projects/-home-ana/s.jsonl",
               call("a", "claude-opus-4-8", "2026-03-01T08:00:00.000Z", "/home/ana/shop", 1000000, 0) +
                   call("b", "claude-opus-4-8", "2026-02-27T08:30:00.000Z", "/home/ana/shop", 0, 100000) +
                   call("c", "claude-sonnet-5-20260101", "2026-02-27T23:00:00.000Z", "/home/ana/notes", 500000, 0) +
                   call("d", "who-knows|1", "2026-02-26T07:00:00.000Z", "/home/ana/notes", 1200, 34));
}

ProgramRun runAt(std::vector<std::string> arguments, ProgramRun::Options options = {}) {
    arguments.insert(arguments.begin(), {"--now", "2026-03-01T09:30:00Z"});
    return runHost(std::move(arguments), std::move(options));
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        lines.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

/// Without escape sequences.
std::string uncoloured(const std::string& line) {
    std::string text;
    for (std::size_t at = 0; at < line.size(); ++at) {
        if (line[at] == '\x1b') {
            at = line.find('m', at);
        } else if (line[at] != '\r') {
            text += line[at];
        }
    }
    return text;
}

class AnalyticsCommands : public ::testing::Test {
protected:
    AnalyticsCommands() { writeHistory(home); }
    ScratchHome home;
};

TEST_F(AnalyticsCommands, exportedCSVIsReadBackByAnotherReader) {
    const ProgramRun run = runAt({"export", "--format", "csv"});
    ASSERT_EQ(run.status, 0) << run.error;
    const ProgramRun rows = ProgramRun::of({"python3", "-c",
                                            "import csv,sys,io\n"
                                            "for r in csv.reader(io.StringIO(sys.stdin.buffer.read().decode(), "
                                            "newline='')): print('/'.join(r))"},
                                           {.input = run.output});
    EXPECT_EQ(rows.output,
              "date/provider/model/events/input_tokens/output_tokens/cache_5m_tokens/cache_1h_tokens/"
              "cache_read_tokens/cost_usd\n"
              "2026-02-26/claude/who-knows|1/1/1200/34/0/0/0/0.0000\n"
              "2026-02-27/claude/claude-opus-4-8/1/0/100000/0/0/0/2.5000\n"
              "2026-02-27/claude/claude-sonnet-5-20260101/1/500000/0/0/0/0/1.0000\n"
              "2026-03-01/claude/claude-opus-4-8/1/1000000/0/0/0/0/5.0000\n");
}

TEST_F(AnalyticsCommands, exportedJSONHasTheSameRows) {
    const ProgramRun run = runAt({"export", "--format", "json", "--days", "3"});
    ASSERT_EQ(run.status, 0) << run.error;
    const ProgramRun rows =
        ProgramRun::of({"jq", "-c", "[.[] | [.date, .model, .events, .cost_usd]]"}, {.input = run.output});
    EXPECT_EQ(rows.output,
              "[[\"2026-02-27\",\"claude-opus-4-8\",1,2.5],[\"2026-02-27\",\"claude-sonnet-5-20260101\",1,1],"
              "[\"2026-03-01\",\"claude-opus-4-8\",1,5]]\n");
}

TEST_F(AnalyticsCommands, exportOfNothingIsStillAForm) {
    const auto before = [](const char* format) {
        return runHost({"--now", "2020-01-01T00:00:00Z", "export", "--format", format}).output;
    };
    EXPECT_EQ(before("json"), "[]\n");
    EXPECT_EQ(linesOf(before("markdown")).size(), 2U);
    EXPECT_THAT(before("csv"), AllOf(StartsWith("date,provider,"), Not(HasSubstr("claude"))));
}

TEST_F(AnalyticsCommands, exportWritesExactlyTheTextToAFile) {
    const std::string file = home.path("rows.csv");
    home.write("rows.csv", "old");
    const ProgramRun run = runAt({"export", "--format", "csv", "--output", file});
    ASSERT_EQ(run.status, 0) << run.error;
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(home.read("rows.csv") + "\n", runAt({"export", "--format", "csv"}).output);
}

TEST_F(AnalyticsCommands, exportThatCannotWriteNamesTheFileAndTheCause) {
    const std::string file = home.path("no/such/folder/rows.csv");
    const ProgramRun run = runAt({"export", "--format", "csv", "--output", file});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(linesOf(run.error), ElementsAre(AllOf(HasSubstr(file), HasSubstr("No such file"))));
}

TEST_F(AnalyticsCommands, projectsAreListedWithTheMostExpensiveFirst) {
    const ProgramRun run = runAt({"projects", "--json"});
    ASSERT_EQ(run.status, 0) << run.error;
    const ProgramRun rows =
        ProgramRun::of({"jq", "-c", "[.days, [.projects[] | [.project, .events, .cost_usd]]]"}, {.input = run.output});
    EXPECT_EQ(rows.output, "[30,[[\"shop\",2,7.5],[\"notes\",2,1]]]\n");
    const ProgramRun keys = ProgramRun::of({"jq", "-c", ".projects[0] | keys"}, {.input = run.output});
    EXPECT_EQ(keys.output,
              "[\"cache_1h_tokens\",\"cache_5m_tokens\",\"cache_read_tokens\",\"cost_usd\",\"events\","
              "\"input_tokens\",\"output_tokens\",\"project\"]\n");
    EXPECT_THAT(runAt({"projects"}).output,
                AllOf(HasSubstr("shop"), HasSubstr("$7.50"), HasSubstr("88%"), HasSubstr("$8.50 in 4 calls")));
}

TEST_F(AnalyticsCommands, modelsStandInDisplayOrderAndUnpricedOnesSaySo) {
    const ProgramRun run = runAt({"models", "--json"});
    ASSERT_EQ(run.status, 0) << run.error;
    const ProgramRun rows =
        ProgramRun::of({"jq", "-c", "[.models[] | [.model, .short_name, .effort, .cost_usd]]"}, {.input = run.output});
    EXPECT_EQ(rows.output,
              "[[\"claude-sonnet-5-20260101\",\"sonnet-5\",\"high\",1],[\"claude-opus-4-8\",\"opus-4-8\",\"high\","
              "7.5],[\"who-knows|1\",\"who-knows|1\",\"medium\",null]]\n");
    const std::string table = runAt({"models"}).output;
    EXPECT_THAT(table, AllOf(HasSubstr("sonnet-5"), HasSubstr("no price"), Not(HasSubstr("Hits"))));
    EXPECT_THAT(runAt({"models"}, {.environment = {{"COLUMNS", "120"}}}).output, HasSubstr("Hits"));
}

TEST_F(AnalyticsCommands, activityOfAWeekIsAddedUpByDayAndByHour) {
    const ProgramRun run = runAt({"activity", "--json", "--days", "7"});
    ASSERT_EQ(run.status, 0) << run.error;
    JSONParser parser;
    const JSONValue report = parser.parse(run.output);
    EXPECT_EQ(report["measure"].string(), "cost");
    const ProgramRun days = ProgramRun::of({"jq", "-c", "[.heatmap[] | .value]"}, {.input = run.output});
    EXPECT_EQ(days.output, "[0,0,0,0,3.5,0,5]\n");
    const ProgramRun hours = ProgramRun::of(
        {"jq", "-c", "[.hours.total[0][8], .hours.total[5][8], .hours.total[5][23], .hours.providers.claude[0][8]]"},
        {.input = run.output});
    EXPECT_EQ(hours.output, "[5,2.5,1,5]\n");
    const ProgramRun shape = ProgramRun::of(
        {"jq", "-c", "[(.hours.total | length), (.hours.total[0] | length), (.hours.providers | length)]"},
        {.input = run.output});
    EXPECT_EQ(shape.output, "[7,24,8]\n");
}

TEST_F(AnalyticsCommands, activityCountsWhatItIsAskedFor) {
    EXPECT_THAT(runAt({"activity", "--measure", "events"}).output,
                AllOf(HasSubstr("4 calls in 30 days"), HasSubstr("Busiest hour: Sunday 08:00, 1 call")));
    EXPECT_THAT(runAt({"activity", "--measure", "tokens"}).output, HasSubstr("1.6M tokens in 30 days"));
    EXPECT_THAT(runAt({"activity"}).output, HasSubstr("$8.50 in 30 days, most on 2026-03-01: $5.00"));
}

struct WeekCase {
    const char* locale;
    std::vector<std::string> beginnings;  ///< of the lines of the calendar's seven rows
};

class ActivityWeek : public AnalyticsCommands, public ::testing::WithParamInterface<WeekCase> {};

TEST_P(ActivityWeek, beginsAsInTheLocale) {
    const ProgramRun run = runAt({"activity", "--days", "14"}, {.environment = {{"LC_ALL", GetParam().locale}}});
    ASSERT_EQ(run.status, 0) << run.error;
    const std::vector<std::string> lines = linesOf(run.output);
    ASSERT_GT(lines.size(), 8U);
    for (std::size_t row = 0; row < GetParam().beginnings.size(); ++row)
        EXPECT_THAT(lines[row + 1], StartsWith(GetParam().beginnings[row]));
}

INSTANTIATE_TEST_SUITE_P(Locales, ActivityWeek,
                         ::testing::Values(WeekCase{"en_US.UTF-8", {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"}},
                                           WeekCase{"de_DE.UTF-8", {"Mo", "Di", "Mi", "Do", "Fr", "Sa", "So"}},
                                           WeekCase{"fa_AF.UTF-8", {"شنبه", "یکشنبه"}}));

TEST_F(AnalyticsCommands, nothingIsWiderThanTheTerminal) {
    for (const int width : {60, 80, 120}) {
        for (const std::vector<std::string>& arguments :
             {std::vector<std::string>{"activity", "--days", "400"}, {"models"}, {"projects"}}) {
            ProgramRun::Options options{.environment = {{"COLORTERM", "truecolor"}, {"TERM", "xterm-256color"}}};
            options.terminalColumns = width;
            const ProgramRun run = runAt(arguments, options);
            ASSERT_EQ(run.status, 0);
            for (const std::string& line : linesOf(run.output)) {
                if (width < 80 && arguments.front() == "models") continue;  // the table needs so much
                EXPECT_LE(host::cellWidth(uncoloured(line)), static_cast<std::size_t>(width)) << uncoloured(line);
            }
        }
    }
}

TEST_F(AnalyticsCommands, coloursFollowTheTerminal) {
    const auto drawn = [](std::map<std::string, std::string> environment) {
        ProgramRun::Options options{.environment = std::move(environment)};
        options.environment.emplace("TERM", "xterm-256color");
        options.terminalColumns = 80;
        return runAt({"activity"}, options).output;
    };
    EXPECT_THAT(drawn({{"COLORTERM", "truecolor"}}), HasSubstr("\x1b[38;2;223;122;46m██"));
    EXPECT_THAT(drawn({{"COLORTERM", ""}}), AllOf(HasSubstr("\x1b[33m██"), Not(HasSubstr("38;2"))));
    EXPECT_THAT(drawn({{"COLORTERM", "truecolor"}, {"NO_COLOR", "1"}}),
                AllOf(HasSubstr("██"), HasSubstr("·"), Not(HasSubstr("\x1b["))));
}

TEST(HeatCells, everyStepOfTheLegendLooksDifferent) {
    for (const HeatCells::Palette palette :
         {HeatCells::Palette::Plain, HeatCells::Palette::SixteenColours, HeatCells::Palette::TrueColour}) {
        const HeatCells cells{palette, false};
        std::vector<std::string> steps;
        for (const double value : {0.0, 0.03, 0.14, 0.39, 1.0}) {
            EXPECT_THAT(steps, Not(::testing::Contains(cells.cell(value, 1))));
            steps.push_back(cells.cell(value, 1));
            EXPECT_EQ(host::cellWidth(uncoloured(steps.back())), 2U);
            EXPECT_THAT(cells.legend(), HasSubstr(steps.back()));
        }
    }
}

TEST(HeatCells, littleIsNotDrawnAsNothing) {
    for (const HeatCells::Palette palette : {HeatCells::Palette::Plain, HeatCells::Palette::TrueColour}) {
        const HeatCells cells{palette, true};
        EXPECT_NE(cells.cell(1e-9, 1e6), cells.cell(0, 1e6));
        EXPECT_EQ(cells.cell(2, 1), cells.cell(1, 1));
        EXPECT_EQ(cells.cell(1, 0), cells.cell(0, 1));
    }
}

TEST(AnalyticsCommandsWithoutCalls, sayThatThereAreNone) {
    const ScratchHome home;
    for (const char* command : {"projects", "models", "activity"}) {
        const ProgramRun run = runAt({command});
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.output, "No model calls in these days.\n") << command;
    }
}

}  // namespace
}  // namespace quorvane::testing
