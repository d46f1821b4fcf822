#pragma once
#include <cstdint>
#include <map>
#include <vector>

#include "QuorvaneCore/model/ProviderID.h"
#include "QuorvaneCore/model/UsageRollup.h"

namespace quorvane {

/// A rollup with its days.
struct UsageWindowSummary {
    UsageRollup rollup;
    /// US dollars per local day of the window, the oldest day first and today last; 0 for a day without priced events.
    std::vector<double> dailyCostSeries;

    friend bool operator==(const UsageWindowSummary&, const UsageWindowSummary&) = default;
};

/// One window, for a set of providers.
struct UsageWindowSummaries {
    UsageWindowSummary aggregate;                        ///< all requested providers together
    std::map<ProviderID, UsageWindowSummary> providers;  ///< one entry for each requested provider

    friend bool operator==(const UsageWindowSummaries&, const UsageWindowSummaries&) = default;
};

/// Several windows of one call, by their length in days.
struct UsageMultiWindowSummaries {
    std::map<std::int64_t, UsageWindowSummaries> byDays;

    friend bool operator==(const UsageMultiWindowSummaries&, const UsageMultiWindowSummaries&) = default;
};

}  // namespace quorvane
