#pragma once
#include <span>
#include <string>

#include "QuorvaneCore/index/ModelDaySummary.h"
#include "QuorvaneCore/platform/Calendar.h"
#include "QuorvaneCore/platform/Date.h"

namespace quorvane {

/// Comma-separated values as RFC 4180 has them: lines end in CR LF, but for the last, which ends in nothing. A cell
/// with a comma, a quote or a line end stands in quotes. The cost has four decimals.
/// Rows come out in their order, with ten columns: date, provider, model, events, input_tokens, output_tokens,
/// cache_5m_tokens, cache_1h_tokens, cache_read_tokens, cost_usd. Dates are "yyyy-MM-dd" in the calendar given, in the
/// digits of the current locale. Pure but for the locale; any thread.
class AnalyticsCSVExporter {
public:
    AnalyticsCSVExporter() = delete;

    [[nodiscard]] static std::string csv(std::span<const ModelDaySummary> rows, const Calendar& calendar);

    /// "quorvane-analytics-", the date of `now`, and ".csv".
    [[nodiscard]] static std::string defaultFilename(Date now, const Calendar& calendar);
};

}  // namespace quorvane
