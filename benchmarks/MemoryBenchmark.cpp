// Peak memory of a cold ingest, in a process of its own.

#include <stdexcept>

#include <benchmark/benchmark.h>

#include "benchmarks/support/BenchmarkData.h"
#include "benchmarks/support/Comparison.h"
#include "benchmarks/support/RefreshProcess.h"

namespace quorvane::benchmarks {
namespace {

void measurePeak(::benchmark::State& state, const BenchmarkData::History& history, Comparison& comparison) {
    const ScratchFolder scratch;
    for (auto _ : state) {
        scratch.clear();
        const RefreshProcess ingest = RefreshProcess::run(history.projects, scratch.path("usage.sqlite"));
        if (ingest.events != history.totals.usageLines) throw std::logic_error{"the index has not all calls"};
        const double mebibytes = static_cast<double>(ingest.peakKibibytes) / 1024;
        comparison.addMebibytes(mebibytes);
        state.SetIterationTime(ingest.timing.seconds);
        state.counters["peakMiB"] = mebibytes;
    }
}

void memoryOfColdIngest(::benchmark::State& state) {
    measurePeak(state, BenchmarkData::typicalHistory(), Comparison::ofMemory("peak memory, 1 GB of logs", 64));
}
BENCHMARK(memoryOfColdIngest)->Iterations(1)->Repetitions(3)->UseManualTime()->Unit(::benchmark::kMillisecond);

void memoryOfLargeFile(::benchmark::State& state) {
    measurePeak(state, BenchmarkData::largeFile(), Comparison::ofMemory("peak memory, one log of 600 MB", 96));
}
BENCHMARK(memoryOfLargeFile)->Iterations(1)->Repetitions(3)->UseManualTime()->Unit(::benchmark::kMillisecond);

}  // namespace
}  // namespace quorvane::benchmarks
