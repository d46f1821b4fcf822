// What usage cost: the sums of the index, priced as they are read.

#include <algorithm>
#include <unordered_map>

#include "QuorvaneCore/index/SQLiteStatement.h"
#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/index/detail/EventRow.h"
#include "QuorvaneCore/index/detail/RangeScan.h"
#include "QuorvaneCore/index/detail/UsageDays.h"
#include "QuorvaneCore/index/detail/WindowAccumulator.h"
#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/platform/StringHash.h"

namespace quorvane {
namespace {

using detail::DayTable;
using detail::distinctProviders;
using detail::EventRow;
using detail::prepareOrNothing;
using detail::UsageDays;
using detail::WindowAccumulator;
using detail::WindowBucket;

using DayPositions = std::unordered_map<std::string, std::int64_t, StringHash, std::equal_to<>>;

std::vector<std::int64_t> distinctWindows(std::span<const std::int64_t> windows) {
    std::vector<std::int64_t> lengths{windows.begin(), windows.end()};
    for (std::int64_t& length : lengths)
        length = std::max<std::int64_t>(length, 0);
    std::sort(lengths.begin(), lengths.end());
    lengths.erase(std::unique(lengths.begin(), lengths.end()), lengths.end());
    return lengths;
}

/// What both roads of a multi-window summary begin with.
struct MultiWindow {
    MultiWindow(std::span<const ProviderID> requested, std::span<const std::int64_t> windows, Date now,
                const Calendar& calendar)
        : days{now, calendar}, providers{distinctProviders(requested)} {
        for (const std::int64_t length : distinctWindows(windows))
            buckets.emplace_back(length, providers);
    }

    UsageDays days;
    std::vector<ProviderID> providers;
    std::vector<WindowBucket> buckets;

    [[nodiscard]] bool hasNothingToScan() const noexcept { return providers.empty() || buckets.empty(); }

    /// One scan serves all windows: from here on.
    [[nodiscard]] LocalDay firstDay() const {
        return std::min(days.today, days.firstDay(buckets.empty() ? 0 : buckets.back().days));
    }
    [[nodiscard]] Date lowerBound() const { return days.calendar.start(firstDay()); }

    [[nodiscard]] std::string placeholders() const { return detail::placeholders(providers); }
    void bind(SQLiteStatement& scan) const { detail::bindRange(scan, lowerBound(), days.now, providers); }

    [[nodiscard]] UsageMultiWindowSummaries finished() && {
        UsageMultiWindowSummaries summaries;
        for (WindowBucket& bucket : buckets)
            summaries.byDays.emplace(bucket.days, std::move(bucket).finished());
        return summaries;
    }
};

/// SQLite asks the C library for local times between 1970 and 2037 only; beyond, it borrows another year's rules.
bool isWithinLocalTimeRange(Date first, Date last) noexcept {
    constexpr double year2038 = 2145916800.0;
    constexpr double aDay = 86400.0;
    return first.secondsSince1970 >= aDay && last.secondsSince1970 < year2038 - 30 * aDay;
}

/// Whether SQLite's day at the start of today is the calendar's. A check that cannot be made counts as passed.
bool agreesAboutToday(SQLiteDatabase& database, const std::string& dayExpression, const UsageDays& days) {
    std::string check = dayExpression;
    for (std::size_t at = check.find("ts"); at != std::string::npos; at = check.find("ts", at + 2)) {
        check.replace(at, 2, "?1");
    }
    try {
        const auto statement = database.prepare("SELECT " + check + ";");
        statement->bind(1, days.startOfToday.secondsSince1970);
        return !statement->step() || statement->text(0) == days.today.text();
    } catch (const SQLiteError&) {
        return true;
    }
}

/// One row of the grouped scan.
struct Group {
    ProviderID provider{};
    std::string_view model;
    std::string_view day;
    TokenUsage usage;
    std::int64_t count = 0;
    std::optional<double> cost;

    static std::optional<Group> read(SQLiteStatement& row, const CostCalculator& calculator) {
        const std::optional<ProviderID> provider = providerFromRawName(row.textView(0));
        if (!provider) return std::nullopt;
        Group group{.provider = *provider,
                    .model = row.textView(1),
                    .day = row.textView(2),
                    .usage = detail::readUsage(row, 4),
                    .count = row.integer(9),
                    .cost = std::nullopt};
        group.cost = calculator.cost(group.model, group.usage, row.integer(3) != 0);
        return group;
    }

