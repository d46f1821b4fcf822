// Decoding: every log of a history through the Claude reader, without the index.

#include <stdexcept>

#include <benchmark/benchmark.h>

#include "QuorvaneCore/providers/ClaudeProvider.h"
#include "benchmarks/support/BenchmarkData.h"
#include "benchmarks/support/Comparison.h"
#include "benchmarks/support/LogFloor.h"

namespace quorvane::benchmarks {
namespace {

std::int64_t decodeAll(const ClaudeProvider& provider, const std::vector<std::string>& files) {
    std::int64_t events = 0;
    for (const std::string& file : files) {
        const DecodedFile decoded = provider.decodeFile(file, 0);
        events += static_cast<std::int64_t>(decoded.events.size());
    }
    return events;
}

void decodeHistory(::benchmark::State& state) {
    const BenchmarkData::History& history = BenchmarkData::typicalHistory();
    const ClaudeProvider provider{history.projects};
    const std::vector<std::string> files = provider.jsonlFiles();
    static LogFloor floor{files};
    Comparison& comparison = Comparison::ofTimes("decode 1 GB", "read, cut lines, parse usage lines", 1.3);
    for (auto _ : state) {
        std::int64_t events = 0;
        std::int64_t parsed = 0;
        state.SetIterationTime(
            comparison.measure([&] { events = decodeAll(provider, files); }, [&] { parsed = floor.run(); }));
        if (events != history.totals.usageLines || parsed != events) throw std::logic_error{"decoding lost lines"};
    }
    state.SetBytesProcessed(state.iterations() * history.totals.bytes);
    state.SetItemsProcessed(state.iterations() * history.totals.lines);
    state.counters["ratio"] = comparison.ratio();
}
BENCHMARK(decodeHistory)->Iterations(1)->Repetitions(7)->UseManualTime()->Unit(::benchmark::kMillisecond);

}  // namespace
}  // namespace quorvane::benchmarks
