#include "QuorvaneCore/analytics/AnalyticsJSONExporter.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "QuorvaneCore/analytics/detail/ExportColumns.h"
#include "QuorvaneCore/platform/JSONWriter.h"

namespace quorvane {
namespace {

double roundedToFourDecimals(double cost) noexcept {
    constexpr double scale = 10000;
    return std::round(cost * scale) / scale;
}

JSONTree encoded(const ModelDaySummary& row, const DateFormat& dates, const Calendar& calendar) {
    return JSONTree::Object{{"date", dates.text(row.day, calendar)},
                            {"provider", std::string{rawName(row.provider)}},
                            {"model", row.model},
                            {"events", row.eventCount},
                            {"input_tokens", row.inputTokens},
                            {"output_tokens", row.outputTokens},
                            {"cache_5m_tokens", row.cache5mTokens},
                            {"cache_1h_tokens", row.cache1hTokens},
                            {"cache_read_tokens", row.cacheReadTokens},
                            {"cost_usd", roundedToFourDecimals(row.cost)}};
}

}  // namespace

std::string AnalyticsJSONExporter::json(std::span<const ModelDaySummary> rows, const Calendar& calendar) {
    const bool canBeSaid = std::all_of(rows.begin(), rows.end(), [](const ModelDaySummary& row) {
        return std::isfinite(roundedToFourDecimals(row.cost));
    });
    if (!canBeSaid) return "[]";
    const DateFormat dates = detail::exportDateFormat();
    JSONTree::Array array;
    array.reserve(rows.size());
    for (const ModelDaySummary& row : rows)
        array.push_back(encoded(row, dates, calendar));
    return JSONWriter::pretty(std::move(array));
}

std::string AnalyticsJSONExporter::defaultFilename(Date now, const Calendar& calendar) {
    return detail::exportFilename(now, calendar, "json");
}

}  // namespace quorvane
