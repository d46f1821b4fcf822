#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/pricing/CostCalculator.h"
#include "QuorvaneHost/LimitsReport.h"
#include "QuorvaneHost/Readers.h"

namespace quorvane::host {

/// The figures of the `summary` command, ready to be drawn or written.
struct SummaryReport {
    struct ProviderRow {
        ProviderID id{};
        bool isAvailable = false;
        bool isInTotals = true;  ///< false for figures that are an estimate and are left out of sums
        UsageWindowSummary summary;
    };
    struct ModelRow {
        std::string model;  ///< as the logs name it
        CostBucket window;
        bool isPriced = true;
    };

    std::int64_t days = 0;
    Date now;
    std::string firstDay;  ///< of the window, yyyy-MM-dd
    std::string lastDay;
    UsageWindowSummary total;
    std::vector<ProviderRow> providers;  ///< those that have data on this machine or events in the window
    std::vector<ModelRow> models;        ///< the most expensive first, then by tokens
    LimitsReport limits;                 ///< the newest limits of the providers
    std::optional<std::string> remark;   ///< the one thing worth saying of the last week
    double cacheSavings = 0;             ///< US dollars that reading from the cache saved against plain input

    /// Reads the index as it is. `readers` are those to be summed.
    [[nodiscard]] static SummaryReport collect(const UsageIndex& index, const std::vector<Reader>& readers,
                                               std::int64_t days, const CostCalculator& calculator, Date now,
                                               const Calendar& calendar);
};

}  // namespace quorvane::host
