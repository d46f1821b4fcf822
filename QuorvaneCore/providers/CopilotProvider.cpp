#include "QuorvaneCore/providers/CopilotProvider.h"

#include <algorithm>
#include <span>
#include <utility>

#include "QuorvaneCore/ingest/FileCursor.h"
#include "QuorvaneCore/model/Deduplicator.h"
#include "QuorvaneCore/platform/CheckedArithmetic.h"
#include "QuorvaneCore/platform/DirectoryWalk.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/UserFolders.h"
#include "QuorvaneCore/providers/CopilotCandidateCache.h"

namespace quorvane {
namespace {

/// The first instant of a window of so many days; absent if that lies beyond the days that a calendar counts.
std::optional<Date> windowStart(std::int64_t days, Date now, const Calendar& calendar) {
    constexpr std::int64_t mostDays = 1'000'000'000;  // more than two million years
    if (days > mostDays) return std::nullopt;
    return calendar.start(calendar.day(now) - (days - 1));
}

}  // namespace

CopilotProvider::CopilotProvider(std::optional<std::string> root)
    : root_{root ? *std::move(root) : FilePath::joining(UserFolders::home(), ".copilot/otel")} {}

bool CopilotProvider::isAvailable() const {
    return !otelFiles().empty();
}

std::vector<std::string> CopilotProvider::otelFiles() const {
    std::vector<std::string> files = DirectoryWalk::children(root_, "jsonl");
    std::sort(files.begin(), files.end());
    CopilotCandidateCache::shared().prune(files);
    return files;
}

std::vector<UsageEvent> CopilotProvider::loadEvents() const {
    Deduplicator best;
    for (const std::string& file : otelFiles()) {
        const CopilotCandidateCache::Candidates candidates = CopilotCandidateCache::shared().candidates(file, reader_);
        for (UsageEvent& event : CopilotOTelParser::events(*candidates))
            best.add(std::move(event));
    }
    return best.events();
}

DecodedFile CopilotProvider::decodeFile(const std::string& file, std::int64_t /*offset*/) const {
    const std::optional<FileCursor::Status> status = FileCursor::state(file);
    return {.events = CopilotOTelParser::bestEvents(file, reader_), .consumed = status ? status->size : 0};
}

std::vector<CopilotOTelParser::AIUSample> CopilotProvider::aiuSamples() const {
    std::vector<CopilotCandidateCache::Candidates> files;
    std::vector<std::span<const CopilotOTelParser::Candidate>> all;
    for (const std::string& file : otelFiles())
        all.emplace_back(*files.emplace_back(CopilotCandidateCache::shared().candidates(file, reader_)));
    return CopilotOTelParser::aiuSamples(all);
}

std::optional<double> CopilotProvider::windowAIU(std::int64_t days, Date now, const Calendar& calendar) const {
    if (days < 1) return std::nullopt;
    const std::vector<CopilotOTelParser::AIUSample> samples = aiuSamples();
    if (samples.empty()) return std::nullopt;
    const std::optional<Date> start = windowStart(days, now, calendar);
    if (!start) return std::nullopt;
    std::int64_t nano = 0;
    for (const CopilotOTelParser::AIUSample& sample : samples) {
        if (sample.timestamp >= *start && sample.timestamp <= now) nano = checkedAdd(nano, sample.nano);
    }
    return static_cast<double>(nano) / 1e9;
}

}  // namespace quorvane
