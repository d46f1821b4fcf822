#include "QuorvaneCore/model/ProviderID.h"

#include <algorithm>

namespace quorvane {
namespace {

constexpr std::array<std::string_view, allProviderIDs().size()> names{
    "claude",
    "codex",
    "gemini",
    "copilot",
    "opencode",
    "amp",
    "factory",
    "codebuff",
    "kilo",
    "kimi",
    "hermes",
    "pi",
    "goose",
    "openclaw",
    "qwen",
    "qoder",
    "codebuddy",
    "cursor",
    "openai",
    "azureopenai",
    "opencodego",
    "alibaba",
    "alibabatokenplan",
    "antigravity",
    "devin",
    "zai",
    "minimax",
    "manus",
    "kiro",
    "vertexai",
    "augment",
    "jetbrains",
    "kimik2",
    "moonshot",
    "t3chat",
    "ollama",
    "synthetic",
    "openrouter",
    "elevenlabs",
    "warp",
    "windsurf",
    "zed",
    "perplexity",
    "mimo",
    "doubao",
    "sakana",
    "abacus",
    "mistral",
    "deepseek",
    "crof",
    "venice",
    "commandcode",
    "stepfun",
    "bedrock",
    "grok",
    "groq",
    "llmproxy",
    "litellm",
    "deepgram",
    "poe",
    "chutes",
    "aider",
    "muse_spark",
};

}  // namespace

std::string_view rawName(ProviderID provider) noexcept {
    return names[static_cast<std::size_t>(provider)];
}

std::optional<ProviderID> providerFromRawName(std::string_view text) noexcept {
    const auto found = std::find(names.begin(), names.end(), text);
    if (found == names.end()) return std::nullopt;
    return static_cast<ProviderID>(found - names.begin());
}

}  // namespace quorvane
