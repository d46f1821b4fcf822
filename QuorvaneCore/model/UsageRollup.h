#pragma once
#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "QuorvaneCore/model/CostBucket.h"

namespace quorvane {

/// What usage cost today and over a window of days that ends today.
struct UsageRollup {
    CostBucket today;
    CostBucket last7d;                                         ///< the whole window, whatever its length
    std::map<std::string, CostBucket, std::less<>> byModel7d;  ///< the window by model, as the logs name it
    std::int64_t windowDays = 0;

    friend bool operator==(const UsageRollup&, const UsageRollup&) = default;
};

}  // namespace quorvane
