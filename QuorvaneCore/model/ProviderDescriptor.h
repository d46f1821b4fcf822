#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/model/ProviderID.h"

namespace quorvane {

/// How far the support of a provider has come. Serialised by raw name.
enum class ProviderSupport : std::uint8_t {
    Live,              ///< read today
    LocalRoadmap,      ///< leaves local data
    ConnectRoadmap,    ///< needs a connection to an account
    ApiRoadmap,        ///< has figures behind an interface of its own
    CandidateRoadmap,  ///< under consideration
};

inline constexpr std::array allProviderSupports{ProviderSupport::Live, ProviderSupport::LocalRoadmap,
                                                ProviderSupport::ConnectRoadmap, ProviderSupport::ApiRoadmap,
                                                ProviderSupport::CandidateRoadmap};

/// The name in files; the view lives for ever.
[[nodiscard]] std::string_view rawName(ProviderSupport support) noexcept;

/// The exact inverse of `rawName`, case counts; absent for any other text.
[[nodiscard]] std::optional<ProviderSupport> providerSupportFromRawName(std::string_view text) noexcept;

/// The catalogs that list a provider. Serialised by raw name.
enum class ProviderCatalogSource : std::uint8_t {
    CodexBar,
    Ccusage,
    CodingAgentUsageTracker,
    OpenIsland,
    QuorvaneRoadmap
};

inline constexpr std::array allProviderCatalogSources{
    ProviderCatalogSource::CodexBar, ProviderCatalogSource::Ccusage, ProviderCatalogSource::CodingAgentUsageTracker,
    ProviderCatalogSource::OpenIsland, ProviderCatalogSource::QuorvaneRoadmap};

/// The name in files; the view lives for ever.
[[nodiscard]] std::string_view rawName(ProviderCatalogSource source) noexcept;

/// The exact inverse of `rawName`, case counts; absent for any other text.
[[nodiscard]] std::optional<ProviderCatalogSource> providerCatalogSourceFromRawName(std::string_view text) noexcept;

/// What is known of one provider.
struct ProviderDescriptor {
    ProviderID id{};
    std::string name;                            ///< in full
    std::string shortName;                       ///< for narrow places
    std::string glyph;                           ///< one or two letters for a mark; not unique
    ProviderSupport support{};                   ///< how far the support has come
    std::vector<ProviderCatalogSource> sources;  ///< the catalogs that list it
    std::optional<std::string> iconSlug;         ///< the base name of its icon

    ProviderDescriptor() = default;

    /// An absent `descriptorShortName` means the same as the name.
    ProviderDescriptor(ProviderID provider, std::string fullName, std::optional<std::string> descriptorShortName,
                       std::string mark, ProviderSupport state, std::vector<ProviderCatalogSource> catalogs,
                       std::optional<std::string> icon);

    /// The short name of the first row of the catalog whose name is exactly `name`, else `name` itself.
    [[nodiscard]] static std::string shortNameForName(std::string_view name);

    friend bool operator==(const ProviderDescriptor&, const ProviderDescriptor&) = default;
};

}  // namespace quorvane
