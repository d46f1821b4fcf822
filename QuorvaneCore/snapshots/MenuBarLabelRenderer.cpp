#include "QuorvaneCore/snapshots/MenuBarLabelRenderer.h"

#include <cmath>

#include <fmt/format.h>

#include "QuorvaneCore/platform/NumberFormat.h"
#include "QuorvaneCore/platform/TextForms.h"
#include "QuorvaneCore/snapshots/MoneyFormatter.h"
#include "QuorvaneCore/snapshots/TokenFormatter.h"

namespace quorvane {
namespace {

using Format = MenuBarDisplayFormat;
using Kind = MenuBarDisplayFormat::Kind;
using Limit = MenuBarProviderLimit;
using Summary = MenuBarProviderLimitSummary;

std::string joined(const std::vector<std::string>& texts, std::string_view separator) {
    return fmt::format("{}", fmt::join(texts, separator));
}

std::string roundedPercent(double percent) {
    return fmt::format("{:.0f}%", std::round(percent) + 0.0);  // the sum turns a negative zero into zero
}

std::string limitValue(const Limit& limit) {
    if (limit.tokenCount) return TokenFormatter::compact(*limit.tokenCount, "");
    return roundedPercent(limit.usedPct).append(limit.windowSuffix());
}

std::string compactUSD(double magnitude, bool shortForCombined, const Locale& locale) {
    if (magnitude >= 1e6) return fmt::format("${:.1f}M", magnitude / 1e6);
    if (magnitude >= 1e5) return fmt::format("${:.1f}K", magnitude / 1e3);
    const std::int64_t decimals = shortForCombined && magnitude >= 10 ? 0 : 2;
    return MoneyFormatter::dollars(magnitude, decimals, MoneyFormatter::baseCurrencyCode, locale);
}

/// `shortForCombined` asks for a text that leaves room for a limit beside it.
std::string compactAmount(double value, std::string_view currencyCode, const Locale& locale, bool shortForCombined) {
    const double magnitude = std::fabs(value);
    if (currencyCode == MoneyFormatter::baseCurrencyCode) {
        return (value < 0 ? "-" : "") + compactUSD(magnitude, shortForCombined, locale);
    }
    return MoneyFormatter::dollars(value, shortForCombined || magnitude >= 1000 ? 0 : 2, currencyCode, locale);
}

std::string_view titleSuffix(Limit::Window window) noexcept {
    switch (window) {
        case Limit::Window::FiveHour: return " 5h";
        case Limit::Window::Weekly: return " week";
        case Limit::Window::Other: return "";
    }
    return {};
}

std::string currencyName(std::string_view code, const Locale& locale) {
    if (code == MoneyFormatter::baseCurrencyCode) return "dollars";
    return NumberFormat::currencyName(locale, code).value_or(std::string{code});
}

std::string spokenLimit(const Limit& limit) {
    if (limit.tokenCount) {
        return fmt::format("{} {} tokens today, quota unavailable", limit.shortName, *limit.tokenCount);
    }
    return fmt::format("{} {:.0f} percent used{}", limit.shortName, limit.usedPct, limit.windowSpoken());
}

std::string daysLabel(std::optional<std::int64_t> days) {
    if (!days || *days < 1) return "Selected window";
    if (*days == 1) return "Today";
    return fmt::format("Last {} days", *days);
}

std::string minutesLabel(std::optional<std::int64_t> minutes, std::string_view fallback) {
    constexpr std::int64_t hour = 60;
    constexpr std::int64_t day = 24 * hour;
    if (!minutes) return std::string{fallback};
    if (*minutes == 5 * hour) return "5h";
    if (*minutes == 7 * day) return "weekly";
    if (*minutes % day == 0) return fmt::format("{}d", *minutes / day);
    if (*minutes % hour == 0) return fmt::format("{}h", *minutes / hour);
    return fmt::format("{}m", *minutes);
}

std::string_view wordsFor(MenuBarTooltipCostBasis basis) noexcept {
    switch (basis) {
        case MenuBarTooltipCostBasis::RealSpend: return "real spend";
        case MenuBarTooltipCostBasis::NotionalListPrice: return "notional list-price estimates";
        case MenuBarTooltipCostBasis::RealAndNotionalListPrice: return "real spend + notional list-price estimates";
    }
    return {};
}

std::string used(std::optional<std::int64_t> minutes, std::string_view fallback, double percent) {
    return fmt::format("{} {} used", minutesLabel(minutes, fallback), roundedPercent(percent));
}

std::string tagsOf(const Summary& summary) {
    std::string tags = summary.isOfficial ? "official" : "estimated";
    const std::string_view plan = summary.planLabel ? trimmed(*summary.planLabel) : std::string_view{};
    if (!plan.empty()) tags.append(" · ").append(plan);
    return tags;
}

/// The provider's line in the tooltip; absent if there is nothing to say of it.
std::optional<std::string> providerLimitLine(const Summary& summary) {
    std::vector<std::string> pieces;
    if (summary.primaryUsedPct) pieces.push_back(used(summary.primaryWindowMinutes, "5h", *summary.primaryUsedPct));
    if (summary.secondaryUsedPct) {
        pieces.push_back(used(summary.secondaryWindowMinutes, "weekly", *summary.secondaryUsedPct));
    }
    if (pieces.empty()) {
        if (!summary.estimatedTokenCount || *summary.estimatedTokenCount < 1) return std::nullopt;
        pieces.push_back(TokenFormatter::compact(*summary.estimatedTokenCount, " tokens today · quota unavailable"));
    }
    return fmt::format("{}: {} ({})", summary.name, joined(pieces, " · "), tagsOf(summary));
}

}  // namespace

std::string MenuBarLabelRenderer::renderedSettingsTitle(const Format& format, const std::optional<Limit>& limit) {
    if (!format.isRotating() || !limit) return format.settingsTitle();
    const std::string name = limit->shortName + std::string{titleSuffix(limit->window)};
    return format.kind == Kind::Limit ? name : "Total + " + name;
}

std::string MenuBarLabelRenderer::renderedSettingsSubtitle(const Format& format, const std::optional<Limit>& limit) {
    if (!format.isRotating() || !limit || !limit->tokenCount) return format.settingsSubtitle();
    return format.kind == Kind::Limit ? "Today tokens" : "Today total + tokens";
}

std::string MenuBarLabelRenderer::compactStatusTitle(std::optional<double> aggregateToday,
                                                     const std::optional<Limit>& limit, const Format& displayFormat,
                                                     std::string_view currencyCode, bool allProvidersUnavailable,
                                                     const Locale& locale) {
    if (displayFormat.kind == Kind::Limit && limit) return limit->shortName + " " + limitValue(*limit);
    if (!aggregateToday) return allProvidersUnavailable ? "—" : "…";
    const bool isCombined = displayFormat.kind == Kind::TotalAndLimit;
    std::string title = compactAmount(*aggregateToday, currencyCode, locale, isCombined);
    if (isCombined && limit) title.append(" · ").append(limit->shortName).append(" ").append(limitValue(*limit));
    return title;
}

std::string MenuBarLabelRenderer::accessibilityValue(std::optional<double> aggregateToday, bool includesNotional,
                                                     const std::optional<Limit>& limit, std::string_view currencyCode,
                                                     bool allProvidersUnavailable, const Locale& locale) {
    std::vector<std::string> parts;
    if (aggregateToday) {
        parts.push_back(fmt::format("Today {} {}{}", MoneyFormatter::amount(*aggregateToday, 2, locale),
                                    currencyName(currencyCode, locale),
                                    includesNotional ? ", includes notional list-price estimates" : ""));
    }
    if (limit) parts.push_back(spokenLimit(*limit));
    if (parts.empty()) return allProvidersUnavailable ? "All providers unavailable" : "Loading";
    return joined(parts, ", ");
}

std::string MenuBarLabelRenderer::tooltip(std::optional<double> aggregateToday, std::optional<double> windowTotal,
                                          std::optional<std::int64_t> windowDays, MenuBarTooltipCostBasis costBasis,
                                          std::span<const Summary> providerLimits,
                                          const std::optional<std::string>& freshnessText,
                                          std::string_view currencyCode, bool allProvidersUnavailable,
                                          const Locale& locale) {
    std::vector<std::string> sections;
    if (aggregateToday) {
        const auto amount = [&](double value) { return MoneyFormatter::dollars(value, 2, currencyCode, locale); };
        std::vector<std::string> lines{"Today: " + amount(*aggregateToday)};
        if (windowTotal) lines.push_back(daysLabel(windowDays) + ": " + amount(*windowTotal));
        lines.push_back(fmt::format("Basis: {}", wordsFor(costBasis)));
        sections.push_back(joined(lines, "\n"));
    } else {
        sections.emplace_back(allProvidersUnavailable ? "No provider data available" : "Loading provider data…");
    }
    std::vector<std::string> limitLines{"Rate limits:"};
    for (const Summary& summary : providerLimits) {
        if (auto line = providerLimitLine(summary)) limitLines.push_back(*std::move(line));
    }
    if (limitLines.size() > 1) sections.push_back(joined(limitLines, "\n"));
    if (freshnessText && !freshnessText->empty()) sections.push_back("Freshness: " + *freshnessText);
    return joined(sections, "\n\n");
}

}  // namespace quorvane
