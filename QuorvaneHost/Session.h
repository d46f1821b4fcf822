#pragma once
#include <memory>

#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/pricing/CostCalculator.h"

namespace quorvane::host {

/// Opens the index at its default place. Throws `Failure` naming the file and the cause.
[[nodiscard]] std::shared_ptr<UsageIndex> openIndex();

/// The prices in force: those that ship with the program, and a fetched list laid over them.
[[nodiscard]] CostCalculator currentPrices();

}  // namespace quorvane::host
