#include "QuorvaneWidgetExtension/WidgetComponents/ProviderGaugeRow.h"

#include "QuorvaneWidgetExtension/WidgetComponents/WidgetAllProvidersPresentation.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetValueText.h"

namespace quorvane {

ProviderGaugeRow ProviderGaugeRow::of(const WidgetProviderSnapshot& provider, bool showLimits, bool compact,
                                      const WidgetEnvironment& environment) {
    ProviderGaugeRow row{.chip = ProviderMarkChip::of(provider, environment.colorScheme),
                         .name = WidgetAllProvidersPresentation::shortName(provider),
                         .nameSize = compact ? 11.0 : 12.0,
                         .badge = ProviderBasisBadge::of(provider),
                         .value = WidgetValueText::today(provider, environment.locale),
                         .valueColumn = compact ? 56.0 : 76.0};
    if (showLimits) row.limit = LimitCapsule::of(provider, row.chip.color);
    return row;
}

}  // namespace quorvane
