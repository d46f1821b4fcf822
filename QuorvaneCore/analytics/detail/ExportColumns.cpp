#include "QuorvaneCore/analytics/detail/ExportColumns.h"

#include <fmt/format.h>

#include "QuorvaneCore/platform/Locale.h"

namespace quorvane::detail {

DateFormat exportDateFormat() {
    return DateFormat::pattern(Locale::current(), "yyyy-MM-dd");
}

ExportCells exportCells(const ModelDaySummary& row, const DateFormat& dates, const Calendar& calendar) {
    return {dates.text(row.day, calendar),     std::string{rawName(row.provider)}, row.model,
            std::to_string(row.eventCount),    std::to_string(row.inputTokens),    std::to_string(row.outputTokens),
            std::to_string(row.cache5mTokens), std::to_string(row.cache1hTokens),  std::to_string(row.cacheReadTokens),
            fmt::format("{:.4f}", row.cost)};
}

std::string exportFilename(Date now, const Calendar& calendar, std::string_view extension) {
    return fmt::format("quorvane-analytics-{}.{}", exportDateFormat().text(now, calendar), extension);
}

}  // namespace quorvane::detail
