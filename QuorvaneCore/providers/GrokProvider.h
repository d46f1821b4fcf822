#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/ingest/JSONLStreamReader.h"
#include "QuorvaneCore/model/IndexableProvider.h"
#include "QuorvaneCore/platform/JSONValue.h"

namespace quorvane {

/// Reads Grok Build's session logs: one append-only file "updates.jsonl" a session, in a folder of its own below that
/// of its project, whose name is the project's path with percent encoding. Of the session updates in it, the lines of
/// completed turns tell what the turn used, model by model. The quotas come from `GrokRateLimitCapture`.
class GrokProvider final : public IndexableProvider {
public:
    /// `root` is the agent's home; absent means as in `GrokHome::path`, looked up here and never again.
    explicit GrokProvider(std::optional<std::string> root = std::nullopt);

    [[nodiscard]] ProviderID id() const override { return ProviderID::Grok; }
    [[nodiscard]] std::vector<std::string> watchPaths() const override { return {sessionsRoot()}; }

    /// Whether there is a session log.
    [[nodiscard]] bool isAvailable() const override;

    /// The events of each session log, one log after the other; a call that two logs tell of is there twice.
    [[nodiscard]] std::vector<UsageEvent> loadEvents() const override;

    /// What the capture last wrote. Where the capture is installed, the agent's log is first looked at for newer
    /// figures, unless it has not changed since.
    [[nodiscard]] std::optional<RateLimitSnapshot> latestRateLimits() const override;
    [[nodiscard]] bool latestRateLimitAwaitingReset(Date now) const override;

    [[nodiscard]] std::vector<std::string> dataFiles() const override { return updatesFiles(); }
    [[nodiscard]] bool canTailAppend() const override { return true; }
    [[nodiscard]] std::int64_t parserRevision() const override { return 2; }
    [[nodiscard]] DecodedFile decodeFile(const std::string& file, std::int64_t offset) const override;

    /// The folder "sessions" in the agent's home.
    [[nodiscard]] std::string sessionsRoot() const;

    /// The session logs, in ascending order of their paths' bytes.
    [[nodiscard]] std::vector<std::string> updatesFiles() const;

    /// The calls that one line tells of, at least one; one for each model that took part, in no particular order.
    /// Absent for a line that tells of none or is no JSON.
    [[nodiscard]] static std::optional<std::vector<UsageEvent>> decode(std::string_view line,
                                                                       const std::optional<std::string>& project);

    /// When the turn ended: milliseconds of `meta`, which may be absent, else seconds or milliseconds of the line's
    /// `object`; without any, the distant past.
    [[nodiscard]] static Date decodeTimestamp(JSONValue object, JSONValue meta);

    /// Absent if nothing was used. Cached tokens, which the agent counts as input, are taken out of the input;
    /// reasoning counts as output.
    [[nodiscard]] static std::optional<TokenUsage> tokenUsage(JSONValue usage);

    /// The path of the project whose session log `updatesFile` is: the name of the folder above the session's, with its
    /// percent encoding removed if it is valid. Absent for a log that lies in no project's folder.
    [[nodiscard]] static std::optional<std::string> projectName(std::string_view updatesFile);

    /// As `GrokHome::isDetected`.
    [[nodiscard]] static bool isGrokBuildDetected(const std::optional<std::string>& home = std::nullopt);

private:
    /// Brings the captured figures up to date, if the capture is installed.
    void refreshCapture(Date now) const;

    std::string root_;
    JSONLStreamReader reader_{.chunkSize = 65536};
};

}  // namespace quorvane
