#pragma once
// Not installed: what the Codex reader knows of a line before it parses it.
#include <string_view>

namespace quorvane {

/// Most bytes of a rollout are in lines that tell neither of tokens nor of models: messages, tool output, encrypted
/// reasoning, compacted history. These are told by their types, which stand near the beginning, and are never parsed.
/// Neither question is ever answered with no for a line that matters; for one that does not, yes costs a parse.
class CodexLine {
public:
    CodexLine() = delete;

    /// Whether the line may name a folder or a model, or count tokens.
    [[nodiscard]] static bool mayTellOfUsage(std::string_view line) noexcept;

    /// Whether the line may count tokens; such a line may also report quotas.
    [[nodiscard]] static bool mayCountTokens(std::string_view line) noexcept;
};

}  // namespace quorvane
