#include "QuorvaneCore/snapshots/LocalAutomationSnapshotBuilder.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

#include "QuorvaneCore/model/ProviderCatalog.h"
#include "QuorvaneCore/ratelimits/ProviderHeadroom.h"
#include "QuorvaneCore/snapshots/MoneyFormatter.h"
#include "QuorvaneCore/snapshots/detail/Cents.h"

namespace quorvane {
namespace {

using Basis = LocalAutomationCostBasis;
using detail::roundedToCents;

/// Whether the provider's figures are told in tokens, since its dollars would be a guess.
bool isToldInTokens(ProviderID id) noexcept {
    return id == ProviderID::Copilot || id == ProviderID::Cursor;
}

Basis costBasisOf(ProviderID id) noexcept {
    if (isToldInTokens(id)) return Basis::TokenEstimate;
    const bool isNotional =
        id == ProviderID::Codex || id == ProviderID::Gemini || id == ProviderID::Grok || id == ProviderID::MuseSpark;
    return isNotional ? Basis::NotionalListPrice : Basis::RealSpend;
}

std::string nameOf(ProviderID id) {
    if (const ProviderDescriptor* descriptor = ProviderCatalog::descriptor(id)) return descriptor->name;
    std::string name{rawName(id)};
    if (name.front() >= 'a' && name.front() <= 'z') name.front() = static_cast<char>(name.front() - 'a' + 'A');
    return name;
}

std::vector<double> roundedToCentsEach(std::vector<double> series) {
    for (double& value : series)
        value = roundedToCents(value);
    return series;
}

LocalAutomationProvider row(ProviderID id, const UsageWindowSummary& summary,
                            const std::optional<RateLimitSnapshot>& limits, Date now) {
    const CostBucket& today = summary.rollup.today;
    const CostBucket& window = summary.rollup.last7d;
    const bool inTokens = isToldInTokens(id);
    return LocalAutomationProvider{
        .id = std::string{rawName(id)},
        .name = nameOf(id),
        .currencyCode = std::string{MoneyFormatter::baseCurrencyCode},
        .today = roundedToCents(inTokens ? static_cast<double>(today.usage.total()) : today.cost),
        .window = roundedToCents(inTokens ? static_cast<double>(window.usage.total()) : window.cost),
        .costBasis = costBasisOf(id),
        .valueMetric = inTokens ? WidgetValueMetric::Tokens : WidgetValueMetric::Dollars,
        .series = inTokens ? std::vector<double>{} : roundedToCentsEach(summary.dailyCostSeries),
        .eventsToday = today.eventCount,
        .eventsWindow = window.eventCount,
        .unpricedModels = {window.unpricedModels.begin(), window.unpricedModels.end()},
        .headroom = LocalAutomationHeadroom::from(ProviderHeadroom::resolve(limits, now)),
        .aiuWindow = std::nullopt,
    };
}

std::optional<LocalAutomationRateLimitWindow> localWindow(const std::optional<RateLimitWindow>& window) {
    if (!window) return std::nullopt;
    return LocalAutomationRateLimitWindow{.usedPercent = roundedToCents(window->usedPercent),
                                          .windowMinutes = window->windowMinutes,
                                          .resetsAt = window->resetsAt,
                                          .official = true};
}

LocalAutomationRateLimits localRateLimits(const RateLimitSnapshot& limits) {
    return LocalAutomationRateLimits{.planType = limits.planType,
                                     .primary5h = localWindow(limits.primary),
                                     .secondaryWeekly = localWindow(limits.secondary)};
}

Basis aggregateCostBasis(const std::vector<LocalAutomationProvider>& rows) {
    const auto hasAny = [&](Basis basis) {
        return std::any_of(rows.begin(), rows.end(), [&](const auto& row) { return row.costBasis == basis; });
    };
    const bool isNotional = hasAny(Basis::NotionalListPrice);
    const bool isReal = hasAny(Basis::RealSpend);
    if (isNotional) return isReal ? Basis::RealAndNotionalListPrice : Basis::NotionalListPrice;
    return !isReal && hasAny(Basis::TokenEstimate) ? Basis::TokenEstimate : Basis::RealSpend;
}

/// Sums of the rows where all are told in tokens, else the aggregate's money.
void setTotals(LocalAutomationSnapshot& snapshot, const UsageWindowSummary& aggregate) {
    const auto& rows = snapshot.providers;
    const bool inTokens = !rows.empty() && std::all_of(rows.begin(), rows.end(), [](const auto& row) {
        return row.valueMetric == WidgetValueMetric::Tokens;
    });
    if (inTokens) {
        snapshot.valueMetric = WidgetValueMetric::Tokens;
        for (const LocalAutomationProvider& provider : rows) {
            snapshot.totalToday += provider.today;
            snapshot.totalWindow += provider.window;
        }
    } else {
        snapshot.totalToday = aggregate.rollup.today.cost;
        snapshot.totalWindow = aggregate.rollup.last7d.cost;
        snapshot.series = roundedToCentsEach(aggregate.dailyCostSeries);
    }
    snapshot.totalToday = roundedToCents(snapshot.totalToday);
    snapshot.totalWindow = roundedToCents(snapshot.totalWindow);
}

}  // namespace

std::int64_t LocalAutomationSnapshotBuilder::normalizedDays(std::int64_t days) noexcept {
    const std::int64_t wanted = std::clamp<std::int64_t>(days, 0, 100);  // far outside, the nearest is clear
    std::int64_t best = supportedTimeframes.front();
    for (const std::int64_t length : supportedTimeframes) {
        if (std::abs(length - wanted) < std::abs(best - wanted)) best = length;
    }
    return best;
}

std::vector<ProviderID> LocalAutomationSnapshotBuilder::liveProviderIDs() {
    std::vector<ProviderID> ids;
    for (const ProviderDescriptor& descriptor : ProviderCatalog::live())
        ids.push_back(descriptor.id);
    return ids;
}

LocalAutomationSnapshot LocalAutomationSnapshotBuilder::build(const UsageWindowSummaries& summaries,
                                                              std::span<const ProviderID> providerIDs,
                                                              const std::map<ProviderID, RateLimitSnapshot>& rateLimits,
                                                              const std::string& source, Date generatedAt) {
    LocalAutomationSnapshot snapshot{.generatedAt = generatedAt,
                                     .source = source,
                                     .windowDays = std::max<std::int64_t>(summaries.aggregate.rollup.windowDays, 1),
                                     .currencyCode = std::string{MoneyFormatter::baseCurrencyCode},
                                     .status = "ok"};
    for (const ProviderID id : providerIDs) {
        const auto limits = rateLimits.find(id);
        const std::optional<RateLimitSnapshot> known =
            limits == rateLimits.end() ? std::nullopt : std::optional{limits->second};
        if (known) snapshot.rateLimits.insert_or_assign(std::string{rawName(id)}, localRateLimits(*known));
        const auto summary = summaries.providers.find(id);
        if (summary != summaries.providers.end()) {
            snapshot.providers.push_back(row(id, summary->second, known, generatedAt));
        }
    }
    snapshot.costBasis = aggregateCostBasis(snapshot.providers);
    setTotals(snapshot, summaries.aggregate);
    if (snapshot.providers.empty()) {
        snapshot.status = "no_sources";
        snapshot.notice = "No live provider sources are available on this Mac.";
    }
    return snapshot;
}

}  // namespace quorvane
