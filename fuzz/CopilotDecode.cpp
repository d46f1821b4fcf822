// Copilot's telemetry: the reader, which parses each line once and fills in later what only the whole file tells, gives
// exactly what two passes by the plain rules give, whatever the chunk size; and what is left of several records of one
// call is what a comparison of all pairs leaves. The events that are made without candidates are the same.
//
// Input: one byte for the chunk size, and then the content of the file.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "QuorvaneCore/ingest/FileCursor.h"
#include "QuorvaneCore/model/Deduplicator.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/NumberText.h"
#include "QuorvaneCore/providers/CopilotOTelParser.h"
#include "fuzz/Counts.h"
#include "fuzz/FuzzTarget.h"
#include "fuzz/MemoryFile.h"

using quorvane::CopilotOTelParser;
using quorvane::Date;
using quorvane::Deduplicator;
using quorvane::FileCursor;
using quorvane::JSONLStreamReader;
using quorvane::JSONNumberValue;
using quorvane::JSONParser;
using quorvane::JSONTree;
using quorvane::JSONValue;
using quorvane::ProviderID;
using quorvane::UsageEvent;
using quorvane::fuzz::Counts;
using quorvane::fuzz::MemoryFile;
using quorvane::fuzz::require;
using Candidate = CopilotOTelParser::Candidate;
using Kind = CopilotOTelParser::RecordKind;
using Text = std::optional<std::string>;

