#include "QuorvaneWidgetExtension/WidgetComponents/MiniSparkline.h"

#include <algorithm>

#include "QuorvaneWidgetExtension/WidgetComponents/WidgetPalette.h"

namespace quorvane {

std::vector<MiniSparkline::Point> MiniSparkline::normalizedPoints(Size size) const {
    if (values.size() < 2) return {{.x = size.width * 0.5, .y = size.height * 0.5}};
    const double top = std::min(size.height * 0.28, 12.0);
    const double bottom = std::min(size.height * 0.16, 7.0);
    const double plot = std::max(size.height - top - bottom, 1.0);
    const double peak = std::max(*std::max_element(values.begin(), values.end()), 0.01);
    const double steps = static_cast<double>(values.size() - 1);
    std::vector<Point> points;
    points.reserve(values.size());
    for (std::size_t place = 0; place < values.size(); ++place) {
        points.push_back(
            {.x = static_cast<double>(place) / steps * size.width, .y = top + plot * (1 - values[place] / peak)});
    }
    return points;
}

WidgetColor MiniSparkline::color(WidgetColorScheme scheme) const {
    return WidgetPalette::viz(tintHex, scheme);
}

}  // namespace quorvane
