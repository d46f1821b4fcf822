#include "tests/copilot/CopilotTestSupport.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <stdexcept>

#include <fmt/format.h>

#include "tests/ingest/IngestTestSupport.h"

namespace quorvane::testing {
namespace {

std::string member(std::string_view key, std::string_view text) {
    return text.empty() ? "" : fmt::format(R"(,"{}":"{}")", key, text);
}

}  // namespace

std::string record(std::string_view members, std::string_view attributes) {
    return fmt::format("{{{}{}\"attributes\":{{{}}}}}\n", members, members.empty() ? "" : ",", attributes);
}

std::string recordOf(RecordKind kind, const Call& call) {
    // A kind's members, and its attributes.
    struct Form {
        std::string_view members;
        std::string_view attributes;
    };
    constexpr std::array<Form, 4> forms{
        Form{R"("type":"span","name":"chat gpt-5")", R"("gen_ai.operation.name":"chat")"},
        Form{R"("body":"GenAI inference: gpt-5")", R"("event.name":"gen_ai.client.inference.operation.details")"},
        Form{R"("body":"copilot_chat.agent.turn: 1")", R"("event.name":"copilot_chat.agent.turn")"},
        Form{R"("type":"span","name":"invoke_agent copilot")", R"("gen_ai.operation.name":"invoke_agent")"}};
    const Form& form = forms.at(static_cast<std::size_t>(kind));
    const std::string members = fmt::format("{}{}{},\"timestamp\":{:.0f}", form.members, member("traceId", call.trace),
                                            member("spanId", call.span), call.when);
    const std::string attributes =
        fmt::format("{}{},\"gen_ai.usage.output_tokens\":{}{}{}", form.attributes,
                    member("gen_ai.response.id", call.response), call.output, call.more.empty() ? "" : ",", call.more);
    return record(members, attributes);
}

std::string chatSpan(const Call& call) {
    return recordOf(RecordKind::ChatSpan, call);
}
std::string inferenceLog(const Call& call) {
    return recordOf(RecordKind::InferenceLog, call);
}
std::string turnLog(const Call& call) {
    return recordOf(RecordKind::AgentTurnLog, call);
}
std::string agentSpan(const Call& call) {
    return recordOf(RecordKind::AgentSummarySpan, call);
}

std::vector<std::int64_t> outputs(const std::vector<UsageEvent>& events) {
    std::vector<std::int64_t> all;
    for (const UsageEvent& event : events)
        all.push_back(event.usage.output);
    std::sort(all.begin(), all.end());
    return all;
}

std::string TelemetryHome::path(std::string_view file) const {
    return home.path(".copilot/otel/" + std::string{file});
}

std::string TelemetryHome::write(std::string_view file, std::string_view content) const {
    return home.write(path(file), content);
}

std::string TelemetryHome::append(std::string_view file, std::string_view content) const {
    return home.append(path(file), content);
}

std::vector<Candidate> TelemetryHome::parse(std::string_view content, std::int64_t chunkSize) const {
    const std::string file = home.write("parsed.jsonl", content);
    setModificationTime(file, static_cast<std::int64_t>(fileTime), 0);
    return CopilotOTelParser::candidates(file, JSONLStreamReader{.chunkSize = chunkSize});
}

Candidate TelemetryHome::parseOne(std::string_view content) const {
    const std::vector<Candidate> all = parse(content);
    if (all.size() != 1) throw std::logic_error{fmt::format("{} candidates", all.size())};
    return all.front();
}

std::vector<UsageEvent> TelemetryHome::events(std::string_view content) const {
    return CopilotOTelParser::events(parse(content));
}

}  // namespace quorvane::testing

namespace quorvane {

void PrintTo(const CopilotOTelParser::Candidate& candidate, std::ostream* stream) {
    const TokenUsage& usage = candidate.usage;
    *stream << fmt::format("{} model {} session {} trace {} response {} at {:.3f}: {}/{}/{}/{}, {} nano-AIU",
                           candidate.dedupKey, candidate.model, candidate.sessionID,
                           candidate.traceID.value_or("(none)"), candidate.responseID.value_or("(none)"),
                           candidate.timestamp.secondsSince1970, usage.input, usage.output, usage.cacheCreate5m,
                           usage.cacheRead, candidate.aiuNano);
}

}  // namespace quorvane
