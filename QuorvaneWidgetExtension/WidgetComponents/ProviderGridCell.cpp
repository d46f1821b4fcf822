#include "QuorvaneWidgetExtension/WidgetComponents/ProviderGridCell.h"

#include "QuorvaneWidgetExtension/WidgetComponents/WidgetAllProvidersPresentation.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetValueText.h"

namespace quorvane {

ProviderGridCell ProviderGridCell::of(const WidgetProviderSnapshot& provider, const WidgetEnvironment& environment) {
    return {.chip = ProviderMarkChip::of(provider, environment.colorScheme),
            .name = WidgetAllProvidersPresentation::shortName(provider),
            .value = WidgetValueText::today(provider, environment.locale)};
}

}  // namespace quorvane
