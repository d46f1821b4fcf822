#include <algorithm>
#include <set>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/snapshots/LocalAutomationSnapshotEncoder.h"
#include "tests/automation/SampleAutomationSnapshot.h"
#include "tests/docs/SampleMachine.h"

namespace quorvane::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// The verdict on a record and on changed copies of it, a line each.
std::vector<std::string> verdicts(const std::string& record, const std::vector<std::string>& changes = {}) {
    const std::string source = QUORVANE_SOURCE;
    // The system's Python: one that comes first on the path may lack the validator.
    std::vector<std::string> command{"/usr/bin/python3", source + "/tests/docs/check-record",
                                     source + "/docs/latest-snapshot.schema.json"};
    command.insert(command.end(), changes.begin(), changes.end());
    const ProgramRun run = ProgramRun::of(command, {.input = record});
    EXPECT_EQ(run.status, 0) << run.error;
    EXPECT_THAT(run.error, IsEmpty()) << "what the schema has against the record itself";
    std::vector<std::string> lines;
    std::istringstream stream{run.output};
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

void expectAll(const std::string& record, const std::vector<std::string>& changes, const std::string& verdict) {
    std::vector<std::string> expected{"/ accepted"};
    for (const std::string& change : changes)
        expected.push_back(change + " " + verdict);
    EXPECT_EQ(verdicts(record, changes), expected);
}

/// A record in which every key has a value, the optional ones too.
std::string fullRecord() {
    LocalAutomationSnapshot record = sampleAutomationSnapshot();
    record.providers.pop_back();
    return LocalAutomationSnapshotEncoder::encode(record);
}

const std::vector<std::string> requiredKeys{
    "/schema_version",
    "/generated_at",
    "/source",
    "/window_days",
    "/currency_code",
    "/total_today",
    "/total_window",
    "/cost_basis",
    "/value_metric",
    "/series",
    "/providers",
    "/rate_limits",
    "/status",
    "/providers/0/id",
    "/providers/0/name",
    "/providers/0/currency_code",
    "/providers/0/today",
    "/providers/0/window",
    "/providers/0/cost_basis",
    "/providers/0/value_metric",
    "/providers/0/series",
    "/providers/0/events_today",
    "/providers/0/events_window",
    "/providers/0/unpriced_models",
    "/providers/0/headroom",
    "/providers/0/headroom/state",
    "/rate_limits/claude/primary_5h/used_percent",
    "/rate_limits/claude/primary_5h/window_minutes",
    "/rate_limits/claude/primary_5h/official",
    "/rate_limits/claude/secondary_weekly/used_percent",
    "/rate_limits/claude/secondary_weekly/window_minutes",
    "/rate_limits/claude/secondary_weekly/official",
};

const std::vector<std::string> optionalKeys{
    "/notice",
    "/providers/0/aiu_window",
    "/providers/0/headroom/remaining_percent",
    "/providers/0/headroom/window_minutes",
    "/providers/0/headroom/resets_at",
    "/rate_limits/claude",
    "/rate_limits/claude/plan_type",
    "/rate_limits/claude/primary_5h",
    "/rate_limits/claude/secondary_weekly",
    "/rate_limits/claude/primary_5h/resets_at",
};

void collectPointers(JSONValue value, const std::string& above, std::set<std::string>& pointers) {
    value.forEachMember([&](std::string_view key, JSONValue member) {
        const std::string pointer = above + "/" + std::string{key};
        pointers.insert(pointer);
        collectPointers(member, pointer, pointers);
    });
    int place = 0;
    value.forEachElement(
        [&](JSONValue element) { collectPointers(element, above + "/" + std::to_string(place++), pointers); });
}

TEST(SnapshotSchema, refusesARecordWithoutARequiredKey) {
    expectAll(fullRecord(), requiredKeys, "refused");
}

TEST(SnapshotSchema, acceptsARecordWithoutAnOptionalKey) {
    expectAll(fullRecord(), optionalKeys, "accepted");
}

/// The encoder decides what a record has, so no key can be forgotten in the two lists.
TEST(SnapshotSchema, theTwoListsAboveAreComplete) {
    JSONParser parser;
    const std::string record = fullRecord();
    std::set<std::string> pointers;
    collectPointers(parser.parse(record), "", pointers);
    std::set<std::string> listed{requiredKeys.begin(), requiredKeys.end()};
    listed.insert(optionalKeys.begin(), optionalKeys.end());
    EXPECT_EQ(pointers, listed);
}

TEST(SnapshotSchema, refusesWhatNoRecordSays) {
    expectAll(fullRecord(),
              {R"(/schema_version=3)",
               R"(/generated_at="yesterday")",
               R"(/generated_at="2026-03-01T09:30:00.5Z")",
               R"(/generated_at=1772357400)",
               R"(/window_days=0)",
               R"(/window_days=7.5)",
               R"(/total_today="1.25")",
               R"(/total_window=null)",
               R"(/cost_basis="free")",
               R"(/value_metric="euros")",
               R"(/series=["1"])",
               R"(/providers={})",
               R"(/rate_limits=[])",
               R"(/status="broken")",
               R"(/notice=null)",
               R"(/surplus=1)",
               R"(/providers/0/surplus=1)",
               R"(/providers/0/cost_basis="real_and_notional_list_price")",
               R"(/providers/0/events_today=-1)",
               R"(/providers/0/unpriced_models=[1])",
               R"(/providers/0/headroom/state="fine")",
               R"(/providers/0/headroom/remaining_percent=101)",
               R"(/providers/0/headroom/surplus=1)",
               R"(/rate_limits/claude/surplus=1)",
               R"(/rate_limits/claude/primary_5h/surplus=1)",
               R"(/rate_limits/claude/primary_5h/official="yes")"},
              "refused");
}

TEST(SnapshotSchema, acceptsWhatTheEncoderWrites) {
    EXPECT_EQ(verdicts(LocalAutomationSnapshotEncoder::encode(sampleAutomationSnapshot())),
              std::vector<std::string>{"/ accepted"});
}

TEST(SnapshotSchema, acceptsWhatTheProgramWritesOfTheSampleHome) {
    const SampleMachine machine{SampleMachine::Content::Sample};
    for (const char* days : {"7", "14", "30", "90"}) {
        const ProgramRun run = machine.run(std::string{"quorvane snapshot --days "} + days);
        ASSERT_EQ(run.status, 0) << run.error;
        EXPECT_THAT(run.output, HasSubstr(R"("state": "official")"));
        EXPECT_EQ(verdicts(run.output), std::vector<std::string>{"/ accepted"}) << days;
    }
}

TEST(SnapshotSchema, acceptsWhatTheProgramWritesWithoutAgents) {
    const SampleMachine machine{SampleMachine::Content::Nothing};
    const ProgramRun run = machine.run("quorvane snapshot");
    EXPECT_THAT(run.output, HasSubstr("no_sources"));
    EXPECT_EQ(verdicts(run.output), std::vector<std::string>{"/ accepted"});
}

TEST(SnapshotSchema, acceptsLimitsThatAreLikelyExhaustedAndOverdrawn) {
    const SampleMachine machine{SampleMachine::Content::Nothing};
    machine.home().makeFolder(".claude/projects");
    machine.home().write("Library/Application Support/Quorvane/claude-rate-limits.json",
                         R"({"capturedAt":1789400000,"five_hour":{"used_percentage":104,"resets_at":1789408700}})");
    const ProgramRun run = machine.run("quorvane snapshot");
    EXPECT_THAT(run.output, HasSubstr("likely_exhausted"));
    EXPECT_EQ(verdicts(run.output), std::vector<std::string>{"/ accepted"});
}

}  // namespace
}  // namespace quorvane::testing
