#pragma once
#include <cstddef>
#include <string>

#include "QuorvaneHost/AnalyticsData.h"
#include "QuorvaneHost/text/Ink.h"

namespace quorvane::host {

/// What each project cost, the most expensive first.
struct ProjectsReport {
    std::int64_t days = 0;
    std::vector<ProjectCostSummary> projects;
    std::string note;  ///< of estimates among the figures

    [[nodiscard]] static ProjectsReport collect(const AnalyticsData& data);

    [[nodiscard]] std::string text(const Ink& ink, std::size_t width) const;
    [[nodiscard]] std::string json() const;
};

}  // namespace quorvane::host
