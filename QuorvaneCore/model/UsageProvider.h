#pragma once
#include <optional>
#include <string>
#include <vector>

#include "QuorvaneCore/model/ProviderID.h"
#include "QuorvaneCore/model/UsageEvent.h"
#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/ratelimits/RateLimit.h"

namespace quorvane {

/// The reader of one agent's local data. Readers never throw and never print: what cannot be read gives fewer events.
/// A reader has no mutable state of its own; any thread may call any operation.
class UsageProvider {
public:
    UsageProvider() = default;
    UsageProvider(const UsageProvider&) = default;
    UsageProvider& operator=(const UsageProvider&) = default;
    virtual ~UsageProvider() = default;

    [[nodiscard]] virtual ProviderID id() const = 0;

    /// The paths that a host should watch for changes.
    [[nodiscard]] virtual std::vector<std::string> watchPaths() const = 0;

    /// Whether this agent's data is on this machine.
    [[nodiscard]] virtual bool isAvailable() const = 0;

    /// All events, from scratch and without the index, deduplicated, in no particular order.
    [[nodiscard]] virtual std::vector<UsageEvent> loadEvents() const = 0;

    /// The agent's quotas as it last reported them; absent where nothing is known, and for agents that report none.
    [[nodiscard]] virtual std::optional<RateLimitSnapshot> latestRateLimits() const { return std::nullopt; }

    /// Whether a quota has passed its reset and the agent has not reported since.
    [[nodiscard]] virtual bool latestRateLimitAwaitingReset(Date /*now*/) const { return false; }
};

}  // namespace quorvane
