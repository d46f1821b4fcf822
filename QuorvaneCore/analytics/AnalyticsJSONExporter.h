#pragma once
#include <span>
#include <string>

#include "QuorvaneCore/index/ModelDaySummary.h"
#include "QuorvaneCore/platform/Calendar.h"
#include "QuorvaneCore/platform/Date.h"

namespace quorvane {

/// An array with an object for each row, indented, with sorted keys. The cost is a number, rounded to four decimals,
/// halves away from zero. "[]" where a cost is not finite, which JSON cannot say.
/// Rows come out in their order, with ten columns: date, provider, model, events, input_tokens, output_tokens,
/// cache_5m_tokens, cache_1h_tokens, cache_read_tokens, cost_usd. Dates are "yyyy-MM-dd" in the calendar given, in the
/// digits of the current locale. Pure but for the locale; any thread.
class AnalyticsJSONExporter {
public:
    AnalyticsJSONExporter() = delete;

    [[nodiscard]] static std::string json(std::span<const ModelDaySummary> rows, const Calendar& calendar);

    /// "quorvane-analytics-", the date of `now`, and ".json".
    [[nodiscard]] static std::string defaultFilename(Date now, const Calendar& calendar);
};

}  // namespace quorvane
