#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/model/UsageEvent.h"
#include "QuorvaneCore/providers/CopilotOTelParser.h"
#include "QuorvaneCore/providers/CopilotProvider.h"
#include "tests/support/ScratchHome.h"

namespace quorvane::testing {

using Candidate = CopilotOTelParser::Candidate;
using RecordKind = CopilotOTelParser::RecordKind;

// Lines of a telemetry file, each with its line feed. `members` and `attributes` are the insides of JSON objects, both
// possibly empty.

[[nodiscard]] std::string record(std::string_view members, std::string_view attributes);

/// A record of that kind with a time, so many output tokens, and more attributes if given. Empty ids are left out.
struct Call {
    std::string_view trace = {};
    std::string_view span = {};
    std::string_view response = {};
    std::int64_t output = 10;
    std::string_view more = {};  ///< attributes
    double when = 1789380000;    ///< in whole seconds; 2026-09-14T10:00:00Z
};
[[nodiscard]] std::string recordOf(RecordKind kind, const Call& call);
[[nodiscard]] std::string chatSpan(const Call& call);
[[nodiscard]] std::string inferenceLog(const Call& call);
[[nodiscard]] std::string turnLog(const Call& call);
[[nodiscard]] std::string agentSpan(const Call& call);

/// The output of each candidate or event, in order of their size.
[[nodiscard]] std::vector<std::int64_t> outputs(const std::vector<UsageEvent>& events);

/// A home with telemetry. Files are named relative to the folder of telemetry.
struct TelemetryHome {
    std::string write(std::string_view file, std::string_view content) const;
    std::string append(std::string_view file, std::string_view content) const;
    [[nodiscard]] std::string path(std::string_view file) const;

    /// The candidates of a file with this content, last changed at 2026-01-01T00:00:00Z.
    [[nodiscard]] std::vector<Candidate> parse(std::string_view content, std::int64_t chunkSize = 65536) const;
    /// The one candidate of it. Throws if there are none or more.
    [[nodiscard]] Candidate parseOne(std::string_view content) const;
    /// The events of a file with this content, by itself.
    [[nodiscard]] std::vector<UsageEvent> events(std::string_view content) const;

    ScratchHome home;
    CopilotProvider provider;
};

/// 2026-01-01T00:00:00Z
constexpr double fileTime = 1767225600;

}  // namespace quorvane::testing

namespace quorvane {

/// For messages of failed expectations.
void PrintTo(const CopilotOTelParser::Candidate& candidate, std::ostream* stream);

}  // namespace quorvane
