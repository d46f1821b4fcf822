#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/ingest/JSONLStreamReader.h"
#include "QuorvaneCore/model/IndexableProvider.h"

namespace quorvane {

/// Reads Claude Code's session logs: files of the extension "jsonl" at any depth below ".claude/projects", those of
/// subagents included. One line is one JSON object. A message stands on several lines, once per content block with a
/// growing output count, and again in other files after a session is resumed; the best line of each counts.
class ClaudeProvider final : public IndexableProvider {
public:
    /// `root` is the projects directory; absent means ".claude/projects" under the user's home directory.
    explicit ClaudeProvider(std::optional<std::string> root = std::nullopt);

    [[nodiscard]] ProviderID id() const override { return ProviderID::Claude; }
    [[nodiscard]] std::vector<std::string> watchPaths() const override { return {root_}; }
    [[nodiscard]] bool isAvailable() const override;
    [[nodiscard]] std::vector<UsageEvent> loadEvents() const override;

    /// From the capture of the status line; the logs do not tell them.
    [[nodiscard]] std::optional<RateLimitSnapshot> latestRateLimits() const override;
    [[nodiscard]] bool latestRateLimitAwaitingReset(Date now) const override;

    [[nodiscard]] std::vector<std::string> dataFiles() const override { return jsonlFiles(); }
    [[nodiscard]] bool canTailAppend() const override { return true; }
    [[nodiscard]] std::int64_t parserRevision() const override { return 1; }
    [[nodiscard]] DecodedFile decodeFile(const std::string& file, std::int64_t offset) const override;

    /// The log files, in the order of the file system.
    [[nodiscard]] std::vector<std::string> jsonlFiles() const;

    /// The call that one line tells of; absent for a line that tells of none or is no JSON.
    [[nodiscard]] static std::optional<UsageEvent> decode(std::string_view line);

private:
    std::string root_;
    JSONLStreamReader reader_{.chunkSize = 65536};
};

}  // namespace quorvane
