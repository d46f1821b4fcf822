#pragma once
#include <span>
#include <unordered_map>
#include <vector>

#include "QuorvaneCore/model/DedupKey.h"
#include "QuorvaneCore/model/UsageEvent.h"

namespace quorvane {

/// Keeps the best event of each key: the larger output wins, then the strictly larger total, then the first seen.
/// The index applies the same rule in SQL. One thread at a time.
class Deduplicator {
public:
    /// Offers one event.
    void add(UsageEvent event);

    /// The kept events, in no particular order.
    [[nodiscard]] std::vector<UsageEvent> events() const;

    /// The kept events of a whole sequence.
    [[nodiscard]] static std::vector<UsageEvent> dedupe(std::span<const UsageEvent> sequence);

    /// Whether a call with the usage `offered` replaces one of the same key with the usage `kept`.
    [[nodiscard]] static bool isBetter(const TokenUsage& offered, const TokenUsage& kept) noexcept;

private:
    std::unordered_map<DedupKey, UsageEvent> best_;
};

}  // namespace quorvane
