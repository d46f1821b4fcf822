#include "QuorvaneCore/providers/CopilotOTelParser.h"

#include <algorithm>
#include <array>
#include <functional>
#include <initializer_list>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "QuorvaneCore/ingest/FileCursor.h"
#include "QuorvaneCore/model/JSONNumber.h"
#include "QuorvaneCore/platform/CheckedArithmetic.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/NumberText.h"
#include "QuorvaneCore/platform/StringHash.h"

namespace quorvane {
namespace {

using AIUSample = CopilotOTelParser::AIUSample;
using Candidate = CopilotOTelParser::Candidate;
using RecordKind = CopilotOTelParser::RecordKind;
using Text = std::optional<std::string_view>;

/// The text of a string that is not empty.
Text filledString(JSONValue value) noexcept {
    const Text text = value.string();
    return text && !text->empty() ? text : std::nullopt;
}

std::optional<std::string> owned(Text text) {
    return text ? std::optional<std::string>{*text} : std::nullopt;
}

/// Truncated toward zero; 0 for what 64 bits cannot hold.
std::int64_t truncated(double number) noexcept {
    constexpr double limit = 9223372036854775808.0;  // 2^63
    return number > -limit && number < limit ? static_cast<std::int64_t>(number) : 0;
}

/// A count among the attributes: a number, or a text that is one as a whole; 0 for anything else.
std::int64_t count(JSONValue value) {
    if (const std::optional<std::int64_t> integer = value.integer()) return *integer;
    if (const std::optional<double> number = JSONNumber::asDouble(value)) return truncated(*number);
    const Text text = value.string();
    const std::optional<double> number = text ? parseFloat(*text) : std::nullopt;
    return number ? truncated(*number) : 0;
}

/// A session's name among the attributes, with how much it is worth; 0 is none at all.
struct Session {
    Text id;
    int priority = 0;
};

/// The attributes that nearly every call has. The others are looked up where they are asked for.
enum Attribute : std::uint8_t {
    Operation,
    RequestModel,
    ResponseModel,
    Conversation,
    Response,
    Input,
    Output,
    CacheRead,
    CacheWrite,
    CacheCreation,
    ReasoningOutput,
    NanoAIU,
};
constexpr std::array<std::string_view, 12> attributeKeys{"gen_ai.operation.name",
                                                         "gen_ai.request.model",
                                                         "gen_ai.response.model",
                                                         "gen_ai.conversation.id",
                                                         "gen_ai.response.id",
                                                         "gen_ai.usage.input_tokens",
                                                         "gen_ai.usage.output_tokens",
                                                         "gen_ai.usage.cache_read.input_tokens",
                                                         "gen_ai.usage.cache_write.input_tokens",
                                                         "gen_ai.usage.cache_creation.input_tokens",
                                                         "gen_ai.usage.reasoning.output_tokens",
                                                         "github.copilot.nano_aiu"};
using Attributes = std::array<JSONValue, attributeKeys.size()>;

/// Of the attributes that name a session the one that is worth most; of equal ones the first.
Session bestSession(const Attributes& attributes, JSONValue all) noexcept {
    if (const Text id = filledString(attributes[Conversation])) return {.id = id, .priority = 3};
    const auto others = all.members<4>(
        {"copilot_chat.session_id", "copilot_chat.chat_session_id", "session.id", "github.copilot.interaction_id"});
    constexpr std::array priorities{3, 3, 3, 2};
    for (std::size_t index = 0; index < others.size(); ++index) {
        if (const Text id = filledString(others[index])) return {.id = id, .priority = priorities[index]};
    }
    if (const Text id = filledString(attributes[Response])) return {.id = id, .priority = 1};
    return {};
}

/// What one record says, looked up once. Valid as long as its document.
struct Record {
    explicit Record(JSONValue line)
        : document{line},
          members{line.members<6>({"type", "traceId", "spanId", "name", "endTime", "attributes"})},
          attributes{members[5].members(attributeKeys)},
          trace{filledString(members[1])},
          model{filledString(attributes[ResponseModel])},
          session{bestSession(attributes, members[5])} {
        if (!model) model = filledString(attributes[RequestModel]);
    }

