#include "QuorvaneCore/providers/detail/CopilotReading.h"

#include <initializer_list>
#include <optional>
#include <utility>

#include "QuorvaneCore/platform/CheckedArithmetic.h"

namespace quorvane {
namespace {

using Candidate = CopilotOTelParser::Candidate;
using RecordKind = CopilotOTelParser::RecordKind;

// What the two kinds of calls name differently.

std::string& sessionOf(Candidate& call) noexcept {
    return call.sessionID;
}
std::string& sessionOf(UsageEvent& call) noexcept {
    return call.messageId;
}

std::string& keyOf(Candidate& call) noexcept {
    return call.dedupKey;
}
std::string& keyOf(UsageEvent& call) noexcept {
    return call.requestId;
}

void setModel(Candidate& call, std::string_view model) {
    call.model = model;
}
void setModel(UsageEvent& call, std::string_view model) {
    call.model = CopilotRecord::modelName(model);
}

void setRest(Candidate& call, const CopilotRecord& record, RecordKind kind) {
    call.kind = kind;
    if (const std::string_view trace = record.trace(); !trace.empty()) call.traceID.emplace(trace);
    if (const std::string_view response = record.response(); !response.empty()) call.responseID.emplace(response);
    call.aiuNano = record.nanoAIU();
}
void setRest(UsageEvent& call, const CopilotRecord& /*record*/, RecordKind /*kind*/) noexcept {
    call.provider = ProviderID::Copilot;
}

/// The beginning of a key, which also is the name under which this kind's calls stand in users' indexes.
std::string_view keyPrefix(RecordKind kind) noexcept {
    switch (kind) {
        case RecordKind::ChatSpan: return "chatSpan-span";
        case RecordKind::InferenceLog: return "log";
        case RecordKind::AgentTurnLog: return "agent-turn";
        case RecordKind::AgentSummarySpan: return "agentSummarySpan-span";
    }
    return "";
}

/// The parts with a colon between each two.
std::string joined(std::initializer_list<std::string_view> parts) {
    std::size_t size = parts.size() - 1;
    for (const std::string_view part : parts)
        size += part.size();
    std::string text;
    text.reserve(size);
    for (const std::string_view part : parts) {
        if (!text.empty()) text += ':';
        text += part;
    }
    return text;
}

/// The key of a record that does not name itself by its trace. The call's session and time are known by now.
template <typename Call>
std::string keyByPlace(Call& call, RecordKind kind, std::string_view turn, std::int64_t index) {
    const std::string_view prefix = keyPrefix(kind);
    const std::string& session = sessionOf(call);
    if (!turn.empty()) return joined({prefix, session, turn, std::to_string(index)});
    const std::int64_t milliseconds = checkedInt64(call.timestamp.secondsSince1970 * 1000);
    return joined({prefix, session, std::to_string(milliseconds), std::to_string(index)});
}

}  // namespace

template <typename Call>
void CopilotReading<Call>::take(const CopilotRecord& record) {
    const std::string_view model = record.model();
    const CopilotRecord::Session session = record.session();
    const std::optional<RecordKind> kind = record.kind();
    const TokenUsage usage = kind ? record.tokens() : TokenUsage{};
    const bool isCall = usage.total() >= 1;  // without tokens it is no call
    const bool tellsOfTrace = !model.empty() || session.priority > 0;
    const std::uint32_t trace = isCall || tellsOfTrace ? numberOfTrace(record.trace()) : TextTable::none;
    if (trace != TextTable::none) absorb(contexts_[trace], model, session);
    if (isCall) {
        const bool hasCall = !keepsClaims || isNeeded(record, *kind, trace);
        if (hasCall) addCall(record, *kind, trace, usage);
        if (keepsClaims) addClaim(record, *kind, trace, hasCall);
    }
    ++records_;
}

template <typename Call>
std::uint32_t CopilotReading<Call>::numberOfTrace(std::string_view trace) {
    if (trace.empty()) return TextTable::none;
    // The records of one trace mostly stand together.
    if (lastTrace_ == TextTable::none || trace != traces_.text(lastTrace_)) {
        lastTrace_ = traces_.add(trace);
        if (contexts_.size() < traces_.size()) contexts_.emplace_back();
    }
    return lastTrace_;
}

template <typename Call>
void CopilotReading<Call>::absorb(TraceContext& context, std::string_view model,
                                  const CopilotRecord::Session& session) {
    if (context.model.empty()) context.model = model;
    if (session.priority > context.sessionPriority) {
        context.sessionID = session.id;
        context.sessionPriority = session.priority;
    }
}

/// Whether a call must be made of a record, though another one of its trace may cover it.
template <typename Call>
bool CopilotReading<Call>::isNeeded(const CopilotRecord& record, RecordKind kind, std::uint32_t trace) const noexcept {
    if (trace == TextTable::none || !covers(contexts_[trace].kinds, kind)) return true;
    // A key by place is made in any case, so that it does not depend on the order of records whether a time that cannot
    // be part of it ends the process.
    return kind != RecordKind::AgentTurnLog && record.span().empty();
}

template <typename Call>
void CopilotReading<Call>::addClaim(const CopilotRecord& record, RecordKind kind, std::uint32_t trace, bool hasCall) {
    claims_.push_back(
        {.response = responses_.keep(record.response()), .trace = trace, .kind = kind, .hasCall = hasCall});
    if (trace != TextTable::none) contexts_[trace].kinds |= kindBit(kind);
}

template <typename Call>
void CopilotReading<Call>::addCall(const CopilotRecord& record, RecordKind kind, std::uint32_t trace,
                                   const TokenUsage& usage) {
    Call& call = calls_.emplace_back();
    call.usage = usage;
    setRest(call, record, kind);
    if (const std::string_view model = record.model(); !model.empty()) setModel(call, model);
    sessionOf(call) = record.session().id;
    const std::optional<Date> time = record.time();
    if (time) call.timestamp = *time;
    const bool isTurn = kind == RecordKind::AgentTurnLog;
    std::string turn = isTurn ? turnName(record) : std::string{};
    const std::string_view part = isTurn ? std::string_view{turn} : record.span();
    if (trace != TextTable::none && !part.empty()) keyOf(call) = joined({keyPrefix(kind), record.trace(), part});
    if (time && !call.model.empty() && !sessionOf(call).empty() && !keyOf(call).empty()) return;
    unfinished_.push_back({.call = calls_.size() - 1,
                           .isTimeless = !time,
                           .trace = trace,
                           .kind = kind,
                           .index = records_,
                           .turn = std::move(turn)});
}

/// Never empty.
template <typename Call>
std::string CopilotReading<Call>::turnName(const CopilotRecord& record) const {
    const std::string_view turn = record.turn();
    return turn.empty() ? "idx-" + std::to_string(records_) : std::string{turn};
}

template <typename Call>
void CopilotReading<Call>::complete(Date fallback) {
    for (const Unfinished& open : unfinished_) {
        Call& call = calls_[open.call];
        if (open.isTimeless) call.timestamp = fallback;
        askTrace(call, open.trace);
        if (keyOf(call).empty()) keyOf(call) = keyByPlace(call, open.kind, open.turn, open.index);
    }
}

/// Fills in what the call's own record does not say.
template <typename Call>
void CopilotReading<Call>::askTrace(Call& call, std::uint32_t trace) const {
    const bool isKnown = trace != TextTable::none;
    if (call.model.empty()) {
        const bool isNamed = isKnown && !contexts_[trace].model.empty();
        setModel(call, isNamed ? std::string_view{contexts_[trace].model} : "copilot");
    }
    if (sessionOf(call).empty() && isKnown) {
        const std::string& session = contexts_[trace].sessionID;
        sessionOf(call) = session.empty() ? traces_.text(trace) : std::string_view{session};
    }
    if (sessionOf(call).empty()) sessionOf(call) = "unknown-session";
}

template class CopilotReading<Candidate>;
template class CopilotReading<UsageEvent>;

}  // namespace quorvane