    void addTo(WindowAccumulator& sums, bool isToday, std::optional<std::int64_t> position) const {
        if (isToday) sums.today.addGrouped(model, usage, cost, count);
        if (!position) return;
        sums.addToWindow(model, usage, cost, count);
        if (cost) sums.addToSeries(*position, *cost);
    }
};

/// Where a day stands in a window's series; absent if it is not in the window. Window 0 has today alone.
std::optional<std::int64_t> positionIn(std::int64_t days, const DayPositions& positions, std::string_view day) {
    const auto found = positions.find(day);
    if (found == positions.end()) return std::nullopt;
    // Positions are those of the longest window; every window ends with today.
    const std::int64_t fromToday = found->second;
    if (days < 1) return fromToday == 0 ? std::optional<std::int64_t>{0} : std::nullopt;
    return fromToday < days ? std::optional{days - 1 - fromToday} : std::nullopt;
}

/// The days of the longest window by their text, counted back from today.
DayPositions daysBeforeToday(const UsageDays& days, LocalDay first) {
    DayPositions positions;
    for (LocalDay day = days.today; day >= first; day = day - 1)
        positions.emplace(day.text(), days.today - day);
    return positions;
}

}  // namespace

UsageRollup UsageIndex::rollup(std::optional<ProviderID> provider, std::int64_t days, const CostCalculator& calculator,
                               Date now, const Calendar& calendar) const {
    const std::lock_guard guard{connectionLock_};
    const std::int64_t length = std::max<std::int64_t>(days, 1);
    const UsageDays range{now, calendar};
    WindowAccumulator sums = WindowAccumulator::withoutSeries(length);
    const auto scan = prepareOrNothing(
        *database_, provider ? "SELECT provider, model, ts, input, output, cache5m, cache1h, cache_read FROM events "
                               "WHERE ts >= ?1 AND ts <= ?2 AND provider = ?3;"
                             : "SELECT provider, model, ts, input, output, cache5m, cache1h, cache_read FROM events "
                               "WHERE ts >= ?1 AND ts <= ?2;");
    if (!scan) return std::move(sums).finished().rollup;
    scan->bind(1, range.windowStart(length).secondsSince1970);
    scan->bind(2, now.secondsSince1970);
    if (provider) scan->bind(3, std::string{rawName(*provider)});
    while (scan->step()) {
        const std::optional<EventRow> event = EventRow::read(*scan);
        if (!event) continue;
        const std::optional<double> cost = calculator.cost(event->model, event->usage);
        if (event->timestamp >= range.startOfToday) sums.today.addGrouped(event->model, event->usage, cost, 1);
        sums.addToWindow(event->model, event->usage, cost, 1);
    }
    return std::move(sums).finished().rollup;
}

std::vector<double> UsageIndex::dailyCostSeries(std::optional<ProviderID> provider, std::int64_t days,
                                                const CostCalculator& calculator, Date now,
                                                const Calendar& calendar) const {
    if (days < 1) return {};
    const std::lock_guard guard{connectionLock_};
    const UsageDays range{now, calendar};
    WindowAccumulator sums{days};
    const auto scan = prepareOrNothing(
        *database_, provider ? "SELECT model, ts, input, output, cache5m, cache1h, cache_read FROM events WHERE ts >= "
                               "?1 AND ts <= ?2 AND provider = ?3;"
                             : "SELECT model, ts, input, output, cache5m, cache1h, cache_read FROM events WHERE ts >= "
                               "?1 AND ts <= ?2;");
    if (!scan) return sums.dailyCostSeries;
    const LocalDay first = range.firstDay(days);
    scan->bind(1, range.windowStart(days).secondsSince1970);
    scan->bind(2, now.secondsSince1970);
    if (provider) scan->bind(3, std::string{rawName(*provider)});
    const DayTable table{calendar, first, range.today};
    while (scan->step()) {
        const std::optional<double> cost = calculator.cost(scan->textView(0), detail::readUsage(*scan, 2));
        if (cost) sums.addToSeries(table.day(Date{scan->real(1)}) - first, *cost);
    }
    return sums.dailyCostSeries;
}

UsageWindowSummaries UsageIndex::windowSummaries(std::span<const ProviderID> providers, std::int64_t days,
                                                 const CostCalculator& calculator, Date now,
                                                 const Calendar& calendar) const {
    const std::int64_t length = std::max<std::int64_t>(days, 0);
    UsageMultiWindowSummaries all = multiWindowSummaries(providers, {&length, 1}, calculator, now, calendar);
    const auto found = all.byDays.find(length);
    return found != all.byDays.end() ? std::move(found->second) : WindowBucket{length, providers}.finished();
}

UsageMultiWindowSummaries UsageIndex::multiWindowSummaries(std::span<const ProviderID> providers,
                                                           std::span<const std::int64_t> windows,
                                                           const CostCalculator& calculator, Date now,
                                                           const Calendar& calendar) const {
    const std::lock_guard guard{connectionLock_};
    const std::optional<std::string> dayExpression = sqlLocalDayExpression(calendar);
    if (!dayExpression) return multiWindowSummariesPerEvent(providers, windows, calculator, now, calendar);
    return multiWindowSummariesGrouped(providers, windows, calculator, now, calendar, *dayExpression);
}

UsageMultiWindowSummaries UsageIndex::multiWindowSummariesPerEvent(std::span<const ProviderID> providers,
                                                                   std::span<const std::int64_t> windows,
                                                                   const CostCalculator& calculator, Date now,
                                                                   const Calendar& calendar) const {
    const std::lock_guard guard{connectionLock_};
    MultiWindow window{providers, windows, now, calendar};
    if (window.hasNothingToScan()) return std::move(window).finished();
    const auto scan = prepareOrNothing(*database_, detail::rangeScanSQL(detail::EventRow::columns, window.providers));
    if (!scan) return std::move(window).finished();
    window.bind(*scan);
    const DayTable table{calendar, window.firstDay(), window.days.today};
    while (scan->step()) {
        const std::optional<EventRow> event = EventRow::read(*scan);
        if (!event) continue;
        const std::optional<double> cost = calculator.cost(event->model, event->usage);
        const LocalDay day = table.day(event->timestamp);
        const bool isToday = day == window.days.today;
        for (WindowBucket& bucket : window.buckets) {
            const std::int64_t position = day - window.days.firstDay(bucket.days);
            bucket.addTo(event->provider, [&](WindowAccumulator& sums) {
                if (isToday) sums.today.addGrouped(event->model, event->usage, cost, 1);
                if (position < 0) return;
                sums.addToWindow(event->model, event->usage, cost, 1);
                if (cost) sums.addToSeries(position, *cost);
            });
        }
    }
    return std::move(window).finished();
}

UsageMultiWindowSummaries UsageIndex::multiWindowSummariesGrouped(std::span<const ProviderID> providers,
                                                                  std::span<const std::int64_t> windows,
                                                                  const CostCalculator& calculator, Date now,
                                                                  const Calendar& calendar,
                                                                  const std::string& dayExpression) const {
    const std::lock_guard guard{connectionLock_};
    const auto perEvent = [&] { return multiWindowSummariesPerEvent(providers, windows, calculator, now, calendar); };
    MultiWindow window{providers, windows, now, calendar};
    if (window.hasNothingToScan()) return std::move(window).finished();
    const bool isLocal = dayExpression.find("localtime") != std::string::npos;
    if (isLocal && !isWithinLocalTimeRange(window.lowerBound(), now)) return perEvent();
    if (!agreesAboutToday(*database_, dayExpression, window.days)) return perEvent();
    const auto scan = prepareOrNothing(*database_, groupedScanSQL(dayExpression, window.placeholders()));
    if (!scan) return perEvent();
    window.bind(*scan);
    const DayPositions positions = daysBeforeToday(window.days, window.firstDay());
    const std::string today = window.days.today.text();
    while (scan->step()) {
        const std::optional<Group> group = Group::read(*scan, calculator);
        if (!group) continue;
        for (WindowBucket& bucket : window.buckets) {
            const std::optional<std::int64_t> position = positionIn(bucket.days, positions, group->day);
            bucket.addTo(group->provider,
                         [&](WindowAccumulator& sums) { group->addTo(sums, group->day == today, position); });
        }
    }
    return std::move(window).finished();
}

std::optional<std::string> UsageIndex::sqlLocalDayExpression(const Calendar& calendar) {
    if (!calendar.isGregorian()) return std::nullopt;
    if (calendar.timeZoneID() == Calendar::systemTimeZoneID()) return "date(ts, 'unixepoch', 'localtime')";
    const Date now = Clock::now();
    if (calendar.offsetFromGMT(now) == 0 && !calendar.hasTransitionAfter(now)) return "date(ts, 'unixepoch')";
    return std::nullopt;
}

std::string UsageIndex::groupedScanSQL(std::string_view dayExpression, std::string_view placeholders) {
    // The tier is told per event and is part of the key: within a group all events have the same rates, so the price of
    // the sum is the sum of the prices.
    std::string sql = "SELECT provider, model,\n       ";
    sql += dayExpression;
    sql += " AS lday,\n       (input + cache_read + cache5m + cache1h > ";
    sql += std::to_string(CostCalculator::contextTierTokens);
    sql +=
        ") AS tiered,\n       SUM(input), SUM(output), SUM(cache5m), SUM(cache1h), SUM(cache_read), COUNT(*)\n"
        "FROM events\nWHERE ts >= ?1 AND ts <= ?2 AND provider IN (";
    sql += placeholders;
    sql += ")\nGROUP BY provider, model, lday, tiered;";
    return sql;
}

}  // namespace quorvane
