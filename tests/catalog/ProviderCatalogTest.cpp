#include <map>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/model/ProviderCatalog.h"

namespace quorvane {
namespace {

using ::testing::ElementsAre;

/// One row as a table of texts has it: "-" for no icon, and a letter for each catalog that lists the provider.
struct ExpectedRow {
    const char* id;
    const char* name;
    const char* shortName;
    const char* glyph;
    const char* support;
    const char* sources;
    const char* icon;
};

// clang-format off
constexpr ExpectedRow expectedRows[] = {
    {"claude", "Claude Code", "Claude", "Cl", "live", "BUTI", "claude"},
    {"codex", "Codex", "Codex", "Cx", "live", "BUTI", "codex"},
    {"grok", "Grok", "Grok", "Gk", "live", "BR", "grok"},
    {"gemini", "Gemini", "Gemini", "G", "localRoadmap", "BUTI", "gemini"},
    {"copilot", "GitHub Copilot", "GitHub Copilot", "Co", "localRoadmap", "BUT", "copilot"},
    {"opencode", "OpenCode", "OpenCode", "Oc", "localRoadmap", "BUTI", "opencode"},
    {"amp", "Amp", "Amp", "Am", "localRoadmap", "BUT", "amp"},
    {"factory", "Droid (Factory)", "Droid (Factory)", "Dr", "localRoadmap", "BUTI", "factory"},
    {"codebuff", "Codebuff", "Codebuff", "Cb", "localRoadmap", "BU", "codebuff"},
    {"kilo", "Kilo", "Kilo", "Ki", "localRoadmap", "BU", "kilo"},
    {"kimi", "Kimi", "Kimi", "Km", "localRoadmap", "BUTI", "kimi"},
    {"hermes", "Hermes Agent", "Hermes Agent", "He", "localRoadmap", "U", "-"},
    {"pi", "pi-agent", "pi-agent", "Pi", "localRoadmap", "U", "-"},
    {"goose", "Goose", "Goose", "Go", "localRoadmap", "U", "-"},
    {"openclaw", "OpenClaw", "OpenClaw", "Oc", "localRoadmap", "U", "-"},
    {"qwen", "Qwen", "Qwen", "Qw", "localRoadmap", "UI", "-"},
    {"qoder", "Qoder", "Qoder", "Qd", "candidateRoadmap", "I", "-"},
    {"codebuddy", "CodeBuddy", "CodeBuddy", "CB", "candidateRoadmap", "I", "-"},
    {"cursor", "Cursor", "Cursor", "Cu", "localRoadmap", "BTI", "cursor"},
    {"openai", "OpenAI", "OpenAI", "OA", "apiRoadmap", "B", "-"},
    {"azureopenai", "Azure OpenAI", "Azure OpenAI", "Az", "apiRoadmap", "B", "-"},
    {"opencodego", "OpenCode Go", "OpenCode Go", "Og", "apiRoadmap", "B", "opencodego"},
    {"alibaba", "Alibaba", "Alibaba", "Al", "apiRoadmap", "B", "alibaba"},
    {"alibabatokenplan", "Alibaba Token Plan", "Alibaba Token Plan", "At", "apiRoadmap", "B", "-"},
    {"antigravity", "Antigravity", "Antigravity", "Ag", "localRoadmap", "BT", "antigravity"},
    {"devin", "Devin", "Devin", "Dv", "apiRoadmap", "B", "devin"},
    {"zai", "z.ai", "z.ai", "Za", "apiRoadmap", "BT", "zai"},
    {"minimax", "MiniMax", "MiniMax", "Mm", "apiRoadmap", "BT", "minimax"},
    {"manus", "Manus", "Manus", "Ma", "apiRoadmap", "B", "manus"},
    {"kiro", "Kiro", "Kiro", "Kr", "apiRoadmap", "BT", "kiro"},
    {"vertexai", "Vertex AI", "Vertex AI", "Vx", "apiRoadmap", "BT", "vertexai"},
    {"augment", "Augment", "Augment", "Au", "apiRoadmap", "B", "augment"},
    {"jetbrains", "JetBrains AI", "JetBrains AI", "Jb", "apiRoadmap", "BT", "jetbrains"},
    {"kimik2", "Kimi K2 (unofficial)", "Kimi K2 (unofficial)", "K2", "apiRoadmap", "BT", "-"},
    {"moonshot", "Moonshot / Kimi API", "Moonshot / Kimi API", "Mo", "apiRoadmap", "B", "-"},
    {"t3chat", "T3 Chat", "T3 Chat", "T3", "apiRoadmap", "B", "t3chat"},
    {"ollama", "Ollama", "Ollama", "Ol", "apiRoadmap", "B", "ollama"},
    {"synthetic", "Synthetic", "Synthetic", "Sy", "apiRoadmap", "B", "synthetic"},
    {"openrouter", "OpenRouter", "OpenRouter", "Or", "apiRoadmap", "B", "openrouter"},
    {"elevenlabs", "ElevenLabs", "ElevenLabs", "El", "apiRoadmap", "B", "elevenlabs"},
    {"warp", "Warp", "Warp", "Wp", "apiRoadmap", "B", "warp"},
    {"windsurf", "Windsurf", "Windsurf", "Ws", "apiRoadmap", "B", "windsurf"},
    {"zed", "Zed", "Zed", "Zd", "apiRoadmap", "B", "zed"},
    {"perplexity", "Perplexity", "Perplexity", "Px", "apiRoadmap", "B", "perplexity"},
    {"mimo", "Xiaomi MiMo", "Xiaomi MiMo", "Mi", "apiRoadmap", "B", "mimo"},
    {"doubao", "Doubao", "Doubao", "Db", "apiRoadmap", "B", "doubao"},
    {"sakana", "Sakana AI", "Sakana AI", "Sk", "apiRoadmap", "B", "sakana"},
    {"abacus", "Abacus AI", "Abacus AI", "Ab", "apiRoadmap", "B", "abacus"},
    {"mistral", "Mistral", "Mistral", "Ms", "apiRoadmap", "B", "mistral"},
    {"deepseek", "DeepSeek", "DeepSeek", "Ds", "apiRoadmap", "B", "deepseek"},
    {"crof", "Crof", "Crof", "Cr", "apiRoadmap", "B", "crof"},
    {"venice", "Venice", "Venice", "Ve", "apiRoadmap", "B", "venice"},
    {"commandcode", "Command Code", "Command Code", "Cc", "apiRoadmap", "B", "commandcode"},
    {"stepfun", "StepFun", "StepFun", "Sf", "apiRoadmap", "B", "stepfun"},
    {"bedrock", "AWS Bedrock", "AWS Bedrock", "Br", "apiRoadmap", "B", "bedrock"},
    {"groq", "Groq", "Groq", "Gq", "apiRoadmap", "B", "groq"},
    {"llmproxy", "LLM Proxy", "LLM Proxy", "Lp", "apiRoadmap", "B", "llmproxy"},
    {"litellm", "LiteLLM", "LiteLLM", "Ll", "apiRoadmap", "B", "litellm"},
    {"deepgram", "Deepgram", "Deepgram", "Dg", "apiRoadmap", "B", "deepgram"},
    {"poe", "Poe", "Poe", "Po", "apiRoadmap", "B", "poe"},
    {"chutes", "Chutes", "Chutes", "Ch", "apiRoadmap", "B", "chutes"},
    {"muse_spark", "Muse Spark", "Muse Spark", "Sp", "live", "R", "muse-spark"},
    {"aider", "Aider", "Aider", "Ai", "candidateRoadmap", "R", "-"},
};
// clang-format on

const std::map<std::string, char, std::less<>> sourceLetters{{"codexBar", 'B'},
                                                             {"ccusage", 'U'},
                                                             {"codingAgentUsageTracker", 'T'},
                                                             {"openIsland", 'I'},
                                                             {"quorvaneRoadmap", 'R'}};

std::string lettersOf(const ProviderDescriptor& row) {
    std::string letters;
    for (const ProviderCatalogSource source : row.sources)
        letters += sourceLetters.find(rawName(source))->second;
    return letters;
}

std::vector<ProviderID> idsOf(const std::vector<ProviderDescriptor>& rows) {
    std::vector<ProviderID> ids;
    for (const ProviderDescriptor& row : rows)
        ids.push_back(row.id);
    return ids;
}

TEST(ProviderCatalog, everyRowIsAsTheTableHasIt) {
    const auto rows = ProviderCatalog::all();
    ASSERT_EQ(rows.size(), std::size(expectedRows));
    for (std::size_t index = 0; index < rows.size(); ++index) {
        const ProviderDescriptor& row = rows[index];
        const ExpectedRow& expected = expectedRows[index];
        SCOPED_TRACE(expected.id);
        EXPECT_EQ(rawName(row.id), expected.id);
        EXPECT_EQ(row.name, expected.name);
        EXPECT_EQ(row.shortName, expected.shortName);
        EXPECT_EQ(row.glyph, expected.glyph);
        EXPECT_EQ(rawName(row.support), expected.support);
        EXPECT_EQ(lettersOf(row), expected.sources);
        EXPECT_EQ(row.iconSlug.value_or("-"), expected.icon);
    }
}

TEST(ProviderCatalog, everyProviderStandsInItOnce) {
    std::set<ProviderID> seen;
    for (const ProviderDescriptor& row : ProviderCatalog::all())
        EXPECT_TRUE(seen.insert(row.id).second) << row.name;
    EXPECT_EQ(seen.size(), 63U);
    for (const ProviderID provider : allProviderIDs())
        EXPECT_TRUE(seen.contains(provider)) << rawName(provider);
}

TEST(ProviderCatalog, itsOrderIsNotThatOfTheProviders) {
    EXPECT_EQ(ProviderCatalog::all()[2].id, ProviderID::Grok);
    EXPECT_EQ(ProviderCatalog::all().back().id, ProviderID::Aider);
    EXPECT_EQ(ProviderCatalog::all()[61].id, ProviderID::MuseSpark);
}

TEST(ProviderCatalog, descriptorFindsTheRowOfEveryProvider) {
    for (const ProviderID provider : allProviderIDs()) {
        const ProviderDescriptor* row = ProviderCatalog::descriptor(provider);
        ASSERT_NE(row, nullptr) << rawName(provider);
        EXPECT_EQ(row->id, provider);
    }
}

TEST(ProviderCatalog, claudeHasAShortNameOfItsOwn) {
    const ProviderDescriptor* claude = ProviderCatalog::descriptor(ProviderID::Claude);
    ASSERT_NE(claude, nullptr);
    EXPECT_EQ(claude->name, "Claude Code");
    EXPECT_EQ(claude->shortName, "Claude");
}

TEST(ProviderCatalog, liveRowsComeInCatalogOrder) {
    EXPECT_THAT(idsOf(ProviderCatalog::live()),
                ElementsAre(ProviderID::Claude, ProviderID::Codex, ProviderID::Grok, ProviderID::MuseSpark));
}

TEST(ProviderCatalog, rowsOfTheRoadmapComeInCatalogOrder) {
    EXPECT_THAT(idsOf(ProviderCatalog::withSource(ProviderCatalogSource::QuorvaneRoadmap)),
                ElementsAre(ProviderID::Grok, ProviderID::MuseSpark, ProviderID::Aider));
}

TEST(ProviderCatalog, everySourceGivesTheRowsThatNameIt) {
    for (const ProviderCatalogSource source : allProviderCatalogSources) {
        std::vector<std::string> expected;
        for (const ExpectedRow& row : expectedRows) {
            const std::string letters = row.sources;
            if (letters.find(sourceLetters.find(rawName(source))->second) != std::string::npos) {
                expected.emplace_back(row.id);
            }
        }
        std::vector<std::string> found;
        for (const ProviderID provider : idsOf(ProviderCatalog::withSource(source)))
            found.emplace_back(rawName(provider));
        EXPECT_EQ(found, expected) << rawName(source);
        EXPECT_FALSE(found.empty()) << rawName(source);
    }
}

TEST(ProviderCatalog, noRowNeedsAConnectionToAnAccount) {
    for (const ProviderDescriptor& row : ProviderCatalog::all())
        EXPECT_NE(row.support, ProviderSupport::ConnectRoadmap) << row.name;
}

TEST(ProviderCatalog, threadsSeeOneList) {
    const ProviderDescriptor* first = nullptr;
    const ProviderDescriptor* second = nullptr;
    std::thread one{[&first] { first = ProviderCatalog::all().data(); }};
    std::thread other{[&second] { second = ProviderCatalog::all().data(); }};
    one.join();
    other.join();
    EXPECT_EQ(first, second);
}

TEST(ProviderDescriptor, shortNameIsFoundByTheExactName) {
    EXPECT_EQ(ProviderDescriptor::shortNameForName("Claude Code"), "Claude");
    EXPECT_EQ(ProviderDescriptor::shortNameForName("GitHub Copilot"), "GitHub Copilot");
}

TEST(ProviderDescriptor, shortNameOfAnUnknownNameIsThatName) {
    EXPECT_EQ(ProviderDescriptor::shortNameForName("Claude"), "Claude");
    EXPECT_EQ(ProviderDescriptor::shortNameForName("claude code"), "claude code");
    EXPECT_EQ(ProviderDescriptor::shortNameForName("Nobody"), "Nobody");
    EXPECT_EQ(ProviderDescriptor::shortNameForName(""), "");
}

TEST(ProviderDescriptor, withoutAShortNameItIsTheName) {
    const ProviderDescriptor row{ProviderID::Amp, "Amp Long", std::nullopt, "Am", ProviderSupport::Live, {}, {}};
    EXPECT_EQ(row.shortName, "Amp Long");
    EXPECT_FALSE(row.iconSlug);
}

TEST(ProviderDescriptor, rowsAreEqualFieldByField) {
    const ProviderDescriptor row = ProviderCatalog::all().front();
    ProviderDescriptor other = row;
    EXPECT_EQ(row, other);
    other.iconSlug = std::nullopt;
    EXPECT_NE(row, other);
    other = row;
    other.sources.pop_back();
    EXPECT_NE(row, other);
}

TEST(ProviderSupport, rawNamesLeadBackToTheirCase) {
    std::vector<std::string_view> names;
    for (const ProviderSupport support : allProviderSupports) {
        names.push_back(rawName(support));
        EXPECT_EQ(providerSupportFromRawName(rawName(support)), support);
    }
    EXPECT_THAT(names, ElementsAre("live", "localRoadmap", "connectRoadmap", "apiRoadmap", "candidateRoadmap"));
}

TEST(ProviderSupport, anyOtherTextIsNoCase) {
    EXPECT_EQ(providerSupportFromRawName("Live"), std::nullopt);
    EXPECT_EQ(providerSupportFromRawName(""), std::nullopt);
    EXPECT_EQ(providerSupportFromRawName("live "), std::nullopt);
}

TEST(ProviderCatalogSource, rawNamesLeadBackToTheirCase) {
    std::vector<std::string_view> names;
    for (const ProviderCatalogSource source : allProviderCatalogSources) {
        names.push_back(rawName(source));
        EXPECT_EQ(providerCatalogSourceFromRawName(rawName(source)), source);
    }
    EXPECT_THAT(names, ElementsAre("codexBar", "ccusage", "codingAgentUsageTracker", "openIsland", "quorvaneRoadmap"));
    EXPECT_EQ(providerCatalogSourceFromRawName("codexbar"), std::nullopt);
}

}  // namespace
}  // namespace quorvane
