#pragma once
// Not installed: of several events of one call the best.
#include <vector>

#include "QuorvaneCore/model/UsageEvent.h"

namespace quorvane {

/// Keeps what `Deduplicator` keeps, without a copy of each event, and in the order in which the keys come.
void keepBestEvents(std::vector<UsageEvent>& events);

}  // namespace quorvane
