#pragma once
#include <array>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "QuorvaneCore/index/UsageWindowSummary.h"
#include "QuorvaneCore/model/ProviderID.h"
#include "QuorvaneCore/ratelimits/RateLimit.h"
#include "QuorvaneCore/snapshots/LocalAutomationSnapshot.h"

namespace quorvane {

/// Builds the record of "latest-snapshot.json" from summaries and limits. Pure; cannot fail; any thread.
class LocalAutomationSnapshotBuilder {
public:
    LocalAutomationSnapshotBuilder() = delete;

    /// The window lengths that the file is written for, in days.
    static constexpr std::array<std::int64_t, 4> supportedTimeframes{7, 14, 30, 90};

    /// The supported length nearest to `days`, the smaller one on a tie.
    [[nodiscard]] static std::int64_t normalizedDays(std::int64_t days) noexcept;

    /// The providers of the catalog's live rows, in catalog order.
    [[nodiscard]] static std::vector<ProviderID> liveProviderIDs();

    /// A row for each of `providerIDs` that has a summary, in their order; limits of each that has some. `source` is
    /// the writer's word for itself.
    [[nodiscard]] static LocalAutomationSnapshot build(const UsageWindowSummaries& summaries,
                                                       std::span<const ProviderID> providerIDs,
                                                       const std::map<ProviderID, RateLimitSnapshot>& rateLimits,
                                                       const std::string& source, Date generatedAt);
};

}  // namespace quorvane
