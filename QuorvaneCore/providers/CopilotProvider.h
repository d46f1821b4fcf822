#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "QuorvaneCore/ingest/JSONLStreamReader.h"
#include "QuorvaneCore/model/IndexableProvider.h"
#include "QuorvaneCore/platform/Calendar.h"
#include "QuorvaneCore/providers/CopilotOTelParser.h"

namespace quorvane {

/// Reads the telemetry that GitHub Copilot CLI exports once `CopilotOtelSetup` has switched it on: OpenTelemetry
/// records as JSON lines in the files of the extension "jsonl" directly in ".copilot/otel". A record can only be
/// understood with all others of its file, so a changed file is always read whole. What was parsed is kept in
/// `CopilotCandidateCache`.
class CopilotProvider final : public IndexableProvider {
public:
    /// `root` is the folder of the files; absent means ".copilot/otel" under the user's home directory.
    explicit CopilotProvider(std::optional<std::string> root = std::nullopt);

    [[nodiscard]] ProviderID id() const override { return ProviderID::Copilot; }
    [[nodiscard]] std::vector<std::string> watchPaths() const override { return {root_}; }
    /// Whether there is a file.
    [[nodiscard]] bool isAvailable() const override;

    /// Records of one call are told apart within each file; a call that stands in several files counts once.
    [[nodiscard]] std::vector<UsageEvent> loadEvents() const override;

    [[nodiscard]] std::vector<std::string> dataFiles() const override { return otelFiles(); }
    [[nodiscard]] bool canTailAppend() const override { return false; }
    [[nodiscard]] std::int64_t parserRevision() const override { return 1; }

    /// Parses the whole file, whatever the offset and the cache. `consumed` is the file's size, 0 if it cannot be
    /// queried.
    [[nodiscard]] DecodedFile decodeFile(const std::string& file, std::int64_t offset) const override;

    /// The files, in order of their paths. The cache forgets all others when it knows more than these.
    [[nodiscard]] std::vector<std::string> otelFiles() const;

    /// What was consumed of Copilot's own unit, call by call. Other than with events, records of one call are told
    /// apart across all files.
    [[nodiscard]] std::vector<CopilotOTelParser::AIUSample> aiuSamples() const;

    /// The AIU of the last `days` days, the one of `now` included, up to `now`; 0 if there was none in that time.
    /// Absent if there never was any, for `days` below 1, and for a window that begins beyond the calendar's days.
    [[nodiscard]] std::optional<double> windowAIU(std::int64_t days, Date now, const Calendar& calendar) const;

private:
    std::string root_;
    JSONLStreamReader reader_{.chunkSize = 65536};
};

}  // namespace quorvane
