#pragma once
#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/platform/Locale.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetColorScheme.h"

namespace quorvane {

/// What the surroundings of a widget decide about how an entry looks.
struct WidgetEnvironment {
    WidgetColorScheme colorScheme = WidgetColorScheme::Light;
    Locale locale{"en_US"};  ///< of the amounts; the widget's own words are English in all locales
    Date now;                ///< what staleness and ages are told by
};

}  // namespace quorvane
