#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetProviderChoice.h"

namespace quorvane {

std::string_view rawName(QuorvaneWidgetProviderChoice choice) noexcept {
    switch (choice) {
        case QuorvaneWidgetProviderChoice::all: return "all";
        case QuorvaneWidgetProviderChoice::claude: return "claude";
        case QuorvaneWidgetProviderChoice::codex: return "codex";
        case QuorvaneWidgetProviderChoice::grok: return "grok";
        case QuorvaneWidgetProviderChoice::museSpark: return "museSpark";
        case QuorvaneWidgetProviderChoice::copilot: return "copilot";
        case QuorvaneWidgetProviderChoice::cursor: return "cursor";
    }
    return {};
}

std::optional<QuorvaneWidgetProviderChoice> quorvaneWidgetProviderChoiceFromRawName(std::string_view text) noexcept {
    for (const QuorvaneWidgetProviderChoice choice : allQuorvaneWidgetProviderChoices) {
        if (rawName(choice) == text) return choice;
    }
    return std::nullopt;
}

std::optional<std::string_view> providerID(QuorvaneWidgetProviderChoice choice) noexcept {
    switch (choice) {
        case QuorvaneWidgetProviderChoice::all: return std::nullopt;
        case QuorvaneWidgetProviderChoice::museSpark: return "muse_spark";
        case QuorvaneWidgetProviderChoice::claude:
        case QuorvaneWidgetProviderChoice::codex:
        case QuorvaneWidgetProviderChoice::grok:
        case QuorvaneWidgetProviderChoice::copilot:
        case QuorvaneWidgetProviderChoice::cursor: break;
    }
    return rawName(choice);
}

std::string_view displayText(QuorvaneWidgetProviderChoice choice) noexcept {
    switch (choice) {
        case QuorvaneWidgetProviderChoice::all: return "All providers";
        case QuorvaneWidgetProviderChoice::claude: return "Claude Code";
        case QuorvaneWidgetProviderChoice::codex: return "Codex";
        case QuorvaneWidgetProviderChoice::grok: return "Grok";
        case QuorvaneWidgetProviderChoice::museSpark: return "Muse Spark";
        case QuorvaneWidgetProviderChoice::copilot: return "GitHub Copilot";
        case QuorvaneWidgetProviderChoice::cursor: return "Cursor";
    }
    return {};
}

}  // namespace quorvane
