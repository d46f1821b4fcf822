#include "QuorvaneHost/ProviderTints.h"

namespace quorvane::host {

std::string_view providerTint(ProviderID provider) noexcept {
    if (provider == ProviderID::Claude) return "#D6783F";
    if (provider == ProviderID::Codex) return "#2F2F33";
    if (provider == ProviderID::Grok) return "#111111";
    if (provider == ProviderID::MuseSpark) return "#0866FF";
    if (provider == ProviderID::Copilot) return "#6E40C9";
    if (provider == ProviderID::Cursor) return "#4A4A52";
    if (provider == ProviderID::Gemini) return "#1A7F5A";
    if (provider == ProviderID::Opencode) return "#B3261E";
    return "#6C6253";
}

}  // namespace quorvane::host
