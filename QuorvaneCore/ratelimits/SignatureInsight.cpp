#include "QuorvaneCore/ratelimits/SignatureInsight.h"

#include <algorithm>

namespace quorvane {
namespace {

constexpr double lowestElapsedFraction = 0.05;  // below, the pace means nothing
constexpr double hotRatio = 1.15;
constexpr double underPaceRatio = 0.85;
constexpr double lowestShareGap = 0.1;
constexpr int fewestPricedModels = 2;

SignatureInsight::BurnVerdict verdictOn(double ratio) noexcept {
    if (ratio > hotRatio) return SignatureInsight::BurnVerdict::RunningHot;
    if (ratio < underPaceRatio) return SignatureInsight::BurnVerdict::WellUnderPace;
    return SignatureInsight::BurnVerdict::OnPace;
}

std::optional<SignatureInsight> burnPace(double usedPct, Date resetsAt, std::int64_t windowMinutes, Date now) noexcept {
    const double minutes = static_cast<double>(windowMinutes);
    const double remaining = std::max((resetsAt - now) / 60.0, 0.0);
    const double elapsed = (minutes - remaining) / minutes;
    if (!(elapsed > lowestElapsedFraction)) return std::nullopt;
    return SignatureInsight{SignatureInsight::BurnPace{
        .usedPct = usedPct, .windowElapsedFraction = elapsed, .verdict = verdictOn(usedPct / 100.0 / elapsed)}};
}

std::optional<SignatureInsight> costConcentration(double week, std::int64_t weekEvents,
                                                  std::span<const SignatureInsight::ModelSpend> models) {
    if (!(week > 0) || weekEvents < 1) return std::nullopt;
    std::optional<SignatureInsight::CostConcentration> widest;
    int priced = 0;
    for (const SignatureInsight::ModelSpend& spend : models) {
        if (!spend.cost) continue;
        ++priced;
        const double turnShare = static_cast<double>(spend.eventCount) / static_cast<double>(weekEvents);
        const double billShare = *spend.cost / week;
        if (!widest || billShare - turnShare > widest->billShare - widest->turnShare) {
            widest = {.model = spend.model, .turnShare = turnShare, .billShare = billShare};
        }
    }
    if (priced < fewestPricedModels || !(widest->billShare - widest->turnShare > lowestShareGap)) return std::nullopt;
    return SignatureInsight{*widest};
}

}  // namespace

std::optional<SignatureInsight> SignatureInsight::compute(bool limitLikelyHit, std::optional<double> usedPct,
                                                          std::optional<Date> resetsAt5h,
                                                          std::optional<std::int64_t> windowMinutes5h, double week,
                                                          std::int64_t weekEvents, std::span<const ModelSpend> models,
                                                          Date now) {
    if (limitLikelyHit && usedPct) return SignatureInsight{LimitFrozen{.usedPct = *usedPct}};
    if (!limitLikelyHit && usedPct && resetsAt5h && windowMinutes5h && *windowMinutes5h >= 1) {
        if (auto pace = burnPace(*usedPct, *resetsAt5h, *windowMinutes5h, now)) return pace;
    }
    return costConcentration(week, weekEvents, models);
}

bool SignatureInsight::isEstimate() const noexcept {
    return !std::holds_alternative<CostConcentration>(remark);
}

}  // namespace quorvane
