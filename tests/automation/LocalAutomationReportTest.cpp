#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/snapshots/LocalAutomationSnapshotBuilder.h"
#include "tests/automation/SampleAutomationSnapshot.h"
#include "tests/support/ScopedVariables.h"

namespace quorvane::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

/// Money in the report follows the environment's locale; here it is plain English.
class AutomationReport : public ::testing::Test {
    ScopedVariables plain_{"LC_ALL", "LC_MONETARY", "LANG"};
};

TEST_F(AutomationReport, tellsTheWholeSnapshot) {
    EXPECT_EQ(sampleAutomationSnapshot().markdownReport(), R"(# Quorvane Local Snapshot

Generated: 2026-03-01T09:30:00Z
Window: 30d
Total today: $1.30 USD (real spend)
Total 30d: $41.00 USD

## Providers
- Claude Code: today $1.25, 30d $40.50, real spend
  - 5h used 42.5% official
  - weekly used 50% estimate
  - headroom: 57.5% left (official)
  - AIU used (30d): 12.5 AIU (consumption, not $ or %)
- GitHub Copilot: today 1200 tokens, 30d 34000 tokens, token estimate
  - headroom: unknown (no official limit signal)

Notice: A notice.)");
}

TEST_F(AutomationReport, tokenTotalsAreWholeNumbers) {
    LocalAutomationSnapshot snapshot = sampleAutomationSnapshot();
    snapshot.valueMetric = WidgetValueMetric::Tokens;
    snapshot.totalToday = 1234567.9;
    snapshot.totalWindow = 34000;
    EXPECT_THAT(snapshot.markdownReport(),
                HasSubstr("\nTotal today: 1234567 tokens (estimate)\nTotal 30d: 34000 tokens\n"));
}

TEST_F(AutomationReport, withoutRowsComesTheNoticeAlone) {
    const LocalAutomationSnapshot snapshot = LocalAutomationSnapshotBuilder::build({}, {}, {}, "a-test", Date{0});
    EXPECT_THAT(snapshot.markdownReport(),
                ::testing::EndsWith("## Providers\n\nNotice: No live provider sources are available on this Mac."));
}

struct HeadroomCase {
    const char* name;
    LocalAutomationHeadroom headroom;
    const char* label;
};
class HeadroomLine : public ::testing::TestWithParam<HeadroomCase> {};
TEST_P(HeadroomLine, saysTheVerdict) {
    LocalAutomationSnapshot snapshot = sampleAutomationSnapshot();
    snapshot.providers[0].headroom = GetParam().headroom;
    EXPECT_THAT(snapshot.markdownReport(), HasSubstr(std::string{"  - headroom: "} + GetParam().label + "\n"));
}
INSTANTIATE_TEST_SUITE_P(
    ByState, HeadroomLine,
    ::testing::Values(HeadroomCase{"whole", {"official", 50.0, 300, {}}, "50% left (official)"},
                      HeadroomCase{"fraction", {"official", 12.5, 300, {}}, "12.5% left (official)"},
                      HeadroomCase{"roundedFraction", {"official", 33.3333, 300, {}}, "33.33% left (official)"},
                      HeadroomCase{"withoutFigure", {.state = "official"}, "official"},
                      HeadroomCase{"exhausted", {.state = "likely_exhausted"}, "likely exhausted"},
                      HeadroomCase{"unknown", {.state = "unknown"}, "unknown (no official limit signal)"},
                      HeadroomCase{"anyOther", {.state = "later"}, "unknown (no official limit signal)"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST_F(AutomationReport, limitsAreToldOnlyWhereThereAreSome) {
    LocalAutomationSnapshot snapshot = sampleAutomationSnapshot();
    snapshot.rateLimits.clear();
    EXPECT_THAT(snapshot.markdownReport(), Not(HasSubstr("5h used")));
    EXPECT_THAT(snapshot.markdownReport(), HasSubstr("  - headroom: 57.5% left (official)"));
}

}  // namespace
}  // namespace quorvane::testing
