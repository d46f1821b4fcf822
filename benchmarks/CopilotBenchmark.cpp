// The Copilot reader: decoding its telemetry, and a look at files that have not changed.

#include <stdexcept>

#include <benchmark/benchmark.h>

#include "QuorvaneCore/providers/CopilotCandidateCache.h"
#include "QuorvaneCore/providers/CopilotProvider.h"
#include "benchmarks/support/Comparison.h"
#include "benchmarks/support/CopilotHistory.h"
#include "benchmarks/support/LogFloor.h"

namespace quorvane::benchmarks {
namespace {

void check(const std::vector<UsageEvent>& events, const CopilotHistory::Totals& totals) {
    TokenUsage tokens;
    for (const UsageEvent& event : events)
        tokens += event.usage;
    if (static_cast<std::int64_t>(events.size()) != totals.calls || tokens != totals.tokens)
        throw std::logic_error{"calls are lost"};
}

void decodeCopilotHistory(::benchmark::State& state) {
    const CopilotHistory::OnDisk& history = CopilotHistory::typical();
    const CopilotProvider provider{history.folder};
    static LogFloor floor{{history.file}, LogFloor::Agent::Copilot};
    Comparison& comparison = Comparison::ofTimes("decode 200 MB of Copilot", "read, cut lines, parse each once", 1.5);
    for (auto _ : state) {
        DecodedFile decoded;
        std::int64_t parsed = 0;
        state.SetIterationTime(
            comparison.measure([&] { decoded = provider.decodeFile(history.file, 0); }, [&] { parsed = floor.run(); }));
        check(decoded.events, history.totals);
        if (parsed != history.totals.lines) throw std::logic_error{"the floor lost lines"};
    }
    state.SetBytesProcessed(state.iterations() * history.totals.bytes);
    state.SetItemsProcessed(state.iterations() * history.totals.lines);
    state.counters["ratio"] = comparison.ratio();
}
BENCHMARK(decodeCopilotHistory)->Iterations(1)->Repetitions(7)->UseManualTime()->Unit(::benchmark::kMillisecond);

/// Nothing is read: what remains is the work on the candidates that are in memory.
void unchangedCopilotAIU(::benchmark::State& state) {
    const CopilotHistory::OnDisk& history = CopilotHistory::typical();
    const CopilotProvider provider{history.folder};
    check(provider.loadEvents(), history.totals);
    const std::int64_t before = CopilotCandidateCache::shared().traversalCount();
    for (auto _ : state) {
        std::int64_t nano = 0;
        for (const CopilotOTelParser::AIUSample& sample : provider.aiuSamples())
            nano += sample.nano;
        if (nano != history.totals.aiuNano) throw std::logic_error{"samples are lost"};
    }
    if (CopilotCandidateCache::shared().traversalCount() != before) throw std::logic_error{"the file was read again"};
    // Memory full of candidates would slow down whatever is timed next.
    CopilotCandidateCache::shared().prune({});
    state.SetItemsProcessed(state.iterations() * history.totals.calls);
}
BENCHMARK(unchangedCopilotAIU)->Unit(::benchmark::kMillisecond);

}  // namespace
}  // namespace quorvane::benchmarks
