#include "QuorvaneCore/analytics/AnalyticsAggregation.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "QuorvaneCore/platform/CheckedArithmetic.h"

namespace quorvane {
namespace {

/// The days of a window.
class Window {
public:
    Window(std::int64_t days, Date now, const Calendar& calendar)
        : calendar_{calendar}, length_{std::max<std::int64_t>(days, 1)}, first_{calendar.day(now) - (length_ - 1)} {}

    [[nodiscard]] bool isWithinCalendar() const noexcept { return Calendar::reaches(first_); }
    [[nodiscard]] std::size_t length() const noexcept { return static_cast<std::size_t>(length_); }
    [[nodiscard]] Date day(std::size_t position) const {
        return calendar_.start(first_ + static_cast<std::int64_t>(position));
    }

    /// Where the row's day stands; absent outside the window.
    [[nodiscard]] std::optional<std::size_t> position(const ModelDaySummary& row) const {
        const std::int64_t position = calendar_.day(row.day) - first_;
        return position >= 0 && position < length_ ? std::optional{static_cast<std::size_t>(position)} : std::nullopt;
    }

private:
    const Calendar& calendar_;
    std::int64_t length_;
    LocalDay first_;
};

using ModelKey = std::pair<ProviderID, std::string_view>;

/// A model's share of a grid.
struct GridModel {
    ModelKey key;
    double total = 0;
    std::vector<double> values;
};

/// The models inside the window in order of first appearance.
std::vector<GridModel> gridModels(std::span<const ModelDaySummary> rows, AnalyticsMeasure measure,
                                  const Window& window) {
    std::vector<GridModel> models;
    std::map<ModelKey, std::size_t> places;
    for (const ModelDaySummary& row : rows) {
        const std::optional<std::size_t> position = window.position(row);
        if (!position) continue;
        const auto [place, isNew] = places.try_emplace({row.provider, row.model}, models.size());
        if (isNew) models.push_back({place->first, 0, std::vector<double>(window.length(), 0.0)});
        GridModel& model = models[place->second];
        const double value = AnalyticsAggregation::value(row, measure);
        model.total += value;
        model.values[*position] += value;
    }
    return models;
}

void add(AnalyticsModelTotal& total, const ModelDaySummary& row) noexcept {
    total.eventCount = checkedAdd(total.eventCount, row.eventCount);
    total.inputTokens = checkedAdd(total.inputTokens, row.inputTokens);
    total.outputTokens = checkedAdd(total.outputTokens, row.outputTokens);
    total.cache5mTokens = checkedAdd(total.cache5mTokens, row.cache5mTokens);
    total.cache1hTokens = checkedAdd(total.cache1hTokens, row.cache1hTokens);
    total.cacheReadTokens = checkedAdd(total.cacheReadTokens, row.cacheReadTokens);
    total.cost += row.cost;
}

/// Whether a row is what the filter looks for.
struct Matches {
    const ModelDaySummary& row;
    const Calendar& calendar;

    bool operator()(const DrillDay& filter) const { return isOn(filter.day); }
    bool operator()(const DrillWeekday& filter) const { return calendar.weekday(row.day) == filter.weekday; }
    bool operator()(const DrillModelDay& filter) const {
        return row.provider == filter.provider && row.model == filter.model && isOn(filter.day);
    }

private:
    [[nodiscard]] bool isOn(Date day) const { return calendar.startOfDay(row.day) == calendar.startOfDay(day); }
};

}  // namespace

double AnalyticsAggregation::value(const ModelDaySummary& row, AnalyticsMeasure measure) noexcept {
    switch (measure) {
        case AnalyticsMeasure::events: return static_cast<double>(row.eventCount);
        case AnalyticsMeasure::tokens: return static_cast<double>(tokenMix({&row, 1}).total());
        case AnalyticsMeasure::cost: return row.cost;
    }
    return 0;
}

std::vector<HeatmapDay> AnalyticsAggregation::heatmapDays(std::span<const ModelDaySummary> rows,
                                                          AnalyticsMeasure measure, std::int64_t days, Date now,
                                                          const Calendar& calendar) {
    const Window window{days, now, calendar};
    if (!window.isWithinCalendar()) return {};
    std::vector<HeatmapDay> heatmap(window.length());
    for (std::size_t position = 0; position < heatmap.size(); ++position)
        heatmap[position].day = window.day(position);
    for (const ModelDaySummary& row : rows) {
        if (const std::optional<std::size_t> position = window.position(row)) {
            heatmap[*position].value += value(row, measure);
        }
    }
    return heatmap;
}

std::vector<AnalyticsModelTotal> AnalyticsAggregation::modelTotals(std::span<const ModelDaySummary> rows) {
    std::map<std::pair<std::string_view, std::string_view>, AnalyticsModelTotal> totals;
    for (const ModelDaySummary& row : rows) {
        AnalyticsModelTotal& total = totals[{rawName(row.provider), row.model}];
        total.provider = row.provider;
        total.model = row.model;
        add(total, row);
    }
    std::vector<AnalyticsModelTotal> sorted;
    sorted.reserve(totals.size());
    for (auto& [key, total] : totals)
        sorted.push_back(std::move(total));
    return sorted;
}

TokenMix AnalyticsAggregation::tokenMix(std::span<const ModelDaySummary> rows) noexcept {
    TokenMix mix;
    for (const ModelDaySummary& row : rows) {
        mix.input = checkedAdd(mix.input, row.inputTokens);
        mix.output = checkedAdd(mix.output, row.outputTokens);
        mix.cache5m = checkedAdd(mix.cache5m, row.cache5mTokens);
        mix.cache1h = checkedAdd(mix.cache1h, row.cache1hTokens);
        mix.cacheRead = checkedAdd(mix.cacheRead, row.cacheReadTokens);
    }
    return mix;
}

ModelDayGrid AnalyticsAggregation::modelDayGrid(std::span<const ModelDaySummary> rows, AnalyticsMeasure measure,
                                                std::int64_t days, std::int64_t topModels, Date now,
                                                const Calendar& calendar) {
    const Window window{days, now, calendar};
    ModelDayGrid grid;
    if (!window.isWithinCalendar()) return grid;
    for (std::size_t position = 0; position < window.length(); ++position)
        grid.days.push_back(window.day(position));
    std::vector<GridModel> models = gridModels(rows, measure, window);
    std::stable_sort(models.begin(), models.end(),
                     [](const GridModel& left, const GridModel& right) { return left.total > right.total; });
    const auto wanted = static_cast<std::uint64_t>(std::max<std::int64_t>(topModels, 0));
    if (wanted < models.size()) models.resize(static_cast<std::size_t>(wanted));
    for (GridModel& model : models) {
        grid.rows.push_back(
            {.provider = model.key.first, .model = std::string{model.key.second}, .total = model.total});
        grid.values.push_back(std::move(model.values));
    }
    return grid;
}

std::vector<ModelDaySummary> AnalyticsAggregation::filteredRows(std::span<const ModelDaySummary> rows,
                                                                const AnalyticsDrillFilter& matching,
                                                                const Calendar& calendar) {
    std::vector<ModelDaySummary> kept;
    std::copy_if(rows.begin(), rows.end(), std::back_inserter(kept), [&](const ModelDaySummary& row) {
        return std::visit(Matches{row, calendar}, matching);
    });
    return kept;
}

}  // namespace quorvane
