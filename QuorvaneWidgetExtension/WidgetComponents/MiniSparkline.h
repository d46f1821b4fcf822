#pragma once
#include <string>
#include <vector>

#include "QuorvaneWidgetExtension/WidgetComponents/WidgetColor.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetColorScheme.h"

namespace quorvane {

/// A series of days as a line over a filled area. Lengths are in points.
struct MiniSparkline {
    struct Size {
        double width = 0;
        double height = 0;
    };

    /// From the top leading corner.
    struct Point {
        double x = 0;
        double y = 0;

        friend bool operator==(const Point&, const Point&) = default;
    };

    static constexpr double strokeWidth = 2.6;
    static constexpr double fillOpacityTop = 0.16;     ///< of the area under the line, at its top
    static constexpr double fillOpacityBottom = 0.02;  ///< and at its bottom

    std::vector<double> values;
    std::string tintHex;

    /// Where the line goes. The scale starts at 0, not at the smallest value, so that steady spending lies at the top.
    /// Without two values: the one point in the middle.
    [[nodiscard]] std::vector<Point> normalizedPoints(Size size) const;

    [[nodiscard]] WidgetColor color(WidgetColorScheme scheme) const;

    friend bool operator==(const MiniSparkline&, const MiniSparkline&) = default;
};

}  // namespace quorvane
