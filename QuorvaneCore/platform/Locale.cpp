#include "QuorvaneCore/platform/Locale.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>
#include <vector>

namespace quorvane {
namespace {

constexpr std::string_view standIn = "en_US";

/// POSIX tells scripts by a modifier.
constexpr std::array<std::pair<std::string_view, std::string_view>, 3> scripts{
    {{"latin", "Latn"}, {"cyrillic", "Cyrl"}, {"devanagari", "Deva"}}};

bool isLetter(char character) noexcept {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool isDigit(char character) noexcept {
    return character >= '0' && character <= '9';
}

bool isLanguage(std::string_view text) noexcept {
    return text.size() >= 2 && text.size() <= 3 && std::ranges::all_of(text, isLetter);
}

/// A script, a region or a variant.
bool isFurtherPart(std::string_view text) noexcept {
    return text.size() >= 2 && text.size() <= 8 &&
           std::ranges::all_of(text, [](char character) { return isLetter(character) || isDigit(character); });
}

std::vector<std::string_view> partsOf(std::string_view text) {
    std::vector<std::string_view> parts;
    for (;;) {
        const std::size_t end = std::min(text.find_first_of("_-"), text.size());
        parts.push_back(text.substr(0, end));
        if (end == text.size()) return parts;
        text.remove_prefix(end + 1);
    }
}

std::string_view scriptOfModifier(std::string_view modifier) noexcept {
    for (const auto& [word, script] : scripts) {
        if (word == modifier) return script;
    }
    return {};
}

std::string identifierOf(std::string_view name) {
    const std::size_t base = std::min(name.find_first_of(".@"), name.size());
    const std::size_t at = name.find('@');
    const std::string_view script = at == std::string_view::npos ? "" : scriptOfModifier(name.substr(at + 1));
    const std::vector<std::string_view> parts = partsOf(name.substr(0, base));
    if (!isLanguage(parts.front()) || !std::all_of(parts.begin() + 1, parts.end(), isFurtherPart)) {
        return std::string{standIn};
    }
    std::string identifier{parts.front()};
    if (!script.empty()) identifier.append("_").append(script);
    for (auto part = parts.begin() + 1; part != parts.end(); ++part)
        identifier.append("_").append(*part);
    return identifier;
}

}  // namespace

Locale::Locale(std::string_view name) : identifier_{identifierOf(name)} {}

Locale Locale::current() {
    for (const char* variable : {"LC_ALL", "LC_MONETARY", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0') return Locale{value};
    }
    return Locale{standIn};
}

}  // namespace quorvane