    [[nodiscard]] JSONValue type() const noexcept { return members[0]; }
    [[nodiscard]] Text span() const noexcept { return filledString(members[2]); }
    [[nodiscard]] Text name() const noexcept { return filledString(members[3]); }
    [[nodiscard]] JSONValue endTime() const noexcept { return members[4]; }
    /// One of those that few records have.
    [[nodiscard]] JSONValue attribute(std::string_view key) const noexcept { return members[5][key]; }

    JSONValue document;
    std::array<JSONValue, 6> members;
    Attributes attributes;
    Text trace;
    Text model;
    Session session;
};

bool isSpan(const Record& record) noexcept {
    if (record.type().string() == "span") return true;
    if (!record.name()) return false;
    const auto found = record.document.members<6>({"spanId", "traceId", "startTime", "endTime", "duration", "kind"});
    return std::any_of(found.begin(), found.end(), [](const JSONValue& value) { return value.isPresent(); });
}

std::optional<RecordKind> spanKind(const Record& record) noexcept {
    const std::string_view name = record.name().value_or("");
    const Text operation = record.attributes[Operation].string();
    if (operation == "chat" || name.starts_with("chat ")) return RecordKind::ChatSpan;
    if (operation == "invoke_agent" || name.starts_with("invoke_agent ")) return RecordKind::AgentSummarySpan;
    return std::nullopt;
}

std::optional<RecordKind> logKind(const Record& record) noexcept {
    constexpr std::string_view turn = "copilot_chat.agent.turn";
    const auto [bodyMember, underlinedBody] = record.document.members<2>({"body", "_body"});
    const Text bodyText = bodyMember.string();
    const std::string_view body = bodyText ? *bodyText : underlinedBody.string().value_or("");
    const Text event = record.attribute("event.name").string();
    if (event == "gen_ai.client.inference.operation.details" || body.starts_with("GenAI inference:")) {
        return RecordKind::InferenceLog;
    }
    if (event == turn || body.starts_with(turn)) return RecordKind::AgentTurnLog;
    return std::nullopt;
}

std::optional<RecordKind> classify(const Record& record) noexcept {
    return isSpan(record) ? spanKind(record) : logKind(record);
}

/// Seconds and nanoseconds in an array of just these two.
std::optional<Date> pairDate(JSONValue value) {
    if (!value.isArray()) return std::nullopt;
    std::array<std::optional<double>, 2> parts;
    std::size_t length = 0;
    value.forEachElement([&](JSONValue element) {
        if (length < parts.size()) parts[length] = JSONNumber::asDouble(element);
        ++length;
    });
    if (length != parts.size() || !parts[0] || !parts[1]) return std::nullopt;
    return Date{*parts[0] + *parts[1] / 1e9};
}

std::optional<double> positiveNumber(JSONValue value) noexcept {
    const std::optional<double> number = JSONNumber::asDouble(value);
    return number && *number > 0 ? number : std::nullopt;
}

/// A number whose size tells its unit.
std::optional<Date> scalarDate(JSONValue value) noexcept {
    const std::optional<double> number = positiveNumber(value);
    if (!number) return std::nullopt;
    if (*number >= 1e17) return Date{*number / 1e9};
    if (*number >= 1e14) return Date{*number / 1e6};
    if (*number >= 1e11) return Date{*number / 1e3};
    return Date{*number};
}

std::optional<Date> timestamp(const Record& record) {
    if (const std::optional<Date> end = pairDate(record.endTime())) return end;
    const auto found = record.document.members<7>(
        {"startTime", "hrTime", "_hrTime", "time", "timestamp", "observedTimestamp", "timeUnixNano"});
    const std::span all{found};
    for (const JSONValue& value : all.first<4>()) {
        if (const std::optional<Date> date = pairDate(value)) return date;
    }
    for (const JSONValue& value : all.subspan<4, 2>()) {
        if (const std::optional<Date> date = scalarDate(value)) return date;
    }
    const std::optional<double> nanoseconds = positiveNumber(all.back());
    return nanoseconds ? std::optional{Date{*nanoseconds / 1e9}} : std::nullopt;
}

TokenUsage tokens(const Record& record) {
    const Attributes& attributes = record.attributes;
    const std::int64_t input = count(attributes[Input]);
    const std::int64_t cacheRead = count(attributes[CacheRead]);
    std::int64_t cacheWrite = count(attributes[CacheWrite]);
    if (cacheWrite == 0) cacheWrite = count(attributes[CacheCreation]);
    std::int64_t reasoning = count(attributes[ReasoningOutput]);
    if (reasoning == 0) reasoning = count(record.attribute("gen_ai.usage.reasoning_tokens"));
    return {.input = std::max<std::int64_t>(0, checkedSubtract(input, std::min(cacheRead, input))),
            .output = checkedAdd(count(attributes[Output]), reasoning),
            .cacheCreate5m = cacheWrite,
            .cacheCreate1h = 0,
            .cacheRead = cacheRead};
}

std::int64_t nanoAIU(const Record& record) {
    const std::int64_t nano = count(record.attributes[NanoAIU]);
    return nano != 0 ? nano : count(record.attribute("copilot.nano_aiu"));
}

/// The beginning of a key, which also is the name under which this kind's calls stand in users' indexes.
std::string_view keyPrefix(RecordKind kind) noexcept {
    switch (kind) {
        case RecordKind::ChatSpan: return "chatSpan-span:";
        case RecordKind::InferenceLog: return "log:";
        case RecordKind::AgentTurnLog: return "agent-turn:";
        case RecordKind::AgentSummarySpan: return "agentSummarySpan-span:";
    }
    return "";
}

std::string joined(std::string_view prefix, std::initializer_list<std::string_view> parts) {
    std::size_t size = prefix.size();
    for (const std::string_view part : parts)
        size += part.size() + 1;
    std::string key;
    key.reserve(size);
    key = prefix;
    for (const std::string_view part : parts) {
        if (key.size() > prefix.size()) key += ':';
        key += part;
    }
    return key;
}

/// What the key of a candidate is made of where the whole file must be known first.
struct OpenKey {
    std::size_t candidate = 0;        ///< its place among the candidates
    std::int64_t index = 0;           ///< the number of records before its own
    std::optional<std::string> turn;  ///< of a turn's log
};

/// The key of a record that names itself by its trace; absent for any other.
std::optional<std::string> ownKey(const Record& record, RecordKind kind, const std::string& turn) {
    if (!record.trace) return std::nullopt;
    if (kind == RecordKind::AgentTurnLog) return joined(keyPrefix(kind), {*record.trace, turn});
    const Text span = record.span();
    return span ? std::optional{joined(keyPrefix(kind), {*record.trace, *span})} : std::nullopt;
}

/// The key of any other, whose session and time are known by now.
std::string keyByPlace(const Candidate& candidate, const OpenKey& open) {
    const std::string index = std::to_string(open.index);
    if (open.turn) return joined(keyPrefix(candidate.kind), {candidate.sessionID, *open.turn, index});
    const std::int64_t milliseconds = checkedInt64(candidate.timestamp.secondsSince1970 * 1000);
    return joined(keyPrefix(candidate.kind), {candidate.sessionID, std::to_string(milliseconds), index});
}

/// What is known of a trace, from any record of the file.
struct TraceContext {
    std::optional<std::string> model;  ///< the first one seen
    std::optional<std::string> sessionID;
    int sessionPriority = 0;
};

/// Takes the records of one file, each of them once, and completes its candidates when all have been seen.
class FileReading {
public:
    void take(JSONValue line) {
        if (!line.isObject()) return;
        const Record record{line};
        absorb(record);
        if (const std::optional<RecordKind> kind = classify(record)) addCandidate(record, *kind);
        ++records_;
    }

