#include <array>
#include <set>
#include <string>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "QuorvaneCore/model/ProviderID.h"

namespace quorvane {
namespace {

/// All providers with their raw names, in the order of declaration. The names stand in indexes and snapshots that are
/// there already, so none of them may ever change.
constexpr std::array<std::pair<ProviderID, const char*>, 63> expectedNames{{
    {ProviderID::Claude, "claude"},
    {ProviderID::Codex, "codex"},
    {ProviderID::Gemini, "gemini"},
    {ProviderID::Copilot, "copilot"},
    {ProviderID::Opencode, "opencode"},
    {ProviderID::Amp, "amp"},
    {ProviderID::Factory, "factory"},
    {ProviderID::Codebuff, "codebuff"},
    {ProviderID::Kilo, "kilo"},
    {ProviderID::Kimi, "kimi"},
    {ProviderID::Hermes, "hermes"},
    {ProviderID::PiAgent, "pi"},
    {ProviderID::Goose, "goose"},
    {ProviderID::Openclaw, "openclaw"},
    {ProviderID::Qwen, "qwen"},
    {ProviderID::Qoder, "qoder"},
    {ProviderID::Codebuddy, "codebuddy"},
    {ProviderID::Cursor, "cursor"},
    {ProviderID::Openai, "openai"},
    {ProviderID::Azureopenai, "azureopenai"},
    {ProviderID::Opencodego, "opencodego"},
    {ProviderID::Alibaba, "alibaba"},
    {ProviderID::Alibabatokenplan, "alibabatokenplan"},
    {ProviderID::Antigravity, "antigravity"},
    {ProviderID::Devin, "devin"},
    {ProviderID::Zai, "zai"},
    {ProviderID::Minimax, "minimax"},
    {ProviderID::Manus, "manus"},
    {ProviderID::Kiro, "kiro"},
    {ProviderID::Vertexai, "vertexai"},
    {ProviderID::Augment, "augment"},
    {ProviderID::Jetbrains, "jetbrains"},
    {ProviderID::Kimik2, "kimik2"},
    {ProviderID::Moonshot, "moonshot"},
    {ProviderID::T3chat, "t3chat"},
    {ProviderID::Ollama, "ollama"},
    {ProviderID::Synthetic, "synthetic"},
    {ProviderID::Openrouter, "openrouter"},
    {ProviderID::Elevenlabs, "elevenlabs"},
    {ProviderID::Warp, "warp"},
    {ProviderID::Windsurf, "windsurf"},
    {ProviderID::Zed, "zed"},
    {ProviderID::Perplexity, "perplexity"},
    {ProviderID::Mimo, "mimo"},
    {ProviderID::Doubao, "doubao"},
    {ProviderID::Sakana, "sakana"},
    {ProviderID::Abacus, "abacus"},
    {ProviderID::Mistral, "mistral"},
    {ProviderID::Deepseek, "deepseek"},
    {ProviderID::Crof, "crof"},
    {ProviderID::Venice, "venice"},
    {ProviderID::Commandcode, "commandcode"},
    {ProviderID::Stepfun, "stepfun"},
    {ProviderID::Bedrock, "bedrock"},
    {ProviderID::Grok, "grok"},
    {ProviderID::Groq, "groq"},
    {ProviderID::Llmproxy, "llmproxy"},
    {ProviderID::Litellm, "litellm"},
    {ProviderID::Deepgram, "deepgram"},
    {ProviderID::Poe, "poe"},
    {ProviderID::Chutes, "chutes"},
    {ProviderID::Aider, "aider"},
    {ProviderID::MuseSpark, "muse_spark"},
}};

TEST(ProviderID, everyProviderHasItsRawName) {
    for (const auto& [provider, name] : expectedNames) {
        EXPECT_EQ(rawName(provider), name);
        EXPECT_EQ(providerFromRawName(name), provider) << name;
    }
}

TEST(ProviderID, allOfThemAreListedInTheOrderOfDeclaration) {
    const auto all = allProviderIDs();
    ASSERT_EQ(all.size(), expectedNames.size());
    for (std::size_t index = 0; index < all.size(); ++index)
        EXPECT_EQ(all[index], expectedNames[index].first) << expectedNames[index].second;
}

TEST(ProviderID, rawNamesAreUnique) {
    std::set<std::string_view> names;
    for (const ProviderID provider : allProviderIDs())
        EXPECT_TRUE(names.insert(rawName(provider)).second) << rawName(provider);
}

TEST(ProviderID, otherTextsAreNoProvider) {
    for (const char* text : {"", "Claude", "CLAUDE", " claude", "claude ", "claud", "claude2", "piAgent", "piagent",
                             "museSpark", "musespark", "muse-spark", "MUSE_SPARK", "unknown", "0"}) {
        EXPECT_FALSE(providerFromRawName(text)) << text;
    }
    EXPECT_FALSE(providerFromRawName(std::string_view{"claude\0", 7}));
}

TEST(ProviderID, caseOfEveryLetterCounts) {
    for (const ProviderID provider : allProviderIDs()) {
        std::string name{rawName(provider)};
        name.front() = static_cast<char>(name.front() - 'a' + 'A');
        EXPECT_FALSE(providerFromRawName(name)) << name;
    }
}

}  // namespace
}  // namespace quorvane
