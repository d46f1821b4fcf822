#pragma once
// Not installed: the records of one file of Copilot's telemetry, read once.
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "QuorvaneCore/model/UsageEvent.h"
#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/platform/TextTable.h"
#include "QuorvaneCore/providers/CopilotOTelParser.h"
#include "QuorvaneCore/providers/detail/CopilotCover.h"
#include "QuorvaneCore/providers/detail/CopilotRecord.h"

namespace quorvane {

/// Takes the records of one file, each of them once and in order, makes a call of each that has tokens, and completes
/// the calls when all records have been seen: what one does not say, another one of its trace may say, even one behind
/// it. A `Call` is a `CopilotOTelParser::Candidate` or a `UsageEvent`. A candidate tells by itself what it covers;
/// beside events, claims are kept to tell, and no event is made of a record that is known to be covered when it comes,
/// as nearly all are that are covered at all.
template <typename Call>
class CopilotReading {
public:
    /// `mostCalls` is a guess: more of them take longer.
    explicit CopilotReading(std::size_t mostCalls) { calls_.reserve(mostCalls); }

    void take(const CopilotRecord& record);

    /// To be called once, behind the last record. `fallback` is the time of records that name none.
    void complete(Date fallback);

    /// In the order of the file; the caller may take them.
    [[nodiscard]] std::vector<Call>& calls() noexcept { return calls_; }
    /// Of events, what all records with tokens say; those claims that have a call have theirs in the same order. Valid
    /// as long as the reading. Of candidates, nothing.
    [[nodiscard]] std::span<const CopilotClaim> claims() const noexcept { return claims_; }

private:
    using RecordKind = CopilotOTelParser::RecordKind;

    static constexpr bool keepsClaims = std::is_same_v<Call, UsageEvent>;

    /// What is known of a trace, from any record of the file.
    struct TraceContext {
        std::string model;  ///< the first one seen
        std::string sessionID;
        int sessionPriority = 0;
        unsigned kinds = 0;  ///< of its claims so far
    };

    /// A call that can be completed only when the whole file is known.
    struct Unfinished {
        std::size_t call = 0;  ///< its place among the calls
        bool isTimeless = false;
        std::uint32_t trace = TextTable::none;
        RecordKind kind{};
        std::int64_t index = 0;  ///< the number of records before its own
        std::string turn;        ///< of a turn's log
    };

    [[nodiscard]] std::uint32_t numberOfTrace(std::string_view trace);
    void absorb(TraceContext& context, std::string_view model, const CopilotRecord::Session& session);
    [[nodiscard]] bool isNeeded(const CopilotRecord& record, RecordKind kind, std::uint32_t trace) const noexcept;
    void addClaim(const CopilotRecord& record, RecordKind kind, std::uint32_t trace, bool hasCall);
    void addCall(const CopilotRecord& record, RecordKind kind, std::uint32_t trace, const TokenUsage& usage);
    [[nodiscard]] std::string turnName(const CopilotRecord& record) const;
    void askTrace(Call& call, std::uint32_t trace) const;

    TextTable traces_;
    std::vector<TraceContext> contexts_;  ///< by the number of the trace
    std::uint32_t lastTrace_ = TextTable::none;
    std::vector<Call> calls_;
    std::vector<CopilotClaim> claims_;
    TextStore responses_;
    std::vector<Unfinished> unfinished_;
    std::int64_t records_ = 0;
};

extern template class CopilotReading<CopilotOTelParser::Candidate>;
extern template class CopilotReading<UsageEvent>;

}  // namespace quorvane