    /// `fallback` is the time of records that name none.
    [[nodiscard]] std::vector<Candidate> candidates(Date fallback) && {
        for (const std::size_t place : timeless_)
            candidates_[place].timestamp = fallback;
        for (Candidate& candidate : candidates_) {
            if (candidate.model.empty() || candidate.sessionID.empty()) askTrace(candidate);
        }
        for (const OpenKey& open : openKeys_)
            candidates_[open.candidate].dedupKey = keyByPlace(candidates_[open.candidate], open);
        return std::move(candidates_);
    }

private:
    void absorb(const Record& record) {
        if (!record.trace || (!record.model && !record.session.id)) return;
        // The records of one trace mostly stand together.
        if (lastTrace_ == nullptr || *record.trace != lastTrace_->first) {
            auto known = traces_.find(*record.trace);
            if (known == traces_.end()) known = traces_.emplace(*record.trace, TraceContext{}).first;
            lastTrace_ = &*known;
        }
        TraceContext& context = lastTrace_->second;
        if (!context.model) context.model = owned(record.model);
        if (record.session.priority > context.sessionPriority) {
            context.sessionID = owned(record.session.id);
            context.sessionPriority = record.session.priority;
        }
    }

    /// Does nothing for a record without tokens, which is no call.
    void addCandidate(const Record& record, RecordKind kind) {
        const TokenUsage usage = tokens(record);
        if (usage.total() < 1) return;
        const std::size_t place = candidates_.size();
        Candidate& candidate = candidates_.emplace_back();
        candidate.kind = kind;
        if (record.trace) candidate.traceID.emplace(*record.trace);
        if (const Text response = filledString(record.attributes[Response])) candidate.responseID.emplace(*response);
        if (record.model) candidate.model = *record.model;
        if (record.session.id) candidate.sessionID = *record.session.id;
        candidate.usage = usage;
        candidate.aiuNano = nanoAIU(record);
        if (const std::optional<Date> date = timestamp(record)) {
            candidate.timestamp = *date;
        } else {
            timeless_.push_back(place);
        }
        std::optional<std::string> turn;
        if (kind == RecordKind::AgentTurnLog) turn = turnName(record);
        if (std::optional<std::string> key = ownKey(record, kind, turn.value_or(""))) {
            candidate.dedupKey = *std::move(key);
        } else {
            openKeys_.push_back({.candidate = place, .index = records_, .turn = std::move(turn)});
        }
    }

