#pragma once
#include <algorithm>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "QuorvaneCore/index/ProjectCostSummary.h"
#include "QuorvaneCore/index/detail/CallSums.h"
#include "QuorvaneCore/platform/StringHash.h"

namespace quorvane::detail {

/// Adds up calls by project.
class ProjectAccumulator {
public:
    void add(std::string_view project, const TokenUsage& usage, double cost) {
        if (project.empty()) project = ProjectCostSummary::unattributed;
        auto entry = projects_.find(project);
        if (entry == projects_.end()) {
            entry = projects_.emplace(project, ProjectCostSummary{}).first;
            entry->second.project = project;
        }
        addCall(entry->second, usage, cost);
    }

    /// The most expensive first, then the one with more tokens, then by name.
    [[nodiscard]] std::vector<ProjectCostSummary> finished() && {
        std::vector<ProjectCostSummary> sorted;
        sorted.reserve(projects_.size());
        for (auto& [name, summary] : projects_)
            sorted.push_back(std::move(summary));
        std::sort(sorted.begin(), sorted.end(), [](const ProjectCostSummary& left, const ProjectCostSummary& right) {
            if (left.cost != right.cost) return left.cost > right.cost;
            if (left.totalTokens() != right.totalTokens()) return left.totalTokens() > right.totalTokens();
            return left.project < right.project;
        });
        return sorted;
    }

private:
    std::unordered_map<std::string, ProjectCostSummary, StringHash, std::equal_to<>> projects_;
};

}  // namespace quorvane::detail
