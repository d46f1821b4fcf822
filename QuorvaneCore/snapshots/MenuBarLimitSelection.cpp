#include <algorithm>
#include <cmath>

#include "QuorvaneCore/snapshots/MenuBarLabelRenderer.h"

namespace quorvane {
namespace {

using Limit = MenuBarProviderLimit;
using Summary = MenuBarProviderLimitSummary;
using Choice = std::optional<MenuBarDisplayWindow>;

constexpr double warningPercent = 80;
constexpr double criticalPercent = 95;

bool hasTokens(const Summary& summary) noexcept {
    return summary.estimatedTokenCount && *summary.estimatedTokenCount >= 1;
}

bool hasShare(const Summary& summary) noexcept {
    return summary.primaryUsedPct || summary.secondaryUsedPct;
}

bool serves(const Summary& summary, Choice window) noexcept {
    if (hasTokens(summary)) return true;
    if (!window) return hasShare(summary) || summary.estimatedUsedPct;
    switch (*window) {
        case MenuBarDisplayWindow::FiveHour: return summary.primaryUsedPct.has_value();
        case MenuBarDisplayWindow::Weekly: return summary.secondaryUsedPct.has_value();
        case MenuBarDisplayWindow::Estimate: return summary.estimatedUsedPct.has_value();
        case MenuBarDisplayWindow::Other: return hasShare(summary);
    }
    return false;
}

double usedShare(const Summary& summary, Choice window) noexcept {
    const double estimated = summary.estimatedUsedPct.value_or(0);
    if (window == MenuBarDisplayWindow::Estimate) return estimated;
    if (window == MenuBarDisplayWindow::FiveHour) return summary.primaryUsedPct.value_or(estimated);
    if (window == MenuBarDisplayWindow::Weekly) return summary.secondaryUsedPct.value_or(estimated);
    return summary.primaryUsedPct.value_or(summary.secondaryUsedPct.value_or(estimated));
}

Limit::Window shownWindow(const Summary& summary, Choice window) noexcept {
    if (window == MenuBarDisplayWindow::FiveHour) return Limit::Window::FiveHour;
    if (window == MenuBarDisplayWindow::Weekly) return Limit::Window::Weekly;
    if (summary.primaryUsedPct) return Limit::windowOf(summary.primaryWindowMinutes);
    if (summary.secondaryUsedPct) return Limit::windowOf(summary.secondaryWindowMinutes);
    return Limit::Window::Other;
}

std::optional<Limit> limitOf(const Summary& summary, Choice window) {
    const bool showsTokens = window == MenuBarDisplayWindow::Estimate || !hasShare(summary);
    if (showsTokens && !hasTokens(summary)) return std::nullopt;
    return Limit{.shortName = summary.name,
                 .usedPct = usedShare(summary, window),
                 .tokenCount = showsTokens ? summary.estimatedTokenCount : std::nullopt,
                 .isEstimate = showsTokens,
                 .window = shownWindow(summary, window)};
}

/// A window that shows as 0 % takes no turn.
bool takesATurn(std::optional<double> usedPct) noexcept {
    return usedPct && std::round(*usedPct) >= 1;
}

}  // namespace

std::optional<Limit> MenuBarLabelRenderer::limit(const MenuBarDisplayFormat& format,
                                                 std::span<const Summary> providerLimits) {
    if (format.kind == MenuBarDisplayFormat::Kind::Total) return std::nullopt;
    const auto found = std::ranges::find_if(providerLimits, [&format](const Summary& summary) {
        return (!format.providerID || summary.id == *format.providerID) && serves(summary, format.window);
    });
    return found == providerLimits.end() ? std::nullopt : limitOf(*found, format.window);
}

std::optional<Limit> MenuBarLabelRenderer::pillLimit(const MenuBarDisplayFormat& format,
                                                     std::span<const Limit> rotatableLimits, std::int64_t rotationIndex,
                                                     std::span<const Summary> providerLimits) {
    if (!format.isRotating()) return limit(format, providerLimits);
    if (rotatableLimits.empty()) return std::nullopt;
    const auto count = static_cast<std::int64_t>(rotatableLimits.size());
    const std::int64_t turn = (rotationIndex % count + count) % count;
    return rotatableLimits[static_cast<std::size_t>(turn)];
}

std::vector<Limit> MenuBarLabelRenderer::rotatableLimits(std::span<const Summary> providerLimits) {
    std::vector<Limit> limits;
    for (const Summary& summary : providerLimits) {
        const std::size_t before = limits.size();
        const auto add = [&](std::optional<double> usedPct, std::optional<std::int64_t> minutes) {
            if (!takesATurn(usedPct)) return;
            limits.push_back({.shortName = summary.name, .usedPct = *usedPct, .window = Limit::windowOf(minutes)});
        };
        add(summary.primaryUsedPct, summary.primaryWindowMinutes);
        add(summary.secondaryUsedPct, summary.secondaryWindowMinutes);
        if (limits.size() == before && hasTokens(summary)) {
            limits.push_back({.shortName = summary.name,
                              .usedPct = summary.estimatedUsedPct.value_or(0),
                              .tokenCount = summary.estimatedTokenCount,
                              .isEstimate = true,
                              .window = Limit::Window::Other});
        }
    }
    return limits;
}

MenuBarAttentionState MenuBarLabelRenderer::attentionState(std::span<const Summary> providerLimits) noexcept {
    std::optional<double> fullest;
    for (const Summary& summary : providerLimits) {
        for (const std::optional<double>& used : {summary.primaryUsedPct, summary.secondaryUsedPct}) {
            if (used && (!fullest || *used > *fullest)) fullest = used;
        }
    }
    if (fullest >= criticalPercent) return MenuBarAttentionState::Critical;
    if (fullest >= warningPercent) return MenuBarAttentionState::Warning;
    return MenuBarAttentionState::Normal;
}

}  // namespace quorvane