namespace {

constexpr std::size_t largestContent = 65536;
constexpr double limit = 9223372036854775808.0;  // 2^63

Text filled(JSONValue value) {
    const auto text = value.string();
    return text && !text->empty() ? Text{*text} : std::nullopt;
}

std::optional<double> numberOf(JSONValue value) {
    const std::optional<JSONNumberValue> number = value.number();
    if (!number) return std::nullopt;
    return std::visit([](auto held) { return static_cast<double>(held); }, *number);
}

JSONValue attribute(JSONValue record, std::string_view key) {
    return record["attributes"][key];
}

std::int64_t countOf(JSONValue record, std::string_view key) {
    const JSONValue value = attribute(record, key);
    if (const auto integer = value.integer()) return *integer;
    std::optional<double> number = numberOf(value);
    if (const auto text = value.string()) number = quorvane::parseFloat(*text);
    return number && *number > -limit && *number < limit ? static_cast<std::int64_t>(*number) : 0;
}

std::int64_t eitherCount(JSONValue record, std::string_view first, std::string_view second) {
    return countOf(record, first) != 0 ? countOf(record, first) : countOf(record, second);
}

bool isSpan(JSONValue record) {
    if (record["type"].string() == "span") return true;
    if (!filled(record["name"])) return false;
    const std::array<std::string_view, 6> keys{"spanId", "traceId", "startTime", "endTime", "duration", "kind"};
    return std::any_of(keys.begin(), keys.end(), [&](std::string_view key) { return record[key].isPresent(); });
}

std::optional<Kind> kindOf(JSONValue record) {
    if (isSpan(record)) {
        const Text operation = filled(attribute(record, "gen_ai.operation.name"));
        const std::string name{record["name"].string().value_or("")};
        if (operation == "chat" || name.starts_with("chat ")) return Kind::ChatSpan;
        if (operation == "invoke_agent" || name.starts_with("invoke_agent ")) return Kind::AgentSummarySpan;
        return std::nullopt;
    }
    const auto event = attribute(record, "event.name").string();
    std::string body{record["body"].string().value_or(record["_body"].string().value_or(""))};
    if (event == "gen_ai.client.inference.operation.details" || body.starts_with("GenAI inference:")) {
        return Kind::InferenceLog;
    }
    if (event == "copilot_chat.agent.turn" || body.starts_with("copilot_chat.agent.turn")) return Kind::AgentTurnLog;
    return std::nullopt;
}

Text modelOf(JSONValue record) {
    const Text model = filled(attribute(record, "gen_ai.response.model"));
    return model ? model : filled(attribute(record, "gen_ai.request.model"));
}

struct Session {
    Text id;
    int priority = 0;
};

Session sessionOf(JSONValue record) {
    const std::array<std::pair<std::string_view, int>, 6> keys{{{"gen_ai.conversation.id", 3},
                                                                {"copilot_chat.session_id", 3},
                                                                {"copilot_chat.chat_session_id", 3},
                                                                {"session.id", 3},
                                                                {"github.copilot.interaction_id", 2},
                                                                {"gen_ai.response.id", 1}}};
    Session best;
    for (const auto& [key, priority] : keys) {
        const Text id = filled(attribute(record, key));
        if (id && priority > best.priority) best = {id, priority};
    }
    return best;
}

struct Context {
    Text model;
    Session session;
};

void absorb(JSONValue record, std::map<std::string, Context>& contexts) {
    const Text trace = filled(record["traceId"]);
    if (!trace) return;
    Context& context = contexts[*trace];
    if (!context.model) context.model = modelOf(record);
    const Session session = sessionOf(record);
    if (session.priority > context.session.priority) context.session = session;
}

Date timeOf(JSONValue record, Date fallback) {
    for (const char* key : {"endTime", "startTime", "hrTime", "_hrTime", "time"}) {
        std::vector<std::optional<double>> parts;
        record[key].forEachElement([&](JSONValue part) { parts.push_back(numberOf(part)); });
        if (parts.size() == 2 && parts[0] && parts[1]) return Date{*parts[0] + *parts[1] / 1e9};
    }
    for (const char* key : {"timestamp", "observedTimestamp"}) {
        const double number = numberOf(record[key]).value_or(0);
        if (!(number > 0)) continue;
        return Date{number / (number >= 1e17 ? 1e9 : number >= 1e14 ? 1e6 : number >= 1e11 ? 1e3 : 1)};
    }
    const double nanoseconds = numberOf(record["timeUnixNano"]).value_or(0);
    return nanoseconds > 0 ? Date{nanoseconds / 1e9} : fallback;
}

struct Kept {
    std::size_t index = 0;
    JSONTree record;
    Kind kind{};
};

struct Reading {
    std::vector<Candidate> candidates;
    Counts counts;  ///< and times in milliseconds
};

std::string keyOf(const Candidate& candidate, JSONValue record, std::size_t index, Counts& counts) {
    const Text span = filled(record["spanId"]);
    const std::string number = std::to_string(index);
    if (candidate.kind == Kind::AgentTurnLog) {
        Text turn = filled(attribute(record, "turn.index"));
        if (!turn) turn = filled(attribute(record, "copilot_chat.turn.index"));
        if (!turn) turn = "idx-" + number;
        return "agent-turn:" + (candidate.traceID ? *candidate.traceID + ":" + *turn
                                                  : candidate.sessionID + ":" + *turn + ":" + number);
    }
    const std::string prefix = candidate.kind == Kind::InferenceLog ? "log:"
                               : candidate.kind == Kind::ChatSpan   ? "chatSpan-span:"
                                                                    : "agentSummarySpan-span:";
    if (candidate.traceID && span) return prefix + *candidate.traceID + ":" + *span;
    const double milliseconds = candidate.timestamp.secondsSince1970 * 1000;
    if (!(milliseconds > -limit && milliseconds < limit)) {
        counts.fit = false;
        return {};
    }
    return prefix + candidate.sessionID + ":" + std::to_string(static_cast<std::int64_t>(milliseconds)) + ":" + number;
}

void takeByTheRules(const Kept& kept, const std::map<std::string, Context>& contexts, Date fallback, Reading& reading) {
    const JSONValue record{kept.record};
    Counts& counts = reading.counts;
    const std::int64_t input = countOf(record, "gen_ai.usage.input_tokens");
    const std::int64_t output = countOf(record, "gen_ai.usage.output_tokens");
    const std::int64_t cacheRead = countOf(record, "gen_ai.usage.cache_read.input_tokens");
    const std::int64_t cacheWrite =
        eitherCount(record, "gen_ai.usage.cache_write.input_tokens", "gen_ai.usage.cache_creation.input_tokens");
    const std::int64_t reasoning =
        eitherCount(record, "gen_ai.usage.reasoning.output_tokens", "gen_ai.usage.reasoning_tokens");
    const std::int64_t netInput = std::max<std::int64_t>(counts.difference(input, std::min(cacheRead, input)), 0);
    const std::int64_t allOutput = counts.sum(output, reasoning);
    if (counts.sum(counts.sum(counts.sum(netInput, allOutput), cacheWrite), cacheRead) < 1) return;

    Candidate candidate;
    candidate.kind = kept.kind;
    candidate.traceID = filled(record["traceId"]);
    candidate.responseID = filled(attribute(record, "gen_ai.response.id"));
    Context context;
    if (candidate.traceID) context = contexts.at(*candidate.traceID);
    candidate.model = modelOf(record).value_or(context.model.value_or("copilot"));
    candidate.sessionID =
        sessionOf(record).id.value_or(context.session.id.value_or(candidate.traceID.value_or("unknown-session")));
    candidate.timestamp = timeOf(record, fallback);
    candidate.usage.input = netInput;
    candidate.usage.output = allOutput;
    candidate.usage.cacheCreate5m = cacheWrite;
    candidate.usage.cacheRead = cacheRead;
    candidate.aiuNano = eitherCount(record, "github.copilot.nano_aiu", "copilot.nano_aiu");
    candidate.dedupKey = keyOf(candidate, record, kept.index, counts);
    reading.candidates.push_back(std::move(candidate));
}

Reading readByTheRules(std::string_view content, Date fallback) {
    std::map<std::string, Context> contexts;
    std::vector<Kept> kept;
    std::size_t index = 0;
    while (!content.empty()) {
        const std::size_t length = std::min(content.find('\n'), content.size());
        std::optional<JSONTree> tree = JSONParser::parseTree(content.substr(0, length));
        content.remove_prefix(std::min(length + 1, content.size()));
        if (!tree || !JSONValue{*tree}.isObject()) continue;
        absorb(JSONValue{*tree}, contexts);
        if (const auto kind = kindOf(JSONValue{*tree})) kept.push_back({index, *std::move(tree), *kind});
        ++index;
    }
    Reading reading;
    for (const Kept& record : kept)
        takeByTheRules(record, contexts, fallback, reading);
    return reading;
}

/// Whether some candidate of a more reliable kind has the trace or the response of this one.
bool isCovered(const Candidate& candidate, const std::vector<Candidate>& all) {
    return std::any_of(all.begin(), all.end(), [&](const Candidate& other) {
        return other.kind < candidate.kind && ((candidate.traceID && candidate.traceID == other.traceID) ||
                                               (candidate.responseID && candidate.responseID == other.responseID));
    });
}

/// In the order in which their keys come, the best event of each key.
void checkBestEvents(const std::vector<UsageEvent>& best, const std::vector<UsageEvent>& all) {
    std::map<std::pair<std::string, std::string>, std::size_t> places;
    std::vector<const UsageEvent*> expected;
    for (const UsageEvent& event : all) {
        const auto [known, isNew] = places.try_emplace({event.messageId, event.requestId}, expected.size());
        if (isNew) {
            expected.push_back(&event);
        } else if (Deduplicator::isBetter(event.usage, expected[known->second]->usage)) {
            expected[known->second] = &event;
        }
    }
    require(best.size() == expected.size(), "one event for each key");
    for (std::size_t index = 0; index < best.size(); ++index) {
        const UsageEvent& event = *expected[index];
        require(best[index].messageId == event.messageId && best[index].requestId == event.requestId, "its key");
        require(best[index].usage == event.usage && best[index].timestamp == event.timestamp, "its tokens and time");
        require(best[index].model == event.model && best[index].provider == ProviderID::Copilot, "its model");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1 || size > largestContent) return 0;
    const std::int64_t chunkSize = 1 + data[0];
    const std::string_view content{reinterpret_cast<const char*>(data) + 1, size - 1};
    const MemoryFile file{content};
    const std::optional<FileCursor::Status> status = FileCursor::state(file.path());
    require(status.has_value(), "a file in memory has a status");
    const Reading expected = readByTheRules(content, Date{status->mtime});
    // Sums that 64 bits cannot hold end the process by design.
    if (!expected.counts.fit) return 0;

    const std::vector<Candidate> candidates =
        CopilotOTelParser::candidates(file.path(), JSONLStreamReader{.chunkSize = chunkSize});
    require(candidates == expected.candidates, "the candidates are those of two passes");

    std::vector<Candidate> left;
    for (const Candidate& candidate : candidates) {
        if (!isCovered(candidate, candidates)) left.push_back(candidate);
    }
    require(CopilotOTelParser::dedupedCandidates(candidates) == left, "what is left is what nothing covers");
    const std::vector<UsageEvent> events = CopilotOTelParser::events(candidates);
    require(events.size() == left.size(), "one event for each that is left");
    for (std::size_t index = 0; index < events.size(); ++index) {
        require(events[index].requestId == left[index].dedupKey, "requestId");
        require(events[index].messageId == left[index].sessionID, "messageId");
        require(events[index].usage == left[index].usage, "usage");
        require(!events[index].model.empty(), "model");
    }
    checkBestEvents(CopilotOTelParser::bestEvents(file.path(), JSONLStreamReader{.chunkSize = chunkSize}), events);
    return 0;
}
