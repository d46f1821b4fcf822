#include "QuorvaneCore/analytics/AnalyticsCSVExporter.h"

#include "QuorvaneCore/analytics/detail/ExportColumns.h"

namespace quorvane {
namespace {

void appendCell(std::string& text, std::string_view cell) {
    if (cell.find_first_of(",\"\r\n") == std::string_view::npos) {
        text += cell;
        return;
    }
    text += '"';
    for (const char character : cell) {
        if (character == '"') text += '"';
        text += character;
    }
    text += '"';
}

template <typename Cells>
void appendLine(std::string& text, const Cells& cells) {
    const char* separator = "";
    for (const std::string_view cell : cells) {
        text += separator;
        appendCell(text, cell);
        separator = ",";
    }
}

}  // namespace

std::string AnalyticsCSVExporter::csv(std::span<const ModelDaySummary> rows, const Calendar& calendar) {
    const DateFormat dates = detail::exportDateFormat();
    std::string text;
    appendLine(text, detail::exportColumns);
    for (const ModelDaySummary& row : rows) {
        text += "\r\n";
        appendLine(text, detail::exportCells(row, dates, calendar));
    }
    return text;
}

std::string AnalyticsCSVExporter::defaultFilename(Date now, const Calendar& calendar) {
    return detail::exportFilename(now, calendar, "csv");
}

}  // namespace quorvane
