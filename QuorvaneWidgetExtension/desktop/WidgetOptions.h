#pragma once
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetConfigurationIntent.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetFamily.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetColorScheme.h"

namespace quorvane::desktop {

/// What the program is asked to do.
struct WidgetOptions {
    enum class Task : std::uint8_t { openWindows, render, describe };

    Task task = Task::openWindows;
    std::string picture;  ///< the file to draw to
    QuorvaneWidgetFamily family = QuorvaneWidgetFamily::medium;
    QuorvaneWidgetConfigurationIntent configuration;
    WidgetColorScheme colorScheme = WidgetColorScheme::Light;
    double scale = 1;  ///< pixels a point

    /// The options, or the exit status of a program that has nothing left to do: help and version have then been
    /// printed, or a usage error in one line on standard error. `--now` pins the clock.
    [[nodiscard]] static std::variant<WidgetOptions, int> parse(std::vector<std::string> arguments);
};

}  // namespace quorvane::desktop
