#pragma once
#include <string>

#include "QuorvaneHost/html/AnalyticsPageData.h"

namespace quorvane::host {

/// One HTML page of all figures, whole in itself: it fetches nothing, it can be read and switched between measures and
/// colour schemes without its script, and all that comes from logs is escaped. UTF-8. Pure.
[[nodiscard]] std::string analyticsPage(const AnalyticsPageData& data);

}  // namespace quorvane::host
