#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "QuorvaneCore/model/IndexableProvider.h"

namespace quorvane {

/// Reads Gemini CLI's chats: one JSON document each, "session-….json" in a folder "chats" at any depth below
/// ".gemini/tmp". The agent writes a document anew whenever its chat goes on, so a changed file is always read whole.
class GeminiProvider final : public IndexableProvider {
public:
    /// `root` is the folder that the projects lie in; absent means ".gemini/tmp" under the user's home directory.
    explicit GeminiProvider(std::optional<std::string> root = std::nullopt);

    [[nodiscard]] ProviderID id() const override { return ProviderID::Gemini; }
    [[nodiscard]] std::vector<std::string> watchPaths() const override { return {root_}; }
    [[nodiscard]] bool isAvailable() const override;

    /// The best event of each call; a chat that was copied counts once.
    [[nodiscard]] std::vector<UsageEvent> loadEvents() const override;

    [[nodiscard]] std::vector<std::string> dataFiles() const override { return sessionFiles(); }
    [[nodiscard]] bool canTailAppend() const override { return false; }
    [[nodiscard]] std::int64_t parserRevision() const override { return 1; }

    /// Parses the whole file, whatever the offset. `consumed` is the file's size, 0 if it cannot be queried.
    [[nodiscard]] DecodedFile decodeFile(const std::string& file, std::int64_t offset) const override;

    /// The chats, in the order of the file system.
    [[nodiscard]] std::vector<std::string> sessionFiles() const;

    /// The calls of one chat in its order, the first message of each identity only. A file that cannot be read or is no
    /// chat gives none.
    [[nodiscard]] static std::vector<UsageEvent> parseUsage(const std::string& file);

private:
    std::string root_;
};

}  // namespace quorvane
