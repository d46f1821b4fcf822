// What the analytic views show: sums by model and day, by project, and by weekday and hour.

#include <algorithm>
#include <optional>
#include <utility>

#include "QuorvaneCore/index/SQLiteStatement.h"
#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/index/detail/EventRow.h"
#include "QuorvaneCore/index/detail/ModelDayAccumulator.h"
#include "QuorvaneCore/index/detail/PricedModels.h"
#include "QuorvaneCore/index/detail/ProjectAccumulator.h"
#include "QuorvaneCore/index/detail/RangeScan.h"
#include "QuorvaneCore/index/detail/UsageDays.h"

namespace quorvane {
namespace {

using detail::EventRow;

/// The days that a query reads, and the providers.
struct AnalyticWindow {
    detail::UsageDays days;
    LocalDay first;
    Date start;
    std::vector<ProviderID> providers;

    /// Absent without providers, and where the calendar does not reach back so far.
    static std::optional<AnalyticWindow> make(std::span<const ProviderID> requested, std::int64_t length, Date now,
                                              const Calendar& calendar) {
        if (requested.empty()) return std::nullopt;
        const detail::UsageDays days{now, calendar};
        const std::int64_t before = std::max<std::int64_t>(length, 1) - 1;
        const LocalDay first = days.today - before;
        if (!Calendar::reaches(first)) return std::nullopt;
        return AnalyticWindow{days, first, calendar.start(first), detail::distinctProviders(requested)};
    }

    [[nodiscard]] std::shared_ptr<SQLiteStatement> scan(SQLiteDatabase& database, std::string_view columns) const {
        auto statement = detail::prepareOrNothing(database, detail::rangeScanSQL(columns, providers));
        if (statement) detail::bindRange(*statement, start, days.now, providers);
        return statement;
    }

    /// The same for columns that the scan's index does not have. Then every row of the range takes a look into the
    /// table, some six times as long as a row of a scan of the whole table; where the range has a good part of the
    /// rows, that scan is quicker. The plus signs keep SQLite from the index, and change nothing else.
    [[nodiscard]] std::shared_ptr<SQLiteStatement> tableScan(SQLiteDatabase& database, std::string_view columns) const {
        constexpr std::int64_t dearer = 6;
        const std::int64_t all = count(database, "SELECT count(*) FROM events;", false);
        const std::int64_t inRange = count(database, detail::rangeScanSQL("count(*)", providers), true);
        if (inRange * dearer < all) return scan(database, columns);
        std::string sql = detail::rangeScanSQL(columns, providers);
        for (const std::string_view column : {"ts >=", "ts <=", "provider IN"})
            sql.insert(sql.rfind(column), "+");
        auto statement = detail::prepareOrNothing(database, sql);
        if (statement) detail::bindRange(*statement, start, days.now, providers);
        return statement;
    }

    [[nodiscard]] detail::DayFinder dayFinder() const { return {days.calendar, first, days.today}; }

private:
    /// The only number of the only row; 0 for a statement that cannot be prepared.
    [[nodiscard]] std::int64_t count(SQLiteDatabase& database, const std::string& sql, bool isOfRange) const {
        const auto statement = detail::prepareOrNothing(database, sql);
        if (statement && isOfRange) detail::bindRange(*statement, start, days.now, providers);
        return statement && statement->step() ? statement->integer(0) : 0;
    }
};

}  // namespace

std::vector<ModelDaySummary> UsageIndex::modelDaySummaries(std::span<const ProviderID> providers, std::int64_t days,
                                                           const CostCalculator& calculator, Date now,
                                                           const Calendar& calendar) const {
    const std::lock_guard guard{connectionLock_};
    const std::optional<AnalyticWindow> window = AnalyticWindow::make(providers, days, now, calendar);
    if (!window) return {};
    const auto scan = window->scan(*database_, EventRow::columns);
    if (!scan) return {};
    const detail::DayFinder dayFinder = window->dayFinder();
    detail::PricedModels prices{calculator};
    detail::ModelDayAccumulator sums;
    while (scan->step()) {
        const std::optional<EventRow> event = EventRow::read(*scan);
        if (!event) continue;
        sums.add(event->provider, event->model, dayFinder.day(event->timestamp), event->usage,
                 prices.cost(event->model, event->usage));
    }
    return std::move(sums).finished(calendar);
}

std::vector<ProjectCostSummary> UsageIndex::projectCostSummaries(std::span<const ProviderID> providers,
                                                                 std::int64_t days, const CostCalculator& calculator,
                                                                 Date now, const Calendar& calendar) const {
    const std::lock_guard guard{connectionLock_};
    const std::optional<AnalyticWindow> window = AnalyticWindow::make(providers, days, now, calendar);
    if (!window) return {};
    const auto scan = window->tableScan(*database_, "project, model, input, output, cache5m, cache1h, cache_read");
    if (!scan) return {};
    detail::PricedModels prices{calculator};
    detail::ProjectAccumulator sums;
    while (scan->step()) {
        const TokenUsage usage = detail::readUsage(*scan, 2);
        sums.add(scan->textView(0), usage, prices.cost(scan->textView(1), usage));
    }
    return std::move(sums).finished();
}

std::map<ProviderID, HourWeekdayMatrix> UsageIndex::hourWeekdayBins(std::span<const ProviderID> providers,
                                                                    std::int64_t days, const CostCalculator& calculator,
                                                                    Date now, const Calendar& calendar) const {
    const std::lock_guard guard{connectionLock_};
    const std::optional<AnalyticWindow> window = AnalyticWindow::make(providers, days, now, calendar);
    std::map<ProviderID, HourWeekdayMatrix> bins;
    if (!window) return bins;
    for (const ProviderID provider : window->providers)
        bins.try_emplace(provider);
    const auto scan = window->scan(*database_, EventRow::columns);
    if (!scan) return bins;
    const detail::DayFinder dayFinder = window->dayFinder();
    detail::HourFinder hourFinder{calendar};
    detail::PricedModels prices{calculator};
    while (scan->step()) {
        const std::optional<EventRow> event = EventRow::read(*scan);
        const auto bin = event ? bins.find(event->provider) : bins.end();
        if (bin == bins.end()) continue;
        const LocalDay day = dayFinder.day(event->timestamp);
        bin->second.add(day.weekday(), hourFinder.hour(day, event->timestamp), 1,
                        static_cast<double>(event->usage.total()), prices.cost(event->model, event->usage));
    }
    return bins;
}

}  // namespace quorvane
