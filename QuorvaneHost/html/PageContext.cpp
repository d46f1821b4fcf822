#include "QuorvaneHost/html/PageContext.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <span>

#include <fmt/format.h>

#include "QuorvaneCore/analytics/AnalyticsAggregation.h"
#include "QuorvaneCore/pricing/ModelName.h"

namespace quorvane::host {
namespace {

constexpr std::int64_t aYear = 366;

std::vector<ModelDaySummary> withinWindow(const std::vector<ModelDaySummary>& rows, LocalDay first, LocalDay last,
                                          const Calendar& calendar) {
    std::vector<ModelDaySummary> within;
    std::copy_if(rows.begin(), rows.end(), std::back_inserter(within), [&](const ModelDaySummary& row) {
        const LocalDay day = calendar.day(row.day);
        return first <= day && day <= last;
    });
    return within;
}

LocalDay firstDrawn(const std::vector<ModelDaySummary>& rows, LocalDay windowStart, LocalDay lastDay,
                    const Calendar& calendar) {
    LocalDay first = lastDay - (aYear - 1);
    for (const ModelDaySummary& row : rows)
        first = std::min(first, calendar.day(row.day));
    return std::max(first, windowStart);
}

PagePeriods::Unit unitFor(std::int64_t days) {
    constexpr std::int64_t mostDays = 400;
    return days <= mostDays ? PagePeriods::Unit::Day : PagePeriods::Unit::Month;
}

std::vector<UsageFigures> figuresByDay(const PageContext& context) {
    std::vector<UsageFigures> figures(static_cast<std::size_t>(context.drawnDays));
    for (const AnalyticsMeasure measure : pageMeasures) {
        const std::vector<HeatmapDay> values = AnalyticsAggregation::heatmapDays(
            context.rows, measure, context.drawnDays, context.data.now, context.data.calendar);
        for (std::size_t at = 0; at < std::min(values.size(), figures.size()); ++at) {
            const double value = values[at].value;
            switch (measure) {
                case AnalyticsMeasure::events: figures[at].events = std::llround(value); break;
                case AnalyticsMeasure::tokens: figures[at].tokens = std::llround(value); break;
                case AnalyticsMeasure::cost: figures[at].cost = value; break;
            }
        }
    }
    return figures;
}

std::vector<PageContext::Provider> providersOf(std::span<const ModelDaySummary> rows, const PagePeriods& periods,
                                               const Calendar& calendar, LocalDay today) {
    std::map<ProviderID, PageContext::Provider> byID;
    for (const ModelDaySummary& row : rows) {
        PageContext::Provider& provider = byID[row.provider];
        provider.id = row.provider;
        provider.periods.resize(periods.size());
        const UsageFigures figures{row};
        const LocalDay day = calendar.day(row.day);
        provider.window += figures;
        provider.periods[periods.indexOf(day)] += figures;
        if (day == today) provider.today += figures;
    }
    std::vector<PageContext::Provider> providers;
    for (auto& [id, provider] : byID)
        providers.push_back(std::move(provider));
    std::stable_sort(providers.begin(), providers.end(), [](const auto& left, const auto& right) {
        if (left.window.cost != right.window.cost) return left.window.cost > right.window.cost;
        return left.window.tokens > right.window.tokens;
    });
    return providers;
}

}  // namespace

PageContext::PageContext(const AnalyticsPageData& pageData)
    : data{pageData},
      format{pageData.locale},
      windowStart{pageData.calendar.day(pageData.now) - (std::max<std::int64_t>(pageData.days, 1) - 1)},
      lastDay{pageData.calendar.day(pageData.now)},
      firstDay{lastDay},
      periods{lastDay, lastDay, PagePeriods::Unit::Day, pageData.calendar} {
    rows = withinWindow(data.rows, windowStart, lastDay, data.calendar);
    const std::vector<ModelDaySummary> estimated = withinWindow(data.estimates, windowStart, lastDay, data.calendar);
    firstDay = std::min(firstDrawn(rows, windowStart, lastDay, data.calendar),
                        firstDrawn(estimated, windowStart, lastDay, data.calendar));
    drawnDays = lastDay - firstDay + 1;
    periods = PagePeriods{firstDay, lastDay, unitFor(drawnDays), data.calendar};
    heatmap = AnalyticsAggregation::heatmapDays(rows, AnalyticsMeasure::cost, drawnDays, data.now, data.calendar);
    days = figuresByDay(*this);
    byPeriod.resize(periods.size());
    for (std::size_t at = 0; at < days.size(); ++at)
        byPeriod[periods.indexOf(firstDay + static_cast<std::int64_t>(at))] += days[at];
    for (const UsageFigures& figures : byPeriod)
        total += figures;
    providers = providersOf(rows, periods, data.calendar, lastDay);
    estimates = providersOf(estimated, periods, data.calendar, lastDay);

    std::set<std::pair<ProviderID, std::string>> seen;
    for (const AnalyticsModelTotal& model : AnalyticsAggregation::modelTotals(rows)) {
        const auto isNew = seen.emplace(model.provider, ModelName::shortName(model.model));
        if (!isNew.second) sharedNames_.insert(*isNew.first);
    }
}

UsageFigures PageContext::peaksOf(const std::vector<UsageFigures>& figures) {
    UsageFigures peaks;
    for (const UsageFigures& one : figures) {
        peaks = {std::max(peaks.cost, one.cost), std::max(peaks.tokens, one.tokens),
                 std::max(peaks.events, one.events)};
    }
    return peaks;
}

std::string PageContext::span() const {
    return format.counted(std::max<std::int64_t>(data.days, 1), "day");
}

std::string PageContext::periodName(std::size_t index) const {
    const LocalDay first = periods.all()[index].first;
    return periods.unit() == PagePeriods::Unit::Day ? format.day(first) : format.monthAndYear(first);
}

std::string PageContext::modelName(ProviderID provider, const std::string& model) const {
    if (model.empty()) return "(no name)";
    std::string name = ModelName::shortName(model);
    const bool isTelling = !name.empty() && sharedNames_.count({provider, name}) == 0;
    return isTelling ? name : model;
}

std::string providerClass(ProviderID provider) {
    return "p p-" + std::string{rawName(provider)};
}

std::string providerSwatch(ProviderID provider) {
    return "<b class=\"sw " + providerClass(provider) + "\"></b>";
}

}  // namespace quorvane::host
