#include "QuorvaneHost/Remark.h"

#include <variant>
#include <vector>

#include <fmt/format.h>

#include "QuorvaneCore/model/ProviderCatalog.h"
#include "QuorvaneCore/ratelimits/SignatureInsight.h"
#include "QuorvaneHost/text/Amounts.h"
#include "QuorvaneHost/text/Cells.h"

namespace quorvane::host {
namespace {

std::optional<SignatureInsight> insightOf(const LimitsReport::Row& row, const UsageRollup& week, Date now) {
    std::vector<SignatureInsight::ModelSpend> models;
    for (const auto& [model, bucket] : week.byModel7d) {
        const bool isPriced = bucket.unpricedModels.empty();
        models.push_back({.model = model,
                          .cost = isPriced ? std::optional{bucket.cost} : std::nullopt,
                          .eventCount = bucket.eventCount});
    }
    const std::optional<RateLimitWindow> primary = row.limits ? row.limits->primary : std::nullopt;
    return SignatureInsight::compute(std::holds_alternative<ProviderHeadroom::LikelyExhausted>(row.headroom.verdict),
                                     primary ? std::optional{primary->usedPercent} : std::nullopt,
                                     primary ? primary->resetsAt : std::nullopt,
                                     primary ? std::optional{primary->windowMinutes} : std::nullopt, week.last7d.cost,
                                     week.last7d.eventCount, models, now);
}

/// Smaller matters more.
int rank(const SignatureInsight& insight) {
    if (std::holds_alternative<SignatureInsight::LimitFrozen>(insight.remark)) return 0;
    if (const auto* pace = std::get_if<SignatureInsight::BurnPace>(&insight.remark)) {
        return pace->verdict == SignatureInsight::BurnVerdict::RunningHot ? 1 : 3;
    }
    return 2;
}

std::string worded(const SignatureInsight& insight, const std::string& name) {
    if (const auto* frozen = std::get_if<SignatureInsight::LimitFrozen>(&insight.remark)) {
        return fmt::format("{}: nothing heard since {} of the limit were used; it is likely exhausted", name,
                           wholePercent(frozen->usedPct));
    }
    if (const auto* pace = std::get_if<SignatureInsight::BurnPace>(&insight.remark)) {
        const std::string figures =
            fmt::format("{}: {} of the limit used in {} of its time", name, wholePercent(pace->usedPct),
                        wholePercent(pace->windowElapsedFraction * 100));
        switch (pace->verdict) {
            case SignatureInsight::BurnVerdict::RunningHot: return figures + ", faster than it lasts";
            case SignatureInsight::BurnVerdict::OnPace: return figures + ", on pace";
            case SignatureInsight::BurnVerdict::WellUnderPace: return figures + ", well under pace";
        }
    }
    const auto& share = std::get<SignatureInsight::CostConcentration>(insight.remark);
    return fmt::format("{} made {} of {}'s cost of the week in {} of its calls", printable(share.model),
                       wholePercent(share.billShare * 100), name, wholePercent(share.turnShare * 100));
}

}  // namespace

std::optional<std::string> weeklyRemark(const UsageIndex& index, const LimitsReport& limits,
                                        const CostCalculator& calculator, const Calendar& calendar) {
    constexpr std::int64_t week = 7;
    std::vector<ProviderID> ids;
    for (const LimitsReport::Row& row : limits.rows)
        ids.push_back(row.id);
    const UsageWindowSummaries summaries = index.windowSummaries(ids, week, calculator, limits.now, calendar);
    std::optional<std::string> best;
    int bestRank = 0;
    double bestCost = 0;
    for (const LimitsReport::Row& row : limits.rows) {
        const UsageRollup& rollup = summaries.providers.at(row.id).rollup;
        const std::optional<SignatureInsight> insight = insightOf(row, rollup, limits.now);
        if (!insight) continue;
        const int matters = rank(*insight);
        const double cost = rollup.last7d.cost;
        if (best && (matters > bestRank || (matters == bestRank && cost <= bestCost))) continue;
        best = worded(*insight, ProviderCatalog::descriptor(row.id)->name);
        bestRank = matters;
        bestCost = cost;
    }
    return best;
}

}  // namespace quorvane::host
