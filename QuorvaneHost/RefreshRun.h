#pragma once
#include <memory>
#include <span>
#include <vector>

#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/ingest/UsageIndexer.h"
#include "QuorvaneHost/Readers.h"

namespace quorvane::host {

/// What the refresh of one reader came to.
struct RefreshedReader {
    ProviderID id{};
    bool isAvailable = false;
    UsageIndexer::Stats stats;
};

/// Brings the index up to date with the readers, side by side, showing progress on a terminal. Every reader is visited,
/// also one whose agent is gone. In the order of `readers`. Waits while another process refreshes the same index.
/// Throws `Failure`, after all readers are done.
[[nodiscard]] std::vector<RefreshedReader> refreshAll(const std::shared_ptr<UsageIndex>& index,
                                                      std::span<const Reader> readers);

}  // namespace quorvane::host
