#include "QuorvaneHost/text/Table.h"

#include <algorithm>
#include <utility>

#include "QuorvaneHost/text/Cells.h"

namespace quorvane::host {
namespace {

constexpr std::size_t gap = 2;
constexpr std::size_t narrowestFirstColumn = 12;

}  // namespace

std::string Table::text(const Ink& ink, std::size_t width, std::size_t indent) const {
    std::vector<std::size_t> widths(header_.size(), 0);
    const auto measure = [&](const std::vector<std::string>& row) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            widths[column] = std::max(widths[column], cellWidth(row[column]));
        }
    };
    measure(header_);
    for (const auto& row : rows_)
        measure(row);

    std::size_t others = indent;
    for (std::size_t column = 1; column < widths.size(); ++column)
        others += gap + widths[column];
    const std::size_t left = width > others ? width - others : 0;
    widths.front() = std::min(widths.front(), std::max(left, narrowestFirstColumn));

    const auto line = [&](const std::vector<std::string>& row) {
        std::string name = shortened(row.front(), widths.front());
        name.append(widths.front() - cellWidth(name), ' ');
        std::string cells = std::move(name);
        for (std::size_t column = 1; column < row.size(); ++column) {
            cells.append(gap + widths[column] - cellWidth(row[column]), ' ').append(row[column]);
        }
        cells.erase(cells.find_last_not_of(' ') + 1);
        return cells;
    };
    const std::string margin(indent, ' ');
    std::string result = margin + ink.dim(line(header_)) + "\n";
    for (const auto& row : rows_)
        result += margin + line(row) + "\n";
    return result;
}

}  // namespace quorvane::host
