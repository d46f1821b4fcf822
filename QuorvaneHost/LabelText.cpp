#include "QuorvaneHost/LabelText.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

#include "QuorvaneCore/model/ProviderBasis.h"
#include "QuorvaneCore/model/ProviderCatalog.h"
#include "QuorvaneCore/platform/JSONTree.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "QuorvaneCore/snapshots/MoneyFormatter.h"

namespace quorvane::host {
namespace {

/// Limits that take turns each stay so many seconds.
constexpr double turnSeconds = 15;

std::string_view rawName(MenuBarAttentionState state) {
    switch (state) {
        case MenuBarAttentionState::Normal: return "normal";
        case MenuBarAttentionState::Warning: return "warning";
        case MenuBarAttentionState::Critical: return "critical";
    }
    return {};
}

MenuBarProviderLimitSummary limitSummary(const LimitsReport::Row& row, const UsageWindowSummaries& summaries) {
    const ProviderDescriptor* descriptor = ProviderCatalog::descriptor(row.id);
    MenuBarProviderLimitSummary summary{.id = std::string{quorvane::rawName(row.id)}, .name = descriptor->shortName};
    if (row.limits) {
        summary.isOfficial = true;
        summary.planLabel = row.limits->planType;
        if (const auto& window = row.limits->primary) {
            summary.primaryUsedPct = window->usedPercent;
            summary.primaryWindowMinutes = window->windowMinutes;
        }
        if (const auto& window = row.limits->secondary) {
            summary.secondaryUsedPct = window->usedPercent;
            summary.secondaryWindowMinutes = window->windowMinutes;
        }
    } else if (showsTokens(providerBasisOf(row.id))) {
        const auto usage = summaries.providers.find(row.id);
        if (usage != summaries.providers.end()) {
            summary.estimatedTokenCount = usage->second.rollup.today.usage.total();
        }
    }
    return summary;
}

MenuBarTooltipCostBasis basisOf(const LimitsReport& limits) {
    bool hasNotional = false;
    bool hasReal = false;
    for (const LimitsReport::Row& row : limits.rows) {
        switch (providerBasisOf(row.id)) {
            case ProviderBasis::Real: hasReal = true; break;
            case ProviderBasis::Notional: hasNotional = true; break;
            case ProviderBasis::Estimate: break;
        }
    }
    if (!hasNotional) return MenuBarTooltipCostBasis::RealSpend;
    return hasReal ? MenuBarTooltipCostBasis::RealAndNotionalListPrice : MenuBarTooltipCostBasis::NotionalListPrice;
}

}  // namespace

LabelText LabelText::make(const UsageWindowSummaries& summaries, const LimitsReport& limits,
                          const MenuBarDisplayFormat& format, const Locale& locale) {
    std::vector<MenuBarProviderLimitSummary> providerLimits;
    LabelText label;
    for (const LimitsReport::Row& row : limits.rows) {
        providerLimits.push_back(limitSummary(row, summaries));
        label.hasStaleLimits = label.hasStaleLimits || row.isStale(limits.now);
        const MenuBarProviderLimitSummary& last = providerLimits.back();
        label.fullestPercent =
            std::max({label.fullestPercent, last.primaryUsedPct.value_or(0), last.secondaryUsedPct.value_or(0)});
    }
    const bool isNothingThere = limits.rows.empty();
    const UsageRollup& rollup = summaries.aggregate.rollup;
    const std::optional<double> today = isNothingThere ? std::nullopt : std::optional{rollup.today.cost};
    const std::vector<MenuBarProviderLimit> turns = MenuBarLabelRenderer::rotatableLimits(providerLimits);
    const auto turn = static_cast<std::int64_t>(std::floor(limits.now.secondsSince1970 / turnSeconds));
    const std::optional<MenuBarProviderLimit> limit =
        MenuBarLabelRenderer::pillLimit(format, turns, turn, providerLimits);
    label.title = MenuBarLabelRenderer::compactStatusTitle(today, limit, format, MoneyFormatter::baseCurrencyCode,
                                                           isNothingThere, locale);
    label.tooltip =
        MenuBarLabelRenderer::tooltip(today, rollup.last7d.cost, rollup.windowDays, basisOf(limits), providerLimits,
                                      std::nullopt, MoneyFormatter::baseCurrencyCode, isNothingThere, locale);
    label.attention = MenuBarLabelRenderer::attentionState(providerLimits);
    return label;
}

std::string LabelText::waybar() const {
    JSONTree::Array classes{JSONTree{std::string{rawName(attention)}}};
    if (hasStaleLimits) classes.emplace_back("stale");
    return JSONWriter::compact(JSONTree::Object{{"text", escapedForPango(title)},
                                                {"tooltip", escapedForPango(tooltip)},
                                                {"class", std::move(classes)},
                                                {"percentage", std::round(fullestPercent)}});
}

std::string escapedForPango(std::string_view text) {
    std::string escaped;
    for (const char character : text) {
        switch (character) {
            case '&': escaped += "&amp;"; break;
            case '<': escaped += "&lt;"; break;
            case '>': escaped += "&gt;"; break;
            case '"': escaped += "&quot;"; break;
            case '\'': escaped += "&apos;"; break;
            default: escaped += character;
        }
    }
    return escaped;
}

}  // namespace quorvane::host
