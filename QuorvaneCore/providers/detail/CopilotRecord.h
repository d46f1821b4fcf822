#pragma once
// Not installed: what one record of Copilot's telemetry tells by itself.
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "QuorvaneCore/model/TokenUsage.h"
#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/platform/JSONRecordReader.h"
#include "QuorvaneCore/providers/CopilotOTelParser.h"

namespace quorvane {

/// The record that a reader has just read; valid as long as its fields. Texts that may be empty are empty where the
/// record has none. Pure.
class CopilotRecord {
public:
    using RecordKind = CopilotOTelParser::RecordKind;

    /// A session's name among the attributes, with how much it is worth; 0 is none at all.
    struct Session {
        std::string_view id;
        int priority = 0;
    };

    /// A reader that asks for what is needed here.
    [[nodiscard]] static JSONRecordReader reader();

    /// "gpt-5" of "openai/gpt-5", and "copilot" of nothing.
    [[nodiscard]] static std::string_view modelName(std::string_view model) noexcept;

    explicit CopilotRecord(const JSONRecordReader& reader) noexcept
        : members_{reader.members()}, attributes_{reader.innerMembers()} {}

    [[nodiscard]] std::string_view trace() const noexcept;
    [[nodiscard]] std::string_view span() const noexcept;
    [[nodiscard]] std::string_view response() const noexcept;
    [[nodiscard]] std::string_view model() const noexcept;
    /// Of the attributes that name a session the one that is worth most; of equal ones the first.
    [[nodiscard]] Session session() const noexcept;
    /// The name of an agent's turn.
    [[nodiscard]] std::string_view turn() const noexcept;

    /// Absent for a record that tells of no call.
    [[nodiscard]] std::optional<RecordKind> kind() const noexcept;

    /// Not all 0 means a call. Sums that 64 bits cannot hold end the process.
    [[nodiscard]] TokenUsage tokens() const;
    [[nodiscard]] std::int64_t nanoAIU() const;
    [[nodiscard]] std::optional<Date> time() const noexcept;

private:
    [[nodiscard]] bool isSpan() const noexcept;
    [[nodiscard]] std::optional<RecordKind> spanKind() const noexcept;
    [[nodiscard]] std::optional<RecordKind> logKind() const noexcept;

    std::span<const JSONField> members_;
    std::span<const JSONField> attributes_;
};

}  // namespace quorvane
