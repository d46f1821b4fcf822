#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/providers/GeminiProvider.h"
#include "tests/support/ScratchHome.h"

namespace quorvane::testing {

/// What a message reports of its tokens, as the agent counts them.
struct GeminiTokens {
    std::int64_t input = 0;
    std::int64_t output = 0;
    std::int64_t cached = 0;
    std::int64_t thoughts = 0;
    std::int64_t tool = 0;
};

/// A message of the model, with all that the agent writes into it.
[[nodiscard]] std::string geminiMessage(std::string_view id, const GeminiTokens& tokens,
                                        std::string_view model = "gemini-3-pro-preview");
/// A message of the model; `tokens` is JSON.
[[nodiscard]] std::string geminiMessageWith(std::string_view id, std::string_view tokens);

/// A whole document; `messages` are JSON.
[[nodiscard]] std::string geminiChat(std::string_view session, const std::vector<std::string>& messages);

/// All of each event in one text.
[[nodiscard]] std::string told(const UsageEvent& event);
[[nodiscard]] std::vector<std::string> told(const std::vector<UsageEvent>& events);

/// A home with chats. Files are named relative to the folder that the agent keeps its projects in.
struct ChatHome {
    std::string write(std::string_view file, std::string_view content) const;
    [[nodiscard]] std::string path(std::string_view file) const;

    /// The events of a document with this content.
    [[nodiscard]] std::vector<UsageEvent> parse(std::string_view content) const;

    ScratchHome home;
    GeminiProvider provider;
};

}  // namespace quorvane::testing
