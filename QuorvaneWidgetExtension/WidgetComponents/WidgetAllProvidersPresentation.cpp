#include "QuorvaneWidgetExtension/WidgetComponents/WidgetAllProvidersPresentation.h"

#include <array>
#include <string_view>
#include <utility>

namespace quorvane {
namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 5> shortNames{{
    {"claude", "Claude"},
    {"codex", "Codex"},
    {"grok", "Grok"},
    {"copilot", "Copilot"},
    {"cursor", "Cursor"},
}};

std::string_view firstWord(std::string_view text) noexcept {
    const std::size_t begin = text.find_first_not_of(' ');
    if (begin == std::string_view::npos) return text;
    return text.substr(begin, text.find(' ', begin) - begin);
}

}  // namespace

WidgetAllProvidersPresentation::Layout WidgetAllProvidersPresentation::layout(Family family,
                                                                              std::size_t rows) noexcept {
    return family == Family::medium && rows >= 3 ? Layout::twoColumnGrid : Layout::fullWidthStack;
}

std::size_t WidgetAllProvidersPresentation::capacity(Family family) noexcept {
    switch (family) {
        case Family::medium: return 6;
        case Family::large: break;
    }
    return 8;
}

std::string WidgetAllProvidersPresentation::shortName(const WidgetProviderSnapshot& provider) {
    for (const auto& [id, name] : shortNames) {
        if (id == provider.id) return std::string{name};
    }
    return std::string{firstWord(provider.name)};
}

}  // namespace quorvane