    [[nodiscard]] std::string turnName(const Record& record) const {
        if (const Text turn = filledString(record.attribute("turn.index"))) return std::string{*turn};
        if (const Text turn = filledString(record.attribute("copilot_chat.turn.index"))) return std::string{*turn};
        return "idx-" + std::to_string(records_);
    }

    /// Fills in what the candidate's own record does not say.
    void askTrace(Candidate& candidate) const {
        const auto known = candidate.traceID ? traces_.find(*candidate.traceID) : traces_.end();
        const TraceContext context = known == traces_.end() ? TraceContext{} : known->second;
        if (candidate.model.empty()) candidate.model = context.model.value_or("copilot");
        if (candidate.sessionID.empty()) {
            candidate.sessionID = context.sessionID.value_or(candidate.traceID.value_or("unknown-session"));
        }
    }

    using Traces = std::unordered_map<std::string, TraceContext, StringHash, std::equal_to<>>;

    Traces traces_;
    Traces::value_type* lastTrace_ = nullptr;
    std::vector<Candidate> candidates_;
    std::vector<std::size_t> timeless_;  ///< candidates whose records name no time
    std::vector<OpenKey> openKeys_;
    std::int64_t records_ = 0;
};

/// Tells of each candidate whether a more reliable kind covers it.
class Cover {
public:
    explicit Cover(std::span<const Candidate> candidates) {
        for (const Candidate& candidate : candidates)
            leastReliable_ = std::max(leastReliable_, rank(candidate));
        markTraces(candidates);
        markResponses(candidates);
    }

    [[nodiscard]] bool has(const Candidate& candidate) const {
        return hasTraceOf(candidate) || (rank(candidate) > 0 && candidate.responseID &&
                                         isMarked(responses_, *candidate.responseID, rank(candidate)));
    }

private:
    /// By id, a bit for each kind that has it.
    using Marks = std::unordered_map<std::string_view, unsigned>;

    static unsigned rank(const Candidate& candidate) noexcept { return static_cast<unsigned>(candidate.kind); }

