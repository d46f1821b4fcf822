// Summaries of a large index.

#include <array>
#include <stdexcept>

#include <benchmark/benchmark.h>

#include "QuorvaneCore/index/UsageIndex.h"
#include "benchmarks/support/BenchmarkData.h"
#include "benchmarks/support/Comparison.h"
#include "benchmarks/support/EventsDatabase.h"
#include "benchmarks/support/ScanFloor.h"

namespace quorvane::benchmarks {
namespace {

constexpr std::array<std::int64_t, 4> windows{7, 14, 30, 90};

void multiWindowSummaries(::benchmark::State& state) {
    const std::int64_t count = BenchmarkData::scaled(1'000'000);
    const std::string database = EventsDatabase::path(count);
    const UsageIndex index{database};
    const CostCalculator calculator;
    const Calendar calendar = Calendar::current();
    const Date now = EventsDatabase::end();
    const Date first = calendar.start(calendar.day(now) - (windows.back() - 1));
    const std::span<const ProviderID> providers = EventsDatabase::providers();
    const ScanFloor floor{database, UsageIndex::sqlLocalDayExpression(calendar).value(), first, now, providers};
    Comparison& comparison = Comparison::ofTimes("four windows of 1,000,000 events", "the grouped statement", 1.15);
    for (auto _ : state) {
        UsageMultiWindowSummaries summaries;
        std::int64_t scanned = 0;
        state.SetIterationTime(comparison.measure(
            [&] { summaries = index.multiWindowSummaries(providers, windows, calculator, now, calendar); },
            [&] { scanned = floor.run(); }));
        const std::int64_t summed = summaries.byDays.at(windows.back()).aggregate.rollup.last7d.eventCount;
        if (summed != scanned || summed < count / 2) throw std::logic_error{"the sums differ from the statement's"};
    }
    state.SetItemsProcessed(state.iterations() * count);
    state.counters["ratio"] = comparison.ratio();
}
BENCHMARK(multiWindowSummaries)->Iterations(1)->Repetitions(7)->UseManualTime()->Unit(::benchmark::kMillisecond);

}  // namespace
}  // namespace quorvane::benchmarks
