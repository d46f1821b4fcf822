#pragma once
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "QuorvaneCore/index/ModelDaySummary.h"
#include "QuorvaneCore/platform/Calendar.h"
#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/platform/DateFormat.h"

namespace quorvane::detail {

/// The columns that every export has.
inline constexpr std::array<std::string_view, 10> exportColumns{"date",
                                                                "provider",
                                                                "model",
                                                                "events",
                                                                "input_tokens",
                                                                "output_tokens",
                                                                "cache_5m_tokens",
                                                                "cache_1h_tokens",
                                                                "cache_read_tokens",
                                                                "cost_usd"};

using ExportCells = std::array<std::string, exportColumns.size()>;

/// "yyyy-MM-dd" in the digits of the current locale.
[[nodiscard]] DateFormat exportDateFormat();

/// A row as texts, the cost with four decimals.
[[nodiscard]] ExportCells exportCells(const ModelDaySummary& row, const DateFormat& dates, const Calendar& calendar);

/// The name that a file of this kind is proposed.
[[nodiscard]] std::string exportFilename(Date now, const Calendar& calendar, std::string_view extension);

}  // namespace quorvane::detail
