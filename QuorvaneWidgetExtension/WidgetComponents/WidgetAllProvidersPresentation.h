#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

#include "QuorvaneCore/snapshots/WidgetSnapshot.h"

namespace quorvane {

/// How a list of providers is laid out, by its place and its length. Pure; any thread.
class WidgetAllProvidersPresentation {
public:
    WidgetAllProvidersPresentation() = delete;

    /// The sizes of widget that list providers.
    enum class Family : std::uint8_t { medium, large };

    enum class Layout : std::uint8_t {
        twoColumnGrid,   ///< `ProviderGridCell`s in two columns
        fullWidthStack,  ///< `ProviderGaugeRow`s one below the other
    };

    [[nodiscard]] static Layout layout(Family family, std::size_t rows) noexcept;

    /// Whether the rows of a stack are the narrow ones.
    [[nodiscard]] static bool isCompact(Family family) noexcept { return family == Family::medium; }

    /// How many rows there is room for. A longer list shows one row less than that, and how many more there are.
    [[nodiscard]] static std::size_t capacity(Family family) noexcept;

    /// A name for narrow places: of the agents that are known by one, else the first word of the row's name, else the
    /// whole name.
    [[nodiscard]] static std::string shortName(const WidgetProviderSnapshot& provider);
};

}  // namespace quorvane
