#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/ingest/JSONLStreamReader.h"
#include "QuorvaneCore/model/IndexableProvider.h"

namespace quorvane {

/// Reads Codex's rollouts: one append-only file of JSON lines a session, at any depth below ".codex/sessions", named
/// "rollout-….jsonl". Their token counts are running totals of the session, so what a call used depends on all lines
/// before it: a changed file is always read from its beginning. A session that is resumed in another file counts from
/// zero there. The same lines report the quotas.
class CodexProvider final : public IndexableProvider {
public:
    /// `root` is the folder of rollouts; absent means ".codex/sessions" under the user's home directory.
    explicit CodexProvider(std::optional<std::string> root = std::nullopt);

    [[nodiscard]] ProviderID id() const override { return ProviderID::Codex; }
    [[nodiscard]] std::vector<std::string> watchPaths() const override { return {root_}; }
    [[nodiscard]] bool isAvailable() const override;

    /// The events of each rollout, one rollout after the other.
    [[nodiscard]] std::vector<UsageEvent> loadEvents() const override;

    [[nodiscard]] std::vector<std::string> dataFiles() const override { return rolloutFiles(); }
    [[nodiscard]] bool canTailAppend() const override { return false; }
    [[nodiscard]] std::int64_t parserRevision() const override { return 2; }

    /// Parses the whole file, whatever the offset. `consumed` is the file's size, 0 if it cannot be queried.
    [[nodiscard]] DecodedFile decodeFile(const std::string& file, std::int64_t offset) const override;

    /// The rollouts, in the order of the file system.
    [[nodiscard]] std::vector<std::string> rolloutFiles() const;

    /// The calls of one rollout, in its order, each with a number of its own that further lines never change. A last
    /// line without a line feed counts. A file that cannot be read gives none.
    [[nodiscard]] static std::vector<UsageEvent> parseUsage(const std::string& file, const JSONLStreamReader& reader);

    /// The identity of a rollout and of all its events: the UUID in its name, else the name without its extension.
    [[nodiscard]] static std::string fileUUID(std::string_view file);

    /// What all rollouts together tell of the quotas.
    struct RateLimitState {
        std::optional<RateLimitSnapshot> current;  ///< of the newest report with a window that is current
        bool awaitingReset = false;                ///< nothing is current, since the last known window was reset

        friend bool operator==(const RateLimitState&, const RateLimitState&) = default;
    };

    /// A session whose windows have expired gives way to an older one whose windows have not. Rollouts that did not
    /// change since the last call, in this process, are not read.
    [[nodiscard]] RateLimitState latestRateLimitState(Date now) const;

    [[nodiscard]] std::optional<RateLimitSnapshot> latestRateLimits() const override;
    [[nodiscard]] std::optional<RateLimitSnapshot> latestRateLimits(Date now) const;
    [[nodiscard]] bool latestRateLimitAwaitingReset(Date now) const override;

private:
    std::string root_;
    JSONLStreamReader reader_{.chunkSize = 65536};
};

}  // namespace quorvane
