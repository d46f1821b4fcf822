#include "QuorvaneHost/text/Sparkline.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <vector>

namespace quorvane::host {

std::string sparkline(std::span<const double> values, std::size_t width) {
    if (values.empty() || width == 0) return {};
    const std::size_t perCell = (values.size() + width - 1) / width;
    // The last cell is always full, so that today stands at the right.
    std::vector<double> cells((values.size() + perCell - 1) / perCell, 0.0);
    for (std::size_t index = 0; index < values.size(); ++index) {
        const std::size_t fromEnd = (values.size() - 1 - index) / perCell;
        cells[cells.size() - 1 - fromEnd] += values[index];
    }
    constexpr std::array<std::string_view, 9> blocks{"·", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
    const double largest = *std::max_element(cells.begin(), cells.end());
    std::string line;
    for (const double cell : cells) {
        const double share = largest > 0 && cell > 0 ? cell / largest : 0;
        line += blocks[static_cast<std::size_t>(std::ceil(share * 8))];
    }
    return line;
}

}  // namespace quorvane::host