    /// Whether one of the kinds below that rank has the id.
    static bool isMarked(const Marks& marks, std::string_view id, unsigned rank) {
        const auto found = marks.find(id);
        return found != marks.end() && (found->second & ((1U << rank) - 1)) != 0;
    }

    [[nodiscard]] bool hasTraceOf(const Candidate& candidate) const {
        return rank(candidate) > 0 && candidate.traceID && isMarked(traces_, *candidate.traceID, rank(candidate));
    }

    /// Of all but the least reliable kind, which covers none.
    void markTraces(std::span<const Candidate> candidates) {
        Marks::value_type* last = nullptr;  // the records of one trace mostly stand together
        for (const Candidate& candidate : candidates) {
            if (rank(candidate) >= leastReliable_ || !candidate.traceID) continue;
            if (last == nullptr || last->first != *candidate.traceID)
                last = &*traces_.try_emplace(*candidate.traceID).first;
            last->second |= 1U << rank(candidate);
        }
    }

    /// Responses matter for those few whose trace does not tell.
    void markResponses(std::span<const Candidate> candidates) {
        for (const Candidate& candidate : candidates) {
            if (rank(candidate) > 0 && candidate.responseID && !hasTraceOf(candidate))
                responses_.try_emplace(*candidate.responseID);
        }
        if (responses_.empty()) return;
        for (const Candidate& candidate : candidates) {
            if (rank(candidate) >= leastReliable_ || !candidate.responseID) continue;
            const auto wanted = responses_.find(*candidate.responseID);
            if (wanted != responses_.end()) wanted->second |= 1U << rank(candidate);
        }
    }

    unsigned leastReliable_ = 0;
    Marks traces_;
    Marks responses_;
};

/// Calls `keep` with each candidate that no more reliable kind covers.
template <typename Keep>
void forEachUncovered(std::span<const Candidate> candidates, Keep&& keep) {
    const Cover cover{candidates};
    for (const Candidate& candidate : candidates) {
        if (!cover.has(candidate)) keep(candidate);
    }
}

/// "gpt-5" of "openai/gpt-5".
std::string modelName(std::string name) {
    const std::size_t slash = name.rfind('/');
    if (slash != std::string::npos && slash + 1 < name.size()) name.erase(0, slash + 1);
    return name.empty() ? "copilot" : name;
}

}  // namespace

std::vector<Candidate> CopilotOTelParser::candidates(const std::string& file, const JSONLStreamReader& reader) {
    FileReading reading;
    {
        JSONParser parser;
        reader.read(file, [&](std::string_view line) { reading.take(parser.parsePadded(line)); });
    }
    const std::optional<FileCursor::Status> status = FileCursor::state(file);
    return std::move(reading).candidates(status ? Date{status->mtime} : Date::distantPast());
}

std::vector<Candidate> CopilotOTelParser::dedupedCandidates(std::span<const Candidate> candidates) {
    std::vector<Candidate> kept;
    forEachUncovered(candidates, [&](const Candidate& candidate) { kept.push_back(candidate); });
    return kept;
}

std::vector<UsageEvent> CopilotOTelParser::events(std::span<const Candidate> candidates) {
    return events(dedupedCandidates(candidates));
}

std::vector<UsageEvent> CopilotOTelParser::events(std::vector<Candidate>&& candidates) {
    std::vector<UsageEvent> events;
    events.reserve(candidates.size());
    const Cover cover{candidates};
    for (Candidate& candidate : candidates) {
        if (cover.has(candidate)) continue;
        UsageEvent& event = events.emplace_back();
        event.messageId = std::move(candidate.sessionID);
        event.requestId = std::move(candidate.dedupKey);
        event.provider = ProviderID::Copilot;
        event.model = modelName(std::move(candidate.model));
        event.timestamp = candidate.timestamp;
        event.usage = candidate.usage;
    }
    return events;
}

std::vector<AIUSample> CopilotOTelParser::aiuSamples(std::span<const Candidate> candidates) {
    std::vector<AIUSample> samples;
    forEachUncovered(candidates, [&](const Candidate& candidate) {
        if (candidate.aiuNano >= 1) samples.push_back({.timestamp = candidate.timestamp, .nano = candidate.aiuNano});
    });
    return samples;
}

}  // namespace quorvane
