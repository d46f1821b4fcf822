#pragma once
#include <span>
#include <string>

#include "QuorvaneCore/index/ModelDaySummary.h"
#include "QuorvaneCore/platform/Calendar.h"
#include "QuorvaneCore/platform/Date.h"

namespace quorvane {

/// A Markdown table, without a line end behind the last line. Bars and backslashes of a cell are escaped, line ends
/// become blanks. The cost has four decimals.
/// Rows come out in their order, with ten columns: date, provider, model, events, input_tokens, output_tokens,
/// cache_5m_tokens, cache_1h_tokens, cache_read_tokens, cost_usd. Dates are "yyyy-MM-dd" in the calendar given, in the
/// digits of the current locale. Pure but for the locale; any thread.
class AnalyticsMarkdownExporter {
public:
    AnalyticsMarkdownExporter() = delete;

    [[nodiscard]] static std::string markdown(std::span<const ModelDaySummary> rows, const Calendar& calendar);

    /// "quorvane-analytics-", the date of `now`, and ".md".
    [[nodiscard]] static std::string defaultFilename(Date now, const Calendar& calendar);
};

}  // namespace quorvane
