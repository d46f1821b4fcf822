#include "QuorvaneCore/providers/CopilotOTelParser.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "QuorvaneCore/ingest/FileCursor.h"
#include "QuorvaneCore/platform/JSONRecordReader.h"
#include "QuorvaneCore/platform/TextTable.h"
#include "QuorvaneCore/providers/detail/CopilotBestEvents.h"
#include "QuorvaneCore/providers/detail/CopilotCover.h"
#include "QuorvaneCore/providers/detail/CopilotReading.h"
#include "QuorvaneCore/providers/detail/CopilotRecord.h"

namespace quorvane {
namespace {

using AIUSample = CopilotOTelParser::AIUSample;
using Candidate = CopilotOTelParser::Candidate;

/// How many calls there hardly are more of in a file: with the records around it a call takes 1600 bytes, and much more
/// where the telemetry holds what was said.
std::size_t mostCalls(const std::string& file) {
    constexpr std::int64_t bytesOfCall = 1536;
    constexpr std::int64_t limit = 1 << 18;  // what is reserved should not matter, even if the file holds no call
    const std::optional<FileCursor::Status> status = FileCursor::state(file);
    return status ? static_cast<std::size_t>(std::min(status->size / bytesOfCall, limit)) : 0;
}

template <typename Call>
void readAll(const std::string& file, const JSONLStreamReader& reader, CopilotReading<Call>& reading) {
    JSONRecordReader records = CopilotRecord::reader();
    reader.read(file, [&](std::string_view line) {
        if (records.readPadded(line)) reading.take(CopilotRecord{records});
    });
    const std::optional<FileCursor::Status> status = FileCursor::state(file);
    reading.complete(status ? Date{status->mtime} : Date::distantPast());
}

UsageEvent event(const Candidate& candidate) {
    return {.messageId = candidate.sessionID,
            .requestId = candidate.dedupKey,
            .provider = ProviderID::Copilot,
            .model = std::string{CopilotRecord::modelName(candidate.model)},
            .timestamp = candidate.timestamp,
            .usage = candidate.usage,
            .project = std::nullopt};
}

/// Of candidates, whose texts must outlive them, in the order of the files.
std::vector<CopilotClaim> claimsOf(std::span<const std::span<const Candidate>> files) {
    TextTable traces;
    std::vector<CopilotClaim> claims;
    for (const std::span<const Candidate> file : files) {
        for (const Candidate& candidate : file) {
            claims.push_back({.response = candidate.responseID ? *candidate.responseID : std::string_view{},
                              .trace = candidate.traceID ? traces.add(*candidate.traceID) : TextTable::none,
                              .kind = candidate.kind});
        }
    }
    return claims;
}

/// Calls `keep` with each candidate that no more reliable kind covers.
template <typename Keep>
void forEachUncovered(std::span<const std::span<const Candidate>> files, Keep&& keep) {
    const std::vector<bool> covered = coveredClaims(claimsOf(files));
    std::size_t at = 0;
    for (const std::span<const Candidate> file : files) {
        for (const Candidate& candidate : file) {
            if (!covered[at++]) keep(candidate);
        }
    }
}

/// Takes away the events whose claims are covered.
void removeCovered(std::vector<UsageEvent>& events, std::span<const CopilotClaim> claims) {
    const std::vector<bool> covered = coveredClaims(claims);
    std::size_t next = 0;
    std::size_t kept = 0;
    for (std::size_t at = 0; at < claims.size(); ++at) {
        if (!claims[at].hasCall) continue;
        UsageEvent& event = events[next++];
        if (covered[at]) continue;
        if (&events[kept] != &event) events[kept] = std::move(event);
        ++kept;
    }
    events.resize(kept);
}

}  // namespace

std::vector<Candidate> CopilotOTelParser::candidates(const std::string& file, const JSONLStreamReader& reader) {
    CopilotReading<Candidate> reading{0};
    readAll(file, reader, reading);
    return std::move(reading.calls());
}

std::vector<Candidate> CopilotOTelParser::dedupedCandidates(std::span<const Candidate> candidates) {
    std::vector<Candidate> kept;
    forEachUncovered({&candidates, 1}, [&](const Candidate& candidate) { kept.push_back(candidate); });
    return kept;
}

std::vector<UsageEvent> CopilotOTelParser::events(std::span<const Candidate> candidates) {
    std::vector<UsageEvent> events;
    events.reserve(candidates.size());
    forEachUncovered({&candidates, 1}, [&](const Candidate& candidate) { events.push_back(event(candidate)); });
    return events;
}

std::vector<UsageEvent> CopilotOTelParser::bestEvents(const std::string& file, const JSONLStreamReader& reader) {
    CopilotReading<UsageEvent> reading{mostCalls(file)};
    readAll(file, reader, reading);
    removeCovered(reading.calls(), reading.claims());
    keepBestEvents(reading.calls());
    return std::move(reading.calls());
}

std::vector<AIUSample> CopilotOTelParser::aiuSamples(std::span<const Candidate> candidates) {
    return aiuSamples({&candidates, 1});
}

std::vector<AIUSample> CopilotOTelParser::aiuSamples(std::span<const std::span<const Candidate>> files) {
    std::vector<AIUSample> samples;
    forEachUncovered(files, [&](const Candidate& candidate) {
        if (candidate.aiuNano >= 1) samples.push_back({.timestamp = candidate.timestamp, .nano = candidate.aiuNano});
    });
    return samples;
}

}  // namespace quorvane
