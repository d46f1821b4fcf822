// The analytic queries of a large index.

#include <functional>
#include <stdexcept>

#include <benchmark/benchmark.h>

#include "QuorvaneCore/index/UsageIndex.h"
#include "benchmarks/support/BenchmarkData.h"
#include "benchmarks/support/Comparison.h"
#include "benchmarks/support/EventsDatabase.h"
#include "benchmarks/support/ScanFloor.h"

namespace quorvane::benchmarks {
namespace {

constexpr std::int64_t days = 90;
constexpr const char* eventColumns = "provider, model, ts, input, output, cache5m, cache1h, cache_read";
constexpr const char* projectColumns = "project, model, input, output, cache5m, cache1h, cache_read";

/// What a query is asked about.
struct Question {
    UsageIndex index{EventsDatabase::path(BenchmarkData::scaled(1'000'000))};
    CostCalculator calculator;
    Calendar calendar = Calendar::current();
    Date now = EventsDatabase::end();
    Date first = calendar.start(calendar.day(now) - (days - 1));
};

/// Runs a query that returns how many events it counted.
void compare(::benchmark::State& state, const std::string& name, const char* columns,
             const std::function<std::int64_t(const Question&)>& query) {
    const Question question;
    const ScanFloor floor =
        ScanFloor::ofRows(question.index.path(), columns, question.first, question.now, EventsDatabase::providers());
    Comparison& comparison = Comparison::ofTimes(name, "the bare statement", 1.5);
    for (auto _ : state) {
        std::int64_t counted = 0;
        std::int64_t scanned = 0;
        state.SetIterationTime(comparison.measure([&] { counted = query(question); }, [&] { scanned = floor.run(); }));
        if (counted != scanned || counted < BenchmarkData::scaled(500'000))
            throw std::logic_error{"the sums differ from the statement's"};
    }
    state.counters["ratio"] = comparison.ratio();
}

template <typename Row>
std::int64_t eventsOf(const std::vector<Row>& rows) {
    std::int64_t events = 0;
    for (const Row& row : rows)
        events += row.eventCount;
    return events;
}

void modelDaySummaries(::benchmark::State& state) {
    compare(state, "models by day of 1,000,000 events", eventColumns, [](const Question& asked) {
        return eventsOf(asked.index.modelDaySummaries(EventsDatabase::providers(), days, asked.calculator, asked.now,
                                                      asked.calendar));
    });
}
BENCHMARK(modelDaySummaries)->Iterations(1)->Repetitions(7)->UseManualTime()->Unit(::benchmark::kMillisecond);

void projectCostSummaries(::benchmark::State& state) {
    compare(state, "projects of 1,000,000 events", projectColumns, [](const Question& asked) {
        return eventsOf(asked.index.projectCostSummaries(EventsDatabase::providers(), days, asked.calculator, asked.now,
                                                         asked.calendar));
    });
}
BENCHMARK(projectCostSummaries)->Iterations(1)->Repetitions(7)->UseManualTime()->Unit(::benchmark::kMillisecond);

void hourWeekdayBins(::benchmark::State& state) {
    compare(state, "weekdays and hours of 1,000,000 events", eventColumns, [](const Question& asked) {
        double events = 0;
        for (const auto& [provider, matrix] : asked.index.hourWeekdayBins(
                 EventsDatabase::providers(), days, asked.calculator, asked.now, asked.calendar)) {
            for (const auto& row : matrix.cells) {
                for (const HourWeekdayMatrix::Cell& cell : row)
                    events += cell.events;
            }
        }
        return static_cast<std::int64_t>(events);
    });
}
BENCHMARK(hourWeekdayBins)->Iterations(1)->Repetitions(7)->UseManualTime()->Unit(::benchmark::kMillisecond);

}  // namespace
}  // namespace quorvane::benchmarks
