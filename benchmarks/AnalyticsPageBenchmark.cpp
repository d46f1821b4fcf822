// The page of figures, from an index of a million events to its last byte. A person waits for it: it is to take less
// than a second.

#include <memory>
#include <stdexcept>
#include <string>

#include <benchmark/benchmark.h>

#include "QuorvaneHost/html/AnalyticsPage.h"
#include "benchmarks/support/BenchmarkData.h"
#include "benchmarks/support/EventsDatabase.h"

namespace quorvane::benchmarks {
namespace {

constexpr std::int64_t days = 90;

host::AnalyticsData analyticsData(std::int64_t count) {
    const std::span<const ProviderID> providers = EventsDatabase::providers();
    return {.index = std::make_shared<UsageIndex>(EventsDatabase::path(count)),
            .providers = {providers.begin(), providers.end()},
            .calculator = CostCalculator{},
            .now = EventsDatabase::end(),
            .calendar = Calendar::current(),
            .days = days};
}

void analyticsPageFromIndex(::benchmark::State& state) {
    const std::int64_t count = BenchmarkData::scaled(1'000'000);
    const host::AnalyticsData data = analyticsData(count);
    std::string page;
    for (auto _ : state)
        page = host::analyticsPage(host::AnalyticsPageData::gathered(data));
    if (page.find("id=\"week\"") == std::string::npos) throw std::logic_error{"the page has no figures"};
    state.SetItemsProcessed(state.iterations() * count);
    state.counters["page_bytes"] = static_cast<double>(page.size());
}
BENCHMARK(analyticsPageFromIndex)->Iterations(1)->Repetitions(5)->Unit(::benchmark::kMillisecond);

/// The page alone, when the index has given its figures.
void analyticsPageFromFigures(::benchmark::State& state) {
    const host::AnalyticsPageData figures =
        host::AnalyticsPageData::gathered(analyticsData(BenchmarkData::scaled(1'000'000)));
    for (auto _ : state)
        ::benchmark::DoNotOptimize(host::analyticsPage(figures));
}
BENCHMARK(analyticsPageFromFigures)->Unit(::benchmark::kMillisecond);

}  // namespace
}  // namespace quorvane::benchmarks
