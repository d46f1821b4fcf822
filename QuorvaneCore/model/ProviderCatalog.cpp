#include "QuorvaneCore/model/ProviderCatalog.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>

namespace quorvane {
namespace {

using Rows = std::array<ProviderDescriptor, allProviderIDs().size()>;

Rows makeRows() {
    using enum ProviderSupport;
    constexpr auto B = ProviderCatalogSource::CodexBar;
    constexpr auto U = ProviderCatalogSource::Ccusage;
    constexpr auto T = ProviderCatalogSource::CodingAgentUsageTracker;
    constexpr auto I = ProviderCatalogSource::OpenIsland;
    constexpr auto R = ProviderCatalogSource::QuorvaneRoadmap;
    constexpr std::nullopt_t same = std::nullopt;  // the short name is the name
    constexpr std::nullopt_t none = std::nullopt;
    // clang-format off
    return {{
        {ProviderID::Claude, "Claude Code", "Claude", "Cl", Live, {B, U, T, I}, "claude"},
        {ProviderID::Codex, "Codex", same, "Cx", Live, {B, U, T, I}, "codex"},
        {ProviderID::Grok, "Grok", same, "Gk", Live, {B, R}, "grok"},
        {ProviderID::Gemini, "Gemini", same, "G", LocalRoadmap, {B, U, T, I}, "gemini"},
        {ProviderID::Copilot, "GitHub Copilot", same, "Co", LocalRoadmap, {B, U, T}, "copilot"},
        {ProviderID::Opencode, "OpenCode", same, "Oc", LocalRoadmap, {B, U, T, I}, "opencode"},
        {ProviderID::Amp, "Amp", same, "Am", LocalRoadmap, {B, U, T}, "amp"},
        {ProviderID::Factory, "Droid (Factory)", same, "Dr", LocalRoadmap, {B, U, T, I}, "factory"},
        {ProviderID::Codebuff, "Codebuff", same, "Cb", LocalRoadmap, {B, U}, "codebuff"},
        {ProviderID::Kilo, "Kilo", same, "Ki", LocalRoadmap, {B, U}, "kilo"},
        {ProviderID::Kimi, "Kimi", same, "Km", LocalRoadmap, {B, U, T, I}, "kimi"},
        {ProviderID::Hermes, "Hermes Agent", same, "He", LocalRoadmap, {U}, none},
        {ProviderID::PiAgent, "pi-agent", same, "Pi", LocalRoadmap, {U}, none},
        {ProviderID::Goose, "Goose", same, "Go", LocalRoadmap, {U}, none},
        {ProviderID::Openclaw, "OpenClaw", same, "Oc", LocalRoadmap, {U}, none},
        {ProviderID::Qwen, "Qwen", same, "Qw", LocalRoadmap, {U, I}, none},
        {ProviderID::Qoder, "Qoder", same, "Qd", CandidateRoadmap, {I}, none},
        {ProviderID::Codebuddy, "CodeBuddy", same, "CB", CandidateRoadmap, {I}, none},
        {ProviderID::Cursor, "Cursor", same, "Cu", LocalRoadmap, {B, T, I}, "cursor"},
        {ProviderID::Openai, "OpenAI", same, "OA", ApiRoadmap, {B}, none},
        {ProviderID::Azureopenai, "Azure OpenAI", same, "Az", ApiRoadmap, {B}, none},
        {ProviderID::Opencodego, "OpenCode Go", same, "Og", ApiRoadmap, {B}, "opencodego"},
        {ProviderID::Alibaba, "Alibaba", same, "Al", ApiRoadmap, {B}, "alibaba"},
        {ProviderID::Alibabatokenplan, "Alibaba Token Plan", same, "At", ApiRoadmap, {B}, none},
        {ProviderID::Antigravity, "Antigravity", same, "Ag", LocalRoadmap, {B, T}, "antigravity"},
        {ProviderID::Devin, "Devin", same, "Dv", ApiRoadmap, {B}, "devin"},
        {ProviderID::Zai, "z.ai", same, "Za", ApiRoadmap, {B, T}, "zai"},
        {ProviderID::Minimax, "MiniMax", same, "Mm", ApiRoadmap, {B, T}, "minimax"},
        {ProviderID::Manus, "Manus", same, "Ma", ApiRoadmap, {B}, "manus"},
        {ProviderID::Kiro, "Kiro", same, "Kr", ApiRoadmap, {B, T}, "kiro"},
        {ProviderID::Vertexai, "Vertex AI", same, "Vx", ApiRoadmap, {B, T}, "vertexai"},
        {ProviderID::Augment, "Augment", same, "Au", ApiRoadmap, {B}, "augment"},
        {ProviderID::Jetbrains, "JetBrains AI", same, "Jb", ApiRoadmap, {B, T}, "jetbrains"},
        {ProviderID::Kimik2, "Kimi K2 (unofficial)", same, "K2", ApiRoadmap, {B, T}, none},
        {ProviderID::Moonshot, "Moonshot / Kimi API", same, "Mo", ApiRoadmap, {B}, none},
        {ProviderID::T3chat, "T3 Chat", same, "T3", ApiRoadmap, {B}, "t3chat"},
        {ProviderID::Ollama, "Ollama", same, "Ol", ApiRoadmap, {B}, "ollama"},
        {ProviderID::Synthetic, "Synthetic", same, "Sy", ApiRoadmap, {B}, "synthetic"},
        {ProviderID::Openrouter, "OpenRouter", same, "Or", ApiRoadmap, {B}, "openrouter"},
        {ProviderID::Elevenlabs, "ElevenLabs", same, "El", ApiRoadmap, {B}, "elevenlabs"},
        {ProviderID::Warp, "Warp", same, "Wp", ApiRoadmap, {B}, "warp"},
        {ProviderID::Windsurf, "Windsurf", same, "Ws", ApiRoadmap, {B}, "windsurf"},
        {ProviderID::Zed, "Zed", same, "Zd", ApiRoadmap, {B}, "zed"},
        {ProviderID::Perplexity, "Perplexity", same, "Px", ApiRoadmap, {B}, "perplexity"},
        {ProviderID::Mimo, "Xiaomi MiMo", same, "Mi", ApiRoadmap, {B}, "mimo"},
        {ProviderID::Doubao, "Doubao", same, "Db", ApiRoadmap, {B}, "doubao"},
        {ProviderID::Sakana, "Sakana AI", same, "Sk", ApiRoadmap, {B}, "sakana"},
        {ProviderID::Abacus, "Abacus AI", same, "Ab", ApiRoadmap, {B}, "abacus"},
        {ProviderID::Mistral, "Mistral", same, "Ms", ApiRoadmap, {B}, "mistral"},
        {ProviderID::Deepseek, "DeepSeek", same, "Ds", ApiRoadmap, {B}, "deepseek"},
        {ProviderID::Crof, "Crof", same, "Cr", ApiRoadmap, {B}, "crof"},
        {ProviderID::Venice, "Venice", same, "Ve", ApiRoadmap, {B}, "venice"},
        {ProviderID::Commandcode, "Command Code", same, "Cc", ApiRoadmap, {B}, "commandcode"},
        {ProviderID::Stepfun, "StepFun", same, "Sf", ApiRoadmap, {B}, "stepfun"},
        {ProviderID::Bedrock, "AWS Bedrock", same, "Br", ApiRoadmap, {B}, "bedrock"},
        {ProviderID::Groq, "Groq", same, "Gq", ApiRoadmap, {B}, "groq"},
        {ProviderID::Llmproxy, "LLM Proxy", same, "Lp", ApiRoadmap, {B}, "llmproxy"},
        {ProviderID::Litellm, "LiteLLM", same, "Ll", ApiRoadmap, {B}, "litellm"},
        {ProviderID::Deepgram, "Deepgram", same, "Dg", ApiRoadmap, {B}, "deepgram"},
        {ProviderID::Poe, "Poe", same, "Po", ApiRoadmap, {B}, "poe"},
        {ProviderID::Chutes, "Chutes", same, "Ch", ApiRoadmap, {B}, "chutes"},
        {ProviderID::MuseSpark, "Muse Spark", same, "Sp", Live, {R}, "muse-spark"},
        {ProviderID::Aider, "Aider", same, "Ai", CandidateRoadmap, {R}, none},
    }};
    // clang-format on
}

/// The rows that `isWanted` takes, in their order.
template <typename Predicate>
std::vector<ProviderDescriptor> rowsWhere(Predicate isWanted) {
    std::vector<ProviderDescriptor> wanted;
    std::ranges::copy_if(ProviderCatalog::all(), std::back_inserter(wanted), isWanted);
    return wanted;
}

}  // namespace

std::span<const ProviderDescriptor> ProviderCatalog::all() {
    static const Rows rows = makeRows();
    return rows;
}

const ProviderDescriptor* ProviderCatalog::descriptor(ProviderID provider) {
    const auto rows = all();
    const auto row = std::ranges::find(rows, provider, &ProviderDescriptor::id);
    return row == rows.end() ? nullptr : &*row;
}

std::vector<ProviderDescriptor> ProviderCatalog::live() {
    return rowsWhere([](const ProviderDescriptor& row) { return row.support == ProviderSupport::Live; });
}

std::vector<ProviderDescriptor> ProviderCatalog::withSource(ProviderCatalogSource source) {
    return rowsWhere([source](const ProviderDescriptor& row) {
        return std::ranges::find(row.sources, source) != row.sources.end();
    });
}

}  // namespace quorvane
