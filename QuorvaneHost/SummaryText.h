#pragma once
#include <cstddef>
#include <string>

#include "QuorvaneHost/SummaryReport.h"
#include "QuorvaneHost/text/Ink.h"

namespace quorvane::host {

/// The report as one screen for people, `width` cells wide, ending with a line feed.
[[nodiscard]] std::string summaryText(const SummaryReport& report, const Ink& ink, std::size_t width);

/// The report as JSON: keys sorted, money in US dollars not rounded, no line feed at the end.
[[nodiscard]] std::string summaryJSON(const SummaryReport& report);

}  // namespace quorvane::host
