#include "QuorvaneCore/providers/detail/CopilotRecord.h"

#include <algorithm>
#include <array>

#include "QuorvaneCore/platform/CheckedArithmetic.h"
#include "QuorvaneCore/platform/NumberText.h"

namespace quorvane {
namespace {

using RecordKind = CopilotOTelParser::RecordKind;

/// The members that are asked for, by their places in `memberKeys`.
enum Member : std::uint8_t {
    Type,
    TraceID,
    SpanID,
    Name,
    Kind,
    StartTime,
    EndTime,
    Attributes,
    Duration,
    Body,
    UnderlinedBody,
    HrTime,
    UnderlinedHrTime,
    Time,
    Timestamp,
    ObservedTimestamp,
    TimeUnixNano,
    MemberCount,
};
constexpr JSONKeySet<MemberCount> memberKeys{{"type", "traceId", "spanId", "name", "kind", "startTime", "endTime",
                                              "attributes", "duration", "body", "_body", "hrTime", "_hrTime", "time",
                                              "timestamp", "observedTimestamp", "timeUnixNano"}};

/// The same for the attributes.
enum Attribute : std::uint8_t {
    Operation,
    EventName,
    RequestModel,
    ResponseModel,
    Conversation,
    ChatSession,
    OlderChatSession,
    PlainSession,
    Interaction,
    Response,
    TurnIndex,
    ChatTurnIndex,
    Input,
    Output,
    CacheRead,
    CacheWrite,
    CacheCreation,
    ReasoningOutput,
    Reasoning,
    NanoAIU,
    PlainNanoAIU,
    AttributeCount,
};
constexpr JSONKeySet<AttributeCount> attributeKeys{{"gen_ai.operation.name",
                                                    "event.name",
                                                    "gen_ai.request.model",
                                                    "gen_ai.response.model",
                                                    "gen_ai.conversation.id",
                                                    "copilot_chat.session_id",
                                                    "copilot_chat.chat_session_id",
                                                    "session.id",
                                                    "github.copilot.interaction_id",
                                                    "gen_ai.response.id",
                                                    "turn.index",
                                                    "copilot_chat.turn.index",
                                                    "gen_ai.usage.input_tokens",
                                                    "gen_ai.usage.output_tokens",
                                                    "gen_ai.usage.cache_read.input_tokens",
                                                    "gen_ai.usage.cache_write.input_tokens",
                                                    "gen_ai.usage.cache_creation.input_tokens",
                                                    "gen_ai.usage.reasoning.output_tokens",
                                                    "gen_ai.usage.reasoning_tokens",
                                                    "github.copilot.nano_aiu",
                                                    "copilot.nano_aiu"}};

std::string_view textOf(const JSONField& field) noexcept {
    return field.text().value_or(std::string_view{});
}

std::string_view firstFilled(const JSONField& first, const JSONField& second) noexcept {
    const std::string_view text = textOf(first);
    return text.empty() ? textOf(second) : text;
}

/// Truncated toward zero; 0 for what 64 bits cannot hold.
std::int64_t truncated(double number) noexcept {
    constexpr double limit = 9223372036854775808.0;  // 2^63
    return number > -limit && number < limit ? static_cast<std::int64_t>(number) : 0;
}

/// A count among the attributes: a number, or a text that is one as a whole; 0 for anything else.
std::int64_t count(const JSONField& field) {
    if (const std::optional<std::int64_t> integer = field.integer()) return *integer;
    if (const std::optional<double> number = field.number()) return truncated(*number);
    const std::optional<std::string_view> text = field.text();
    const std::optional<double> number = text ? parseFloat(*text) : std::nullopt;
    return number ? truncated(*number) : 0;
}

std::int64_t firstCount(const JSONField& first, const JSONField& second) {
    const std::int64_t number = count(first);
    return number != 0 ? number : count(second);
}

double positiveNumber(const JSONField& field) noexcept {
    return std::max(field.number().value_or(0), 0.0);
}

/// A number whose size tells its unit.
Date scalarDate(double number) noexcept {
    if (number >= 1e17) return Date{number / 1e9};
    if (number >= 1e14) return Date{number / 1e6};
    if (number >= 1e11) return Date{number / 1e3};
    return Date{number};
}

}  // namespace

JSONRecordReader CopilotRecord::reader() {
    return JSONRecordReader{memberKeys.keys(), Attributes, attributeKeys.keys()};
}

std::string_view CopilotRecord::modelName(std::string_view model) noexcept {
    const std::size_t slash = model.rfind('/');
    if (slash != std::string_view::npos && slash + 1 < model.size()) model.remove_prefix(slash + 1);
    return model.empty() ? "copilot" : model;
}

std::string_view CopilotRecord::trace() const noexcept {
    return textOf(members_[TraceID]);
}

std::string_view CopilotRecord::span() const noexcept {
    return textOf(members_[SpanID]);
}

std::string_view CopilotRecord::response() const noexcept {
    return textOf(attributes_[Response]);
}

std::string_view CopilotRecord::model() const noexcept {
    return firstFilled(attributes_[ResponseModel], attributes_[RequestModel]);
}

std::string_view CopilotRecord::turn() const noexcept {
    return firstFilled(attributes_[TurnIndex], attributes_[ChatTurnIndex]);
}

CopilotRecord::Session CopilotRecord::session() const noexcept {
    struct Source {
        Attribute attribute;
        int priority;
    };
    constexpr std::array<Source, 6> sources{{{Conversation, 3},
                                             {ChatSession, 3},
                                             {OlderChatSession, 3},
                                             {PlainSession, 3},
                                             {Interaction, 2},
                                             {Response, 1}}};
    for (const Source& source : sources) {
        const std::string_view id = textOf(attributes_[source.attribute]);
        if (!id.empty()) return {.id = id, .priority = source.priority};
    }
    return {};
}

bool CopilotRecord::isSpan() const noexcept {
    if (textOf(members_[Type]) == "span") return true;
    if (textOf(members_[Name]).empty()) return false;
    constexpr std::array signs{SpanID, TraceID, StartTime, EndTime, Duration, Kind};
    return std::any_of(signs.begin(), signs.end(), [&](Member sign) { return members_[sign].isPresent(); });
}

std::optional<RecordKind> CopilotRecord::spanKind() const noexcept {
    const std::string_view name = textOf(members_[Name]);
    const std::string_view operation = textOf(attributes_[Operation]);
    if (operation == "chat" || name.starts_with("chat ")) return RecordKind::ChatSpan;
    if (operation == "invoke_agent" || name.starts_with("invoke_agent ")) return RecordKind::AgentSummarySpan;
    return std::nullopt;
}

std::optional<RecordKind> CopilotRecord::logKind() const noexcept {
    constexpr std::string_view turnEvent = "copilot_chat.agent.turn";
    const std::optional<std::string_view> ownBody = members_[Body].text();  // hides the other one even if it is empty
    const std::string_view body = ownBody ? *ownBody : textOf(members_[UnderlinedBody]);
    const std::string_view event = textOf(attributes_[EventName]);
    if (event == "gen_ai.client.inference.operation.details" || body.starts_with("GenAI inference:")) {
        return RecordKind::InferenceLog;
    }
    if (event == turnEvent || body.starts_with(turnEvent)) return RecordKind::AgentTurnLog;
    return std::nullopt;
}

std::optional<RecordKind> CopilotRecord::kind() const noexcept {
    return isSpan() ? spanKind() : logKind();
}

TokenUsage CopilotRecord::tokens() const {
    const std::int64_t input = count(attributes_[Input]);
    const std::int64_t cacheRead = count(attributes_[CacheRead]);
    return {.input = std::max<std::int64_t>(0, checkedSubtract(input, std::min(cacheRead, input))),
            .output = checkedAdd(count(attributes_[Output]),
                                 firstCount(attributes_[ReasoningOutput], attributes_[Reasoning])),
            .cacheCreate5m = firstCount(attributes_[CacheWrite], attributes_[CacheCreation]),
            .cacheCreate1h = 0,
            .cacheRead = cacheRead};
}

std::int64_t CopilotRecord::nanoAIU() const {
    return firstCount(attributes_[NanoAIU], attributes_[PlainNanoAIU]);
}

std::optional<Date> CopilotRecord::time() const noexcept {
    for (const Member member : {EndTime, StartTime, HrTime, UnderlinedHrTime, Time}) {
        // Seconds and nanoseconds.
        if (const auto pair = members_[member].pair()) return Date{pair->first + pair->second / 1e9};
    }
    for (const Member member : {Timestamp, ObservedTimestamp}) {
        if (const double number = positiveNumber(members_[member]); number > 0) return scalarDate(number);
    }
    const double nanoseconds = positiveNumber(members_[TimeUnixNano]);
    return nanoseconds > 0 ? std::optional{Date{nanoseconds / 1e9}} : std::nullopt;
}

}  // namespace quorvane
