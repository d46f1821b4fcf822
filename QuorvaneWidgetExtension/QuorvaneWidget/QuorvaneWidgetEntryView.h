#pragma once
#include <string>
#include <variant>

#include "QuorvaneWidgetExtension/QuorvaneWidget/LargeSpendWidget.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/MediumSpendWidget.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetFamily.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/SmallSpendWidget.h"

namespace quorvane {

/// One entry in one size: all that is drawn and spoken, in finished texts and colours. Pure; any thread.
struct QuorvaneWidgetEntryView {
    QuorvaneWidgetEntry entry;
    QuorvaneWidgetFamily family = QuorvaneWidgetFamily::large;

    /// What is drawn.
    [[nodiscard]] std::variant<SmallSpendWidget, MediumSpendWidget, LargeSpendWidget> body(
        const WidgetEnvironment& environment) const;

    /// What is spoken: the whole view is one element to a screen reader, and this is its name.
    [[nodiscard]] std::string accessibilitySummary(const WidgetEnvironment& environment) const;
};

}  // namespace quorvane
