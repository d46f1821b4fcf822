#include "QuorvaneCore/snapshots/MenuBarDisplayFormat.h"

#include <algorithm>
#include <cstddef>

#include "QuorvaneCore/platform/TextForms.h"

namespace quorvane {
namespace {

using Kind = MenuBarDisplayFormat::Kind;

constexpr std::size_t mostPieces = 3;

/// The texts between colons, empty ones left out; the last piece of the most there may be takes the whole rest.
std::vector<std::string_view> piecesOf(std::string_view text) {
    std::vector<std::string_view> pieces;
    while (!text.empty()) {
        const bool isLast = pieces.size() + 1 == mostPieces;
        const std::size_t end = isLast ? text.size() : std::min(text.find(':'), text.size());
        if (end > 0) pieces.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return pieces;
}

std::optional<Kind> limitKind(std::string_view text) noexcept {
    for (const Kind kind : {Kind::TotalAndLimit, Kind::Limit}) {
        if (rawName(kind) == text) return kind;
    }
    return std::nullopt;
}

MenuBarDisplayFormat ofProvider(std::string_view text) {
    const std::vector<std::string_view> pieces = piecesOf(text);
    if (pieces.size() < 2) return MenuBarDisplayFormat::defaultFormat();
    const std::optional<Kind> kind = limitKind(pieces[0]);
    if (!kind) return MenuBarDisplayFormat::defaultFormat();
    MenuBarDisplayFormat format{.kind = *kind, .providerID = std::string{pieces[1]}};
    if (pieces.size() == mostPieces) {
        format.window = menuBarDisplayWindowFromRawName(pieces[2]);
        if (!format.window) return MenuBarDisplayFormat::defaultFormat();
    }
    return format;
}

void appendLimits(std::vector<MenuBarDisplayFormat>& formats, Kind kind,
                  std::span<const MenuBarLimitProvider> providers) {
    std::size_t windowCount = 0;
    for (const MenuBarLimitProvider& provider : providers) {
        windowCount += provider.windows.size();
        for (const MenuBarDisplayWindow window : provider.windows) {
            formats.push_back(
                {.kind = kind, .providerID = provider.id, .providerShortName = provider.shortName, .window = window});
        }
    }
    if (windowCount >= 2) formats.push_back({.kind = kind});
}

}  // namespace

std::string_view rawName(Kind kind) noexcept {
    switch (kind) {
        case Kind::Total: return "total";
        case Kind::TotalAndLimit: return "totalAndLimit";
        case Kind::Limit: return "limit";
    }
    return {};
}

MenuBarDisplayFormat MenuBarDisplayFormat::normalized(std::optional<std::string_view> text) {
    if (!text || text->empty()) return defaultFormat();
    if (*text == "total") return total();
    if (*text == "totalAndPrimaryLimit" || *text == "totalAndLimit") return {.kind = Kind::TotalAndLimit};
    if (*text == "primaryLimit" || *text == "limit") return {.kind = Kind::Limit};
    return ofProvider(*text);
}

std::vector<MenuBarDisplayFormat> MenuBarDisplayFormat::selectable(std::span<const MenuBarLimitProvider> providers) {
    std::vector<MenuBarDisplayFormat> formats{total()};
    appendLimits(formats, Kind::TotalAndLimit, providers);
    appendLimits(formats, Kind::Limit, providers);
    return formats;
}

MenuBarDisplayFormat MenuBarDisplayFormat::next(std::span<const MenuBarLimitProvider> providers) const {
    const std::vector<MenuBarDisplayFormat> formats = selectable(providers);
    auto here = std::ranges::find(formats, *this);
    if (here == formats.end() && !window && providerID) {
        here = std::ranges::find_if(formats, [this](const MenuBarDisplayFormat& format) {
            return format.kind == kind && format.providerID == providerID;
        });
    }
    const bool isLast = here == formats.end() || here + 1 == formats.end();
    return isLast ? formats.front() : *(here + 1);
}

std::string MenuBarDisplayFormat::rawValue() const {
    std::string text{rawName(kind)};
    if (kind == Kind::Total || !providerID) return text;
    text.append(":").append(*providerID);
    if (window) text.append(":").append(rawName(*window));
    return text;
}

std::optional<std::string> MenuBarDisplayFormat::providerDisplayName() const {
    if (providerShortName) return providerShortName;
    if (!providerID || providerID->empty()) return std::nullopt;
    return capitalisingFirst(*providerID);
}

std::optional<std::string> MenuBarDisplayFormat::windowedProviderDisplayName() const {
    std::optional<std::string> name = providerDisplayName();
    if (name && window && !titleSuffix(*window).empty()) name->append(" ").append(titleSuffix(*window));
    return name;
}

std::string MenuBarDisplayFormat::settingsTitle() const {
    switch (kind) {
        case Kind::Total: return "Total";
        case Kind::TotalAndLimit: return "Total + " + windowedProviderDisplayName().value_or("limit");
        case Kind::Limit: return windowedProviderDisplayName().value_or("Limit");
    }
    return {};
}

std::string MenuBarDisplayFormat::settingsSubtitle() const {
    const bool isEstimate = window == MenuBarDisplayWindow::Estimate;
    switch (kind) {
        case Kind::Total: return "Quorvane badge + today total";
        case Kind::TotalAndLimit: return isEstimate ? "Today total + tokens" : "Today total + Limit %";
        case Kind::Limit: return isEstimate ? "Today tokens" : "Limit % only";
    }
    return {};
}

}  // namespace quorvane
