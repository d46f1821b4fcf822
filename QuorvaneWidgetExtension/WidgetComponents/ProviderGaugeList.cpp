#include "QuorvaneWidgetExtension/WidgetComponents/ProviderGaugeList.h"

#include <algorithm>
#include <utility>

namespace quorvane {
namespace {

std::vector<ProviderGaugeRow> stackRows(std::span<const WidgetProviderSnapshot> providers, bool showLimits,
                                        bool compact, const WidgetEnvironment& environment) {
    std::vector<ProviderGaugeRow> rows;
    rows.reserve(providers.size());
    for (const WidgetProviderSnapshot& provider : providers) {
        rows.push_back(ProviderGaugeRow::of(provider, showLimits, compact, environment));
    }
    return rows;
}

std::vector<ProviderGridCell> gridCells(std::span<const WidgetProviderSnapshot> providers,
                                        const WidgetEnvironment& environment) {
    std::vector<ProviderGridCell> cells;
    cells.reserve(providers.size());
    for (const WidgetProviderSnapshot& provider : providers) {
        cells.push_back(ProviderGridCell::of(provider, environment));
    }
    return cells;
}

}  // namespace

ProviderGaugeList ProviderGaugeList::of(std::span<const WidgetProviderSnapshot> providers, bool showLimits,
                                        WidgetAllProvidersPresentation::Family family,
                                        const WidgetEnvironment& environment) {
    using Presentation = WidgetAllProvidersPresentation;
    ProviderGaugeList list;
    std::span<const WidgetProviderSnapshot> shown = providers;
    if (const std::size_t capacity = Presentation::capacity(family); providers.size() > capacity) {
        shown = providers.first(capacity - 1);
        list.more = "+" + std::to_string(providers.size() - shown.size()) + " more";
    }
    switch (Presentation::layout(family, providers.size())) {
        case Presentation::Layout::twoColumnGrid: list.providers = gridCells(shown, environment); break;
        case Presentation::Layout::fullWidthStack: {
            std::vector<ProviderGaugeRow> rows =
                stackRows(shown, showLimits, Presentation::isCompact(family), environment);
            const bool hasLimits = std::any_of(rows.begin(), rows.end(),
                                               [](const ProviderGaugeRow& row) { return row.limit.has_value(); });
            list.limitColumn = hasLimits ? limitWidth : 0;
            list.providers = std::move(rows);
            break;
        }
    }
    return list;
}

}  // namespace quorvane
