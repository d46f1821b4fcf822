#pragma once
#include <cstdint>
#include <string>
#include <variant>

#include "QuorvaneCore/model/ProviderID.h"
#include "QuorvaneCore/platform/Date.h"

namespace quorvane {

/// What of the rows a view looks into: any instant of a local day stands for the day.
struct DrillDay {
    Date day;
};

/// A weekday, 1 to 7, where 1 is Sunday.
struct DrillWeekday {
    std::int64_t weekday = 0;
};

/// One model of one provider on a local day.
struct DrillModelDay {
    ProviderID provider{};
    std::string model;
    Date day;
};

using AnalyticsDrillFilter = std::variant<DrillDay, DrillWeekday, DrillModelDay>;

}  // namespace quorvane
