#include "QuorvaneCore/model/Deduplicator.h"

#include <utility>

namespace quorvane {

bool Deduplicator::isBetter(const TokenUsage& offered, const TokenUsage& kept) noexcept {
    if (offered.output != kept.output) return offered.output > kept.output;
    return offered.total() > kept.total();
}

void Deduplicator::add(UsageEvent event) {
    const auto [entry, isNew] = best_.try_emplace(DedupKey::of(event));
    if (isNew || isBetter(event.usage, entry->second.usage)) entry->second = std::move(event);
}

std::vector<UsageEvent> Deduplicator::events() const {
    std::vector<UsageEvent> kept;
    kept.reserve(best_.size());
    for (const auto& entry : best_)
        kept.push_back(entry.second);
    return kept;
}

std::vector<UsageEvent> Deduplicator::dedupe(std::span<const UsageEvent> sequence) {
    Deduplicator filter;
    for (const UsageEvent& event : sequence)
        filter.add(event);
    return filter.events();
}

}  // namespace quorvane
