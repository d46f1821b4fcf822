#pragma once
#include <cstddef>
#include <string>

#include "QuorvaneCore/analytics/AnalyticsModelTotal.h"
#include "QuorvaneCore/analytics/TokenMix.h"
#include "QuorvaneHost/AnalyticsData.h"
#include "QuorvaneHost/text/Ink.h"

namespace quorvane::host {

/// What each model used, the newest and most capable first.
struct ModelsReport {
    struct Row {
        AnalyticsModelTotal total;
        bool isPriced = true;

        [[nodiscard]] TokenMix mix() const noexcept;
    };

    std::int64_t days = 0;
    std::vector<Row> rows;
    std::string note;  ///< of estimates among the figures

    [[nodiscard]] static ModelsReport collect(const AnalyticsData& data);

    [[nodiscard]] std::string text(const Ink& ink, std::size_t width) const;
    [[nodiscard]] std::string json() const;
};

}  // namespace quorvane::host
