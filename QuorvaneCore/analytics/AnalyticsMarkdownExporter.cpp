#include "QuorvaneCore/analytics/AnalyticsMarkdownExporter.h"

#include "QuorvaneCore/analytics/detail/ExportColumns.h"

namespace quorvane {
namespace {

std::string escaped(std::string_view cell) {
    std::string text;
    for (std::size_t index = 0; index < cell.size(); ++index) {
        const char character = cell[index];
        const bool isPair = character == '\r' && index + 1 < cell.size() && cell[index + 1] == '\n';
        if (character == '\r' || character == '\n') {
            text += ' ';
            if (isPair) ++index;
            continue;
        }
        if (character == '\\' || character == '|') text += '\\';
        text += character;
    }
    return text;
}

template <typename Cells>
std::string line(const Cells& cells) {
    std::string text = "|";
    for (const std::string_view cell : cells) {
        text += ' ';
        text += cell;
        text += " |";
    }
    return text;
}

detail::ExportCells alignments() {
    constexpr std::size_t columnsOfText = 3;
    detail::ExportCells cells;
    for (std::size_t column = 0; column < cells.size(); ++column)
        cells[column] = column < columnsOfText ? ":--" : "--:";
    return cells;
}

}  // namespace

std::string AnalyticsMarkdownExporter::markdown(std::span<const ModelDaySummary> rows, const Calendar& calendar) {
    const DateFormat dates = detail::exportDateFormat();
    std::string text = line(detail::exportColumns);
    text += '\n';
    text += line(alignments());
    for (const ModelDaySummary& row : rows) {
        detail::ExportCells cells = detail::exportCells(row, dates, calendar);
        for (std::string& cell : cells)
            cell = escaped(cell);
        text += '\n';
        text += line(cells);
    }
    return text;
}

std::string AnalyticsMarkdownExporter::defaultFilename(Date now, const Calendar& calendar) {
    return detail::exportFilename(now, calendar, "md");
}

}  // namespace quorvane
