#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quorvane {

/// The known providers. Serialised everywhere by raw name. There is no order of its own: where a list must be stable,
/// it follows `allProviderIDs`, which is the order of declaration, or an explicit sort.
enum class ProviderID : std::uint8_t {
    Claude,
    Codex,
    Gemini,
    Copilot,
    Opencode,
    Amp,
    Factory,
    Codebuff,
    Kilo,
    Kimi,
    Hermes,
    PiAgent,
    Goose,
    Openclaw,
    Qwen,
    Qoder,
    Codebuddy,
    Cursor,
    Openai,
    Azureopenai,
    Opencodego,
    Alibaba,
    Alibabatokenplan,
    Antigravity,
    Devin,
    Zai,
    Minimax,
    Manus,
    Kiro,
    Vertexai,
    Augment,
    Jetbrains,
    Kimik2,
    Moonshot,
    T3chat,
    Ollama,
    Synthetic,
    Openrouter,
    Elevenlabs,
    Warp,
    Windsurf,
    Zed,
    Perplexity,
    Mimo,
    Doubao,
    Sakana,
    Abacus,
    Mistral,
    Deepseek,
    Crof,
    Venice,
    Commandcode,
    Stepfun,
    Bedrock,
    Grok,
    Groq,
    Llmproxy,
    Litellm,
    Deepgram,
    Poe,
    Chutes,
    Aider,
    MuseSpark,
};

/// All cases in the order of declaration.
[[nodiscard]] constexpr auto allProviderIDs() noexcept {
    std::array<ProviderID, static_cast<std::size_t>(ProviderID::MuseSpark) + 1> all{};
    for (std::size_t index = 0; index < all.size(); ++index)
        all[index] = static_cast<ProviderID>(index);
    return all;
}

/// The name in files, in the index and on the command line; the view lives for ever.
[[nodiscard]] std::string_view rawName(ProviderID provider) noexcept;

/// The exact inverse of `rawName`, case counts; absent for any other text.
[[nodiscard]] std::optional<ProviderID> providerFromRawName(std::string_view text) noexcept;

}  // namespace quorvane
