#pragma once
#include "QuorvaneCore/platform/Date.h"

namespace quorvane {

/// One day of a heat map, known by `day`.
struct HeatmapDay {
    Date day;  ///< the start of a local day
    double value = 0;

    friend bool operator==(const HeatmapDay&, const HeatmapDay&) = default;
};

}  // namespace quorvane
