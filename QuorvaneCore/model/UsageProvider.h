#pragma once
#include <string>
#include <vector>

#include "QuorvaneCore/model/ProviderID.h"
#include "QuorvaneCore/model/UsageEvent.h"

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
};

}  // namespace quorvane
