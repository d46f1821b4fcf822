#pragma once
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "QuorvaneCore/ingest/JSONLStreamReader.h"
#include "QuorvaneCore/model/TokenUsage.h"
#include "QuorvaneCore/model/UsageEvent.h"
#include "QuorvaneCore/platform/Date.h"

namespace quorvane {

/// Makes model calls out of the OpenTelemetry records that Copilot CLI exports as JSON lines. One call shows up several
/// times: as a chat span, as the log record of an inference, in the log record of an agent's turn, and summed up in the
/// agent's span. Each record with tokens is a candidate; of those that speak of one call the most reliable kind counts.
/// Nothing here throws or reports: what cannot be read gives fewer candidates. Counters whose sums 64 bits cannot hold
/// end the process, and so does a time that they cannot hold in milliseconds. Any thread may call any operation.
class CopilotOTelParser {
public:
    CopilotOTelParser() = delete;

    /// Kinds of records, the most reliable one first.
    enum class RecordKind : std::uint8_t { ChatSpan, InferenceLog, AgentTurnLog, AgentSummarySpan };

    /// One record that may become an event.
    struct Candidate {
        RecordKind kind{};
        std::optional<std::string> traceID;     ///< never empty
        std::optional<std::string> responseID;  ///< never empty
        std::string model;                      ///< the record's own, else its trace's, else "copilot"
        std::string sessionID;                  ///< the record's own, else its trace's, else a stand-in
        Date timestamp;                         ///< the file's last change where the record names no time
        TokenUsage usage;                       ///< reasoning counts as output
        std::string dedupKey;                   ///< the same for the same record at each read of the file
        std::int64_t aiuNano = 0;               ///< AIU in billionths; 0 where the record names none

        friend bool operator==(const Candidate&, const Candidate&) = default;
    };

    /// What one call consumed of Copilot's own unit.
    struct AIUSample {
        Date timestamp;
        std::int64_t nano = 0;  ///< AIU in billionths, at least 1

        friend bool operator==(const AIUSample&, const AIUSample&) = default;
    };

    /// The candidates of a file, in its order. What a record does not say of model and session is taken from the other
    /// records of its trace, those behind it included. A count that is a text is read as a number; one beyond 64 bits
    /// counts as 0, as everything does that is no number.
    [[nodiscard]] static std::vector<Candidate> candidates(const std::string& file, const JSONLStreamReader& reader);

    /// The candidates that no more reliable kind covers, in their order: one goes if a candidate of such a kind, before
    /// or behind it, has its trace or its response. Two of one kind never cover each other, and a chat span covers all
    /// other kinds, an inference those of turns and agents, a turn those of agents.
    [[nodiscard]] static std::vector<Candidate> dedupedCandidates(std::span<const Candidate> candidates);

    /// One event for each candidate that is not covered, in their order. A model's name loses the vendor ahead of its
    /// last slash.
    [[nodiscard]] static std::vector<UsageEvent> events(std::span<const Candidate> candidates);

    /// What `Deduplicator` keeps of the events of a file's candidates, in the order in which their keys came, and
    /// without making a candidate of each record.
    [[nodiscard]] static std::vector<UsageEvent> bestEvents(const std::string& file, const JSONLStreamReader& reader);

    /// One sample for each candidate that is not covered and names an AIU figure above 0, in their order.
    [[nodiscard]] static std::vector<AIUSample> aiuSamples(std::span<const Candidate> candidates);
    /// The same for the candidates of several files, which cover each other across them.
    [[nodiscard]] static std::vector<AIUSample> aiuSamples(std::span<const std::span<const Candidate>> files);
};

}  // namespace quorvane
