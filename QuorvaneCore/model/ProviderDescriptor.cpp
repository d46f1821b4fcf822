#include "QuorvaneCore/model/ProviderDescriptor.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "QuorvaneCore/model/ProviderCatalog.h"

namespace quorvane {
namespace {

constexpr std::array<std::string_view, allProviderSupports.size()> supportNames{
    "live", "localRoadmap", "connectRoadmap", "apiRoadmap", "candidateRoadmap"};

constexpr std::array<std::string_view, allProviderCatalogSources.size()> sourceNames{
    "codexBar", "ccusage", "codingAgentUsageTracker", "openIsland", "quorvaneRoadmap"};

/// The case whose name is `text`; `names` holds the names in the order of `cases`.
template <typename Case, std::size_t Count>
std::optional<Case> caseNamed(std::string_view text, const std::array<Case, Count>& cases,
                              const std::array<std::string_view, Count>& names) noexcept {
    for (std::size_t index = 0; index < Count; ++index) {
        if (names[index] == text) return cases[index];
    }
    return std::nullopt;
}

}  // namespace

std::string_view rawName(ProviderSupport support) noexcept {
    return supportNames[static_cast<std::size_t>(support)];
}

std::optional<ProviderSupport> providerSupportFromRawName(std::string_view text) noexcept {
    return caseNamed(text, allProviderSupports, supportNames);
}

std::string_view rawName(ProviderCatalogSource source) noexcept {
    return sourceNames[static_cast<std::size_t>(source)];
}

std::optional<ProviderCatalogSource> providerCatalogSourceFromRawName(std::string_view text) noexcept {
    return caseNamed(text, allProviderCatalogSources, sourceNames);
}

ProviderDescriptor::ProviderDescriptor(ProviderID provider, std::string fullName,
                                       std::optional<std::string> descriptorShortName, std::string mark,
                                       ProviderSupport state, std::vector<ProviderCatalogSource> catalogs,
                                       std::optional<std::string> icon)
    : id{provider},
      name{std::move(fullName)},
      shortName{descriptorShortName ? *std::move(descriptorShortName) : name},
      glyph{std::move(mark)},
      support{state},
      sources{std::move(catalogs)},
      iconSlug{std::move(icon)} {}

std::string ProviderDescriptor::shortNameForName(std::string_view name) {
    const auto rows = ProviderCatalog::all();
    const auto row = std::ranges::find(rows, name, &ProviderDescriptor::name);
    return row == rows.end() ? std::string{name} : row->shortName;
}

}  // namespace quorvane
